#pragma once

#include "localdata/database.h"
#include "support_code/ado_data.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace quorvex::testing {

// Local data in memory behind the database interface, as strict as the real data access layer: calls out of order,
// reading without a current row, writing what was opened for reading, unknown names and wrong types are refused with
// its numbers.
class MemoryDatabases final : public localdata::DatabaseProvider {
  public:
    AdoFiles files; // by upper-cased path; a file must also lie on the disk to be opened
    // "Update.Open path", "Target: Find [ID]=2" and the like, one for each call that changes something or moves.
    std::vector<std::wstring> calls;
    // Asked before each call; throws what a test wants to fail there.
    std::function<void(const std::wstring& call)> onCall;
    int openConnections = 0;
    int openRecordsets = 0;

    std::unique_ptr<localdata::Connection> CreateConnection() override;
    std::unique_ptr<localdata::Recordset> CreateRecordset() override;
    std::wstring Name() const override { return L"memory"; }

    // Puts a file into the map and a stand-in of it on the disk.
    AdoFile& AddFile(const std::wstring& path);
    AdoFile& FileAt(const std::wstring& path);
    void Note(const std::wstring& call);
};

} // namespace quorvex::testing
