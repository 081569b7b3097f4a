#include "object/tag_reader.h"

#include <gtest/gtest.h>

#include <array>

namespace quorvex::object {
namespace {

TEST(TagReader, WalksRepeatedElements) {
    std::wstring html = L"<line1>1</line1>\r\n<line1>2</line1>";
    const auto next = [&] { return GetBetweenTags(L"<line1>", html, L"</line1>", true, L"none"); };
    EXPECT_EQ(next(), L"1");
    EXPECT_EQ(html, L"\r\n<line1>2</line1>");
    EXPECT_EQ(next(), L"2");
    EXPECT_EQ(html, L"");
    EXPECT_EQ(next(), L"none");
    EXPECT_EQ(html, L"");
}

TEST(TagReader, ComparesExactlyAndUnescapesNothing) {
    std::wstring html = L"<line1 x=\"1\">no</line1><line1> a &amp; b </line1><empty></empty><b>";
    EXPECT_EQ(GetBetweenTags(L"<LINE1>", html, L"</LINE1>", true, L"default"), L"default");
    EXPECT_EQ(html.substr(0, 8), L"<line1 x") << "not found: untouched";
    EXPECT_EQ(ReadElement(html, L"line1"), L" a &amp; b ");
    EXPECT_EQ(ReadElement(html, L"nothing"), L"");
    EXPECT_EQ(ReadBetweenTags(html, L"<empty>", L"</empty>", L"default"), L"default");
    EXPECT_EQ(ReadBetweenTags(html, L"<empty>", L"</empty>"), L"");
    EXPECT_EQ(ReadBetweenTags(L"ab<c>rest", L"", L"<c>"), L"ab") << "an empty start matches at the front";
    EXPECT_EQ(ReadBetweenTags(L"", L"", L"<c>", L"default"), L"default");
    EXPECT_EQ(ReadBetweenTags(L"</c><c>x</c>", L"<c>", L"</c>"), L"x") << "an end before the start does not count";
}

TEST(TagReader, OnePassFindsWhatAScanForEachNameFinds) {
    constexpr std::array<std::wstring_view, 3> kNames = {L"a", L"ab", L"line1"};
    for (const wchar_t* const text :
         {L"", L"<", L"<a", L"<a>", L"<a>1</a><a>2</a>", L"<ab><a>x</ab></a>", L"<<a>y</a>", L"<a><</a>z</a>",
          L"<a>1</ab></a>", L"<a >no</a><ab>1", L"</a><a></a><line1>&amp;</line1>", L"<line1>\r\n</LINE1></line1"}) {
        std::array<std::wstring_view, 3> values;
        FindElements(text, kNames, values);
        for (std::size_t i = 0; i < kNames.size(); ++i) EXPECT_EQ(values[i], ReadElement(text, kNames[i])) << text;
    }
}

TEST(TagReader, AMissingEndGivesTheRestAndCutsOneCharacterShort) {
    std::wstring html = L"xx<a>value that goes on";
    EXPECT_EQ(GetBetweenTags(L"<a>", html, L"</a>", true), L"value that goes on");
    // 2 before the tag + 3 of the tag - 1 + 4 of the end tag
    EXPECT_EQ(html, L"ue that goes on");
    html = L"<a>";
    EXPECT_EQ(GetBetweenTags(L"<a>", html, L"</a>", true, L"d"), L"d");
    EXPECT_EQ(html, L"") << "never cut beyond the end";
    html = L"<a>v";
    EXPECT_EQ(GetBetweenTags(L"<a>", html, L"#", true), L"v");
    EXPECT_EQ(html, L"v") << "3 - 1 + 1";
}

TEST(TagReader, ReadsElementsByName) {
    const std::wstring longName(100, L'n');
    EXPECT_EQ(ReadElement(L"<" + longName + L">x</" + longName + L">", longName), L"x");
    EXPECT_EQ(ReadElement(L"<ab>1</a><a>2</ab></a>", L"a"), L"2</ab>");
    EXPECT_EQ(ReadElement(L"<a>the rest", L"a"), L"the rest");
    EXPECT_EQ(ReadElement(L"</a><a>", L"a"), L"");
    EXPECT_EQ(ReadElement(L"<>x</>", L""), L"x");
}

} // namespace
} // namespace quorvex::object
