#pragma once

#include "jet/query.h"
#include "jet/value.h"

#include <memory>
#include <optional>
#include <span>

namespace jet {

class Pager;
struct RowBody;
struct TableDef;

/// A column as a query returns it.
struct ColumnInfo {
    std::u16string name;
    ColumnType type = ColumnType::kText;
    std::uint16_t length = 0; ///< bytes; text: twice the characters

    bool IsLong() const { return type == ColumnType::kMemo || type == ColumnType::kOle; }
    bool IsTextual() const { return type == ColumnType::kMemo || type == ColumnType::kText; }
};

/// A row's contents, copied from its page; MEMO and OLE values are read when asked for.
class Row {
  public:
    Row() = default;
    Row(std::shared_ptr<Pager> pager, std::shared_ptr<const TableDef> def, RowId id, ByteView bytes,
        std::uint32_t page);

    /// The value of the column at this position in the definition.
    Value Get(std::size_t column) const;
    RowId id() const { return id_; }
    /// The stored bytes of a cell; nothing for NULL.
    std::optional<ByteView> Stored(std::size_t column) const;
    bool IsFlagSet(std::size_t column) const;

  private:
    friend class Cursor;
    void Assign(RowId id, ByteView bytes, std::uint32_t page);

    std::shared_ptr<Pager> pager_;
    std::shared_ptr<const TableDef> def_;
    RowId id_;
    Bytes bytes_;
    std::uint32_t page_ = 0;
};

/// Runs over the rows that meet the conditions: in table order (ascending page, then slot) without conditions or when
/// no index fits, else in the order of the index used.
class Cursor {
  public:
    Cursor(std::shared_ptr<Pager> pager, std::shared_ptr<const TableDef> def, const std::vector<Condition>& conditions);
    Cursor(const Cursor& other);
    Cursor(Cursor&& other) noexcept;
    Cursor& operator=(Cursor other) noexcept;
    ~Cursor();

    /// Moves to the next row; false at the end.
    bool Next();
    /// The row moved to. Valid until the next move.
    const Row& Current() const;
    /// Starts again before the first row, over the table as it is now.
    void Rewind();

    const std::u16string& tableName() const;
    std::size_t columnCount() const;
    const ColumnInfo& column(std::size_t position) const;
    /// Position of a column by name, which is case-blind.
    std::optional<std::size_t> FindColumn(std::u16string_view columnName) const;
    /// The stored definition; a complete type only inside the library.
    const TableDef& definition() const;
    bool usesIndex() const;

  private:
    struct State;
    static bool NextByIndex(State& state);
    static bool NextByScan(State& state);
    static bool Take(State& state, RowId id, const RowBody& body);

    std::unique_ptr<State> state_;
};

} // namespace jet
