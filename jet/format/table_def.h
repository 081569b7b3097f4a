#pragma once

#include "base/row_pointer.h"
#include "jet/table.h"
#include "storage/pager.h"

#include <optional>
#include <string>
#include <string_view>

namespace jet {

struct Column : ColumnInfo {
    std::uint16_t number = 0;        ///< bit in the null mask, lasting
    std::uint16_t variableIndex = 0; ///< place among the variable columns
    std::uint16_t fixedOffset = 0;   ///< after the row's column count
    std::uint8_t flags = 0;
    std::uint8_t moreFlags = 0;
    std::uint16_t sortOrder = kGeneralLcid;
    std::uint8_t sortVersion = 0;
    std::uint8_t scale = 0;     ///< NUMERIC only
    std::uint32_t ownedMap = 0; ///< MEMO and OLE: maps of the long-value pages
    std::uint32_t freeMap = 0;

    bool IsFixed() const { return (flags & kColumnFixed) != 0; }
};

struct IndexColumn {
    std::size_t column = 0; ///< position in TableDef::columns
    bool ascending = true;
};

/// A real index: one tree.
struct Index {
    std::u16string name; ///< of the first logical index that uses it
    std::vector<IndexColumn> columns;
    std::uint32_t ownedMap = 0;
    PageNo root = 0;
    std::uint8_t flags = 0;
    bool primary = false;

    bool IsUnique() const { return primary || (flags & kIndexUnique) != 0; }
    bool IgnoresNulls() const { return (flags & kIndexIgnoreNulls) != 0; }
    bool IsRequired() const { return primary || (flags & kIndexRequired) != 0; }
};

/// A table's definition as read from its pages. Counters are not kept here, as they change.
struct TableDef {
    PageNo page = 0;
    std::vector<PageNo> pages; ///< the definition's own pages
    std::u16string name;
    bool system = false;
    std::uint16_t maxColumns = 0;
    std::uint16_t variableColumns = 0;
    std::size_t fixedSize = 0; ///< bytes of the fixed area
    std::uint32_t ownedMap = 0;
    std::uint32_t freeMap = 0;
    std::vector<Column> columns; ///< by column number, the order in which a query returns them
    std::vector<Index> indexes;

    /// Position of a column by name, case-blind.
    std::optional<std::size_t> FindColumn(std::u16string_view columnName) const;
};

/// Reads and checks a definition. Throws kCorrupt.
TableDef ReadTableDef(Pager& pager, PageNo page);

/// Bytes that a value of the type takes in a row's fixed part; "length" for types of any length.
std::size_t FixedSize(ColumnType type, std::size_t length);

/// Whether two names are the same object's: case-blind.
bool SameName(std::u16string_view a, std::u16string_view b);
/// A name in the form by which SameName compares.
std::u16string FoldName(std::u16string_view name);

/// Where a new table's parts stand.
struct TablePlaces {
    bool system = false;
    std::uint32_t ownedMap = 0;
    std::uint32_t freeMap = 0;
    std::vector<std::uint32_t> indexMaps;
    std::vector<PageNo> indexRoots;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> longMaps; ///< per MEMO/OLE column: owned, free
};

/// The stored form of a definition, joined (the caller cuts it into pages). Checks names, types and limits: kUsage.
Bytes BuildTableDef(const TableSpec& wanted, const TablePlaces& places);

} // namespace jet
