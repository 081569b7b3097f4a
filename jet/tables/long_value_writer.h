#pragma once

#include "format/table_def.h"
#include "tables/row_space.h"

namespace jet {

/// Stores a value on the column's long-value pages, or in the cell itself when `mayInline` and it is short; returns the
/// cell. Throws kValueTooLong beyond the format's 2^30 - 1 bytes.
Bytes WriteLongValue(Pager& pager, Allocator& allocator, const Column& column, ByteView value, bool mayInline);

/// The same for a cell that holds a value already: in that one's place where there is room, else beside it, and the old
/// one is freed. `page` is the row's, for messages.
Bytes ReplaceLongValue(Pager& pager, Allocator& allocator, const Column& column, ByteView value, bool mayInline,
                       ByteView oldCell, PageNo page);

/// Frees what a cell's value takes outside its row.
void FreeLongValue(Pager& pager, Allocator& allocator, const Column& column, ByteView cell, PageNo page);

} // namespace jet
