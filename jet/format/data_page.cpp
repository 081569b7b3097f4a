#include "format/data_page.h"

#include "jet/error.h"

namespace jet {

DataPage::DataPage(PageRef page, std::uint32_t owner) : page_(std::move(page)) {
    const Byte* const p = page_.data();
    if (!IsPage(p, kDataPage)) ThrowCorrupt("a data page has another type", page_.number());
    if (Load32(p + kDataOwner) != owner) ThrowCorrupt("a data page belongs to another table", page_.number());
    slotCount_ = Load16(p + kDataSlotCount);
    if (slotCount_ > kMaxSlots + 1) ThrowCorrupt("a data page has too many rows", page_.number());
}

DataPage::Slot DataPage::Get(unsigned slot) const {
    if (slot >= slotCount_) ThrowCorrupt("a row is missing", page_.number());
    const Byte* const p = page_.data();
    const std::uint16_t word = Load16(p + SlotOffset(slot));
    const std::size_t start = word & kSlotStart;
    const std::size_t end = slot == 0 ? kPageSize : Load16(p + SlotOffset(slot - 1)) & kSlotStart;
    if (start > end || end > kPageSize || start < SlotOffset(slotCount_)) {
        ThrowCorrupt("a row lies outside its page", page_.number());
    }
    return {static_cast<std::uint16_t>(word & ~kSlotStart), ByteView(p + start, end - start)};
}

std::size_t DataPage::CheckedLowest() const {
    std::size_t lowest = kPageSize;
    for (unsigned slot = 0; slot < slotCount_; ++slot) {
        const std::size_t start = Load16(page_.data() + SlotOffset(slot)) & kSlotStart;
        if (start > lowest) ThrowCorrupt("a row lies outside its page", page_.number());
        lowest = start;
    }
    if (lowest < SlotOffset(slotCount_)) ThrowCorrupt("a row lies outside its page", page_.number());
    return lowest;
}

DataPage OpenDataPage(Pager& pager, PageNo number, std::uint32_t owner) {
    return DataPage(pager.Read(number), owner);
}

RowBody FollowRow(Pager& pager, std::uint32_t owner, RowId header) {
    constexpr int kMaxHops = 8;
    RowId at = header;
    for (int hop = 0; hop < kMaxHops; ++hop) {
        DataPage page = OpenDataPage(pager, at.page, owner);
        const DataPage::Slot slot = page.Get(at.slot);
        const std::uint16_t kind = slot.flags & kSlotDeleted;
        if (kind == kSlotDeleted || (hop == 0 && kind == kSlotBody))
            ThrowCorrupt("a row that is gone is referred to", at.page);
        if (kind != kSlotHeader) return {page.page(), at, slot.flags, slot.bytes};
        if (slot.bytes.size() < kPointerSize) ThrowCorrupt("a moved row's address is cut off", at.page);
        at = RowIdFromPointer(Load32(slot.bytes.data()));
    }
    ThrowCorrupt("a moved row is not found", header.page);
}

} // namespace jet
