#include "jet/text.h"

#include <cstddef>

namespace jet {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kHighSurrogate = 0xD800;
constexpr char32_t kLowSurrogate = 0xDC00;
constexpr char32_t kAfterSurrogates = 0xE000;
constexpr char32_t kFirstPair = 0x10000; ///< the first character that needs two UTF-16 units
constexpr char32_t kLastCharacter = 0x10FFFF;

bool IsHigh(char32_t c) {
    return c >= kHighSurrogate && c < kLowSurrogate;
}
bool IsLow(char32_t c) {
    return c >= kLowSurrogate && c < kAfterSurrogates;
}

void AppendUtf8(std::string& out, char32_t c) {
    const auto put = [&out](char32_t byte) { out.push_back(static_cast<char>(byte)); };
    if (c < 0x80) {
        put(c);
        return;
    }
    if (c < 0x800) {
        put(0xC0 | c >> 6);
    } else {
        if (c < kFirstPair) {
            put(0xE0 | c >> 12);
        } else {
            put(0xF0 | c >> 18);
            put(0x80 | (c >> 12 & 0x3F));
        }
        put(0x80 | (c >> 6 & 0x3F));
    }
    put(0x80 | (c & 0x3F));
}

/// Bytes of the character that starts with this byte; 0 for a byte that starts none.
std::size_t LengthFrom(unsigned char first) {
    if (first < 0x80) return 1;
    if (first < 0xC2) return 0; // a continuation byte, or an overlong form
    if (first < 0xE0) return 2;
    if (first < 0xF0) return 3;
    return first < 0xF5 ? 4 : 0;
}

/// The character at the start of `text`; `length` is set to its bytes, 1 where it is malformed.
char32_t FirstCharacter(std::string_view text, std::size_t& length) {
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, kFirstPair}; // by length: shorter forms hold what is below
    length = LengthFrom(byte(0));
    if (length == 1) return byte(0);
    const std::size_t wanted = length;
    length = 1;
    if (wanted == 0 || wanted > text.size()) return kReplacement;
    char32_t c = byte(0) & (0xFFU >> (wanted + 1));
    for (std::size_t i = 1; i < wanted; ++i) {
        if ((byte(i) & 0xC0) != 0x80) return kReplacement;
        c = c << 6 | (byte(i) & 0x3F);
    }
    if (c < kLeast[wanted] || c > kLastCharacter || IsHigh(c) || IsLow(c)) return kReplacement;
    length = wanted;
    return c;
}

} // namespace

std::string ToUtf8(std::u16string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t c = text[i];
        if (IsHigh(c) && i + 1 < text.size() && IsLow(text[i + 1])) {
            c = kFirstPair + ((c - kHighSurrogate) << 10) + (text[++i] - kLowSurrogate);
        } else if (IsHigh(c) || IsLow(c)) {
            c = kReplacement;
        }
        AppendUtf8(out, c);
    }
    return out;
}

std::u16string FromUtf8(std::string_view text) {
    std::u16string out;
    out.reserve(text.size());
    for (std::size_t length = 0; !text.empty(); text.remove_prefix(length)) {
        const char32_t c = FirstCharacter(text, length);
        if (c < kFirstPair) {
            out.push_back(static_cast<char16_t>(c));
        } else {
            out.push_back(static_cast<char16_t>(kHighSurrogate + ((c - kFirstPair) >> 10)));
            out.push_back(static_cast<char16_t>(kLowSurrogate + ((c - kFirstPair) & 0x3FF)));
        }
    }
    return out;
}

} // namespace jet
