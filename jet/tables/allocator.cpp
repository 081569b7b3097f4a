#include "tables/allocator.h"

#include "jet/error.h"

#include <algorithm>

namespace jet {

void Allocator::LoadFreePages() {
    if (rollbacks_ != pager_->rollbacks()) {
        free_.reset();
        rollbacks_ = pager_->rollbacks();
    }
    if (free_) return;
    std::set<PageNo> free;
    for (const PageNo page : FreeMap().PagesInFile()) {
        if (page > kCatalogPage) free.insert(free.end(), page);
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
        page.edit()[kPageType] = static_cast<Byte>(page.edit()[kPageType] | kFreedPageBit);
    }
    // A page that the map does not cover stays unused for ever, which is harmless.
    if (FreeMap().Change(number, true)) free_->insert(number);
}

void Allocator::MarkUsed(PageNo page) {
    UsageMap map = FreeMap();
    if (map.Change(page, false)) return;
    if (!map.isInline()) {
        AddBitmap(page);
        FreeMap().Change(page, false);
    } else if (!map.Precedes(page)) {
        ConvertMap();
    }
}

/// A missing bitmap makes its whole range of pages free. It is added when the file grows into that range; its own page
/// is appended, since asking for a free page would need the bitmap.
void Allocator::AddBitmap(PageNo page) {
    PageNo number = 0;
    {
        const PageEdit bitmap = pager_->Append();
        std::fill_n(bitmap.edit() + kBitmapStart, kBitmapSize, Byte{0xFF});
        MarkPage(bitmap.edit(), kBitmapPage);
        number = bitmap.number();
    }
    FreeMap().Attach(page, number);
    MarkUsed(number);
}

/// Gives the map bitmap pages when the file has outgrown the inline form. Pages inside the file that were not marked
/// as free are in use; those past the old bitmap have just been appended.
void Allocator::ConvertMap() {
    UsageMap map = FreeMap();
    const std::vector<PageNo> free = map.PagesInFile();
    const PageNo end = pager_->pageCount();
    map.ResetToReferences();
    for (PageNo page = 0; page < end; ++page) {
        if (!std::binary_search(free.begin(), free.end(), page)) MarkUsed(page);
    }
}

} // namespace jet
