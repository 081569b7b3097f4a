#include "service/accounts/schema.h"

#include <array>
#include <string>
#include <vector>

namespace quorvex::service::accounts {
namespace {

// One list for each version, run in order. Times are milliseconds since 1970, UTC.
const std::vector<std::vector<const char*>>& Versions() {
    static const std::vector<std::vector<const char*>> versions = {
        {
            "CREATE TABLE accounts (id BIGINT PRIMARY KEY, name TEXT NOT NULL UNIQUE, key_hash TEXT NOT NULL UNIQUE, "
            "credits BIGINT CHECK (credits >= 0), disabled BIGINT NOT NULL DEFAULT 0, rate BIGINT, networks TEXT, "
            "created BIGINT NOT NULL)",
            "CREATE TABLE ledger (request TEXT PRIMARY KEY, account BIGINT NOT NULL REFERENCES accounts(id), "
            "change BIGINT NOT NULL, what TEXT NOT NULL, node TEXT NOT NULL, at BIGINT NOT NULL)",
            "CREATE INDEX ledger_by_account ON ledger (account, at)",
        },
        {
            "CREATE TABLE nodes (name TEXT PRIMARY KEY, address TEXT NOT NULL, version TEXT NOT NULL, "
            "state TEXT NOT NULL, data TEXT NOT NULL, seen BIGINT NOT NULL)",
        },
    };
    return versions;
}

// A salt of the database's own, in hexadecimal digits: made by the database so that two nodes cannot make two.
constexpr char kSettings[] = "CREATE TABLE IF NOT EXISTS settings (name TEXT PRIMARY KEY, value TEXT NOT NULL)";

} // namespace

void Migrate(Database& database) {
    Transaction transaction(database, Transaction::Kind::Alone);
    database.Run(kSettings);
    const std::vector<Row> rows = database.Run("SELECT value FROM settings WHERE name='schema'");
    std::size_t version = rows.empty() ? 0 : std::stoul(rows[0][0].value_or("0"));
    if (version > Versions().size()) {
        throw support::Error(support::kErrorDatabase,
                             L"the accounts were made by a newer version of this program (schema " +
                                 std::to_wstring(version) + L")");
    }
    for (; version < Versions().size(); ++version) {
        for (const char* statement : Versions()[version]) database.Run(statement);
    }
    database.Run("INSERT INTO settings (name, value) VALUES ('schema', $1) "
                 "ON CONFLICT (name) DO UPDATE SET value = excluded.value",
                 {std::to_string(version)});
    transaction.Commit();
}

} // namespace quorvex::service::accounts
