#pragma once

#include <string>

namespace quorvex::service {

// The text as the inside of a quoted JSON string: UTF-8, control characters made blanks.
std::string JsonText(const std::string& text);

} // namespace quorvex::service
