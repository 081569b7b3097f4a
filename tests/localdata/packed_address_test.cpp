#include "localdata/packed_address.h"

#include "testing/sample_data.h"
#include "testing/truth.h"

#include <gtest/gtest.h>

#include <map>

namespace quorvex::localdata {
namespace {

using testing::TsvRow;

TEST(PackedAddress, OddBracesAndTooManyFields) {
    EXPECT_EQ(SplitPackedAddress(L"{|1!|2!HIGH STREET").common, L"{|1!|2!HIGH STREET");
    EXPECT_TRUE(SplitPackedAddress(L"{|1!|2!HIGH STREET").premises.empty());
    EXPECT_EQ(SplitPackedAddress(L"{|1!|2}ROAD").premises, (std::vector<std::wstring_view>{L"|1", L"|2"}));
    EXPECT_EQ(SplitPackedAddress(L"}{").common, L"{");
    EXPECT_EQ(SplitPackedAddress(L"{!!}").premises.size(), 2U);
    const RecordFields record = AddressRecord(L"1|2|3|4|5|6|7|8|9|10|11|12|13|14|15", L"ROAD|TOWN");
    EXPECT_EQ(record.front(), L"1");
    EXPECT_EQ(record.back(), L"14");
}

} // namespace
} // namespace quorvex::localdata
