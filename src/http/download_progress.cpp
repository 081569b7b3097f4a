#include "http/download_progress.h"

#include <cmath>

namespace quorvex::http {
namespace {

constexpr std::uint64_t kKilobyte = 1000;
constexpr std::uint64_t kMegabyte = 1000000;

// "#,##0" of the quotient, halves rounded up.
std::wstring Grouped(std::uint64_t bytes, std::uint64_t unit) {
    std::wstring text = std::to_wstring(bytes / unit + (bytes % unit >= unit / 2 ? 1 : 0));
    for (std::size_t at = text.size(); at > 3; at -= 3) text.insert(at - 3, 1, L',');
    return text;
}

} // namespace

std::wstring DownloadProgressText(const std::wstring& fileName, std::uint64_t done, std::uint64_t total) {
    const bool large = total > kMegabyte;
    const std::uint64_t unit = large ? kMegabyte : kKilobyte;
    const wchar_t* const name = large ? L" Mb " : L" Kb ";
    const double share = total == 0 ? 100.0 : 100.0 * static_cast<double>(done) / static_cast<double>(total);
    return L"Get file: " + fileName + L"\r\n" + Grouped(done, unit) + name + L"of " + Grouped(total, unit) + name +
           std::to_wstring(std::lround(share)) + L"%";
}

} // namespace quorvex::http
