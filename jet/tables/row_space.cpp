#include "tables/row_space.h"

#include "jet/error.h"

#include <algorithm>
#include <cstring>

namespace jet {
namespace {

constexpr std::size_t kTooFull = 60;    ///< free bytes below which a page leaves the free map
constexpr std::size_t kRoomAgain = 256; ///< free bytes from which it comes back
constexpr int kPagesTried = 8;

std::size_t FreeBytes(const Byte* page) {
    return Load16(page + kDataFree);
}

/// Free bytes counted from the slots.
std::size_t CheckedFree(const DataPage& page) {
    return page.CheckedLowest() - SlotOffset(page.slotCount());
}

void StoreFree(Byte* page, std::size_t lowest, unsigned slots) {
    Store16(page + kDataFree, static_cast<std::uint32_t>(lowest - SlotOffset(slots)));
}

} // namespace

RowId RowSpace::Place(ByteView row, std::uint16_t flags) {
    const std::size_t need = row.size() + kSlotSize;
    PageEdit target;
    PageNo candidate = pager_->pageCount();
    for (int tries = 0; tries < kPagesTried; ++tries) {
        candidate = free_.HighestBelow(candidate);
        if (candidate == 0) break;
        const DataPage page = OpenDataPage(*pager_, candidate, owner_);
        if (page.slotCount() >= kMaxSlots || CheckedFree(page) < need) continue;
        target = pager_->Edit(candidate);
        break;
    }
    if (!target) {
        target = allocator_->Allocate();
        Byte* const p = target.edit();
        MarkPage(p, kDataPage);
        Store32(p + kDataOwner, owner_);
        owned_.Add(target.number(), allocator_->NewPage());
        free_.Add(target.number(), allocator_->NewPage());
    }
    Byte* const p = target.edit();
    const unsigned slot = Load16(p + kDataSlotCount);
    const std::size_t end = slot == 0 ? kPageSize : Load16(p + SlotOffset(slot - 1)) & kSlotStart;
    const std::size_t start = end - row.size();
    std::copy(row.begin(), row.end(), p + start);
    Store16(p + SlotOffset(slot), static_cast<std::uint32_t>(start) | flags);
    Store16(p + kDataSlotCount, slot + 1);
    StoreFree(p, start, slot + 1);
    if (FreeBytes(p) < kTooFull || slot + 1 >= kMaxSlots) free_.Remove(target.number());
    return {target.number(), static_cast<std::uint8_t>(slot)};
}

bool RowSpace::Replace(RowId id, ByteView row, std::uint16_t flags) {
    const DataPage page = OpenDataPage(*pager_, id.page, owner_);
    const std::size_t lowest = page.CheckedLowest();
    const ByteView old = page.Get(id.slot).bytes;
    const unsigned slots = page.slotCount();
    if (lowest - SlotOffset(slots) + old.size() < row.size()) return false;
    const auto start = static_cast<std::size_t>(old.data() - page.page().data());
    const std::size_t end = start + old.size();
    const PageEdit edit = pager_->Edit(id.page);
    Byte* const p = edit.edit();
    // Move the rows below. Adding to a slot changes its start and keeps the flags above it.
    const std::size_t newLowest = lowest + old.size() - row.size();
    std::memmove(p + newLowest, p + lowest, start - lowest);
    std::copy(row.begin(), row.end(), p + end - row.size());
    for (unsigned slot = id.slot; slot < slots; ++slot) {
        Byte* const word = p + SlotOffset(slot);
        Store16(word, static_cast<std::uint32_t>(Load16(word) + newLowest - lowest));
    }
    Store16(p + SlotOffset(id.slot), static_cast<std::uint32_t>(end - row.size()) | flags);
    StoreFree(p, newLowest, slots);
    NoteFree(id.page);
    return true;
}

void RowSpace::NoteFree(PageNo number) {
    const PageRef page = pager_->Read(number);
    const bool hasSlots = Load16(page.data() + kDataSlotCount) < kMaxSlots;
    const std::size_t room = FreeBytes(page.data());
    if (room >= kRoomAgain && hasSlots) {
        if (!free_.Contains(number)) free_.Add(number, allocator_->NewPage());
    } else if (room < kTooFull) {
        free_.Remove(number);
    }
}

void RowSpace::Delete(RowId id) {
    // Both flags, because some readers look at only one of them.
    Replace(id, {}, kSlotDeleted);
}

bool RowSpace::IsDead(PageNo number) const {
    const DataPage page = OpenDataPage(*pager_, number, owner_);
    for (unsigned slot = 0; slot < page.slotCount(); ++slot) {
        if (page.Get(slot).flags != kSlotDeleted) return false;
    }
    return true;
}

void RowSpace::Release(PageNo page) {
    free_.Remove(page);
    owned_.Remove(page);
    allocator_->Free(page);
}

} // namespace jet
