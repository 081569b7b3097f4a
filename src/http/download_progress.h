#pragma once

#include <cstdint>
#include <string>

namespace quorvex::http {

// The progress text of a download: "Get file: NAME", then bytes done and total in megabytes above a million bytes and
// in kilobytes otherwise (of 1000, grouped by commas, whatever the locale), then the share done in per cent.
std::wstring DownloadProgressText(const std::wstring& fileName, std::uint64_t done, std::uint64_t total);

} // namespace quorvex::http
