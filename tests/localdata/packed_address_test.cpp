#include "localdata/packed_address.h"

#include "support_code/sample_data.h"
#include "support_code/tsv.h"

#include <gtest/gtest.h>

#include <map>

namespace quorvex::localdata {
namespace {

using testing::TsvRow;

// Every line and every record, special cases included; and no line more than there are.
TEST(PackedAddress, LinesAndRecordsOfTheSampleAfterItsUpdates) {
    for (const std::wstring date : {L"20260228", L"20260331"}) {
        const auto rows = testing::TruthRows(L"updated_rows_full_" + date + L".tsv");
        std::map<std::wstring, std::size_t> lines;
        for (const TsvRow& expected :
             testing::ReadTsv(testing::DataFolder(L"sample\\truth\\updated_full_" + date + L".tsv"))) {
            SCOPED_TRACE(support::ToUtf8(expected[0] + L" " + expected[1]));
            ASSERT_EQ(expected.size(), 3 + kRecordFields);
            const PackedAddress packed = SplitPackedAddress(rows.at(expected[0]).at(1));
            const std::size_t number = ++lines[expected[0]];
            ASSERT_EQ(std::to_wstring(number), expected[1]);
            ASSERT_LE(number, packed.premises.size());
            const std::wstring& premise = packed.premises[number - 1];
            EXPECT_EQ(DisplayLine(premise, StreetPart(packed.common)), expected[2]);
            const RecordFields record = AddressRecord(premise, packed.common);
            EXPECT_EQ(TsvRow(record.begin(), record.end()), TsvRow(expected.begin() + 3, expected.end()));
        }
        for (const auto& [key, columns] : rows) {
            EXPECT_EQ(SplitPackedAddress(columns.at(1)).premises.size(), lines[key]) << support::ToUtf8(key);
        }
    }
}

TEST(PackedAddress, OddBracesAndTooManyFields) {
    EXPECT_EQ(SplitPackedAddress(L"{|1!|2!HIGH STREET").common, L"{|1!|2!HIGH STREET");
    EXPECT_TRUE(SplitPackedAddress(L"{|1!|2!HIGH STREET").premises.empty());
    EXPECT_EQ(SplitPackedAddress(L"{|1!|2}ROAD").premises, (std::vector<std::wstring>{L"|1", L"|2"}));
    EXPECT_EQ(SplitPackedAddress(L"}{").common, L"{");
    EXPECT_EQ(SplitPackedAddress(L"{!!}").premises.size(), 2U);
    const RecordFields record = AddressRecord(L"1|2|3|4|5|6|7|8|9|10|11|12|13|14|15", L"ROAD|TOWN");
    EXPECT_EQ(record.front(), L"1");
    EXPECT_EQ(record.back(), L"14");
}

} // namespace
} // namespace quorvex::localdata
