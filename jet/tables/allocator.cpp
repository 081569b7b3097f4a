#include "tables/allocator.h"

#include "format/data_page.h"
#include "jet/error.h"

#include <algorithm>

namespace jet {
namespace {

constexpr Byte kReferenceMap = 1;
constexpr std::size_t kBitmapStart = 4;

/// The global map: row 0 of page 1. A set bit is a free page.
struct GlobalMap {
    Bytes row;
    std::size_t start; ///< of the row in its page

    explicit GlobalMap(Pager& pager) {
        const DataPage page = OpenDataPage(pager, kGlobalMapPage, 1);
        const auto slot = page.Get(0);
        if (slot.flags != 0 || slot.bytes.size() < 9 || slot.bytes[0] > kReferenceMap) {
            ThrowCorrupt("the map of free pages is not a map", kGlobalMapPage);
        }
        row.assign(slot.bytes.begin(), slot.bytes.end());
        start = static_cast<std::size_t>(slot.bytes.data() - page.page().data());
    }
    bool IsInline() const { return row[0] == 0; }
    PageNo Base() const { return Load32(row.data() + 1); }
    std::size_t Bits() const { return (row.size() - 5) * 8; }
    std::size_t Ranges() const { return (row.size() - 1) / 4; }
    PageNo Reference(std::size_t range) const { return Load32(row.data() + 1 + 4 * range); }
    bool Covers(PageNo page) const { return page >= Base() && page - Base() < Bits(); }
};

void ChangeBit(Byte* bitmap, std::size_t bit, bool set) {
    const unsigned mask = 1U << (bit % 8);
    bitmap[bit / 8] = static_cast<Byte>(set ? bitmap[bit / 8] | mask : bitmap[bit / 8] & ~mask);
}

} // namespace

void Allocator::LoadFreePages() {
    if (rollbacks_ != pager_->rollbacks()) {
        free_.reset();
        rollbacks_ = pager_->rollbacks();
    }
    if (free_) return;
    std::set<PageNo> free;
    const GlobalMap map(*pager_);
    const PageNo end = pager_->pageCount();
    if (map.IsInline()) {
        for (PageNo page = std::max<PageNo>(map.Base(), kCatalogPage + 1); page < end; ++page) {
            if (!map.Covers(page)) break;
            const std::size_t bit = page - map.Base();
            if ((map.row[5 + bit / 8] >> (bit % 8) & 1) != 0) free.insert(page);
        }
    } else {
        for (std::size_t range = 0; range < map.Ranges(); ++range) {
            const PageNo reference = map.Reference(range);
            if (reference == 0) continue;
            const PageRef bitmap = pager_->Read(reference);
            const PageNo first = static_cast<PageNo>(range) * kBitmapPageBits;
            for (PageNo page = first; page < end && page - first < kBitmapPageBits; ++page) {
                const std::size_t bit = page - first;
                if (bit % 8 == 0 && bitmap.data()[kBitmapStart + bit / 8] == 0) {
                    page += 7;
                    continue;
                }
                if (page > kCatalogPage && (bitmap.data()[kBitmapStart + bit / 8] >> (bit % 8) & 1) != 0)
                    free.insert(page);
            }
        }
    }
    if (!free.empty()) {
        for (const PageNo page : claimed_()) free.erase(page);
    }
    free_ = std::move(free);
}

PageEdit Allocator::Allocate() {
    LoadFreePages();
    PageEdit page;
    if (free_->empty()) {
        page = pager_->Append();
    } else {
        page = pager_->Edit(*free_->begin());
        free_->erase(free_->begin());
        std::fill_n(page.edit(), kPageSize, Byte{0});
    }
    MarkUsed(page.number());
    return page;
}

void Allocator::Free(PageNo number) {
    LoadFreePages();
    {
        const PageEdit page = pager_->Edit(number);
        page.edit()[0] = static_cast<Byte>(page.edit()[0] | kFreedPageBit);
    }
    if (MarkFree(number)) free_->insert(number);
}

/// A reference of 0 makes a whole range free; its bitmap is appended when the file grows into it, past the allocator.
PageNo Allocator::AddBitmap(std::size_t range) {
    const GlobalMap map(*pager_);
    if (range >= map.Ranges()) ThrowCorrupt("the map of free pages is too short for its file", kGlobalMapPage);
    PageNo number = 0;
    {
        const PageEdit bitmap = pager_->Append();
        std::fill_n(bitmap.edit(), kPageSize, Byte{0xFF});
        Store32(bitmap.edit(), kBitmapPage | 0x100U);
        number = bitmap.number();
    }
    Store32(pager_->Edit(kGlobalMapPage).edit() + map.start + 1 + 4 * range, number);
    MarkUsed(number);
    return number;
}

/// Turns the inline form into the one with bitmap pages, for a file that has outgrown it.
void Allocator::ConvertMap() {
    const GlobalMap map(*pager_);
    const PageNo end = pager_->pageCount();
    std::vector<PageNo> used;
    for (PageNo page = 0; page < end; ++page) {
        const std::size_t bit = page - map.Base();
        const bool isFree = page >= map.Base() && bit < map.Bits() && (map.row[5 + bit / 8] >> (bit % 8) & 1) != 0;
        if (!isFree) used.push_back(page);
    }
    {
        const PageEdit page = pager_->Edit(kGlobalMapPage);
        std::fill_n(page.edit() + map.start, map.row.size(), Byte{0});
        page.edit()[map.start] = kReferenceMap;
    }
    for (const PageNo page : used) MarkUsed(page);
}

void Allocator::MarkUsed(PageNo page) {
    const GlobalMap map(*pager_);
    if (map.IsInline()) {
        if (page < map.Base()) return;
        if (!map.Covers(page)) {
            ConvertMap();
            return; // every page inside the file that was not marked free is used now, this one included
        }
        ChangeBit(pager_->Edit(kGlobalMapPage).edit() + map.start + 5, page - map.Base(), false);
        return;
    }
    const std::size_t range = page / kBitmapPageBits;
    if (range >= map.Ranges()) ThrowCorrupt("the map of free pages is too short for its file", kGlobalMapPage);
    PageNo reference = map.Reference(range);
    if (reference == 0) reference = AddBitmap(range);
    const PageEdit bitmap = pager_->Edit(reference);
    if (bitmap.data()[0] != kBitmapPage) ThrowCorrupt("a map's bitmap page has another type", reference);
    ChangeBit(bitmap.edit() + kBitmapStart, page % kBitmapPageBits, false);
}

/// False for a page that the map does not cover: it stays unused for ever, which harms nobody.
bool Allocator::MarkFree(PageNo page) {
    const GlobalMap map(*pager_);
    if (map.IsInline()) {
        if (!map.Covers(page)) return false;
        ChangeBit(pager_->Edit(kGlobalMapPage).edit() + map.start + 5, page - map.Base(), true);
        return true;
    }
    const std::size_t range = page / kBitmapPageBits;
    if (range >= map.Ranges() || map.Reference(range) == 0) return false;
    const PageEdit bitmap = pager_->Edit(map.Reference(range));
    if (bitmap.data()[0] != kBitmapPage) ThrowCorrupt("a map's bitmap page has another type", bitmap.number());
    ChangeBit(bitmap.edit() + kBitmapStart, page % kBitmapPageBits, true);
    return true;
}

} // namespace jet
