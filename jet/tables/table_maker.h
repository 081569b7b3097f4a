#pragma once

#include "format/table_def.h"
#include "tables/allocator.h"

namespace jet {

/// Makes an empty table's pages (definition, maps, index roots) inside a statement; returns its definition page. The
/// caller enters the table in the catalog.
PageNo MakeTable(Pager& pager, Allocator& allocator, const TableSpec& wanted);

/// The pages of a new database. All tables, the catalog included, are still empty.
Bytes MakeEmptyDatabase(double date, std::u16string_view password);

/// Security ids of a new file's users. They are valid together with kNewFileDate.
struct SecurityIds {
    Bytes administrator;
    Bytes engine;
    Bytes users;
    Bytes creator;
};
SecurityIds NewFileSecurityIds();
/// Creation date of new files, in days since 1899-12-30.
inline constexpr double kNewFileDate = 42329.94480300926;

} // namespace jet
