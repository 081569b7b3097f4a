#pragma once

#include "format/table_def.h"
#include "tables/allocator.h"

namespace jet {

/// Makes an empty table's pages (definition, maps, index roots) inside a statement; returns its definition page. The
/// catalog does not know it yet.
PageNo MakeTable(Pager& pager, Allocator& allocator, const TableSpec& wanted);

/// The pages of a new database without any row, catalog included; its definitions name them as a finished file does.
Bytes MakeEmptyDatabase(double date, std::u16string_view password);

/// Security ids of a new file's users; they belong together with kNewFileDate.
struct SecurityIds {
    Bytes administrator;
    Bytes engine;
    Bytes users;
    Bytes creator;
};
SecurityIds NewFileSecurityIds();
/// Creation date of new files, in days.
inline constexpr double kNewFileDate = 42329.94480300926;

} // namespace jet
