#include "format/long_value.h"

#include "format/data_page.h"
#include "jet/error.h"

namespace jet {
namespace {

struct Cell {
    std::uint32_t length;
    std::uint32_t kind;
    std::uint32_t pointer;
};

Cell ReadCell(const Pager& pager, ByteView cell, PageNo page) {
    if (cell.size() < kLongCell) ThrowCorrupt("a long value's cell is too short", page);
    const std::uint32_t word = Load32(cell.data() + kLongWord);
    const Cell parts{word & kLongLength, word & ~kLongLength, Load32(cell.data() + kLongPointer)};
    if (parts.length / kPageSize > pager.pageCount()) ThrowCorrupt("a long value is longer than the file", page);
    if (parts.kind == (kLongInline | kLongSingle)) ThrowCorrupt("a long value has an unknown form", page);
    if (parts.kind == kLongInline && cell.size() - kLongCell < parts.length) {
        ThrowCorrupt("a long value is cut off in its row", page);
    }
    return parts;
}

ByteView LiveRow(const DataPage& page, RowId id) {
    const auto slot = page.Get(id.slot);
    if (slot.flags != 0) ThrowCorrupt("a cell refers to a deleted long value", id.page);
    return slot.bytes;
}

/// Visits the rows of a chain. Each must add to the value, so a circle ends.
template <typename Action>
void EachChainRow(Pager& pager, const Cell& cell, const Action& action) {
    std::size_t left = cell.length;
    std::uint32_t next = cell.pointer;
    while (next != 0) {
        const RowId id = RowIdFromPointer(next);
        const DataPage page = OpenDataPage(pager, id.page, kLongValueOwner);
        const ByteView row = LiveRow(page, id);
        if (row.size() <= kChainData || left == 0)
            ThrowCorrupt("a long value's chain does not fit its length", id.page);
        const ByteView data = row.subspan(kChainData, std::min(row.size() - kChainData, left));
        action(id, data);
        left -= data.size();
        next = Load32(row.data());
    }
    if (left != 0) ThrowCorrupt("a long value's chain is cut off", RowIdFromPointer(cell.pointer).page);
}

} // namespace

Bytes ReadLongValue(Pager& pager, ByteView bytes, PageNo page) {
    const Cell cell = ReadCell(pager, bytes, page);
    if (cell.kind == kLongInline) {
        const ByteView data = bytes.subspan(kLongCell, cell.length);
        return Bytes(data.begin(), data.end());
    }
    if (cell.kind == kLongSingle) {
        const RowId id = RowIdFromPointer(cell.pointer);
        const DataPage data = OpenDataPage(pager, id.page, kLongValueOwner);
        const ByteView row = LiveRow(data, id);
        if (row.size() < cell.length) ThrowCorrupt("a long value is cut off", id.page);
        const ByteView value = row.first(cell.length);
        return Bytes(value.begin(), value.end());
    }
    Bytes value;
    EachChainRow(pager, cell, [&value](RowId, ByteView data) { AppendBytes(value, data); });
    return value;
}

std::vector<RowId> LongValueRows(Pager& pager, ByteView bytes, PageNo page) {
    const Cell cell = ReadCell(pager, bytes, page);
    if (cell.kind == kLongInline) return {};
    if (cell.kind == kLongSingle) return {RowIdFromPointer(cell.pointer)};
    std::vector<RowId> rows;
    EachChainRow(pager, cell, [&rows](RowId id, ByteView) { rows.push_back(id); });
    return rows;
}

} // namespace jet
