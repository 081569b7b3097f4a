#include "support/characters.h"
#include "support/text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <utility>

namespace quorvex::support {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

void Append(std::wstring& text, char32_t c) {
    if constexpr (sizeof(wchar_t) == 2) {
        if (c > 0xFFFF) {
            text.push_back(static_cast<wchar_t>(0xD800 + ((c - 0x10000) >> 10)));
            text.push_back(static_cast<wchar_t>(0xDC00 + ((c - 0x10000) & 0x3FF)));
            return;
        }
    }
    text.push_back(static_cast<wchar_t>(c));
}

// Reads one character at bytes[at]; moves at behind it. kReplacement and one byte further when it is damaged.
char32_t NextUtf8(std::string_view bytes, std::size_t& at, bool& valid) {
    const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(bytes[i]); };
    const std::uint8_t lead = byte(at);
    const std::size_t length = lead < 0x80                   ? 1
                               : lead >= 0xC2 && lead < 0xE0 ? 2
                               : lead >= 0xE0 && lead < 0xF0 ? 3
                               : lead >= 0xF0 && lead < 0xF5 ? 4
                                                             : 0;
    if (length == 1) return byte(at++);
    if (length != 0 && length <= bytes.size() - at) {
        char32_t c = lead & (0xFFU >> (length + 1));
        std::size_t i = 1;
        while (i < length && (byte(at + i) & 0xC0) == 0x80) c = (c << 6) | (byte(at + i++) & 0x3F);
        const bool shortest = length == 2 || (length == 3 ? c >= 0x800 : c >= 0x10000);
        if (i == length && shortest && c <= 0x10FFFF && !(c >= 0xD800 && c < 0xE000)) {
            at += length;
            return c;
        }
    }
    valid = false;
    ++at;
    return kReplacement;
}

std::string CharsetOf(std::string_view contentType) {
    const std::string lower = LowerCase(contentType);
    const std::size_t at = lower.find("charset=");
    if (at == std::string::npos) return {};
    std::string name = lower.substr(at + 8);
    if (!name.empty() && (name.front() == '"' || name.front() == '\'')) name.erase(0, 1);
    return name.substr(0, name.find_first_of("\"'; \t,"));
}

// windows-1252, 0x80 to 0x9F; the five holes map to themselves as Windows does it.
constexpr std::array<wchar_t, 32> kWindows1252 = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                  0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                                  0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                  0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

// Servers that say iso-8859-1 send windows-1252, and browsers read it so.
bool IsWesternCharset(std::string_view charset) {
    constexpr std::array<std::string_view, 8> kNames = {"iso-8859-1", "iso8859-1", "latin1",       "latin-1",
                                                        "us-ascii",   "ascii",     "windows-1252", "cp1252"};
    return std::find(kNames.begin(), kNames.end(), charset) != kNames.end();
}

// 1250 to 1258 for the names "windows-125x" and "cp125x", else 0.
int WindowsCodePage(std::string_view charset) {
    for (const std::string_view prefix : {"windows-125", "cp125", "x-cp125"}) {
        if (charset.size() != prefix.size() + 1 || !charset.starts_with(prefix)) continue;
        const char last = charset.back();
        return last >= '0' && last <= '8' ? 1250 + (last - '0') : 0;
    }
    return 0;
}

// iso-8859-15 differs from iso-8859-1 in eight places.
std::wstring FromLatin9(std::string_view bytes) {
    constexpr std::array<std::pair<wchar_t, wchar_t>, 8> kChanged = {{{0xA4, 0x20AC},
                                                                      {0xA6, 0x0160},
                                                                      {0xA8, 0x0161},
                                                                      {0xB4, 0x017D},
                                                                      {0xB8, 0x017E},
                                                                      {0xBC, 0x0152},
                                                                      {0xBD, 0x0153},
                                                                      {0xBE, 0x0178}}};
    std::wstring text = FromLatin1(bytes);
    for (const auto& [from, to] : kChanged) std::replace(text.begin(), text.end(), from, to);
    return text;
}

