#pragma once

#include "support/platform.h"

#include <string>

namespace quorvex::update {

// Hands the data folder's activity and error log to the user's mail program, addressed to support with the detailed
// summary as text, and tells the user when that was not possible. Never throws.
void SendLogsToSupport(support::Platform& platform, const std::wstring& dataFolder);

} // namespace quorvex::update
