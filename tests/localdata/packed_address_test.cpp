#include "localdata/packed_address.h"

#include "support_code/tsv.h"

#include <gtest/gtest.h>

#include <map>

namespace quorvex::localdata {
namespace {

using testing::DataFolder;
using testing::ReadTsv;
using testing::TsvRow;

std::map<std::wstring, std::wstring> PlainRows(const wchar_t* file) {
    std::map<std::wstring, std::wstring> rows;
    for (const TsvRow& row : ReadTsv(DataFolder(L"sample\\truth\\") + file)) {
        rows[row[0]] = row[2] == L"\\N" ? std::wstring() : row[2];
    }
    return rows;
}

// Every line and every record of the sample folder, special cases included; and no line more than there are.
void CheckFullFile(const wchar_t* rowsFile, const wchar_t* truthFile) {
    const auto rows = PlainRows(rowsFile);
    std::map<std::wstring, std::size_t> lines;
    for (const TsvRow& expected : ReadTsv(DataFolder(L"sample\\truth\\") + truthFile)) {
        SCOPED_TRACE(support::ToUtf8(expected[0] + L" " + expected[1]));
        ASSERT_EQ(expected.size(), 3 + kRecordFields);
        const PackedAddress packed = SplitPackedAddress(rows.at(expected[0]));
        const std::size_t number = ++lines[expected[0]];
        ASSERT_EQ(std::to_wstring(number), expected[1]);
        ASSERT_LE(number, packed.premises.size());
        const std::wstring& premise = packed.premises[number - 1];
        EXPECT_EQ(DisplayLine(premise, StreetPart(packed.common)), expected[2]);
        const RecordFields record = AddressRecord(premise, packed.common);
        EXPECT_EQ(TsvRow(record.begin(), record.end()), TsvRow(expected.begin() + 3, expected.end()));
    }
    for (const auto& [key, plain] : rows) {
        EXPECT_EQ(SplitPackedAddress(plain).premises.size(), lines[key]) << support::ToUtf8(key);
    }
}

TEST(PackedAddress, LinesAndRecordsOfTheSampleFolder) {
    CheckFullFile(L"rows_full.tsv", L"full.tsv");
}

TEST(PackedAddress, LinesAndRecordsAfterUpdates) {
    CheckFullFile(L"updated_rows_full_20260228.tsv", L"updated_full_20260228.tsv");
    CheckFullFile(L"updated_rows_full_20260331.tsv", L"updated_full_20260331.tsv");
}

TEST(PackedAddress, StreetsOfTheSampleFolder) {
    const auto rows = PlainRows(L"rows_street.tsv");
    for (const TsvRow& expected : ReadTsv(DataFolder(L"sample\\truth\\street.tsv"))) {
        const ThoroughfareFields record = ThoroughfareRecord(rows.at(expected[0]));
        EXPECT_EQ(TsvRow(record.begin(), record.end()), TsvRow(expected.begin() + 1, expected.end()))
            << support::ToUtf8(expected[0]);
    }
}

TEST(PackedAddress, OddBraces) {
    EXPECT_EQ(SplitPackedAddress(L"{|1!|2!HIGH STREET").common, L"{|1!|2!HIGH STREET");
    EXPECT_TRUE(SplitPackedAddress(L"{|1!|2!HIGH STREET").premises.empty());
    EXPECT_EQ(SplitPackedAddress(L"{|1!|2}ROAD").premises, (std::vector<std::wstring>{L"|1", L"|2"}));
    EXPECT_EQ(SplitPackedAddress(L"}{").common, L"{");
    EXPECT_EQ(SplitPackedAddress(L"{!!}").premises.size(), 2U);
}

TEST(PackedAddress, MorePremiseFieldsThanARecordHolds) {
    const RecordFields record = AddressRecord(L"1|2|3|4|5|6|7|8|9|10|11|12|13|14|15", L"ROAD|TOWN");
    EXPECT_EQ(record.front(), L"1");
    EXPECT_EQ(record.back(), L"14");
}

} // namespace
} // namespace quorvex::localdata
