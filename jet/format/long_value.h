#pragma once

#include "format/table_def.h"
#include "storage/pager.h"

namespace jet {

/// Reads a MEMO or OLE value from its cell, whichever way it is stored. Throws kCorrupt.
Bytes ReadLongValue(Pager& pager, ByteView cell, PageNo page);

/// The rows (outside the table's own) that a cell's value takes; empty when it stands inline. Throws kCorrupt.
std::vector<RowId> LongValueRows(Pager& pager, ByteView cell, PageNo page);

} // namespace jet
