#include "support/text.h"

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdint>
#include <cwctype>
#include <locale.h>

namespace quorvex::support {
namespace {

// windows-1252, 0x80 to 0x9F; the five holes map to themselves as Windows does it.
constexpr std::array<wchar_t, 32> kCodePage1252 = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                   0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                                   0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                   0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

} // namespace

std::wstring FromAnsi(std::string_view bytes) {
    std::wstring text = FromLatin1(bytes);
    for (wchar_t& c : text) {
        if (c >= 0x80 && c < 0xA0) c = kCodePage1252[static_cast<std::size_t>(c - 0x80)];
    }
    return text;
}

std::string ToAnsi(std::wstring_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (const wchar_t c : text) {
        const auto high = std::find(kCodePage1252.begin(), kCodePage1252.end(), c);
        if (c < 0x80 || (c >= 0xA0 && c < 0x100)) {
            bytes.push_back(static_cast<char>(c));
        } else if (high != kCodePage1252.end()) {
            bytes.push_back(static_cast<char>(0x80 + (high - kCodePage1252.begin())));
        } else {
            bytes.push_back('?');
        }
    }
    return bytes;
}

std::wstring UpperCase(std::wstring_view text) {
    static const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    std::wstring upper(text);
    for (wchar_t& c : upper) {
        if (c >= L'a' && c <= L'z') {
            c = static_cast<wchar_t>(c - 32);
        } else if (c > 127 && unicode != nullptr) {
            c = static_cast<wchar_t>(towupper_l(static_cast<wint_t>(c), unicode));
        }
    }
    return upper;
}

} // namespace quorvex::support
