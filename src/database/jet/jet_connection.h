#pragma once

#include "database/database.h"
#include "jet/change_group.h"

#include <memory>
#include <string>

namespace quorvex::database {

class DatabaseKeeper;

// ADO's numbers for calls out of order.
inline constexpr long kErrorFeatureNotAvailable = 3251;
inline constexpr long kErrorObjectClosed = 3704;
inline constexpr long kErrorObjectOpen = 3705;

[[noreturn]] void ThrowClosed();
[[noreturn]] void ThrowOpen();

// One file opened by the embedded engine: for reading, until a record set that may change rows asks for more.
class JetConnection final : public Connection {
  public:
    JetConnection(jet::GroupLimits limits, DatabaseKeeper* keeper) : limits_(limits), keeper_(keeper) {}
    // After a failure nobody calls Close, but the records merged before it are to stay, also where they cannot be
    // written as a group.
    ~JetConnection() override;

    void SetMode(int mode) override;
    void Open(const std::wstring& connectionString, const std::wstring& user, const std::wstring& password) override;
    void Close() override;

    // Throw support::Error if the connection is closed; ForWriting also if it was opened for reading only.
    jet::Database& ForReading();
    jet::Database& ForWriting();
    jet::ChangeGroup& Changes();
    // What was changed is in the file from here on; a power cut may take it back until the connection is closed.
    void CommitChanges() {
        if (changes_) changes_->Commit(false);
    }

    const std::wstring& File() const { return file_; }

  private:
    void OpenDatabase(bool writable);

    int mode_ = 0;
    bool writable_ = false;
    std::wstring file_;
    std::u16string password_;
    std::unique_ptr<jet::Database> database_; // null: closed
    jet::GroupLimits limits_;
    DatabaseKeeper* keeper_;
    std::unique_ptr<jet::ChangeGroup> changes_; // of a database open for writing
};

} // namespace quorvex::database
