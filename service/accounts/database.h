#pragma once

#include "support/error.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quorvex::service::accounts {

using Cell = std::optional<std::string>; // a value as text; none: NULL
using Row = std::vector<Cell>;

// The database cannot be reached just now: the transaction under way may or may not have happened.
class DatabaseLost : public support::Error {
  public:
    explicit DatabaseLost(const std::string& why);
};

// Another writer was in the way, and the transaction was undone: it can be run again at once.
class DatabaseBusy : public support::Error {
  public:
    explicit DatabaseBusy(const std::string& why);
};

// A database of accounts. The statements are the same for every kind: names, $1 for the values, RETURNING and
// ON CONFLICT. Not for several threads at a time. Everything throws support::Error, DatabaseLost or DatabaseBusy.
class Database {
  public:
    Database() = default;
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;
    virtual ~Database() = default;

    virtual std::vector<Row> Run(const std::string& statement, const std::vector<Cell>& values = {}) = 0;
    // Begins a transaction that no other one of the same kind runs beside.
    virtual void BeginAlone() = 0;
    virtual void Begin() = 0;
    void Commit() { Run("COMMIT"); }
    // After a failure; never throws.
    virtual void Rollback() noexcept = 0;
};

// Undone unless it was committed.
class Transaction {
  public:
    enum class Kind { Usual, Alone };
    explicit Transaction(Database& database, Kind kind = Kind::Usual);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void Commit();

  private:
    Database& database_;
    bool open_ = true;
};

bool IsPostgresName(const std::string& name);
// name: "postgresql://..." or the path of a SQLite file, which is made if it does not exist.
std::unique_ptr<Database> OpenDatabase(const std::string& name);
std::unique_ptr<Database> OpenSqlite(const std::string& path);
std::unique_ptr<Database> OpenPostgres(const std::string& url);
// The name without a password.
std::string ShownName(const std::string& name);

} // namespace quorvex::service::accounts
