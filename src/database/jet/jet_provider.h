#pragma once

#include "database/database.h"
#include "jet/change_group.h"

namespace quorvex::database {

// The database interface over the embedded Jet 4 engine, with the rules that data access keeps: properties are set
// before opening, nothing is opened twice, no row is read behind the end.
//
// A connection opened with share mode 8 excludes writers for its life. One without a mode does so, too, until a record
// set that may change rows is opened on it; then it excludes everybody else.
class JetProvider final : public DatabaseProvider {
  public:
    // How many records a transaction holds: each costs less the more there are, and waits longer until it is in the
    // file.
    explicit JetProvider(jet::GroupLimits limits = {}) : limits_(limits) {}

    std::unique_ptr<Connection> CreateConnection() override;
    std::unique_ptr<Recordset> CreateRecordset() override;
    std::wstring Name() const override;

  private:
    jet::GroupLimits limits_;
};

} // namespace quorvex::database
