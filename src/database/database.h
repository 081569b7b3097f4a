#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace quorvex::database {

// A column's value: NULL, yes/no, a whole number, a number, a text, or bytes.
using Value = std::variant<std::monostate, bool, std::int32_t, double, std::wstring, std::vector<std::uint8_t>>;

// Cursor and lock types, share modes: ADO's own numbers.
enum class CursorType { ForwardOnly = 0, Keyset = 1, Dynamic = 2, Static = 3 };
enum class LockType { ReadOnly = 1, Pessimistic = 2, Optimistic = 3, BatchOptimistic = 4 };
inline constexpr int kModeShareDenyWrite = 8;

// The database of the local data in ADO's words. Two engines stand behind it: ado/ passes each call on to the installed
// data access layer, jet/ opens the same files itself. Every call throws support::Error when it fails.

// One open database file.
class Connection {
  public:
    virtual ~Connection() = default;

    // Before Open only.
    virtual void SetMode(int mode) = 0;
    virtual void Open(const std::wstring& connectionString, const std::wstring& user, const std::wstring& password) = 0;
    virtual void Close() = 0;
};

// The rows of one query. After Open it stands on the first row, or at its end when there is none.
class Recordset {
  public:
    virtual ~Recordset() = default;

    // Before Open only.
    virtual void SetCursorType(CursorType type) = 0;
    virtual void SetLockType(LockType type) = 0;
    virtual void Open(const std::wstring& query, Connection& connection) = 0;
    virtual void Close() = 0;

    virtual bool AtBeginning() = 0; // before the first row; with AtEnd() together: no rows at all
    virtual bool AtEnd() = 0;       // behind the last row
    virtual void MoveFirst() = 0;
    virtual void MoveLast() = 0;
    virtual void MoveNext() = 0;
    virtual long RecordCount() = 0;
    // Searches forward from the current row (included) for "[Column]='text'" or "[Column]=number"; AtEnd() when there
    // is none.
    virtual void Find(const std::wstring& criterion) = 0;

    virtual Value Field(const std::wstring& column) = 0;
    virtual void SetField(const std::wstring& column, const Value& value) = 0;
    virtual void AddNew() = 0;
    virtual void Update() = 0;
    virtual void UpdateBatch() = 0;
};

// Makes closed connections and record sets of one engine.
class DatabaseProvider {
  public:
    virtual ~DatabaseProvider() = default;

    virtual std::unique_ptr<Connection> CreateConnection() = 0;
    virtual std::unique_ptr<Recordset> CreateRecordset() = 0;
    // The engine's name for summaries.
    virtual std::wstring Name() const = 0;
};

} // namespace quorvex::database
