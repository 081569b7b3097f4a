#include "service/accounts/store.h"

#include "service/accounts/schema.h"
#include "support/text.h"

#include <openssl/hmac.h>
#include <openssl/rand.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <iterator>
#include <set>

namespace quorvex::service::accounts {
namespace {

constexpr char kColumns[] = "id, name, credits, disabled, rate, networks";
constexpr std::size_t kCopyRows = 100; // in one statement

std::string Hex(const unsigned char* bytes, std::size_t count) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        text.push_back(kDigits[bytes[i] >> 4]);
        text.push_back(kDigits[bytes[i] & 15]);
    }
    return text;
}

template <std::size_t kCount>
std::array<unsigned char, kCount> RandomBytes() {
    std::array<unsigned char, kCount> bytes{};
    if (RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) != 1)
        throw support::Error(support::kErrorInternal, L"no random numbers");
    return bytes;
}

std::int64_t Number(const Cell& cell) {
    return cell ? std::stoll(*cell) : 0;
}

std::optional<std::int64_t> OptionalNumber(const Cell& cell) {
    return cell ? std::optional<std::int64_t>(std::stoll(*cell)) : std::nullopt;
}

Cell CellOf(const std::optional<std::int64_t>& number) {
    return number ? Cell(std::to_string(*number)) : Cell();
}

Account AccountOf(const Row& row) {
    return {Number(row[0]),      row[1].value_or(""),    OptionalNumber(row[2]),
            Number(row[3]) != 0, OptionalNumber(row[4]), row[5].value_or("")};
}

// "($1,$2),($3,$4)" for so many rows and columns.
std::string Places(std::size_t rows, std::size_t columns) {
    std::string text;
    std::size_t number = 0;
    for (std::size_t row = 0; row < rows; ++row) {
        text += row == 0 ? "(" : ",(";
        for (std::size_t column = 0; column < columns; ++column)
            text += (column == 0 ? "$" : ",$") + std::to_string(++number);
        text += ")";
    }
    return text;
}

} // namespace

std::int64_t NowMs() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::system_clock::now().time_since_epoch())
        .count();
}

std::string NewKey() {
    // 32 characters that are not taken for one another.
    static constexpr char kLetters[] = "ABCDEFGHJKLMNPQRSTUVWXYZ23456789";
    std::string key;
    for (const unsigned char byte : RandomBytes<20>()) key.push_back(kLetters[byte & 31]);
    // A key that begins with "I" asks for a user's name.
    if (key.front() == 'I') key.front() = 'K';
    return key;
}

AccountStore::AccountStore(const std::string& name) : database_(OpenDatabase(name)) {
    Migrate(*database_);
    ReadSalt();
}

void AccountStore::ReadSalt() {
    database_->Run("INSERT INTO settings (name, value) VALUES ('salt', $1) ON CONFLICT (name) DO NOTHING",
                   {Hex(RandomBytes<16>().data(), 16)});
    salt_ = database_->Run("SELECT value FROM settings WHERE name='salt'").at(0).at(0).value_or("");
}

std::string AccountStore::HashOf(std::wstring_view key) const {
    const std::string text = support::ToUtf8(support::UpperCase(support::Trim(key)));
    std::array<unsigned char, EVP_MAX_MD_SIZE> hash{};
    unsigned length = 0;
    HMAC(EVP_sha256(), salt_.data(), static_cast<int>(salt_.size()),
         reinterpret_cast<const unsigned char*>(text.data()), text.size(), hash.data(), &length);
    return Hex(hash.data(), length);
}

std::optional<Account> AccountStore::Find(std::wstring_view key) {
    const auto rows =
        database_->Run(std::string("SELECT ") + kColumns + " FROM accounts WHERE key_hash=$1", {HashOf(key)});
    if (rows.empty()) return std::nullopt;
    return AccountOf(rows[0]);
}

