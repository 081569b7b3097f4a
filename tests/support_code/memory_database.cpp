#include "support_code/memory_database.h"

#include "support/error.h"
#include "support/files.h"
#include "support/text.h"

#include <optional>
#include <utility>

namespace quorvex::testing {
namespace {

using localdata::CursorType;
using localdata::LockType;
using localdata::Value;
using support::Error;
using support::UpperCase;

[[noreturn]] void RefuseClosed() {
    throw Error(3704, L"Operation is not allowed when the object is closed.");
}
[[noreturn]] void RefuseOpen() {
    throw Error(3705, L"Operation is not allowed when the object is open.");
}
[[noreturn]] void RefuseNoRow() {
    throw Error(3021, L"Either BOF or EOF is True, or the current record has been deleted.");
}
[[noreturn]] void RefuseReadOnly() {
    throw Error(3251, L"Current Recordset does not support updating.");
}

template <typename Body>
auto Refusing(Body body) {
    try {
        return body();
    } catch (const AdoRefusal& refusal) {
        throw Error(refusal.number, refusal.description);
    }
}

class MemoryConnection final : public localdata::Connection {
  public:
    explicit MemoryConnection(MemoryDatabases& world) : world_(world) {}
    ~MemoryConnection() override {
        if (file != nullptr) --world_.openConnections;
    }

    void SetMode(int newMode) override {
        if (file != nullptr) RefuseOpen();
        mode = newMode;
    }
    void Open(const std::wstring& connectionString, const std::wstring& user, const std::wstring& password) override {
        world_.Note(L"Open " + connectionString);
        if (file != nullptr) RefuseOpen();
        const std::wstring begin = L"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=";
        const std::wstring key = L";Jet OLEDB:Database Password=";
        const std::size_t at = connectionString.rfind(key);
        if (!connectionString.starts_with(begin) || at == std::wstring::npos || user != L"admin" || !password.empty()) {
            throw Error(3706, L"Provider cannot be found. It may not be properly installed.");
        }
        const std::wstring path = connectionString.substr(begin.size(), at - begin.size());
        const auto found = world_.files.find(UpperCase(path));
        if (!support::FileExists(path)) throw Error(support::kErrorDatabase, L"Could not find file '" + path + L"'.");
        if (found == world_.files.end())
            throw Error(support::kErrorDatabase, L"Unrecognized database format '" + path + L"'.");
        if (found->second.lockedByAnother)
            throw Error(support::kErrorDatabase, L"Could not use '" + path + L"'; file already in use.");
        if (connectionString.substr(at + key.size()) != found->second.password)
            throw Error(-2147217843, L"Not a valid password.");
        file = &found->second;
        ++world_.openConnections;
    }
    void Close() override {
        world_.Note(L"Connection.Close");
        if (file == nullptr) RefuseClosed();
        file = nullptr;
        --world_.openConnections;
    }

    int mode = 0;
    AdoFile* file = nullptr;

  private:
    MemoryDatabases& world_;
};

class MemoryRecordset final : public localdata::Recordset {
  public:
    explicit MemoryRecordset(MemoryDatabases& world) : world_(world) {}
    ~MemoryRecordset() override {
        if (connection_ != nullptr) --world_.openRecordsets;
    }

    void SetCursorType(CursorType type) override {
        if (connection_ != nullptr) RefuseOpen();
        cursorType_ = type;
    }
    void SetLockType(LockType type) override {
        if (connection_ != nullptr) RefuseOpen();
        lockType_ = type;
    }
    void Open(const std::wstring& query, localdata::Connection& connection) override {
        world_.Note(query + L" cursor " + std::to_wstring(static_cast<int>(cursorType_)) + L" lock " +
                    std::to_wstring(static_cast<int>(lockType_)));
        if (connection_ != nullptr) RefuseOpen();
        auto* const own = dynamic_cast<MemoryConnection*>(&connection);
        if (own == nullptr || own->file == nullptr) throw Error(3709, L"The connection cannot be used.");
        AdoSelection selection = Refusing([&] { return Select(*own->file, query); });
        table_ = selection.table;
        if (cursorType_ == CursorType::Static) {
            snapshot_ = *selection.table; // a static cursor does not see later changes
            table_ = &snapshot_;
        }
        rows_ = std::move(selection.rows);
        at_ = 0;
        connection_ = own;
        ++world_.openRecordsets;
    }
    void Close() override {
        world_.Note(L"Recordset.Close");
        RequireOpen();
        if (pending_) throw Error(3219, L"Operation is not allowed in this context.");
        connection_ = nullptr;
        --world_.openRecordsets;
    }

