#include "database/jet/jet_connection.h"

#include "database/connection_string.h"
#include "database/jet/jet_provider.h"
#include "database/jet/jet_translation.h"
#include "support/files.h"

#include <exception>
#include <utility>

namespace quorvex::database {
namespace {

constexpr std::chrono::seconds kWriterWait{30};

} // namespace

void ThrowClosed() {
    throw support::Error(kErrorObjectClosed, L"Operation is not allowed when the object is closed.");
}

void ThrowOpen() {
    throw support::Error(kErrorObjectOpen, L"Operation is not allowed when the object is open.");
}

JetConnection::~JetConnection() {
    try {
        CommitChanges();
    } catch (const std::exception&) {
        return; // the failure before this one is reported already
    }
}

void JetConnection::SetMode(int mode) {
    if (database_) ThrowOpen();
    mode_ = mode;
}

void JetConnection::Open(const std::wstring& connectionString, const std::wstring&, const std::wstring&) {
    if (database_) ThrowOpen();
    file_ = DataSource(connectionString);
    password_ = ToUtf16(DatabasePassword(connectionString));
    OpenDatabase(false);
}

void JetConnection::Close() {
    if (!database_) ThrowClosed();
    // Closed in any case.
    std::unique_ptr<jet::Database> closing = std::move(database_);
    Translated(file_, [&] {
        const std::unique_ptr<jet::ChangeGroup> changes = std::move(changes_);
        if (changes) changes->Commit();
        if (keeper_ != nullptr && !writable_) return keeper_->Keep(file_, std::move(closing));
        closing->Close();
    });
}

jet::Database& JetConnection::ForReading() {
    if (!database_) ThrowClosed();
    return *database_;
}

jet::Database& JetConnection::ForWriting() {
    if (!database_) ThrowClosed();
    if (mode_ == kModeShareDenyWrite) {
        throw support::Error(kErrorFeatureNotAvailable, L"The connection was opened for reading only.");
    }
    if (!writable_) {
        database_->Close();
        database_.reset();
        OpenDatabase(true);
    }
    return *database_;
}

jet::ChangeGroup& JetConnection::Changes() {
    ForWriting();
    return *changes_;
}

void JetConnection::OpenDatabase(bool writable) {
    jet::OpenOptions options;
    options.writable = writable;
    if (writable) {
        // Lookups go on during an update: it lets them in between its groups, and waits for them.
        options.yields = true;
        options.wait = kWriterWait;
    }
    if (keeper_ != nullptr && !writable) {
        database_ = keeper_->Take(file_);
        options.storage = &keeper_->Files();
    }
    if (!database_) {
        Translated(file_, [&] {
            database_ =
                std::make_unique<jet::Database>(jet::Database::Open(support::NativePath(file_), password_, options));
        });
    }
    writable_ = writable;
    if (writable) changes_ = std::make_unique<jet::ChangeGroup>(*database_, limits_);
}

} // namespace quorvex::database