// A mark at the beginning decides the order of the bytes; without one they are as the name says, little-endian if it
// says nothing. A lost half of a pair becomes the replacement character, an odd byte at the end is dropped.
std::wstring FromUtf16(std::string_view bytes, bool bigEndian) {
    const auto unit = [&](std::size_t i) {
        const unsigned first = static_cast<std::uint8_t>(bytes[2 * i]);
        const unsigned second = static_cast<std::uint8_t>(bytes[2 * i + 1]);
        return static_cast<char32_t>(bigEndian ? first << 8U | second : second << 8U | first);
    };
    const std::size_t units = bytes.size() / 2;
    if (units > 0 && unit(0) == 0xFFFE) bigEndian = !bigEndian;
    std::wstring text;
    for (std::size_t i = 0; i < units; ++i) {
        char32_t c = unit(i);
        if (c >= 0xD800 && c < 0xDC00 && i + 1 < units && (unit(i + 1) & 0xFC00) == 0xDC00) {
            c = 0x10000 + ((c - 0xD800) << 10) + (unit(++i) - 0xDC00);
        } else if (c >= 0xD800 && c < 0xE000) {
            c = kReplacement;
        }
        Append(text, c);
    }
    return text;
}

std::wstring WithoutByteOrderMark(std::wstring text) {
    if (!text.empty() && text.front() == 0xFEFF) text.erase(0, 1);
    return text;
}

} // namespace

std::wstring FromUtf8(std::string_view bytes) {
    std::wstring text;
    text.reserve(bytes.size());
    bool valid = true;
    for (std::size_t at = 0; at < bytes.size();) Append(text, NextUtf8(bytes, at, valid));
    return text;
}

bool IsValidUtf8(std::string_view bytes) {
    bool valid = true;
    for (std::size_t at = 0; at < bytes.size() && valid;) NextUtf8(bytes, at, valid);
    return valid;
}

std::string ToUtf8(std::wstring_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t c = static_cast<char32_t>(text[i]);
        if constexpr (sizeof(wchar_t) == 2) c &= 0xFFFF;
        const bool high = c >= 0xD800 && c < 0xDC00;
        if (high && i + 1 < text.size() && (static_cast<char32_t>(text[i + 1]) & 0xFC00) == 0xDC00) {
            c = 0x10000 + ((c - 0xD800) << 10) + ((static_cast<char32_t>(text[++i]) & 0xFFFF) - 0xDC00);
        } else if ((c >= 0xD800 && c < 0xE000) || c > 0x10FFFF) {
            c = kReplacement;
        }
        if (c < 0x80) {
            bytes.push_back(static_cast<char>(c));
            continue;
        }
        const int more = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
        const unsigned lead = more == 1 ? 0xC0 : more == 2 ? 0xE0 : 0xF0;
        bytes.push_back(static_cast<char>(lead | (c >> (6 * more))));
        for (int k = more - 1; k >= 0; --k) bytes.push_back(static_cast<char>(0x80 | ((c >> (6 * k)) & 0x3F)));
    }
    return bytes;
}

std::wstring FromLatin1(std::string_view bytes) {
    std::wstring text(bytes.size(), L'\0');
    std::transform(bytes.begin(), bytes.end(), text.begin(),
                   [](char c) { return static_cast<wchar_t>(static_cast<std::uint8_t>(c)); });
    return text;
}

std::wstring FromWindows1252(std::string_view bytes) {
    std::wstring text = FromLatin1(bytes);
    for (wchar_t& c : text) {
        if (c >= 0x80 && c < 0xA0) c = kWindows1252[static_cast<std::size_t>(c - 0x80)];
    }
    return text;
}

std::wstring DecodeReply(std::string_view body, std::string_view contentType) {
    const std::string charset = CharsetOf(contentType);
    if (charset == "utf-8" || charset == "utf8") return WithoutByteOrderMark(FromUtf8(body));
    if (charset.starts_with("utf-16") || charset.starts_with("utf16")) {
        return WithoutByteOrderMark(FromUtf16(body, charset.ends_with("be")));
    }
    if (IsWesternCharset(charset)) return FromWindows1252(body);
    if (charset == "iso-8859-15" || charset == "latin9" || charset == "latin-9") return FromLatin9(body);
    if (const int codePage = WindowsCodePage(charset); codePage != 0) return FromCodePage(codePage, body);
    const bool ascii =
        std::all_of(body.begin(), body.end(), [](char c) { return static_cast<std::uint8_t>(c) < 0x80; });
    if (ascii) return FromLatin1(body);
    if (charset.empty() && IsValidUtf8(body)) return WithoutByteOrderMark(FromUtf8(body));
    return FromAnsi(body);
}

} // namespace quorvex::support
