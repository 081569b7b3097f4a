#pragma once

#include "database/database.h"
#include "jet/change_group.h"

#include <memory>
#include <string>

namespace jet {
class Database;
class Storage;
} // namespace jet

namespace quorvex::database {

// Keeps databases open between two connections for reading, for programs that ask the same files all the time.
class DatabaseKeeper {
  public:
    virtual ~DatabaseKeeper() = default;
    // A database of this file that was kept and still holds what the file does; null: open one.
    virtual std::unique_ptr<jet::Database> Take(const std::wstring& file) = 0;
    // Through which a database is opened that will be given to Keep.
    virtual jet::Storage& Files() = 0;
    // The connection is closed.
    virtual void Keep(const std::wstring& file, std::unique_ptr<jet::Database> database) = 0;
};

// The database interface over the embedded Jet 4 engine, with the rules that data access keeps: properties are set
// before opening, nothing is opened twice, no row is read behind the end.
//
// A connection opened with share mode 8 excludes writers for its life. One without a mode does so, too, until a record
// set that may change rows is opened on it; then it excludes everybody else.
class JetProvider final : public DatabaseProvider {
  public:
    // How many records a transaction holds: each costs less the more there are, and waits longer until it is in the
    // file. keeper: null to open the file for each connection; must outlive the provider.
    explicit JetProvider(jet::GroupLimits limits = {}, DatabaseKeeper* keeper = nullptr)
        : limits_(limits), keeper_(keeper) {}

    std::unique_ptr<Connection> CreateConnection() override;
    std::unique_ptr<Recordset> CreateRecordset() override;
    std::wstring Name() const override;

  private:
    jet::GroupLimits limits_;
    DatabaseKeeper* keeper_;
};

} // namespace quorvex::database
