#include "service/accounts/accounts.h"
#include "testing/temp_folder.h"

#include <gtest/gtest.h>

#include <future>

namespace quorvex::service::accounts {
namespace {

class StoreTest : public ::testing::Test {
  protected:
    StoreTest() { account_ = store_.Add(L"secret", {"one", 3, {}, ""}, "node"); }

    std::vector<Charged> Take(const std::vector<std::string>& requests) {
        std::vector<Charge> charges;
        for (const std::string& request : requests) charges.push_back({account_, request, "page"});
        return store_.Take(charges, "node");
    }
    std::int64_t LedgerSum() {
        std::int64_t sum = 0;
        for (const LedgerEntry& entry : store_.Ledger("one", 100)) sum += entry.change;
        return sum;
    }

    quorvex::testing::TempFolder folder_;
    std::string name_ = (folder_.Path() / "accounts.db").string();
    AccountStore store_{name_};
    std::int64_t account_ = 0;
};

TEST_F(StoreTest, CreditsAreTakenOnceAndNeverBelowNothing) {
    const auto first = Take({"a", "b", "a"}); // the third is the first one tried again
    EXPECT_TRUE(first[0].taken && first[1].taken && first[2].taken);
    EXPECT_EQ(store_.Find(L" Secret ")->credits, 1);
    EXPECT_TRUE(Take({"a"})[0].taken);
    const auto more = Take({"c", "d", "e"}); // together they are too many: one of them is made
    EXPECT_EQ(more[0].taken + more[1].taken + more[2].taken, 1);
    EXPECT_EQ(store_.Find(L"SECRET")->credits, 0);
    EXPECT_EQ(LedgerSum(), 0);
    EXPECT_TRUE(store_.AddCredits("one", 5, "node"));
    EXPECT_TRUE(store_.SetDisabled("one", true));
    EXPECT_FALSE(Take({"f"})[0].taken);
    EXPECT_EQ(LedgerSum(), 5);
    EXPECT_FALSE(store_.AddCredits("two", 5, "node"));
    store_.Compact(NowMs() + 1000, "node");
    EXPECT_EQ(LedgerSum(), 5);
    EXPECT_EQ(store_.Ledger("one", 100).size(), 1U);
}

TEST_F(StoreTest, MovesWithItsKeysIntoAnEmptyDatabaseOnly) {
    Take({"a"});
    AccountStore target((folder_.Path() / "other.db").string());
    EXPECT_EQ(store_.CopyTo(target), (std::pair<std::size_t, std::size_t>(1, 2)));
    EXPECT_EQ(target.Find(L"SECRET")->credits, 2);
    EXPECT_THROW(store_.CopyTo(target), support::Error);
    EXPECT_THROW(target.Add(L"new", {"one", {}, {}, ""}, "node"), support::Error);
}

TEST_F(StoreTest, OlderSchemasMigrateAndNewerOnesAreRefused) {
    const auto database = OpenDatabase(name_);
    database->Run("DROP TABLE nodes");
    database->Run("UPDATE settings SET value='1' WHERE name='schema'");
    EXPECT_TRUE(AccountStore(name_).Nodes(0).empty());
    database->Run("UPDATE settings SET value='99' WHERE name='schema'");
    EXPECT_THROW(AccountStore{name_}, support::Error);
}

TEST(Networks, HoldTheAddressesInThem) {
    const Networks networks("192.0.2.0/25, 2001:db8::/33 ,::1");
    for (const char* inside : {"192.0.2.127", "::ffff:192.0.2.1", "2001:db8::5", "::1"})
        EXPECT_TRUE(networks.Hold(inside)) << inside;
    for (const char* outside : {"192.0.2.128", "2001:db8:8000::", "::2", "", "x"})
        EXPECT_FALSE(networks.Hold(outside)) << outside;
    for (const char* wrong : {"192.0.2.0/33", "192.0.2", "::/129", "a/8", "192.0.2.0/x"})
        EXPECT_THROW(Networks{wrong}, support::Error) << wrong;
}

} // namespace
} // namespace quorvex::service::accounts
