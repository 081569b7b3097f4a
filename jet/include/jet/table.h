#pragma once

#include "jet/cursor.h"

#include <optional>

namespace jet {

class Allocator;

/// A column of a table to be made.
struct ColumnSpec {
    std::u16string name;
    ColumnType type = ColumnType::kText;
    std::uint16_t length = 255;  ///< characters for TEXT, bytes for BINARY; else unused
    bool compressed = true;      ///< TEXT and MEMO: store Latin-1 text in one byte a character
    bool autoNumber = false;     ///< LONG only
    std::uint8_t precision = 18; ///< NUMERIC only
    std::uint8_t scale = 0;
};

struct IndexSpec {
    std::u16string name;
    std::vector<std::u16string> columns;
    bool primary = false;
    bool unique = false;
    bool ignoreNulls = false;
    bool required = false;
    bool descending = false; ///< all columns
};

struct TableSpec {
    std::u16string name;
    std::vector<ColumnSpec> columns;
    std::vector<IndexSpec> indexes;
};

/// A new value for the column at this position.
struct Assignment {
    std::size_t column = 0;
    Value value;
};

/// A table of an open database. Cheap to copy; keeps the file open.
class Table {
  public:
    Table(std::shared_ptr<Pager> pager, std::shared_ptr<Allocator> allocator, std::shared_ptr<const TableDef> def);

    const std::u16string& name() const;
    std::size_t columnCount() const;
    const ColumnInfo& column(std::size_t position) const;
    /// Position of a column by name, which is case-blind.
    std::optional<std::size_t> FindColumn(std::u16string_view columnName) const;
    /// The stored definition; a complete type only inside the library.
    const TableDef& definition() const { return *def_; }

    /// All rows, in table order.
    Cursor Rows() const { return Cursor(pager_, def_, {}); }
    /// The rows that meet the conditions, as Select orders them.
    Cursor Where(const std::vector<Condition>& conditions) const;
    /// The row with this id; throws kUsage if it was deleted.
    Row Fetch(RowId id) const;
    /// The first row in table order that meets the conditions ("[Name]='text'", joined by AND), if there is one.
    std::optional<RowId> FindFirst(std::u16string_view conditions) const;
    /// The number of rows, counted.
    std::uint64_t CountRows() const;

    // Changes; the database must be open for writing. Each takes effect whole or not at all and is on the disk when the
    // call returns, unless a ChangeGroup is open: then it becomes part of the group.
    /// Columns without a value become NULL. Throws kDuplicateKey, kNullKey, kValueTooLong, kTypeMismatch among others.
    RowId Insert(std::span<const Assignment> values);
    /// The other columns keep their values.
    void Update(RowId id, std::span<const Assignment> values);
    void Delete(RowId id);

  private:
    std::shared_ptr<Pager> pager_;
    std::shared_ptr<Allocator> allocator_;
    std::shared_ptr<const TableDef> def_;
};

} // namespace jet
