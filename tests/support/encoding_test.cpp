#include "support/text.h"

#include <gtest/gtest.h>

#include <random>

namespace quorvex::support {
namespace {

const std::wstring kBad(1, wchar_t{0xFFFD});

// By the definition, apart from the code under test.
std::string Utf8Of(char32_t c) {
    std::string bytes;
    const auto add = [&bytes](char32_t byte) { bytes.push_back(static_cast<char>(byte)); };
    if (c < 0x80) {
        add(c);
        return bytes;
    }
    const int more = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
    add((c >> (6 * more)) | (more == 1 ? 0xC0U : more == 2 ? 0xE0U : 0xF0U));
    for (int i = more - 1; i >= 0; --i) add(0x80 | ((c >> (6 * i)) & 0x3F));
    return bytes;
}

TEST(Encoding, Utf8GoesBothWays) {
    const std::string bytes = "a\xC2\xA3\xE2\x82\xAC\xF0\x9F\x98\x80";
    const std::wstring text = FromUtf8(bytes);
    EXPECT_EQ(text.size(), sizeof(wchar_t) == 2 ? 5U : 4U);
    EXPECT_EQ(ToUtf8(text), bytes);
    EXPECT_TRUE(IsValidUtf8(bytes));
    // Every character, whole planes.
    for (char32_t c = 1; c < 0x110000; c += c < 0x3000 ? 1 : 37) {
        if (c >= 0xD800 && c < 0xE000) continue;
        const std::string one = Utf8Of(c);
        ASSERT_TRUE(IsValidUtf8(one)) << std::hex << static_cast<unsigned>(c);
        ASSERT_EQ(ToUtf8(FromUtf8(one)), one) << std::hex << static_cast<unsigned>(c);
    }
}

TEST(Encoding, DamagedUtf8BecomesReplacementCharacters) {
    const struct {
        const char* bytes;
        std::wstring text;
    } cases[] = {
        {"a\x80z", L"a" + kBad + L"z"},                  // continuation alone
        {"\xC2", kBad},                                  // cut off
        {"\xE2\x82", kBad + kBad},                       // cut off
        {"\xC0\xAF", kBad + kBad},                       // longer than needed
        {"\xE0\x80\xAF", kBad + kBad + kBad},            // longer than needed
        {"\xED\xA0\x80", kBad + kBad + kBad},            // half of a pair
        {"\xF4\x90\x80\x80", kBad + kBad + kBad + kBad}, // behind the last character
        {"\xFF\xC2\xA3", kBad + std::wstring(1, wchar_t{0xA3})},
    };
    for (const auto& [bytes, text] : cases) {
        EXPECT_FALSE(IsValidUtf8(bytes));
        EXPECT_EQ(FromUtf8(bytes), text);
    }
    EXPECT_EQ(ToUtf8(std::wstring(1, wchar_t{0xD800}) + L"x"), "\xEF\xBF\xBDx");
    std::mt19937 random(7);
    for (int i = 0; i < 5000; ++i) {
        std::string bytes(random() % 12, ' ');
        for (char& c : bytes) c = static_cast<char>(random());
        const std::string again = ToUtf8(FromUtf8(bytes));
        EXPECT_TRUE(IsValidUtf8(again));
        if (IsValidUtf8(bytes)) {
            EXPECT_EQ(again, bytes);
        }
    }
}

TEST(Encoding, AnsiIsTheWesternCodePageOfTheTestSystems) {
    EXPECT_EQ(FromAnsi("\xA3\x80\xE9"), L"\u00a3\u20ac\u00e9");
    EXPECT_EQ(ToAnsi(L"\u00a3\u20ac\u00e9"), "\xA3\x80\xE9");
    EXPECT_EQ(ToAnsi(L"a\u4e2d"), "a?");
    for (int byte = 1; byte < 256; ++byte) {
        const std::string one(1, static_cast<char>(byte));
        EXPECT_EQ(ToAnsi(FromAnsi(one)), one) << byte;
    }
}

TEST(Encoding, RepliesAreDecodedByTheirCharset) {
    const std::string utf8 = "caf\xC3\xA9";
    const std::string latin = "caf\xE9";
    const std::wstring cafe = L"caf\u00e9";
    EXPECT_EQ(DecodeReply(utf8, "text/xml; charset=utf-8"), cafe);
    EXPECT_EQ(DecodeReply(utf8, "text/xml; Charset=\"UTF-8\"; x=y"), cafe);
    EXPECT_EQ(DecodeReply(latin, "text/xml; charset=ISO-8859-1"), cafe);
    EXPECT_EQ(DecodeReply(utf8, "text/xml; charset=iso-8859-1"), L"caf\u00c3\u00a9") << "the charset decides";
    const struct {
        std::string body;
        const char* charset;
        const wchar_t* text;
    } named[] = {
        {"\x80 \xE9", "ISO-8859-1", L"\u20AC \u00E9"}, // as servers mean it
        {"\x80 \xE9", "windows-1252", L"\u20AC \u00E9"},
        {"\xA4\xBD\x41", "ISO-8859-15",
         L"\u20AC\u0153"
         L"A"},
        {"\xF0", "windows-1250", L"\u0111"},
        {"\xF0", "Windows-1251", L"\u0440"},
        {std::string("\xFF\xFE\xE9\0", 4), "utf-16", L"\u00E9"},
        {std::string("\xFE\xFF\0\xE9", 4), "utf-16", L"\u00E9"},
        {std::string("\xE9\0", 2), "utf-16", L"\u00E9"},
        {std::string("\0\xE9", 2), "utf-16be", L"\u00E9"},
        {std::string("A\0\x3C\xD8", 4), "utf-16le", L"A\uFFFD"},
    };
    for (const auto& [body, charset, text] : named) {
        EXPECT_EQ(DecodeReply(body, std::string("text/xml; charset=") + charset), text) << charset;
    }
    EXPECT_EQ(DecodeReply("\x80", "text/xml; charset=windows-1252"), L"\u20ac");
    EXPECT_EQ(DecodeReply(utf8, "text/xml"), cafe) << "valid UTF-8 without a charset";
    EXPECT_EQ(DecodeReply(latin, ""), cafe) << "no UTF-8: the system's code page";
    EXPECT_EQ(DecodeReply("\xEF\xBB\xBFok\xC2\xA3", ""), L"ok\u00a3") << "a byte order mark is no text";
    EXPECT_EQ(DecodeReply("", "text/xml"), L"");
}

} // namespace
} // namespace quorvex::support
