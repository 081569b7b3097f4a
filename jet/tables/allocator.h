#pragma once

#include "format/usage_map.h"

#include <functional>
#include <optional>
#include <set>

namespace jet {

/// Hands out and takes back pages, keeping the global map of free pages. Changes need an open statement.
class Allocator {
  public:
    /// `claimed` lists the pages that some map owns: other programs leave pages both free and owned, and these must not
    /// be handed out. It is asked once, when the file first holds a free page.
    Allocator(Pager& pager, std::function<std::vector<PageNo>()> claimed)
        : pager_(&pager), claimed_(std::move(claimed)) {}

    /// A zeroed page, marked as used.
    PageEdit Allocate();
    /// Gives back a page that no map and no pointer names any more.
    void Free(PageNo page);
    /// A page for the bitmap of a usage map; for UsageMap::Add.
    UsageMap::NewPage NewPage() {
        return [this] { return Allocate(); };
    }

  private:
    void LoadFreePages();
    void MarkUsed(PageNo page);
    bool MarkFree(PageNo page);
    void ConvertMap();
    PageNo AddBitmap(std::size_t range);

    Pager* pager_;
    std::function<std::vector<PageNo>()> claimed_;
    std::optional<std::set<PageNo>> free_; ///< pages inside the file that can be handed out
    std::uint64_t rollbacks_ = 0;
};

} // namespace jet