std::int64_t AccountStore::Add(std::wstring_view key, const NewAccount& account, const std::string& node) {
    Transaction transaction(*database_, Transaction::Kind::Alone);
    if (const auto known = Find(key)) return known->id;
    const auto last = database_->Run("SELECT COALESCE(MAX(id), 0) FROM accounts");
    const std::int64_t id = Number(last.at(0).at(0)) + 1;
    const std::string name = account.name.empty() ? "key-" + std::to_string(id) : account.name;
    if (!database_->Run("SELECT id FROM accounts WHERE name=$1", {name}).empty()) {
        throw support::Error(support::kErrorInvalidCall,
                             support::FromUtf8("there is an account named \"" + name + "\" already"));
    }
    database_->Run("INSERT INTO accounts (id, name, key_hash, credits, rate, networks, created) VALUES " + Places(1, 7),
                   {std::to_string(id), name, HashOf(key), CellOf(account.credits), CellOf(account.rate),
                    account.networks, std::to_string(NowMs())});
    if (account.credits.value_or(0) > 0) {
        database_->Run(
            "INSERT INTO ledger (request, account, change, what, node, at) VALUES " + Places(1, 6),
            {NewKey(), std::to_string(id), CellOf(account.credits), "credit", node, std::to_string(NowMs())});
    }
    transaction.Commit();
    return id;
}

std::vector<Account> AccountStore::List() {
    std::vector<Account> accounts;
    for (const Row& row : database_->Run(std::string("SELECT ") + kColumns + " FROM accounts ORDER BY id"))
        accounts.push_back(AccountOf(row));
    return accounts;
}

bool AccountStore::AddCredits(const std::string& name, std::int64_t credits, const std::string& node) {
    Transaction transaction(*database_);
    const auto rows =
        database_->Run("UPDATE accounts SET credits = COALESCE(credits, 0) + $1 WHERE name=$2 RETURNING id",
                       {std::to_string(credits), name});
    if (rows.empty()) return false;
    database_->Run("INSERT INTO ledger (request, account, change, what, node, at) VALUES " + Places(1, 6),
                   {NewKey(), rows[0][0], std::to_string(credits), "credit", node, std::to_string(NowMs())});
    transaction.Commit();
    return true;
}

bool AccountStore::SetDisabled(const std::string& name, bool disabled) {
    return !database_->Run("UPDATE accounts SET disabled=$1 WHERE name=$2 RETURNING id", {disabled ? "1" : "0", name})
                .empty();
}

// False, with nothing changed, if one of the accounts does not cover all of its charges.
bool AccountStore::TakeTogether(const std::vector<Charge>& charges, const std::string& node,
                                std::vector<Charged>& charged) {
    Transaction transaction(*database_);
    const std::string now = std::to_string(NowMs());
    std::vector<Cell> values;
    for (const Charge& charge : charges)
        values.insert(values.end(), {charge.request, std::to_string(charge.account), "-1", charge.what, node, now});
    std::map<std::int64_t, std::int64_t> fresh; // charges not made before, by account
    for (const Charge& charge : charges) fresh.emplace(charge.account, 0);
    for (const Row& row :
         database_->Run("INSERT INTO ledger (request, account, change, what, node, at) VALUES " +
                            Places(charges.size(), 6) + " ON CONFLICT (request) DO NOTHING RETURNING account",
                        values)) {
        ++fresh[Number(row[0])];
    }
    // In the order of their numbers, so that two nodes do not wait for one another.
    std::map<std::int64_t, std::optional<std::int64_t>> left;
    for (const auto& [account, count] : fresh) {
        const auto rows =
            count == 0 ? database_->Run("SELECT credits FROM accounts WHERE id=$1", {std::to_string(account)})
                       : database_->Run("UPDATE accounts SET credits = credits - $2 WHERE id=$1 AND disabled=0 AND "
                                        "(credits IS NULL OR credits >= $2) RETURNING credits",
                                        {std::to_string(account), std::to_string(count)});
        if (rows.empty()) return false;
        left[account] = OptionalNumber(rows[0][0]);
    }
    transaction.Commit();
    // Each sees the balance that was left behind it.
    for (std::size_t i = charges.size(); i-- > 0;) {
        auto& balance = left[charges[i].account];
        charged[i] = {true, balance};
        if (balance && fresh[charges[i].account]-- > 1) ++*balance;
    }
    return true;
}

std::vector<Charged> AccountStore::Take(const std::vector<Charge>& charges, const std::string& node) {
    std::vector<Charged> charged(charges.size());
    if (charges.empty() || TakeTogether(charges, node, charged)) return charged;
    if (charges.size() == 1) return charged;
    // Halves, so that one empty account among many costs the others a few transactions and not one each.
    const auto middle = charges.begin() + static_cast<std::ptrdiff_t>(charges.size() / 2);
    charged = Take({charges.begin(), middle}, node);
    std::ranges::move(Take({middle, charges.end()}, node), std::back_inserter(charged));
    return charged;
}

