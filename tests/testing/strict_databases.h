#pragma once

#include "database/jet/jet_provider.h"

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace quorvex::testing {

// The embedded engine's files behind the rules of the installed data access layer, also where the engine is more
// lenient: the provider, user and password are checked, a static cursor changes nothing, a dynamic one does not count
// its records, nothing is closed over a pending change, a closed connection takes its record sets along.
class StrictDatabases final : public database::DatabaseProvider {
  public:
    // "Open Provider=...", "SELECT ... cursor 3 lock 1", "Find [ID]=2" and the like: each call that opens, closes,
    // searches or changes.
    std::vector<std::wstring> calls;
    // Asked before each of these; throws what a test wants to fail there.
    std::function<void(const std::wstring& call)> onCall;

    std::unique_ptr<database::Connection> CreateConnection() override;
    std::unique_ptr<database::Recordset> CreateRecordset() override;
    std::wstring Name() const override { return L"strict"; }

    void Note(const std::wstring& call);
    database::JetProvider& Engine() { return engine_; }

  private:
    database::JetProvider engine_;
};

} // namespace quorvex::testing
