#include "format/usage_map.h"

#include "format/data_page.h"
#include "jet/error.h"

#include <algorithm>
#include <bit>

namespace jet {
namespace {

DataPage OpenMapPage(Pager& pager, PageNo number) {
    return OpenDataPage(pager, number, number == kGlobalMapPage ? kGlobalMapOwner : kMapPageOwner);
}

PageRef OpenBitmapPage(Pager& pager, PageNo number) {
    PageRef page = pager.Read(number);
    if (page.data()[kPageType] != kBitmapPage) ThrowCorrupt("a map's bitmap page has another type", number);
    return page;
}

ByteView BitmapOf(const PageRef& page) {
    return {page.data() + kBitmapStart, kBitmapSize};
}

bool TestBit(ByteView bitmap, std::size_t bit) {
    return (bitmap[bit / 8] >> (bit % 8) & 1) != 0;
}

void ChangeBit(Byte* bitmap, std::size_t bit, bool set) {
    const unsigned mask = 1U << (bit % 8);
    bitmap[bit / 8] = static_cast<Byte>(set ? bitmap[bit / 8] | mask : bitmap[bit / 8] & ~mask);
}

/// The highest set bit below `bits`; nothing if there is none.
std::optional<std::size_t> HighestBit(ByteView bitmap, std::size_t bits) {
    while (bits > 0) {
        if (bits % 64 == 0 && Load64(bitmap.data() + bits / 8 - 8) == 0) {
            bits -= 64;
            continue;
        }
        const std::size_t i = (bits - 1) / 8;
        const unsigned keep = bits % 8 == 0 ? 0xFFU : (1U << (bits % 8)) - 1;
        const unsigned byte = bitmap[i] & keep;
        if (byte != 0) return 8 * i + static_cast<std::size_t>(std::bit_width(byte)) - 1;
        bits = i * 8;
    }
    return std::nullopt;
}

} // namespace

/// The row, checked; nothing for a map without a row.
std::optional<UsageMap::Row> UsageMap::Read() const {
    if (!exists()) return std::nullopt;
    const DataPage page = OpenMapPage(*pager_, at_.page);
    const auto slot = page.Get(at_.slot);
    if (slot.flags != 0 || slot.bytes.size() < kMapBits) ThrowCorrupt("a usage map is not a map", at_.page);
    if (slot.bytes[kMapKind] > kReferenceMap) ThrowCorrupt("a usage map has an unknown form", at_.page);
    Row row{page.page(), slot.bytes};
    if (row.isInline() && row.base() > kMaxPages) ThrowCorrupt("a usage map starts past the end", at_.page);
    return row;
}

/// The row's bytes for changing. The caller has called Read, which checked the slot.
Byte* UsageMap::EditRow(const PageEdit& page) const {
    return page.edit() + (Load16(page.data() + SlotOffset(at_.slot)) & kSlotStart);
}

template <typename Action>
void UsageMap::EachPage(const Action& action) const {
    const auto row = Read();
    if (!row) return;
    const auto visit = [&action](ByteView bitmap, PageNo base) {
        EachBit(bitmap, [&](std::size_t bit) { action(base + static_cast<PageNo>(bit)); });
    };
    if (row->isInline()) {
        visit(row->bitmap(), row->base());
        return;
    }
    for (std::size_t k = 0; k < row->references(); ++k) {
        const PageNo reference = row->Reference(k);
        if (reference == 0) continue;
        const PageRef page = OpenBitmapPage(*pager_, reference);
        visit(BitmapOf(page), static_cast<PageNo>(k) * kBitmapPageBits);
    }
}

std::vector<PageNo> UsageMap::Pages() const {
    std::vector<PageNo> pages;
    const PageNo limit = pager_->pageCount();
    EachPage([&](PageNo page) {
        if (page >= limit) ThrowCorrupt("a table owns a page past the end of the file", page);
        pages.push_back(page);
    });
    return pages;
}

std::vector<PageNo> UsageMap::PagesInFile() const {
    std::vector<PageNo> pages;
    const PageNo limit = pager_->pageCount();
    EachPage([&](PageNo page) {
        if (page < limit) pages.push_back(page);
    });
    return pages;
}

std::vector<PageNo> UsageMap::BitmapPages() const {
    std::vector<PageNo> pages;
    const auto row = Read();
    if (!row || row->isInline()) return pages;
    for (std::size_t k = 0; k < row->references(); ++k) {
        if (const PageNo reference = row->Reference(k); reference != 0) pages.push_back(reference);
    }
    return pages;
}

bool UsageMap::isInline() const {
    const auto row = Read();
    return row && row->isInline();
}

bool UsageMap::Precedes(PageNo page) const {
    const auto row = Read();
    return row && row->isInline() && page < row->base();
}

bool UsageMap::Contains(PageNo page) const {
    const auto row = Read();
    if (!row) return false;
    if (row->isInline()) return row->Covers(page) && TestBit(row->bitmap(), page - row->base());
    const PageNo reference = row->ReferenceFor(page);
    return reference != 0 && TestBit(BitmapOf(OpenBitmapPage(*pager_, reference)), page % kBitmapPageBits);
}

PageNo UsageMap::HighestBelow(PageNo below) const {
    const auto row = Read();
    if (!row) return 0;
    const auto highest = [below](ByteView bitmap, PageNo base) -> PageNo {
        if (below <= base) return 0;
        const auto bit = HighestBit(bitmap, std::min<std::size_t>(bitmap.size() * 8, below - base));
        return bit ? base + static_cast<PageNo>(*bit) : 0;
    };
    if (row->isInline()) return highest(row->bitmap(), row->base());
    for (std::size_t k = row->references(); k-- > 0;) {
        const PageNo reference = row->Reference(k);
        if (reference == 0) continue;
        const PageRef page = OpenBitmapPage(*pager_, reference);
        if (const PageNo found = highest(BitmapOf(page), static_cast<PageNo>(k) * kBitmapPageBits); found != 0)
            return found;
    }
    return 0;
}

bool UsageMap::Change(PageNo page, bool member) {
    const auto row = Read();
    if (!row) return false;
    if (row->isInline()) {
        if (!row->Covers(page)) return false;
        const PageNo bit = page - row->base();
        ChangeBit(EditRow(pager_->Edit(at_.page)) + kMapBits, bit, member);
        return true;
    }
    const PageNo reference = row->ReferenceFor(page);
    if (reference == 0) return false;
    OpenBitmapPage(*pager_, reference);
    ChangeBit(pager_->Edit(reference).edit() + kBitmapStart, page % kBitmapPageBits, member);
    return true;
}

void UsageMap::Attach(PageNo page, PageNo bitmap) {
    const std::size_t k = page / kBitmapPageBits;
    const auto row = Read();
    if (!row || row->isInline() || k >= row->references()) {
        ThrowCorrupt("a usage map is too short for its file", at_.page);
    }
    Store32(EditRow(pager_->Edit(at_.page)) + kMapReferences + kMapReferenceSize * k, bitmap);
}

/// Every dword after the kind is read as a reference, so the whole row is cleared.
void UsageMap::ResetToReferences() {
    const auto row = Read();
    if (!row) return;
    const std::size_t size = row->bytes.size();
    const PageEdit page = pager_->Edit(at_.page);
    Byte* const bytes = EditRow(page);
    std::fill_n(bytes, size, Byte{0});
    bytes[kMapKind] = kReferenceMap;
}

void UsageMap::Add(PageNo page, const NewPage& newPage) {
    if (!exists() || Change(page, true)) return;
    if (const auto row = Read(); row->isInline()) {
        Rebase(*row, page, newPage);
        return;
    }
    const PageEdit bitmap = newPage();
    MarkPage(bitmap.edit(), kBitmapPage);
    Attach(page, bitmap.number());
    Change(page, true);
}

/// Moves an inline map's base so that it covers `page`, or gives the map bitmap pages if its pages are too far apart.
void UsageMap::Rebase(const Row& row, PageNo page, const NewPage& newPage) {
    std::vector<PageNo> pages = Pages();
    pages.push_back(page);
    const auto [low, high] = std::minmax_element(pages.begin(), pages.end());
    const PageNo base = *low / kMapBaseUnit * kMapBaseUnit;
    if (*high - base >= row.bitmap().size() * 8) {
        ResetToReferences();
        for (const PageNo p : pages) Add(p, newPage);
        return;
    }
    const PageEdit map = pager_->Edit(at_.page);
    Byte* const bytes = EditRow(map);
    std::fill_n(bytes, row.bytes.size(), Byte{0});
    Store32(bytes + kMapBase, base);
    for (const PageNo p : pages) ChangeBit(bytes + kMapBits, p - base, true);
}

void UsageMap::Remove(PageNo page) {
    if (Contains(page)) Change(page, false);
}

} // namespace jet
