#pragma once

#include <optional>
#include <string>

namespace quorvex::cli {

// An environment variable in UTF-8; nothing if it is not set or empty.
std::optional<std::string> EnvironmentText(const char* name);

} // namespace quorvex::cli
