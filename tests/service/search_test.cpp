#include "fixture.h"
#include "lookups/address_list.h"
#include "service/words.h"
#include "support/text.h"
#include "testing/fake_platform.h"
#include "testing/truth.h"

#include <algorithm>
#include <map>
#include <set>

namespace quorvex::service {
namespace {

using quorvex::testing::ReadTsv;
using quorvex::testing::TsvRow;

bool HasWord(const std::wstring& text, const std::wstring& word) {
    const std::vector<std::wstring> words = Words(text);
    return std::find(words.begin(), words.end(), word) != words.end();
}

class Search : public ServiceTest {
  protected:
    using Ids = std::set<std::wstring>;

    Search() { Begin(); }

    // What a host sees of a search: identifiers by heading, walked with the component's own reader.
    std::map<std::wstring, Ids> Groups(const web::AdvancedCriteria& criteria) {
        quorvex::testing::FakePlatform platform;
        platform.onGetUrl = [this](const std::wstring& url) { return AsHost(url); };
        object::Quorvex object(platform, platform);
        object.SetServiceURL(support::FromUtf8(Running().Address()));
        EXPECT_TRUE(lookups::GetFullAddressToListAdv(object, criteria));
        error = object.General_errormessage;
        popMessage = object.General_Pop_Message;
        recordCount = object.RecordCount;
        std::map<std::wstring, Ids> groups;
        std::wstring heading;
        std::size_t lines = 0;
        for (;;) {
            const lookups::AdvancedLine line = lookups::GetFullAddressLineForSelectionAdv(object);
            if (line.lineType.empty()) break;
            EXPECT_FALSE(line.text.empty());
            if (line.lineType == L"h") {
                heading = line.text;
                EXPECT_FALSE(groups.contains(heading)) << "a heading comes once";
            } else {
                EXPECT_TRUE(groups[heading].insert(line.id).second);
                ++lines;
            }
        }
        EXPECT_EQ(static_cast<std::size_t>(recordCount), lines);
        return groups;
    }

    Ids Found(const web::AdvancedCriteria& criteria) {
        Ids all;
        for (const auto& [heading, ids] : Groups(criteria)) all.insert(ids.begin(), ids.end());
        return all;
    }

    // From the truth: the premises of all rows of the ordinary layouts (14 fields, nothing covered or dropped).
    template <typename Meets>
    Ids Expected(Meets meets) {
        Ids ids;
        for (const TsvRow& row : ReadTsv(quorvex::testing::DataFolder(L"sample\\truth\\full.tsv"))) {
            if (ordinary_.contains(row[0]) && meets(row))
                ids.insert(support::UpperCase(row[0]) + L"_" + row[1] + L"_F");
        }
        EXPECT_FALSE(ids.empty());
        return ids;
    }

    // Only what lies in rows of the ordinary layouts.
    Ids Ordinary(const Ids& ids) const {
        Ids kept;
        std::copy_if(ids.begin(), ids.end(), std::inserter(kept, kept.end()),
                     [this](const std::wstring& id) { return ordinary_.contains(id.substr(0, id.find(L'_'))); });
        return kept;
    }

    bool IsOrdinary(const std::wstring& key) const { return ordinary_.contains(key); }

    std::wstring error;
    std::wstring popMessage;
    std::int32_t recordCount = 0;

