#include "quorvex/house_match.h"

#include <gtest/gtest.h>

namespace quorvex::cli {
namespace {

TEST(PostcodeKey, TakesPostcodesAsPeopleTypeThem) {
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L"PE13 4PZ", L"PE134PZ"},
        {L"pe134pz", L"PE134PZ"},
        {L" cr2 9aa ", L"CR2 9AA"},
        {L"CR29AA", L"CR2 9AA"},
        {L"m19aa", L"M1  9AA"},
        {L"M1\u00A09AA", L"M1  9AA"},
        {L"M1", L""},
        {L"ZZ99", L""},
        {L"", L""},
        {L"PE13 4P2", L""},
    };
    for (const auto& [typed, key] : cases) EXPECT_EQ(PostcodeKey(typed), key) << ::testing::PrintToString(typed);
    EXPECT_EQ(WrittenPostcode(L"M1  9AA"), L"M1 9AA");
    EXPECT_EQ(WrittenPostcode(L"PE134PZ"), L"PE13 4PZ");
}

TEST(MatchHouse, PrefersTheClosestMeaning) {
    const std::vector<std::wstring_view> premises = {L"||12",
                                                     L"||112",
                                                     L"|FLAT 12|3",
                                                     L"||ROSE COTTAGE",
                                                     L"HARE & SONS||14-16",
                                                     L"|FLAT 2|ROSE COURT",
                                                     L"|FLAT 3|ROSE COURT"};
    const std::pair<const wchar_t*, std::vector<std::size_t>> cases[] = {
        {L"12", {0}},
        {L"No. 12", {0}},
        {L"rose cottage,", {3}},
        {L"Hare & Son's", {4}},
        {L"16", {4}},
        {L"Flat 2, Rose Court", {5}},
        {L"Rose Court", {5, 6}},
        {L"12 Quarry Road", {0}},
        {L"1", {}},
        {L"Quarry Road", {0, 1, 2, 3, 4, 5, 6}},
        {L"", {0, 1, 2, 3, 4, 5, 6}},
    };
    for (const auto& [house, expected] : cases) {
        EXPECT_EQ(MatchHouse(premises, WordsOf(L"QUARRY ROAD"), HouseWords(house)), expected)
            << ::testing::PrintToString(house);
    }
}

} // namespace
} // namespace quorvex::cli
