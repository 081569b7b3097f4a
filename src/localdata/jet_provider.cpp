#include "localdata/jet_provider.h"

#include "localdata/jet/database.h"
#include "localdata/jet_translation.h"
#include "support/files.h"

#include <map>
#include <optional>
#include <utility>

namespace quorvex::localdata {
namespace {

// ADO's numbers for calls out of order.
constexpr long kErrorNoCurrentRecord = 3021;
constexpr long kErrorObjectClosed = 3704;
constexpr long kErrorObjectOpen = 3705;
constexpr long kErrorFeatureNotAvailable = 3251;

[[noreturn]] void ThrowClosed() {
    throw support::Error(kErrorObjectClosed, L"Operation is not allowed when the object is closed.");
}

[[noreturn]] void ThrowOpen() {
    throw support::Error(kErrorObjectOpen, L"Operation is not allowed when the object is open.");
}

[[noreturn]] void ThrowNoRow() {
    throw support::Error(kErrorNoCurrentRecord,
                         L"Either BOF or EOF is True, or the current record has been deleted. Requested operation "
                         L"requires a current record.");
}

// The value of a key in a connection string; it ends where the next key begins, so that a path may hold a semicolon.
std::wstring Setting(const std::wstring& text, const std::wstring& key, const std::wstring& nextKey) {
    const std::size_t at = text.find(key + L"=");
    if (at == std::wstring::npos) return {};
    const std::size_t begin = at + key.size() + 1;
    const std::size_t end = nextKey.empty() ? text.find(L';', begin) : text.rfind(L";" + nextKey + L"=");
    return text.substr(begin, end == std::wstring::npos || end < begin ? end : end - begin);
}

class JetConnection final : public Connection {
  public:
    void SetMode(int mode) override {
        if (database_) ThrowOpen();
        mode_ = mode;
    }

    void Open(const std::wstring& connectionString, const std::wstring&, const std::wstring&) override {
        if (database_) ThrowOpen();
        file_ = Setting(connectionString, L"Data Source", L"Jet OLEDB:Database Password");
        password_ = ToUtf16(Setting(connectionString, L"Jet OLEDB:Database Password", L""));
        OpenDatabase(false);
    }

    void Close() override {
        if (!database_) ThrowClosed();
        const std::optional<jet::Database> closing = std::exchange(database_, std::nullopt);
        Translated(file_, [&] { jet::Database(*closing).Close(); });
    }

    jet::Database& ForReading() {
        if (!database_) ThrowClosed();
        return *database_;
    }

    jet::Database& ForWriting() {
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

    const std::wstring& File() const { return file_; }

  private:
    void OpenDatabase(bool writable) {
        jet::OpenOptions options;
        options.writable = writable;
        Translated(file_, [&] { database_.emplace(jet::Database::Open(support::ToPath(file_), password_, options)); });
        writable_ = writable;
    }

    int mode_ = 0;
    bool writable_ = false;
    std::wstring file_;
    std::u16string password_;
    std::optional<jet::Database> database_;
};

class JetRecordset final : public Recordset {
  public:
    void SetCursorType(CursorType) override {
        if (connection_ != nullptr) ThrowOpen();
    }

    void SetLockType(LockType type) override {
        if (connection_ != nullptr) ThrowOpen();
        lockType_ = type;
    }

    void Open(const std::wstring& query, Connection& connection) override {
        if (connection_ != nullptr) ThrowOpen();
        auto* const own = dynamic_cast<JetConnection*>(&connection);
        if (own == nullptr) throw support::Error(kErrorObjectClosed, L"The connection is not one of this engine.");
        jet::Database& database = lockType_ == LockType::ReadOnly ? own->ForReading() : own->ForWriting();
        context_ = own->File();
        Translated(context_, [&] { cursor_.emplace(database.Select(ToUtf16(query))); });
        connection_ = own;
        MoveFirstRow();
    }

    void Close() override {
        RequireOpen();
        cursor_.reset();
        connection_ = nullptr;
    }

    bool AtBeginning() override {
        RequireOpen();
        return empty_;
    }

    bool AtEnd() override {
        RequireOpen();
        return atEnd_;
    }

    void MoveFirst() override {
        RequireOpen();
        if (empty_) ThrowNoRow();
        MoveFirstRow();
    }

    void MoveNext() override {
        RequireOpen();
        if (atEnd_) ThrowNoRow();
        Translated(context_, [&] { atEnd_ = !cursor_->Next(); });
    }

    void MoveLast() override {
        RequireOpen();
        if (empty_) ThrowNoRow();
        const long last = RecordCount() - 1;
        MoveFirstRow();
        for (long i = 0; i < last; ++i) MoveNext();
    }

    long RecordCount() override {
        RequireOpen();
        return Translated(context_, [&] {
            jet::Cursor rows = *cursor_;
            rows.Rewind();
            long count = 0;
            while (rows.Next()) ++count;
            return count;
        });
    }

    void Find(const std::wstring&) override { throw support::Error(kErrorFeatureNotAvailable, L"Read-only."); }

    Value Field(const std::wstring& column) override {
        RequireOpen();
        if (atEnd_) ThrowNoRow();
        return Translated(context_, [&] { return FromJet(cursor_->Current().Get(Position(column))); });
    }

    void SetField(const std::wstring&, const Value&) override {
        throw support::Error(kErrorFeatureNotAvailable, L"Read-only.");
    }
    void AddNew() override { throw support::Error(kErrorFeatureNotAvailable, L"Read-only."); }
    void Update() override { throw support::Error(kErrorFeatureNotAvailable, L"Read-only."); }
    void UpdateBatch() override { throw support::Error(kErrorFeatureNotAvailable, L"Read-only."); }

  private:
    void RequireOpen() const {
        if (connection_ == nullptr) ThrowClosed();
    }

    void MoveFirstRow() {
        Translated(context_, [&] {
            cursor_->Rewind();
            empty_ = atEnd_ = !cursor_->Next();
        });
    }

    std::size_t Position(const std::wstring& column) {
        const auto position = cursor_->definition().FindColumn(ToUtf16(column));
        if (!position) {
            throw jet::Error(jet::ErrorCode::kNoSuchColumn, "There is no column of the name that was asked for.");
        }
        return *position;
    }

    JetConnection* connection_ = nullptr; // null: closed
    LockType lockType_ = LockType::ReadOnly;
    std::wstring context_;
    std::optional<jet::Cursor> cursor_;
    bool empty_ = true;
    bool atEnd_ = true;
};

} // namespace

std::unique_ptr<Connection> JetProvider::CreateConnection() {
    return std::make_unique<JetConnection>();
}

std::unique_ptr<Recordset> JetProvider::CreateRecordset() {
    return std::make_unique<JetRecordset>();
}

std::wstring JetProvider::Name() const {
    return L"embedded Jet 4 engine";
}

} // namespace quorvex::localdata
