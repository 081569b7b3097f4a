#include "support/error.h"
#include "support/text.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

namespace quorvex::support {
namespace {

TEST(Text, TrimsBlanksOnly) {
    EXPECT_EQ(Trim(L"  a b  "), L"a b");
    EXPECT_EQ(Trim(L"\t a\t"), L"\t a\t");
    EXPECT_EQ(Trim(L"   "), L"");
    EXPECT_EQ(TrimRightControl(L" a \t\r\n\x1f"), L" a");
    EXPECT_EQ(RemoveControlChars(L"a\tb \x1f\x20\x7f"), L"ab  \x7f");
}

TEST(Text, ReplacesAndCountsWithoutOverlap) {
    EXPECT_EQ(ReplaceAll(L"&amp;amp;&amp;", L"&amp;", L"&"), L"&amp;&");
    EXPECT_EQ(ReplaceAll(L"aaaa", L"aa", L"a"), L"aa");
    EXPECT_EQ(ReplaceAll(L"abc", L"", L"x"), L"abc");
    EXPECT_EQ(CountOccurrences(L"http://a|http://b|http://c", L"http"), 3U);
    EXPECT_EQ(CountOccurrences(L"aaaaa", L"aa"), 2U);
    EXPECT_EQ(CountOccurrences(L"aaaaa", L""), 0U);
}

TEST(Text, NextFieldWalksAList) {
    std::wstring list = L"one||three";
    EXPECT_EQ(NextField(list, L"|", false), L"one");
    EXPECT_EQ(list, L"one||three");
    EXPECT_EQ(NextField(list, L"|", true), L"one");
    EXPECT_EQ(NextField(list, L"|", true), L"");
    EXPECT_EQ(list, L"three");
    EXPECT_EQ(NextField(list, L"|", true), L"three");
    EXPECT_EQ(list, L"");
    EXPECT_EQ(NextField(list, L"|", true), L"");
}

TEST(Text, CleansAMessageToOneLine) {
    EXPECT_EQ(CleanLogText(L"first\r\nsecond\r\n"), L"first, second");
    EXPECT_EQ(CleanLogText(L"word\r"), L"word");
    EXPECT_EQ(CleanLogText(L"  a\tb\nc  "), L"a b c");
    EXPECT_EQ(CleanLogText(L"word,"), L"word");
    EXPECT_EQ(CleanLogText(L"word,,"), L"word,") << "one comma only";
    EXPECT_EQ(CleanLogText(L"\r\nword"), L", word");
    EXPECT_EQ(CleanLogText(L"word,\r\n"), L"word");
    EXPECT_EQ(CleanLogText(L" \t\r\n"), L"");
    EXPECT_EQ(CleanLogText(L","), L"");
}

TEST(Text, UpperCaseKeepsTheLengthAndIgnoresTheLocale) {
    std::setlocale(LC_ALL, "tr_TR.UTF-8");
    EXPECT_EQ(UpperCase(L"pe13 2ql i\u00e9\u00e7\u0159"), L"PE13 2QL I\u00c9\u00c7\u0158");
    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(UpperCase(L"stra\u00dfe"), L"STRA\u00dfE");
    EXPECT_EQ(UpperCase(L""), L"");
    EXPECT_EQ(UpperCase(std::wstring(L"a\0b", 3)), std::wstring(L"A\0B", 3));
}

// --- Numbers ---------------------------------------------------------------------------------------------------------

TEST(Numbers, AreWrittenPlainAndReadBack) {
    EXPECT_EQ(NumberText(0), L"0");
    EXPECT_EQ(NumberText(-0.00147), L"-0.00147");
    EXPECT_EQ(NumberText(0.0001), L"0.0001");
    EXPECT_EQ(NumberText(-0.0000012), L"-0.0000012");
    EXPECT_EQ(NumberText(100000), L"100000");
    EXPECT_EQ(NumberText(0.1 + 0.2), L"0.30000000000000004");
    EXPECT_EQ(NumberText(52.6277), L"52.6277");
    std::mt19937_64 random(20260307);
    for (int i = 0; i < 20000; ++i) {
        const std::uint64_t bits = random();
        double number = 0;
        static_assert(sizeof number == sizeof bits);
        std::memcpy(&number, &bits, sizeof number);
        if (number - number != 0) continue; // infinite or not a number
        if (number != 0 && std::abs(number) < std::numeric_limits<double>::min()) continue;
        ASSERT_EQ(ParseNumber(NumberText(number)), number);
    }
}

TEST(Numbers, AreReadWhateverTheLocale) {
    std::setlocale(LC_ALL, "de_DE.UTF-8");
    EXPECT_EQ(ParseNumber(L" 52.5 "), 52.5);
    EXPECT_EQ(NumberText(52.5), L"52.5");
    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(ParseNumber(L"+7"), 7);
    EXPECT_EQ(ParseNumber(L"-.5"), -0.5);
    EXPECT_EQ(ParseNumber(L"1e3"), 1000);
    for (const wchar_t* const text : {L"", L" ", L"abc", L"1,5", L"1 2", L"+-1", L"--1", L"inf", L"nan", L"-inf",
                                      L"0x10", L"1e999", L"1.5x", L"\u0661", L"."}) {
        EXPECT_FALSE(IsNumber(text)) << ToUtf8(text);
        EXPECT_THROW(ParseNumber(text), Error) << ToUtf8(text);
    }
    EXPECT_EQ(LeadingNumber(L"  12.5 km"), 12.5);
    EXPECT_EQ(LeadingNumber(L"km 12"), 0);
    EXPECT_EQ(LeadingNumber(L""), 0);
    EXPECT_EQ(LeadingNumber(L"00012.30"), 12.3);
}

} // namespace
} // namespace quorvex::support
