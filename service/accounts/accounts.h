#pragma once

#include "service/accounts/charger.h"
#include "service/accounts/networks.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

namespace quorvex::service::accounts {

// The data keys as the pages see them: who may ask, and what an answer costs. Any number of threads may ask at a time.
// Without a database everybody may ask and nothing is counted.
class Accounts {
  public:
    struct Settings {
        std::string database; // a SQLite file that does not exist yet counts as none
        std::string node = "node";
        std::chrono::milliseconds patience{10000};
    };
    explicit Accounts(Settings settings);
    ~Accounts();

    // Makes the database, if need be, and an account for each key that has none. Throws support::Error.
    struct Key {
        std::wstring key;
        std::optional<std::int64_t> credits;
    };
    void Add(const std::vector<Key>& keys);

    struct Live;
    struct Standing {
        std::wstring refusal;       // why the key may not ask; empty when it may
        bool tooMany = false;       // refused for asking too often
        bool unreachable = false;   // refused because the database cannot be reached
        std::wstring text;          // the balance for display; empty when nothing is counted
        bool low = false;           // worth offering more
        std::string name;           // the account's
        std::shared_ptr<Live> live; // null when nothing is counted
    };
    // Whether this key may ask from there. Keys that begin with "I" are used by several people and must name the user.
    Standing Check(const std::wstring& key, const std::wstring& userName, const std::string& client);
    // Takes one credit for an answer; done gets the standing after it, with a refusal if there was none to take. It may
    // be called on another thread. request: a text of its own for each request; one that was charged before costs
    // nothing more.
    void Charge(Standing standing, std::string request, std::string what, std::function<void(Standing)> done);

    // Finds a database that appeared meanwhile; to be called now and then.
    void Refresh();
    void Announce(const Node& node);
    std::vector<Node> Nodes(std::int64_t seenAfter);
    std::vector<Account> List();

    bool Counting() const;
    bool Reachable() const;
    std::uint64_t Transactions() const;
    void Stop();

  private:
    struct Known;
    std::shared_ptr<Live> Find(const std::wstring& key, bool& unreachable);
    template <typename Work>
    auto Reading(Work work);
    void Open();
    std::shared_ptr<Charger> ChargerInUse() const;

    Settings settings_;
    mutable std::mutex mutex_;
    std::shared_ptr<Charger> charger_; // null: nothing is counted
    std::unordered_map<std::wstring, Known> known_;
    std::unordered_map<std::int64_t, std::weak_ptr<Live>> lives_;
    std::mutex readerMutex_;
    std::unique_ptr<AccountStore> reader_;
};

} // namespace quorvex::service::accounts
