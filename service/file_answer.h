#pragma once

#include "service/http/message.h"

#include <filesystem>

namespace quorvex::service {

// The answer that hands out a file: whole, the range that was asked for, or nothing if the caller has it already.
http::Response FileAnswer(const http::Request& request, const std::filesystem::path& path, const std::string& type);

} // namespace quorvex::service
