#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace quorvex::support {

// Classes and cases of ASCII characters, char or wchar_t, whatever the locale; all others belong to no class and keep
// their case.
template <typename Char>
constexpr bool IsDigit(Char c) {
    return c >= Char{'0'} && c <= Char{'9'};
}

template <typename Char>
constexpr bool IsCapital(Char c) {
    return c >= Char{'A'} && c <= Char{'Z'};
}

template <typename Char>
constexpr bool IsLetter(Char c) {
    return IsCapital(c) || (c >= Char{'a'} && c <= Char{'z'});
}

template <typename Char>
constexpr Char ToLower(Char c) {
    return IsCapital(c) ? static_cast<Char>(c + ('a' - 'A')) : c;
}

template <typename Char>
constexpr Char ToUpper(Char c) {
    return c >= Char{'a'} && c <= Char{'z'} ? static_cast<Char>(c - ('a' - 'A')) : c;
}

inline std::string LowerCase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) c = ToLower(c);
    return lower;
}

inline bool EqualButCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return ToLower(x) == ToLower(y); });
}

inline bool AllDigits(std::string_view text) {
    return std::all_of(text.begin(), text.end(), IsDigit<char>);
}

// Adds a byte as "%41".
template <typename Text>
void AppendPercentEscaped(Text& text, unsigned char byte) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    for (const char c : {'%', kDigits[byte >> 4], kDigits[byte & 0xF]})
        text.push_back(static_cast<typename Text::value_type>(c));
}

} // namespace quorvex::support
