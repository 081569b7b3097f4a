#include "zip/zip_name.h"

#include "support/error.h"
#include "support/text.h"
#include "zip/zip_directory.h"

#include <algorithm>
#include <array>

namespace quorvex::zip {
namespace {

constexpr std::size_t kLongestName = 200; // room for a suffix within the 255 characters of NTFS

// A device swallows its name with any extension, and with blanks before it: "nul.dat" and "NUL .dat" are both the
// device.
bool IsReservedDevice(std::wstring_view name) {
    static constexpr std::array<std::wstring_view, 7> kDevices = {L"CON",    L"PRN",     L"AUX",   L"NUL",
                                                                  L"CONIN$", L"CONOUT$", L"CLOCK$"};
    // Windows takes the superscript digits one to three for digits here.
    static constexpr std::wstring_view kPorts = L"0123456789\u00b9\u00b2\u00b3";
    std::wstring base = support::UpperCase(name.substr(0, name.find(L'.')));
    base.erase(base.find_last_not_of(L' ') + 1);
    if (std::find(kDevices.begin(), kDevices.end(), base) != kDevices.end()) return true;
    return base.size() == 4 && (base.starts_with(L"COM") || base.starts_with(L"LPT")) &&
           kPorts.find(base[3]) != std::wstring_view::npos;
}

} // namespace

std::wstring DecodeEntryName(std::string_view bytes, bool isUtf8) {
    const bool ascii = std::all_of(bytes.begin(), bytes.end(), [](char c) { return (c & 0x80) == 0; });
    if (ascii) return std::wstring(bytes.begin(), bytes.end());
    std::wstring text = isUtf8 ? support::FromUtf8(bytes) : std::wstring();
    // Damaged UTF-8 comes out with replacement characters; two such names could then be one file.
    if (text.empty() || text.find(L'\ufffd') != std::wstring::npos) {
        throw support::Error(kErrorArchive, L"A file name in the archive cannot be read");
    }
    return text;
}

bool IsPlainFileName(std::wstring_view name) {
    if (name.empty() || name.size() > kLongestName) return false;
    if (name.back() == L'.' || name.back() == L' ' || name.front() == L' ') return false; // also "." and ".."
    const auto refused = [](wchar_t c) {
        return c < 32 || c == 127 || std::wstring_view(L"\\/:*?\"<>|").find(c) != std::wstring_view::npos;
    };
    return std::none_of(name.begin(), name.end(), refused) && !IsReservedDevice(name);
}

} // namespace quorvex::zip
