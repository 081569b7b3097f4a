#include "support/text.h"

#include <clocale>
#include <cwctype>
#include <iconv.h>
#include <locale.h>

namespace quorvex::support {
namespace {

// Code pages by their names in iconv.
std::string CodePageName(int codePage) {
    return "CP" + std::to_string(codePage);
}

} // namespace

std::wstring FromAnsi(std::string_view bytes) {
    return FromWindows1252(bytes);
}

std::wstring FromCodePage(int codePage, std::string_view bytes) {
    const iconv_t converter = iconv_open("WCHAR_T", CodePageName(codePage).c_str());
    if (converter == reinterpret_cast<iconv_t>(-1)) return FromAnsi(bytes);
    std::wstring text;
    for (const char byte : bytes) {
        char in = byte;
        char* source = &in;
        std::size_t left = 1;
        wchar_t c = 0xFFFD;
        char* target = reinterpret_cast<char*>(&c);
        std::size_t room = sizeof c;
        if (iconv(converter, &source, &left, &target, &room) == static_cast<std::size_t>(-1)) c = 0xFFFD;
        text.push_back(c);
    }
    iconv_close(converter);
    return text;
}

std::string ToAnsi(std::wstring_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    std::string controls(32, '\0');
    for (std::size_t i = 0; i < controls.size(); ++i) controls[i] = static_cast<char>(0x80 + i);
    const std::wstring special = FromWindows1252(controls);
    for (const wchar_t c : text) {
        const std::size_t high = special.find(c);
        if (c < 0x80 || (c >= 0xA0 && c < 0x100)) {
            bytes.push_back(static_cast<char>(c));
        } else {
            bytes.push_back(high == std::wstring::npos ? '?' : controls[high]);
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
