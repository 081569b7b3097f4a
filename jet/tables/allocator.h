#pragma once

#include "format/usage_map.h"

#include <functional>
#include <optional>
#include <set>

namespace jet {

/// Hands out and takes back pages, and keeps the map of free pages. Changes need an open statement.
class Allocator {
  public:
    /// `claimed` lists the pages that some map owns. Other programs leave pages that are both free and owned, and these
    /// must not be handed out. It is called once, when the file first holds a free page.
    Allocator(Pager& pager, std::function<std::vector<PageNo>()> claimed)
        : pager_(&pager), claimed_(std::move(claimed)) {}

    /// A zeroed page, marked as used.
    PageEdit Allocate();
    /// Takes back a page that no map and no pointer names any more.
    void Free(PageNo page);
    /// Allocates the bitmap pages of a usage map; for UsageMap::Add.
    UsageMap::NewPage NewPage() {
        return [this] { return Allocate(); };
    }

  private:
    /// The global map: a set bit is a free page.
    UsageMap FreeMap() const { return {*pager_, PointerFromRowId(kGlobalMapRow)}; }
    void LoadFreePages();
    void MarkUsed(PageNo page);
    void ConvertMap();
    void AddBitmap(PageNo page);

    Pager* pager_;
    std::function<std::vector<PageNo>()> claimed_;
    std::optional<std::set<PageNo>> free_; ///< pages inside the file that can be handed out
    std::uint64_t rollbacks_ = 0;
};

} // namespace jet
