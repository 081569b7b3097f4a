#include "lookups/criteria.h"

#include <gtest/gtest.h>

namespace quorvex::lookups {
namespace {

TEST(BuildSummary, WordsGoToAnExactOrAStartsWithList) {
    EXPECT_EQ(buildSummary(L"acme ltd*", L"Organisation", L"", L" AND "),
              L"Organisation='ACME' starts with 'LTD*'\r\n");
    EXPECT_EQ(buildSummary(L"  mill   lane ", L"Street", L"", L" AND "), L"Street='MILL','LANE'\r\n");
    EXPECT_EQ(buildSummary(L"ac* me*", L"Organisation", L"", L" AND "), L"Organisation starts with 'AC*','ME*'\r\n");
    EXPECT_EQ(buildSummary(L"x", L"Town", L"A='B'\r\n", L" IN "), L"A='B'\r\n IN Town='X'\r\n");
    EXPECT_EQ(buildSummary(L"   ", L"Town", L"A='B'\r\n", L" IN "), L"A='B'\r\n");
}

TEST(CheckCriteria, BothGroupsNeedAnEntry) {
    web::AdvancedCriteria criteria;
    EXPECT_TRUE(CheckCriteria(criteria).criteriaMissing);
    EXPECT_TRUE(CheckCriteria(criteria).placeMissing);
    criteria.house = L"12";
    EXPECT_FALSE(CheckCriteria(criteria).criteriaMissing);
    EXPECT_FALSE(CheckCriteria(criteria).Complete());
    criteria.county = L"  "; // blanks are no entry: they would search for everything
    EXPECT_TRUE(CheckCriteria(criteria).placeMissing);
    criteria.county = L"Kent";
    EXPECT_TRUE(CheckCriteria(criteria).Complete());
}

TEST(CheckCriteria, SummaryNamesTheFieldsInTheirOrder) {
    const CriteriaState state = CheckCriteria({L"Acme", L"12", L"Mill*", L"Bath", L"Avon", L"BA"});
    EXPECT_EQ(state.summary, L"Organisation='ACME'\r\n AND Building Name/No='12'\r\n AND Street/Road/Av starts with "
                             L"'MILL*'\r\n IN Town/City='BATH'\r\n IN County='AVON'\r\n IN Postcode='BA'\r\n");
}

TEST(TextFieldWarning, CountsLettersWithoutStarsAndBlanks) {
    for (const wchar_t* accepted : {L"", L"   ", L"**", L"abc", L"*abc*"}) {
        EXPECT_EQ(TextFieldWarning(kOrganisation, accepted), L"");
    }
    for (const wchar_t* tooShort : {L"ab", L"ab*", L" ab ", L"*a"}) {
        EXPECT_EQ(TextFieldWarning(kOrganisation, tooShort),
                  L"Organisation must be longer.\r\nPlease be more specific!!!");
    }
    EXPECT_EQ(TextFieldWarning(kBuilding, L"1"), L"Please enter some of Road name!!!");
    EXPECT_EQ(TextFieldWarning(kStreet, L"a"), L"Street name must be longer.\r\nPlease be more specific!!!");
    EXPECT_EQ(TextFieldWarning(kTown, L"a"), L"");
}

TEST(IsListValue, TakesWholeValuesOnly) {
    const std::wstring list = L"Bath,London,King's Lynn";
    for (const wchar_t* value : {L"", L"Bath", L"London", L"King's Lynn"}) EXPECT_TRUE(IsListValue(value, list));
    for (const wchar_t* value : {L"Lond", L"ondon", L"bath", L"Lynn"}) EXPECT_FALSE(IsListValue(value, list));
    EXPECT_FALSE(IsListValue(L"Bath", L""));
}

TEST(OtherPlaceFields, AChoiceEmptiesTheTwoOthers) {
    EXPECT_EQ(OtherPlaceFields(kTown), (std::vector<int>{kCounty, kPostcodeArea}));
    EXPECT_EQ(OtherPlaceFields(kPostcodeArea), (std::vector<int>{kTown, kCounty}));
}

} // namespace
} // namespace quorvex::lookups