    bool AtBeginning() override {
        RequireOpen();
        return rows_.empty();
    }
    bool AtEnd() override {
        RequireOpen();
        return at_ >= rows_.size();
    }
    void MoveFirst() override {
        RequireRows();
        WritePending();
        at_ = 0;
    }
    void MoveLast() override {
        RequireRows();
        WritePending();
        at_ = rows_.size() - 1;
    }
    void MoveNext() override {
        RequireOpen();
        WritePending();
        if (at_ >= rows_.size()) RefuseNoRow();
        ++at_;
    }
    long RecordCount() override {
        RequireOpen();
        const bool countable = cursorType_ != CursorType::ForwardOnly && cursorType_ != CursorType::Dynamic;
        return countable ? static_cast<long>(rows_.size()) : -1;
    }
    void Find(const std::wstring& criterion) override {
        world_.Note(L"Find " + criterion);
        RequireRow();
        WritePending();
        const AdoCriterion wanted = Refusing([&] { return ParseCriterion(*table_, criterion); });
        while (at_ < rows_.size() && !wanted.Matches(Current())) ++at_;
    }

    Value Field(const std::wstring& column) override {
        const std::size_t position = Column(column);
        if (pending_) return (*pending_)[position];
        RequireRow();
        return Current()[position];
    }
    void SetField(const std::wstring& column, const Value& value) override {
        world_.Note(L"Set " + column);
        RequireWritable();
        const std::size_t position = Column(column);
        const bool isText = table_->columns[position].type == ColumnType::Text;
        const bool fits =
            std::holds_alternative<std::monostate>(value) || std::holds_alternative<std::wstring>(value) == isText;
        if (!fits) throw Error(3421, L"Application uses a value of the wrong type for the current operation.");
        if (!adding_) RequireRow();
        if (!pending_) pending_ = Current();
        (*pending_)[position] = value;
    }
    void AddNew() override {
        world_.Note(L"AddNew");
        RequireWritable();
        WritePending();
        adding_ = true;
        pending_ = AdoRow(table_->columns.size());
    }
    void Update() override {
        world_.Note(L"Update");
        RequireWritable();
        if (!adding_) RequireRow();
        WritePending();
    }
    void UpdateBatch() override {
        world_.Note(L"UpdateBatch");
        RequireWritable();
        WritePending();
    }

  private:
    AdoRow& Current() { return table_->rows[rows_[at_]]; }
    void RequireOpen() const {
        if (connection_ == nullptr) RefuseClosed();
        if (connection_->file == nullptr) RefuseClosed();
    }
    void RequireRows() const {
        RequireOpen();
        if (rows_.empty()) RefuseNoRow();
    }
    void RequireRow() const {
        RequireOpen();
        if (at_ >= rows_.size()) RefuseNoRow();
    }
    void RequireWritable() const {
        RequireOpen();
        if (lockType_ == LockType::ReadOnly || cursorType_ == CursorType::Static ||
            connection_->mode == localdata::kModeShareDenyWrite) {
            RefuseReadOnly();
        }
    }
    std::size_t Column(const std::wstring& name) const {
        RequireOpen();
        const auto column = table_->ColumnAt(name);
        if (!column) throw Error(3265, L"Item cannot be found in the collection corresponding to the requested name.");
        return *column;
    }
    void WritePending() {
        if (!pending_) return;
        int& left = connection_->file->writesUntilFull;
        if (left == 0) throw Error(support::kErrorDatabase, L"The disk is full.");
        if (left > 0) --left;
        if (adding_) {
            table_->rows.push_back(std::move(*pending_));
            rows_.push_back(table_->rows.size() - 1);
            at_ = rows_.size() - 1;
        } else {
            Current() = std::move(*pending_);
        }
        adding_ = false;
        pending_.reset();
    }

    MemoryDatabases& world_;
    CursorType cursorType_ = CursorType::ForwardOnly;
    LockType lockType_ = LockType::ReadOnly;
    MemoryConnection* connection_ = nullptr;
    AdoTable* table_ = nullptr;
    AdoTable snapshot_;
    std::vector<std::size_t> rows_;
    std::size_t at_ = 0;
    std::optional<AdoRow> pending_;
    bool adding_ = false;
};

} // namespace

std::unique_ptr<localdata::Connection> MemoryDatabases::CreateConnection() {
    return std::make_unique<MemoryConnection>(*this);
}

std::unique_ptr<localdata::Recordset> MemoryDatabases::CreateRecordset() {
    return std::make_unique<MemoryRecordset>(*this);
}

AdoFile& MemoryDatabases::AddFile(const std::wstring& path) {
    support::WriteFileBytes(path, "in memory");
    return files[UpperCase(path)] = {};
}

AdoFile& MemoryDatabases::FileAt(const std::wstring& path) {
    return files.at(UpperCase(path));
}

void MemoryDatabases::Note(const std::wstring& call) {
    calls.push_back(call);
    if (onCall) onCall(call);
}

} // namespace quorvex::testing
