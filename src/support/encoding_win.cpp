#include "support/text.h"

#include <windows.h>

namespace quorvex::support {

std::wstring FromAnsi(std::string_view bytes) {
    return FromCodePage(CP_ACP, bytes);
}

std::wstring FromCodePage(int codePage, std::string_view bytes) {
    if (bytes.empty()) return {};
    const int size = static_cast<int>(bytes.size());
    const UINT page = static_cast<UINT>(codePage);
    const int needed = MultiByteToWideChar(page, 0, bytes.data(), size, nullptr, 0);
    if (needed <= 0) return FromWindows1252(bytes); // a code page that is not installed
    std::wstring text(static_cast<std::size_t>(needed), L'\0');
    MultiByteToWideChar(page, 0, bytes.data(), size, text.data(), needed);
    return text;
}

std::string ToAnsi(std::wstring_view text) {
    if (text.empty()) return {};
    const int size = static_cast<int>(text.size());
    const int needed = WideCharToMultiByte(CP_ACP, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    if (needed <= 0) return {};
    std::string bytes(static_cast<std::size_t>(needed), '\0');
    WideCharToMultiByte(CP_ACP, 0, text.data(), size, bytes.data(), needed, nullptr, nullptr);
    return bytes;
}

std::wstring UpperCase(std::wstring_view text) {
    std::wstring upper(text);
    if (text.empty()) return upper;
    const int size = static_cast<int>(text.size());
    // Without LCMAP_LINGUISTIC_CASING the mapping is one to one: the length stays.
    LCMapStringW(LOCALE_INVARIANT, LCMAP_UPPERCASE, text.data(), size, upper.data(), size);
    return upper;
}

} // namespace quorvex::support
