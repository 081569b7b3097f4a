#include "testing/strict_databases.h"

#include "support/error.h"

namespace quorvex::testing {
namespace {

using database::CursorType;
using database::LockType;
using database::Value;
using support::Error;

class StrictRecordset;

class StrictConnection final : public database::Connection {
  public:
    explicit StrictConnection(StrictDatabases& world) : world_(world), inner_(world.Engine().CreateConnection()) {}

    void SetMode(int mode) override {
        inner_->SetMode(mode);
        mode_ = mode;
    }
    void Open(const std::wstring& connectionString, const std::wstring& user, const std::wstring& password) override {
        world_.Note(L"Open " + connectionString);
        if (!open_ && !connectionString.starts_with(L"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=")) {
            throw Error(3706, L"Provider cannot be found. It may not be properly installed.");
        }
        if (!open_ && (user != L"admin" || !password.empty())) {
            throw Error(-2147217843, L"Cannot start your application. The workgroup information file is missing or "
                                     L"opened exclusively by another user.");
        }
        inner_->Open(connectionString, user, password);
        open_ = true;
    }
    void Close() override;

    bool IsOpen() const { return open_; }
    int Mode() const { return mode_; }
    database::Connection& Inner() { return *inner_; }
    std::set<StrictRecordset*> recordsets;

  private:
    StrictDatabases& world_;
    std::unique_ptr<database::Connection> inner_;
    int mode_ = 0;
    bool open_ = false;
};

class StrictRecordset final : public database::Recordset {
  public:
    explicit StrictRecordset(StrictDatabases& world) : world_(world), inner_(world.Engine().CreateRecordset()) {}
    ~StrictRecordset() override { Drop(); }

    // Closes without a word, as the end of its connection does.
    void Drop() {
        if (connection_ == nullptr) return;
        inner_->Close();
        connection_->recordsets.erase(this);
        connection_ = nullptr;
    }

    void SetCursorType(CursorType type) override {
        inner_->SetCursorType(type);
        cursorType_ = type;
    }
    void SetLockType(LockType type) override {
        inner_->SetLockType(type);
        lockType_ = type;
    }
    void Open(const std::wstring& query, database::Connection& connection) override {
        world_.Note(query + L" cursor " + std::to_wstring(static_cast<int>(cursorType_)) + L" lock " +
                    std::to_wstring(static_cast<int>(lockType_)));
        auto* const own = dynamic_cast<StrictConnection*>(&connection);
        if (own == nullptr || !own->IsOpen()) {
            throw Error(3709, L"The connection cannot be used to perform this operation. It is either closed or "
                              L"invalid in this context.");
        }
        inner_->Open(query, own->Inner());
        connection_ = own;
        own->recordsets.insert(this);
    }
    void Close() override {
        world_.Note(L"Recordset.Close");
        if (connection_ == nullptr) inner_->Close(); // says that it is closed
        if (pending_) throw Error(3219, L"Operation is not allowed in this context.");
        Drop();
    }

    bool AtBeginning() override { return inner_->AtBeginning(); }
    bool AtEnd() override { return inner_->AtEnd(); }
    void MoveFirst() override {
        Moving([&] { inner_->MoveFirst(); });
    }
    void MoveLast() override {
        Moving([&] { inner_->MoveLast(); });
    }
    void MoveNext() override {
        Moving([&] { inner_->MoveNext(); });
    }
    long RecordCount() override {
        const long count = inner_->RecordCount();
        return cursorType_ == CursorType::ForwardOnly || cursorType_ == CursorType::Dynamic ? -1 : count;
    }
    void Find(const std::wstring& criterion) override {
        world_.Note(L"Find " + criterion);
        if (inner_->AtEnd()) throw Error(3021, L"Either BOF or EOF is True, or the current record has been deleted.");
        Moving([&] { inner_->Find(criterion); });
    }

    Value Field(const std::wstring& column) override { return inner_->Field(column); }
    void SetField(const std::wstring& column, const Value& value) override {
        world_.Note(L"Set " + column);
        RequireWritable();
        inner_->SetField(column, value);
        pending_ = true;
    }
    void AddNew() override {
        world_.Note(L"AddNew");
        RequireWritable();
        inner_->AddNew();
        pending_ = true;
    }
    void Update() override {
        world_.Note(L"Update");
        Write([&] { inner_->Update(); });
    }
    void UpdateBatch() override {
        world_.Note(L"UpdateBatch");
        Write([&] { inner_->UpdateBatch(); });
    }

  private:
    void RequireWritable() {
        inner_->AtEnd(); // says when it is closed
        if (lockType_ == LockType::ReadOnly || cursorType_ == CursorType::Static ||
            connection_->Mode() == database::kModeShareDenyWrite) {
            throw Error(3251, L"Current Recordset does not support updating. This may be a limitation of the "
                              L"provider, or of the selected locktype.");
        }
    }
    // A move writes what is pending.
    template <typename Call>
    void Moving(Call call) {
        call();
        pending_ = false;
    }
    // Nothing to write is no failure, but there must be a row to which it could belong.
    template <typename Call>
    void Write(Call call) {
        RequireWritable();
        if (!pending_ && inner_->AtEnd()) throw Error(3021, L"Either BOF or EOF is True.");
        pending_ = false;
        call();
    }

    StrictDatabases& world_;
    std::unique_ptr<database::Recordset> inner_;
    StrictConnection* connection_ = nullptr;
    CursorType cursorType_ = CursorType::ForwardOnly;
    LockType lockType_ = LockType::ReadOnly;
    bool pending_ = false;
};

void StrictConnection::Close() {
    world_.Note(L"Connection.Close");
    for (StrictRecordset* const recordset : std::set(recordsets)) recordset->Drop();
    inner_->Close();
    open_ = false;
}

} // namespace

std::unique_ptr<database::Connection> StrictDatabases::CreateConnection() {
    return std::make_unique<StrictConnection>(*this);
}

std::unique_ptr<database::Recordset> StrictDatabases::CreateRecordset() {
    return std::make_unique<StrictRecordset>(*this);
}

void StrictDatabases::Note(const std::wstring& call) {
    calls.push_back(call);
    if (onCall) onCall(call);
}

} // namespace quorvex::testing
