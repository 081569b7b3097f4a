#include "format/usage_map.h"

#include "format/data_page.h"
#include "jet/error.h"

#include <algorithm>
#include <bit>

namespace jet {
namespace {

constexpr Byte kInlineMap = 0;
constexpr Byte kReferenceMap = 1;
constexpr std::size_t kInlineBits = 5;
constexpr std::size_t kBitmapStart = 4;

/// A page of map rows has owner 0, the global one 1.
DataPage OpenMapPage(Pager& pager, PageNo number) {
    return OpenDataPage(pager, number, number == kGlobalMapPage ? 1U : 0U);
}

PageRef OpenBitmapPage(Pager& pager, PageNo number) {
    PageRef page = pager.Read(number);
    if (page.data()[0] != kBitmapPage) ThrowCorrupt("a map's bitmap page has another type", number);
    return page;
}

bool TestBit(const Byte* bitmap, std::size_t bit) {
    return (bitmap[bit / 8] >> (bit % 8) & 1) != 0;
}
void SetBit(Byte* bitmap, std::size_t bit) {
    bitmap[bit / 8] = static_cast<Byte>(bitmap[bit / 8] | 1U << (bit % 8));
}
void ClearBit(Byte* bitmap, std::size_t bit) {
    bitmap[bit / 8] = static_cast<Byte>(bitmap[bit / 8] & ~(1U << (bit % 8)));
}

/// The map row's bytes for changing. The row has been read, and so checked, before.
Byte* EditRow(const PageEdit& page, unsigned slot) {
    return page.edit() + (Load16(page.data() + kDataSlots + 2 * slot) & kSlotStart);
}

} // namespace

/// The row, checked for a form that can be used.
UsageMap::MapRow UsageMap::Row() const {
    if (!exists()) return {};
    const DataPage page = OpenMapPage(*pager_, at_.page);
    const auto slot = page.Get(at_.slot);
    if (slot.flags != 0 || slot.bytes.size() < kInlineBits) ThrowCorrupt("a usage map is not a map", at_.page);
    if (slot.bytes[0] > kReferenceMap) ThrowCorrupt("a usage map has an unknown form", at_.page);
    if (slot.bytes[0] == kInlineMap && Load32(slot.bytes.data() + 1) > kMaxPages) {
        ThrowCorrupt("a usage map starts past the end", at_.page);
    }
    return {page.page(), slot.bytes};
}

std::vector<PageNo> UsageMap::Pages() const {
    std::vector<PageNo> pages;
    const MapRow held = Row();
    const ByteView row = held.bytes;
    if (row.empty()) return pages;
    const PageNo limit = pager_->pageCount();
    const auto add = [&](ByteView bitmap, PageNo base) {
        EachBit(bitmap, [&](std::size_t bit) {
            const PageNo page = base + static_cast<PageNo>(bit);
            if (page >= limit) ThrowCorrupt("a table owns a page past the end of the file", page);
            pages.push_back(page);
        });
    };
    if (row[0] == kInlineMap) {
        add(row.subspan(kInlineBits), Load32(row.data() + 1));
        return pages;
    }
    for (std::size_t k = 0; 1 + 4 * k + 4 <= row.size(); ++k) {
        const PageNo reference = Load32(row.data() + 1 + 4 * k);
        if (reference == 0) continue;
        const PageRef bitmap = OpenBitmapPage(*pager_, reference);
        add(ByteView(bitmap.data() + kBitmapStart, kPageSize - kBitmapStart), static_cast<PageNo>(k) * kBitmapPageBits);
    }
    return pages;
}

std::vector<PageNo> UsageMap::BitmapPages() const {
    std::vector<PageNo> pages;
    const MapRow held = Row();
    const ByteView row = held.bytes;
    if (row.empty() || row[0] == kInlineMap) return pages;
    for (std::size_t k = 0; 1 + 4 * k + 4 <= row.size(); ++k) {
        if (const PageNo reference = Load32(row.data() + 1 + 4 * k); reference != 0) pages.push_back(reference);
    }
    return pages;
}

bool UsageMap::Contains(PageNo page) const {
    const MapRow held = Row();
    const ByteView row = held.bytes;
    if (row.empty()) return false;
    if (row[0] == kInlineMap) {
        const PageNo base = Load32(row.data() + 1);
        return page >= base && page - base < (row.size() - kInlineBits) * 8 &&
               TestBit(row.data() + kInlineBits, page - base);
    }
    const std::size_t k = page / kBitmapPageBits;
    if (1 + 4 * k + 4 > row.size()) return false;
    const PageNo reference = Load32(row.data() + 1 + 4 * k);
    if (reference == 0) return false;
    const PageRef bitmap = OpenBitmapPage(*pager_, reference);
    return TestBit(bitmap.data() + kBitmapStart, page % kBitmapPageBits);
}

PageNo UsageMap::HighestBelow(PageNo below) const {
    const MapRow held = Row();
    const ByteView row = held.bytes;
    if (row.empty()) return 0;
    const auto highest = [&](const Byte* bitmap, std::size_t size, PageNo base) -> PageNo {
        if (below <= base) return 0;
        std::size_t bits = std::min<std::size_t>(size * 8, below - base);
        while (bits > 0) {
            if (bits % 64 == 0 && Load64(bitmap + bits / 8 - 8) == 0) {
                bits -= 64;
                continue;
            }
            const std::size_t i = (bits - 1) / 8;
            const unsigned keep = bits % 8 == 0 ? 0xFFU : (1U << (bits % 8)) - 1;
            const unsigned byte = bitmap[i] & keep;
            if (byte != 0)
                return base + static_cast<PageNo>(8 * i + static_cast<std::size_t>(std::bit_width(byte)) - 1);
            bits = i * 8;
        }
        return 0;
    };
    if (row[0] == kInlineMap)
        return highest(row.data() + kInlineBits, row.size() - kInlineBits, Load32(row.data() + 1));
    for (std::size_t k = (row.size() - 1) / 4; k-- > 0;) {
        const PageNo reference = Load32(row.data() + 1 + 4 * k);
        if (reference == 0) continue;
        const PageRef bitmap = OpenBitmapPage(*pager_, reference);
        const PageNo found =
            highest(bitmap.data() + kBitmapStart, kPageSize - kBitmapStart, static_cast<PageNo>(k) * kBitmapPageBits);
        if (found != 0) return found;
    }
    return 0;
}

void UsageMap::Add(PageNo page, const NewPage& newPage) {
    const MapRow held = Row();
    const ByteView row = held.bytes;
    if (row.empty()) return;
    if (row[0] == kReferenceMap) {
        const std::size_t k = page / kBitmapPageBits;
        if (1 + 4 * k + 4 > row.size()) ThrowCorrupt("a usage map is too short for its file", at_.page);
        PageNo reference = Load32(row.data() + 1 + 4 * k);
        if (reference == 0) {
            const PageEdit bitmap = newPage();
            bitmap.edit()[0] = kBitmapPage;
            bitmap.edit()[1] = 1;
            reference = bitmap.number();
            const PageEdit map = pager_->Edit(at_.page);
            Store32(EditRow(map, at_.slot) + 1 + 4 * k, reference);
        }
        OpenBitmapPage(*pager_, reference);
        SetBit(pager_->Edit(reference).edit() + kBitmapStart, page % kBitmapPageBits);
        return;
    }
    const PageNo base = Load32(row.data() + 1);
    const std::size_t bits = (row.size() - kInlineBits) * 8;
    if (page >= base && page - base < bits) {
        SetBit(EditRow(pager_->Edit(at_.page), at_.slot) + kInlineBits, page - base);
        return;
    }
    std::vector<PageNo> pages = Pages();
    pages.push_back(page);
    const auto [low, high] = std::minmax_element(pages.begin(), pages.end());
    const PageNo newBase = *low & ~PageNo{7};
    if (*high - newBase >= bits) {
        Convert(pages, newPage);
        return;
    }
    const PageEdit map = pager_->Edit(at_.page);
    Byte* const bytes = EditRow(map, at_.slot);
    std::fill_n(bytes, row.size(), Byte{0});
    Store32(bytes + 1, newBase);
    for (const PageNo p : pages) SetBit(bytes + kInlineBits, p - newBase);
}

/// Every dword after the type byte is read as a reference, so the whole row is cleared first.
void UsageMap::Convert(const std::vector<PageNo>& pages, const NewPage& newPage) {
    const std::size_t size = Row().bytes.size();
    {
        const PageEdit map = pager_->Edit(at_.page);
        Byte* const bytes = EditRow(map, at_.slot);
        std::fill_n(bytes, size, Byte{0});
        bytes[0] = kReferenceMap;
    }
    for (const PageNo page : pages) Add(page, newPage);
}

void UsageMap::Remove(PageNo page) {
    const MapRow held = Row();
    const ByteView row = held.bytes;
    if (row.empty() || !Contains(page)) return;
    if (row[0] == kInlineMap) {
        ClearBit(EditRow(pager_->Edit(at_.page), at_.slot) + kInlineBits, page - Load32(row.data() + 1));
        return;
    }
    const PageNo reference = Load32(row.data() + 1 + 4 * (page / kBitmapPageBits));
    ClearBit(pager_->Edit(reference).edit() + kBitmapStart, page % kBitmapPageBits);
}

} // namespace jet
