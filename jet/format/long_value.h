#pragma once

#include "format/table_def.h"
#include "storage/pager.h"

namespace jet {

/// Reads a MEMO or OLE value from its cell, in whichever of the three ways it is stored. Throws kCorrupt.
Bytes ReadLongValue(Pager& pager, ByteView cell, PageNo page);

/// The long-value rows that hold a cell's value; empty if the value is inline. Throws kCorrupt.
std::vector<RowId> LongValueRows(Pager& pager, ByteView cell, PageNo page);

} // namespace jet
