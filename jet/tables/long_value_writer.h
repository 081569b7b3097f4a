#pragma once

#include "format/table_def.h"
#include "tables/row_space.h"

namespace jet {

/// Stores a value on the column's long-value pages, or in the cell itself if `mayInline` and it is short; returns the
/// cell. Throws kValueTooLong if the value exceeds 2^30 - 1 bytes.
Bytes WriteLongValue(Pager& pager, Allocator& allocator, const Column& column, ByteView value, bool mayInline);

/// Replaces the value of a cell, in the old value's row if there is room; returns the new cell. Frees what the old
/// value no longer uses. `page` is the row's, for messages.
Bytes ReplaceLongValue(Pager& pager, Allocator& allocator, const Column& column, ByteView value, bool mayInline,
                       ByteView oldCell, PageNo page);

/// Frees the long-value rows of a cell.
void FreeLongValue(Pager& pager, Allocator& allocator, const Column& column, ByteView cell, PageNo page);

} // namespace jet