  private:
    const std::set<std::wstring> ordinary_ = [] {
        std::set<std::wstring> keys;
        for (const TsvRow& row : ReadTsv(quorvex::testing::DataFolder(L"sample\\truth\\postcodes.tsv"))) {
            if (row[6] == L"shape-a") keys.insert(row[1]);
        }
        return keys;
    }();
};

// Columns of the truth.
constexpr std::size_t kOrganisation = 3;
constexpr std::size_t kBuilding = 4;
constexpr std::size_t kStreet = 5;
constexpr std::size_t kLocality = 6;
constexpr std::size_t kTown = 7;
constexpr std::size_t kCounty = 8;

TEST_F(Search, EachCriterionAloneAndTogether) {
    using Meets = bool (*)(const TsvRow& row);
    const std::pair<web::AdvancedCriteria, Meets> cases[] = {
        {{L"alder", L"", L"", L"", L"", L""}, [](const TsvRow& row) { return HasWord(row[kOrganisation], L"ALDER"); }},
        {{L"", L"37", L"", L"", L"", L""}, [](const TsvRow& row) { return HasWord(row[kBuilding], L"37"); }},
        {{L"", L"", L"kiln", L"", L"", L""},
         [](const TsvRow& row) { return HasWord(row[kStreet] + L" " + row[kLocality], L"KILN"); }},
        {{L"", L"12", L"", L"Liverpool", L"", L""},
         [](const TsvRow& row) { return HasWord(row[kBuilding], L"12") && row[kTown] == L"LIVERPOOL"; }},
        {{L"", L"unit", L"", L"", L"cambridgeshire", L""},
         [](const TsvRow& row) { return HasWord(row[kBuilding], L"UNIT") && row[kCounty] == L"CAMBRIDGESHIRE"; }},
        {{L"", L"barn", L"", L"", L"", L"b"},
         [](const TsvRow& row) {
             return HasWord(row[kBuilding], L"BARN") && row[0].starts_with(L"B") && row[0][1] >= L'0' &&
                    row[0][1] <= L'9';
         }},
        {{L"services gorse", L"", L"", L"", L"", L""},
         [](const TsvRow& row) {
             return HasWord(row[kOrganisation], L"GORSE") && HasWord(row[kOrganisation], L"SERVICES");
         }},
        {{L"gor*", L"", L"", L"", L"", L""},
         [](const TsvRow& row) { return (L" " + row[kOrganisation]).find(L" GOR") != std::wstring::npos; }},
    };
    for (const auto& [criteria, meets] : cases) EXPECT_EQ(Ordinary(Found(criteria)), Expected(meets));
}

TEST_F(Search, WildcardsAndAbbreviations) {
    EXPECT_TRUE(Found({L"gor", L"", L"", L"", L"", L""}).empty()) << "whole words without a wildcard";
    EXPECT_EQ(error, L"No address meets these criteria");
    const Ids roads = Found({L"", L"12", L"road", L"", L"", L""});
    EXPECT_FALSE(roads.empty());
    EXPECT_EQ(Found({L"", L"12", L"Rd", L"", L"", L""}), roads);
    EXPECT_EQ(Found({L"", L"", L"moss cl", L"", L"", L""}), Found({L"", L"", L"moss close", L"", L"", L""}));
    EXPECT_EQ(Found({L"", L"12", L"", L"liver*", L"", L""}), Found({L"", L"12", L"", L"LIVERPOOL", L"", L""}));
    EXPECT_EQ(Found({L"", L"12", L"", L"", L"", L"L*"}).size(),
              Found({L"", L"12", L"", L"", L"", L"L"}).size() + Found({L"", L"12", L"", L"", L"", L"LL"}).size());
}

TEST_F(Search, GroupsAndSpecialCharacters) {
    EXPECT_EQ(Groups({L"holly & sons", L"", L"", L"", L"", L"DN55"}),
              (std::map<std::wstring, Ids>{{L"ROSE & CROWN YARD, DONCASTER", {L"DN559AA_1_F"}}}));
    for (const wchar_t* street : {L"st john's rd", L"JOHNS", L"king'*"}) {
        EXPECT_TRUE(Found({L"", L"", street, L"", L"", L"AB10"}).contains(L"AB109AA_1_F")) << support::ToUtf8(street);
    }
    const auto groups = Groups({L"", L"", L"row", L"Doncaster", L"", L""});
    EXPECT_GT(groups.size(), 2U);
    for (const auto& [heading, ids] : groups)
        EXPECT_TRUE(heading.ends_with(L", DONCASTER")) << support::ToUtf8(heading);
}

TEST_F(Search, LongResultsAreCutAndSaySo) {
    EXPECT_LT(Found({L"", L"12", L"", L"", L"", L""}).size(), static_cast<std::size_t>(AddressIndex::kMostLines));
    EXPECT_EQ(popMessage, L"");
    EXPECT_EQ(Found({L"", L"1* ", L"", L"", L"", L""}).size(), static_cast<std::size_t>(AddressIndex::kMostLines));
    EXPECT_NE(popMessage, L"");
}

TEST_F(Search, ListsHoldThePlacesOfTheData) {
    std::set<std::wstring> areas;
    std::set<std::wstring> towns;
    std::set<std::wstring> counties;
    for (const TsvRow& row : ReadTsv(quorvex::testing::DataFolder(L"sample\\truth\\full.tsv"))) {
        const std::wstring key = support::UpperCase(row[0]);
        areas.insert(key.substr(0, key.find_first_of(L"0123456789")));
        if (!IsOrdinary(row[0])) continue;
        towns.insert(row[kTown]);
        counties.insert(row[kCounty]);
    }
    using Place = std::wstring web::AdvancedCriteria::*;
    const std::tuple<const wchar_t*, std::set<std::wstring>, Place> lists[] = {
        {L"A", areas, &web::AdvancedCriteria::postcodeArea},
        {L"T", towns, &web::AdvancedCriteria::town},
        {L"O", counties, &web::AdvancedCriteria::county}};
    for (const auto& [list, values, place] : lists) {
        const auto listed = quorvex::testing::Items(ElementOf("GetLookups.aspx?datatype=1", list), L",");
        EXPECT_TRUE(std::is_sorted(listed.begin(), listed.end()));
        EXPECT_FALSE(values.empty());
        EXPECT_TRUE(std::includes(listed.begin(), listed.end(), values.begin(), values.end())) << support::ToUtf8(list);
        for (const std::wstring& value : listed) { // what is on offer finds something
            web::AdvancedCriteria criteria;
            criteria.*place = value;
            EXPECT_FALSE(Found(criteria).empty()) << support::ToUtf8(value);
        }
    }
    EXPECT_EQ(ElementOf("GetLookups.aspx?datatype=1", L"A").find_first_of(L"0123456789"), std::wstring::npos);
}

TEST(Words, OfTextsAndCriteria) {
    using W = std::vector<std::wstring>;
    EXPECT_EQ(Words(L"Farmer's  35-37, (UK) A/B & \u0174yn -"),
              (W{L"FARMERS", L"35", L"37", L"UK", L"A", L"B", L"\u0174YN"}));
    EXPECT_EQ(StreetWords(L"Av. Rd Ave cl"), (W{L"AVENUE", L"ROAD", L"AVENUE", L"CLOSE"}));
    const Criterion criterion(L"acme ltd* & 12-*");
    EXPECT_TRUE(criterion.MetBy(Words(L"12A LTDX ACME")));
    for (const wchar_t* other : {L"12A LTDX ACMES", L"1 LTDX ACME", L"12A XLTD ACME"})
        EXPECT_FALSE(criterion.MetBy(Words(other))) << support::ToUtf8(other);
    EXPECT_FALSE(Criterion(L" * && ").Given());
}

} // namespace
} // namespace quorvex::service
