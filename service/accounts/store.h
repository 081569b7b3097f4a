#pragma once

#include "service/accounts/database.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex::service::accounts {

struct Account {
    std::int64_t id = 0;
    std::string name;                    // shown in logs and lists; the key itself is not kept
    std::optional<std::int64_t> credits; // none: without limit
    bool disabled = false;
    std::optional<std::int64_t> rate; // requests per second on each node
    std::string networks;             // addresses that it may come from, "192.0.2.0/24,::1"; empty: all
};

struct Charge {
    std::int64_t account = 0;
    std::string request; // charged once, however often it is tried
    std::string what;    // the page
};

struct Charged {
    bool taken = false;
    std::optional<std::int64_t> left;
};

struct LedgerEntry {
    std::string account;
    std::int64_t change = 0;
    std::string what;
    std::string node;
    std::int64_t at = 0; // milliseconds since 1970
};

struct Node {
    std::string name, address, version, state, data;
    std::int64_t seen = 0; // milliseconds since 1970
};

struct NewAccount {
    std::string name; // empty: made from its number
    std::optional<std::int64_t> credits;
    std::optional<std::int64_t> rate;
    std::string networks;
};

// The accounts, what was spent, and the nodes, in a database. Not for several threads at a time. Everything throws
// support::Error, DatabaseLost or DatabaseBusy, and then nothing has changed, but for a DatabaseLost.
class AccountStore {
  public:
    // Opens the database and brings its tables up to date.
    explicit AccountStore(const std::string& name);

    // Key as a caller gives it; case and outer blanks do not count.
    std::optional<Account> Find(std::wstring_view key);
    // The account that exists already if there is one with this key.
    std::int64_t Add(std::wstring_view key, const NewAccount& account, const std::string& node);
    std::vector<Account> List();
    // False without an account of that name.
    bool AddCredits(const std::string& name, std::int64_t credits, const std::string& node);
    bool SetDisabled(const std::string& name, bool disabled);

    // Takes a credit for each, with its row in the ledger, in one transaction; charges that the account's credits do
    // not cover are not made. A request that was charged before counts as taken and costs nothing more.
    std::vector<Charged> Take(const std::vector<Charge>& charges, const std::string& node);

    // The latest entries first, of all accounts or one.
    std::vector<LedgerEntry> Ledger(const std::string& account, std::size_t most);
    // Makes one entry for each account of its entries before that time.
    void Compact(std::int64_t before, const std::string& node);

    void Announce(const Node& node);
    std::vector<Node> Nodes(std::int64_t seenAfter);

    // Copies everything into another store, which must hold no accounts. Returns the numbers of accounts and entries.
    std::pair<std::size_t, std::size_t> CopyTo(AccountStore& target);

  private:
    std::string HashOf(std::wstring_view key) const;
    void ReadSalt();
    bool TakeTogether(const std::vector<Charge>& charges, const std::string& node, std::vector<Charged>& charged);
    std::size_t CopyTable(AccountStore& target, const std::string& table, const std::vector<const char*>& columns,
                          const std::string& order);

    std::unique_ptr<Database> database_;
    std::string salt_;
};

// A new key of 20 letters and digits, 100 bits of chance.
std::string NewKey();
std::int64_t NowMs();

} // namespace quorvex::service::accounts
