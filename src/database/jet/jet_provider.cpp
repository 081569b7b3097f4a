#include "database/jet/jet_provider.h"

#include "database/jet/jet_connection.h"
#include "database/jet/jet_translation.h"
#include "database/row_reader.h"
#include "support/text.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace quorvex::database {
namespace {

// ADO's numbers for calls out of order.
constexpr long kErrorNoCurrentRecord = 3021;
constexpr long kErrorWrongType = 3421;

[[noreturn]] void ThrowNoRow() {
    throw support::Error(kErrorNoCurrentRecord,
                         L"Either BOF or EOF is True, or the current record has been deleted. Requested operation "
                         L"requires a current record.");
}

// A value as the column's type wants it: data access converts numbers and their texts into one another.
jet::Value ForColumn(const jet::ColumnInfo& column, const Value& value) {
    const auto* const text = std::get_if<std::wstring>(&value);
    if (text == nullptr && column.IsTextual() && !std::holds_alternative<std::monostate>(value)) {
        return ToUtf16(ValueText(value));
    }
    const bool whole = column.type == jet::ColumnType::kByte || column.type == jet::ColumnType::kInteger ||
                       column.type == jet::ColumnType::kLong;
    const bool number = column.type == jet::ColumnType::kSingle || column.type == jet::ColumnType::kDouble;
    if (text != nullptr && (whole || number)) {
        if (!support::IsNumber(*text)) {
            throw support::Error(kErrorWrongType,
                                 L"Application uses a value of the wrong type for the current operation.");
        }
        const double parsed = support::ParseNumber(*text);
        if (number) return parsed;
        if (std::abs(parsed) > std::numeric_limits<std::int32_t>::max()) {
            throw support::Error(support::kErrorOverflow, L"Overflow");
        }
        return static_cast<std::int32_t>(std::lround(parsed));
    }
    return ToJet(value);
}

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
        Translated(context_, [&] {
            const jet::Query parsed = jet::ParseQuery(ToUtf16(query));
            wholeTable_ = parsed.conditions.empty();
            cursor_.emplace(database.Select(parsed));
            if (lockType_ != LockType::ReadOnly) table_.emplace(database.OpenTable(parsed.table));
            empty_ = !cursor_->Next();
        });
        place_ = empty_ ? Place::End : Place::Cursor;
        first_ = true;
        connection_ = own;
    }

    void Close() override {
        RequireOpen();
        changes_.clear();
        adding_ = false;
        positions_.clear();
        cursor_.reset();
        const bool writable = std::exchange(table_, std::nullopt).has_value();
        JetConnection* const connection = std::exchange(connection_, nullptr);
        if (writable) Translated(context_, [&] { connection->CommitChanges(); });
    }

    bool AtBeginning() override {
        RequireOpen();
        return empty_;
    }

    bool AtEnd() override {
        RequireOpen();
        return place_ == Place::End;
    }

    void MoveFirst() override {
        RequireOpen();
        WriteChanges();
        if (empty_) ThrowNoRow();
        // The rows are not asked for before somebody wants them: a search from the first row goes by the index.
        place_ = Place::First;
        first_ = true;
    }

    void MoveNext() override {
        RequireOpen();
        WriteChanges();
        if (place_ == Place::End) ThrowNoRow();
        Translated(context_, [&] {
            Settle();
            first_ = false;
            place_ = cursor_->Next() ? Place::Cursor : Place::End;
        });
    }

    void MoveLast() override {
        RequireOpen();
        const long last = RecordCount() - 1;
        MoveFirst();
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

    void Find(const std::wstring& criterion) override {
        RequireOpen();
        WriteChanges();
        if (place_ == Place::End) return;
        Translated(context_, [&] {
            if (first_ && wholeTable_ && table_) {
                const auto found = table_->FindFirst(ToUtf16(criterion));
                if (found) {
                    StandOn(*found);
                } else {
                    place_ = Place::End;
                }
            } else {
                FindForward(criterion);
            }
            first_ = false;
        });
    }

    Value Field(const std::wstring& column) override {
        RequireOpen();
        return Translated(context_, [&]() -> Value {
            const std::size_t position = Position(column);
            for (const jet::Assignment& change : changes_) {
                if (change.column == position) return FromJet(change.value);
            }
            if (adding_) return std::monostate{};
            return FromJet(CurrentValue(position));
        });
    }

    void SetField(const std::wstring& column, const Value& value) override {
        RequireWritable();
        Translated(context_, [&] {
            if (!adding_) CurrentId();
            const std::size_t position = Position(column);
            jet::Value converted = ForColumn(cursor_->column(position), value);
            for (jet::Assignment& change : changes_) {
                if (change.column != position) continue;
                change.value = std::move(converted);
                return;
            }
            if (changes_.empty()) changes_.reserve(cursor_->columnCount());
            changes_.push_back({position, std::move(converted)});
        });
    }

    void AddNew() override {
        RequireWritable();
        WriteChanges();
        adding_ = true;
    }

    void Update() override {
        RequireWritable();
        WriteChanges();
    }

    void UpdateBatch() override { Update(); }

  private:
    // First: before the first row was asked for. Found: on a row that the cursor does not stand on.
    enum class Place { First, Cursor, Found, End };

    void RequireOpen() const {
        if (connection_ == nullptr) ThrowClosed();
    }

    void RequireWritable() const {
        RequireOpen();
        if (!table_) {
            throw support::Error(
                kErrorFeatureNotAvailable,
                L"Current Recordset does not support updating. This may be a limitation of the provider, "
                L"or of the selected locktype.");
        }
    }

    // Brings the cursor to the current row.
    void Settle() {
        if (place_ == Place::Cursor || place_ == Place::End) return;
        cursor_->Rewind();
        bool more = cursor_->Next();
        while (more && place_ == Place::Found && cursor_->Current().id() != found_) more = cursor_->Next();
        place_ = more ? Place::Cursor : Place::End;
    }

    void StandOn(jet::RowId id) {
        found_ = id;
        place_ = Place::Found;
    }

    jet::RowId CurrentId() {
        if (place_ == Place::Found) return found_;
        Settle();
        if (place_ == Place::End) ThrowNoRow();
        return cursor_->Current().id();
    }

    jet::Value CurrentValue(std::size_t position) {
        const jet::RowId id = CurrentId();
        return place_ == Place::Found ? table_->Fetch(id).Get(position) : cursor_->Current().Get(position);
    }

    void FindForward(const std::wstring& criterion) {
        const std::u16string query = u"SELECT * FROM [" + cursor_->tableName() + u"] WHERE " + ToUtf16(criterion);
        std::set<jet::RowId> matches;
        for (jet::Cursor rows = connection_->ForReading().Select(query); rows.Next();)
            matches.insert(rows.Current().id());
        Settle();
        bool more = place_ == Place::Cursor;
        while (more && !matches.contains(cursor_->Current().id())) more = cursor_->Next();
        if (!more) place_ = Place::End;
    }

    // Writes what is pending as one record: whole or not at all, and then nothing is pending any more.
    void WriteChanges() {
        if (changes_.empty() && !adding_) return;
        std::vector<jet::Assignment> changes = std::exchange(changes_, {});
        const bool adding = std::exchange(adding_, false);
        Translated(context_, [&] {
            jet::RowId id;
            if (adding) {
                id = connection_->Changes().Insert(*table_, std::move(changes));
            } else {
                id = CurrentId();
                connection_->Changes().Update(*table_, id, std::move(changes));
            }
            empty_ = false;
            StandOn(id);
        });
    }

    // A few names are asked for over and over again.
    std::size_t Position(const std::wstring& column) {
        const auto known = std::ranges::find(positions_, column, &std::pair<std::wstring, std::size_t>::first);
        if (known != positions_.end()) return known->second;
        const auto position = cursor_->FindColumn(ToUtf16(column));
        if (!position) {
            throw jet::Error(jet::ErrorCode::kNoSuchColumn,
                             "Item cannot be found in the collection corresponding to the requested name or ordinal.");
        }
        positions_.emplace_back(column, *position);
        return *position;
    }

    JetConnection* connection_ = nullptr; // null: closed
    LockType lockType_ = LockType::ReadOnly;
    std::wstring context_;
    std::optional<jet::Cursor> cursor_;
    std::optional<jet::Table> table_; // record sets that may change rows only
    bool wholeTable_ = false;
    bool empty_ = true;
    bool first_ = false; // on the first row of the set
    Place place_ = Place::End;
    jet::RowId found_;
    std::vector<std::pair<std::wstring, std::size_t>> positions_; // of columns, by the names they were asked by
    std::vector<jet::Assignment> changes_;
    bool adding_ = false;
};

} // namespace

std::unique_ptr<Connection> JetProvider::CreateConnection() {
    return std::make_unique<JetConnection>(limits_, keeper_);
}

std::unique_ptr<Recordset> JetProvider::CreateRecordset() {
    return std::make_unique<JetRecordset>();
}

std::wstring JetProvider::Name() const {
    return L"embedded Jet 4 engine";
}

} // namespace quorvex::database
