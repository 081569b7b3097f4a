#pragma once

#include "support/error.h"
#include "support/platform.h"

#include <cstdint>
#include <initializer_list>
#include <string>

namespace quorvex::support {

// The two logs in the data folder (in UserLogFolder() while none is set), "Activity" and "Error": one tab-separated
// line per event, each written in an open-append-close of its own and rotated through five numbered files. Nothing here
// throws; a line that cannot be written after the retries is lost.

inline constexpr std::int32_t kLogRotationBytes = 1000000;
inline constexpr std::size_t kLogExtras = 10;     // extras of an activity line, all always written
inline constexpr std::size_t kErrorLogExtras = 6; // further values of an error line, only those given

void LogActivity(const Platform& platform, const std::wstring& message,
                 std::initializer_list<std::wstring> extras = {}) noexcept;
void LogToFile(const Platform& platform, const std::wstring& baseName, const std::wstring& message,
               std::initializer_list<std::wstring> extras = {}) noexcept;
// Describes the error, or the message instead when it is not empty.
void LogError(const Platform& platform, const Error& error, const std::wstring& message = {},
              std::initializer_list<std::wstring> values = {}) noexcept;
// Moves baseName1.log to baseName2.log and so on when it is larger than maxBytes. False when it should be moved and
// cannot, because somebody else has it open.
bool RotateLog(const std::wstring& folder, const std::wstring& baseName, std::int32_t maxBytes);

} // namespace quorvex::support
