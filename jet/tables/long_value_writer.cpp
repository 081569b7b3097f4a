#include "tables/long_value_writer.h"

#include "format/long_value.h"
#include "jet/error.h"

#include <algorithm>

namespace jet {
namespace {

RowSpace SpaceOf(Pager& pager, Allocator& allocator, const Column& column) {
    return RowSpace(pager, allocator, kLongValueOwner, column.ownedMap, column.freeMap);
}

} // namespace

Bytes WriteLongValue(Pager& pager, Allocator& allocator, const Column& column, ByteView value, bool mayInline) {
    if (value.size() > kLongLength) throw Error(ErrorCode::kValueTooLong, "A MEMO or OLE value is too long");
    const std::uint32_t length = static_cast<std::uint32_t>(value.size());
    const bool isInline = mayInline && value.size() <= kMaxInlineLong;
    Bytes cell(kLongCell + (isInline ? value.size() : 0));
    if (isInline) {
        Store32(cell.data() + kLongWord, length | kLongInline);
        std::copy(value.begin(), value.end(), cell.begin() + kLongCell);
        return cell;
    }
    RowSpace space = SpaceOf(pager, allocator, column);
    std::uint32_t pointer = 0;
    std::uint32_t kind = 0;
    if (value.size() <= kMaxLongRow) {
        kind = kLongSingle;
        pointer = PointerFromRowId(space.Place(value, 0));
    } else {
        // The last part first, so that each stored pointer leads to an existing row.
        std::size_t end = value.size();
        while (end > 0) {
            const std::size_t start = (end - 1) / kMaxChainData * kMaxChainData;
            const ByteView part = value.subspan(start, end - start);
            Bytes row(kChainData + part.size());
            Store32(row.data(), pointer);
            std::copy(part.begin(), part.end(), row.begin() + kChainData);
            pointer = PointerFromRowId(space.Place(row, 0));
            end = start;
        }
    }
    Store32(cell.data() + kLongWord, length | kind);
    Store32(cell.data() + kLongPointer, pointer);
    return cell;
}

Bytes ReplaceLongValue(Pager& pager, Allocator& allocator, const Column& column, ByteView value, bool mayInline,
                       ByteView oldCell, PageNo page) {
    const bool wantsRow = value.size() <= kMaxLongRow && !(mayInline && value.size() <= kMaxInlineLong);
    if (wantsRow && oldCell.size() >= kLongCell && (Load32(oldCell.data() + kLongWord) & ~kLongLength) == kLongSingle) {
        const RowId id = LongValueRows(pager, oldCell, page).front();
        const bool live = OpenDataPage(pager, id.page, kLongValueOwner).Get(id.slot).flags == 0;
        if (live && SpaceOf(pager, allocator, column).Replace(id, value, 0)) {
            Bytes cell(oldCell.begin(), oldCell.end());
            Store32(cell.data() + kLongWord, static_cast<std::uint32_t>(value.size()) | kLongSingle);
            return cell;
        }
    }
    Bytes cell = WriteLongValue(pager, allocator, column, value, mayInline);
    FreeLongValue(pager, allocator, column, oldCell, page);
    return cell;
}

void FreeLongValue(Pager& pager, Allocator& allocator, const Column& column, ByteView cell, PageNo page) {
    RowSpace space = SpaceOf(pager, allocator, column);
    const UsageMap owned(pager, column.ownedMap);
    for (const RowId id : LongValueRows(pager, cell, page)) {
        space.Delete(id);
        // A page that no map owns may also hold values of other columns.
        if (space.IsDead(id.page) && owned.Contains(id.page)) space.Release(id.page);
    }
}

} // namespace jet