std::vector<LedgerEntry> AccountStore::Ledger(const std::string& account, std::size_t most) {
    std::vector<LedgerEntry> entries;
    const std::string select = "SELECT accounts.name, ledger.change, ledger.what, ledger.node, ledger.at FROM ledger "
                               "JOIN accounts ON accounts.id = ledger.account ";
    const std::string order = " ORDER BY ledger.at DESC LIMIT " + std::to_string(most);
    const auto rows = account.empty() ? database_->Run(select + order)
                                      : database_->Run(select + "WHERE accounts.name=$1" + order, {account});
    for (const Row& row : rows) {
        entries.push_back(
            {row[0].value_or(""), Number(row[1]), row[2].value_or(""), row[3].value_or(""), Number(row[4])});
    }
    return entries;
}

void AccountStore::Compact(std::int64_t before, const std::string& node) {
    Transaction transaction(*database_, Transaction::Kind::Alone);
    const std::string time = std::to_string(before);
    const auto sums = database_->Run("SELECT account, SUM(change) FROM ledger WHERE at < $1 GROUP BY account", {time});
    database_->Run("DELETE FROM ledger WHERE at < $1", {time});
    for (const Row& sum : sums) {
        database_->Run("INSERT INTO ledger (request, account, change, what, node, at) VALUES " + Places(1, 6),
                       {NewKey(), sum[0], sum[1], "sum", node, std::to_string(before - 1)});
    }
    transaction.Commit();
}

void AccountStore::Announce(const Node& node) {
    database_->Run("INSERT INTO nodes (name, address, version, state, data, seen) VALUES " + Places(1, 6) +
                       " ON CONFLICT (name) DO UPDATE SET address=excluded.address, version=excluded.version, "
                       "state=excluded.state, data=excluded.data, seen=excluded.seen",
                   {node.name, node.address, node.version, node.state, node.data, std::to_string(node.seen)});
}

std::vector<Node> AccountStore::Nodes(std::int64_t seenAfter) {
    std::vector<Node> nodes;
    for (const Row& row :
         database_->Run("SELECT name, address, version, state, data, seen FROM nodes WHERE seen > $1 ORDER BY name",
                        {std::to_string(seenAfter)})) {
        nodes.push_back({row[0].value_or(""), row[1].value_or(""), row[2].value_or(""), row[3].value_or(""),
                         row[4].value_or(""), Number(row[5])});
    }
    return nodes;
}

std::size_t AccountStore::CopyTable(AccountStore& target, const std::string& table,
                                    const std::vector<const char*>& columns, const std::string& order) {
    std::string names;
    for (const char* column : columns) names += (names.empty() ? "" : ", ") + std::string(column);
    std::string after; // the last one copied, by the table's key
    std::size_t count = 0;
    for (;;) {
        const std::string from = "SELECT " + names + " FROM " + table;
        const std::string end = " ORDER BY " + order + " LIMIT " + std::to_string(kCopyRows);
        const auto rows =
            count == 0 ? database_->Run(from + end) : database_->Run(from + " WHERE " + order + " > $1" + end, {after});
        if (rows.empty()) return count;
        std::vector<Cell> values;
        for (const Row& row : rows) values.insert(values.end(), row.begin(), row.end());
        target.database_->Run("INSERT INTO " + table + " (" + names + ") VALUES " + Places(rows.size(), columns.size()),
                              values);
        count += rows.size();
        after = rows.back()[0].value_or("");
    }
}

std::pair<std::size_t, std::size_t> AccountStore::CopyTo(AccountStore& target) {
    Transaction reading(*database_, Transaction::Kind::Alone); // nothing is spent meanwhile
    Transaction writing(*target.database_, Transaction::Kind::Alone);
    if (!target.database_->Run("SELECT id FROM accounts LIMIT 1").empty()) {
        throw support::Error(support::kErrorFileExists, L"the target holds accounts already; nothing was copied");
    }
    // The hashes of the keys are worth nothing without their salt.
    target.database_->Run("UPDATE settings SET value=$1 WHERE name='salt'", {salt_});
    const std::size_t accounts = CopyTable(
        target, "accounts", {"id", "name", "key_hash", "credits", "disabled", "rate", "networks", "created"}, "id");
    const std::size_t entries =
        CopyTable(target, "ledger", {"request", "account", "change", "what", "node", "at"}, "request");
    writing.Commit();
    target.salt_ = salt_;
    return {accounts, entries};
}

} // namespace quorvex::service::accounts
