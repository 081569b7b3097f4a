#include "lookups/address_list.h"
#include "lookups/address_record.h"
#include "lookups/local_fixture.h"
#include "lookups/postzon.h"

#include <map>

namespace quorvex::lookups {
namespace {

using quorvex::testing::TsvRow;

class LocalAddressTest : public quorvex::testing::LocalTest {
  protected:
    std::vector<std::wstring> Lines(const std::wstring& search) {
        std::vector<std::wstring> lines;
        if (!GetFullAddressToList(object, search)) return {L"failed: " + object.General_errormessage};
        for (std::wstring line; !(line = GetFullAddressLineForSelection(object)).empty();) lines.push_back(line);
        return lines;
    }

    std::vector<std::wstring> Record() const {
        return {object.Address_Organisation, object.Address_Line1,    object.Address_Line2,
                object.Address_Line3,        object.Address_Town,     object.Address_County,
                object.Address_Postcode,     object.Address_Country,  object.Address_Deliverypointsuffix,
                object.Address_NoHouseHolds, object.Address_Smallorg, object.Address_Mailsort,
                object.Address_Spare};
    }
};

// The record fields of a truth row, less the one that is read and not used.
std::vector<std::wstring> Expected(const TsvRow& row) {
    std::vector<std::wstring> fields(row.begin() + 3, row.end());
    fields.erase(fields.begin() + 7);
    return fields;
}

TEST_F(LocalAddressTest, EveryLineAndRecordOfTheSample) {
    std::map<std::wstring, std::vector<TsvRow>> byKey;
    for (const TsvRow& row : Truth(L"full.tsv")) byKey[row[0]].push_back(row);
    for (const auto& [key, rows] : byKey) {
        std::vector<std::wstring> expected;
        for (const TsvRow& row : rows) {
            if (expected.size() < 101) expected.push_back(row[2]);
        }
        ASSERT_EQ(Lines(key), expected) << support::ToUtf8(key);
        EXPECT_EQ(object.RecordCount, static_cast<std::int32_t>(rows.size()));
        for (const TsvRow& row : rows) {
            const std::wstring id = key + L"_" + row[1] + L"_F";
            const bool found = GetFullAddressRecordByAddressID(object, id);
            // A record without a postcode does not count as confirmed; its fields are there all the same, but for the
            // postcode, which then comes from the PostZon element that is not there, either.
            EXPECT_EQ(found, !row[9].empty()) << support::ToUtf8(id);
            EXPECT_EQ(Record(), Expected(row)) << support::ToUtf8(id);
        }
    }
    EXPECT_GT(byKey.size(), 600U);
}

TEST_F(LocalAddressTest, PostcodesAsTheyAreTyped) {
    for (const TsvRow& row : Truth(L"postcodes.tsv")) {
        if (row[2] != L"1" || row[5] == L"0" || row[5].empty()) continue;
        ASSERT_TRUE(GetFullAddressToList(object, row[0]));
        EXPECT_EQ(std::to_wstring(object.RecordCount), row[5]) << support::ToUtf8(row[0]);
        // The identifier carries the postcode as the host gave it.
        GetFullAddressLineForSelection(object);
        EXPECT_TRUE(object.AddressData.Identifier(0).starts_with(row[0] + L"_1_F"));
    }
    EXPECT_TRUE(GetFullAddressToList(object, L" pe13 4pz "));
    EXPECT_GT(object.RecordCount, 0);
    for (const TsvRow& row : Truth(L"deleted.tsv")) {
        if (row[1].find(L"full") == std::wstring::npos) continue;
        EXPECT_TRUE(GetFullAddressToList(object, row[0]));
        EXPECT_EQ(object.RecordCount, 0) << support::ToUtf8(row[0]);
    }
}

TEST_F(LocalAddressTest, HouseFilterOnEitherSideOfTheComma) {
    std::map<std::pair<std::wstring, std::wstring>, std::vector<std::wstring>> cases;
    for (const TsvRow& row : Truth(L"filter.tsv")) {
        auto& lines = cases[{row[0], row[1]}];
        if (row[2] != L"0") lines.push_back(row[3]);
    }
    for (auto& [search, expected] : cases) {
        if (expected.size() > 101) expected.resize(101);
        EXPECT_EQ(Lines(search.first + L"," + search.second), expected);
        EXPECT_EQ(Lines(search.second + L" , " + search.first), expected);
    }
}

TEST_F(LocalAddressTest, NumbersCountKeptLinesWhileRecordsCountPremises) {
    ASSERT_EQ(Lines(L"AB1 9AA,flat").size(), 2U);
    EXPECT_EQ(object.AddressData.Identifier(1), L"AB1 9AA_2_F");
    ASSERT_TRUE(GetFullAddressRecord(object, 1));
    EXPECT_EQ(object.Address_Id, L"AB1 9AA_2_F");
    EXPECT_EQ(object.Address_Line1.find(L"FLAT"), std::wstring::npos); // the second premise, not the second flat
    EXPECT_FALSE(GetFullAddressRecord(object, 2));                     // behind the last line
    EXPECT_FALSE(GetFullAddressRecord(object, -1));
    EXPECT_FALSE(GetFullAddressRecord(object, 100));
}

// Whatever fails, nothing of the last customer stays to be taken for the answer; whatever succeeds, no old error does.
TEST_F(LocalAddressTest, AFailureLeavesNoAddressAndASuccessNoError) {
    const std::function<bool()> failures[] = {
        [&] { return GetFullAddressRecordByAddressID(object, L"NO1 1NE_1_F"); },
        [&] { return GetFullAddressRecord(object, 100); },
        [&] { return GetThoroughfareAddressRecord(object, L"NO1 1NE"); },
        [&] { return GetThoroughfareAddressRecord(object, L"X"); },
        [&] { return GetPostZonAddressRecord(object, L"north|south"); },
    };
    for (const auto& fails : failures) {
        ASSERT_TRUE(GetFullAddressRecordByAddressID(object, L"CR2 9AA_1_F"));
        EXPECT_EQ(object.General_errormessage, L"");
        EXPECT_FALSE(fails());
        EXPECT_FALSE(object.General_confirm);
        EXPECT_EQ(object.Address_Postcode + object.Address_Line1 + object.Address_Id, L"");
        object.General_errormessage = L"left by the failure";
    }
}

TEST_F(LocalAddressTest, AnAdvancedWalkOverAPostcodesListEndsAtOnce) {
    ASSERT_TRUE(GetFullAddressToList(object, L"AB1 9AA"));
    EXPECT_EQ(object.Address_Id, L"AB1 9AA_1_F") << "the first line's, as in web mode";
    EXPECT_EQ(GetFullAddressLineForSelectionAdv(object).lineType, L"");
}

TEST_F(LocalAddressTest, OneHundredAndOneLinesAreHandedOut) {
    EXPECT_EQ(Lines(L"M1 9AA").size(), 101U);
    EXPECT_EQ(object.RecordCount, 250);
    EXPECT_EQ(GetFullAddressLineForSelection(object), L"");
    EXPECT_EQ(object.AddressData.Identifier(100), L"M1 9AA_101_F");
}

TEST_F(LocalAddressTest, TestPostcodeNeedsTheFileButNotItsContents) {
    quorvex::testing::TempFolder folder;
    UseFolder(folder.Text());
    EXPECT_FALSE(GetFullAddressToList(object, L"zz99"));
    support::WriteFileBytes(folder.File(L"PAF_FULL.dat"), "no database");
    const auto lines = Lines(L"zz99");
    ASSERT_EQ(lines.size(), 14U);
    EXPECT_EQ(lines[3], L"7 Victoria Road The East Side Demo Data Wisbech");
    EXPECT_EQ(object.RecordCount, 40);
    EXPECT_EQ(object.General_credits_display_text, L"Demo data");
    ASSERT_TRUE(GetFullAddressRecord(object, 3));
    EXPECT_EQ(object.Address_Line1, L"7 Victoria Rd");
    EXPECT_EQ(object.Address_Organisation, L"Demo Data Company");
    EXPECT_FALSE(GetFullAddressToList(object, L"PE13 4PZ"));
    EXPECT_NE(object.General_errormessage.find(L"PAF_FULL.dat"), std::wstring::npos);
}

TEST_F(LocalAddressTest, IdentifiersThatFitNothing) {
    for (const wchar_t* id : {L"", L"_", L"CR2 9AA", L"CR2 9AA_0_F", L"CR2 9AA_2_F", L"CR2 9AA_1_X", L"CR2 9AA_01_F",
                              L"CR2 9AA_1_F_", L"NO1 1NE_1_F"}) {
        EXPECT_FALSE(GetFullAddressRecordByAddressID(object, id)) << support::ToUtf8(id);
    }
    EXPECT_TRUE(GetFullAddressRecordByAddressID(object, L"CR2 9AA_1_F"));
}

TEST_F(LocalAddressTest, StreetsOfTheSample) {
    int found = 0;
    for (const TsvRow& row : Truth(L"street.tsv")) {
        const bool confirmed = GetThoroughfareAddressRecord(object, row[0]);
        EXPECT_EQ(confirmed, !row[6].empty()) << support::ToUtf8(row[0]);
        const std::vector<std::wstring> expected = {
            L"", row[1], row[2], row[3], row[4], row[5], row[6], row[7], L"", L"", L"", row[9].empty() ? L"" : row[9],
            L""};
        EXPECT_EQ(Record(), expected) << support::ToUtf8(row[0]);
        found += confirmed ? 1 : 0;
    }
    EXPECT_GT(found, 600);
    EXPECT_TRUE(GetThoroughfareAddressRecord(object, L" zz99 "));
    EXPECT_EQ(object.Address_Line1, L"Victoria Rd");
    for (const wchar_t* postcode : {L"", L"PE1", L"PE13 4PZ X"}) {
        EXPECT_FALSE(GetThoroughfareAddressRecord(object, postcode));
        EXPECT_EQ(object.General_errormessage, L"Please specify Postcode");
    }
}

} // namespace
} // namespace quorvex::lookups
