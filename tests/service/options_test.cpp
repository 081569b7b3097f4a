#include "service/options.h"

#include "service/query.h"
#include "support/error.h"
#include "testing/temp_folder.h"

#include <fstream>

namespace quorvex::service {
namespace {

TEST(Options, KeysFile) {
    quorvex::testing::TempFolder folder;
    Options options;
    options.keysFile = folder.Path() / "keys.txt";
    options.credits = 2;
    std::ofstream(options.keysFile) << "# customers\r\nalpha\r\n\r\nBETA\t7 # seven\n  gamma   0\n";
    using Key = accounts::Accounts::Key;
    const std::vector<Key> keys = KeysOf(options);
    ASSERT_EQ(keys.size(), 3U);
    EXPECT_TRUE(keys[0].key == L"alpha" && keys[0].credits == 2);
    EXPECT_TRUE(keys[1].key == L"BETA" && keys[1].credits == 7);
    EXPECT_TRUE(keys[2].key == L"gamma" && keys[2].credits == 0);
    for (const char* wrong : {"A 1\nB many", "A -1"}) {
        std::ofstream(options.keysFile, std::ios::trunc) << wrong;
        EXPECT_THROW(KeysOf(options), support::Error) << wrong;
    }
}

TEST(Queries, ValuesAsHostsGiveThem) {
    const Query query("/p?COMPANY=Smith%20&%20Sons&co=2&house=1+2&street=%C2%A3%zz&town=%A3&house=9&county",
                      {"company", "house", "street", "town", "county"});
    EXPECT_EQ(query["company"], L"Smith & Sons&co=2");
    EXPECT_EQ(query["house"], L"1+2");
    EXPECT_EQ(query["street"], L"\u00A3%zz");
    EXPECT_EQ(query["town"], L"\u00A3");
    EXPECT_EQ(query["county"], L"");
    EXPECT_EQ(PathOf("/XMLService/%47et?x=/Y"), "/xmlservice/get");
}

} // namespace
} // namespace quorvex::service
