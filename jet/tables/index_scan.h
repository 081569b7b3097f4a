#pragma once

#include "format/index_page.h"
#include "format/table_def.h"

#include <optional>

namespace jet {

/// Visits an index's entries in order. Checks the links and the order from page to page, so that a damaged tree gives
/// kCorrupt and never an endless walk.
class IndexScan {
  public:
    /// Starts before the first entry at or after `from`.
    IndexScan(Pager& pager, PageNo owner, PageNo root, const IndexPosition& from);

    /// Moves to the next entry; false at the end.
    bool Next();
    RowId Row() const { return page_->Row(entry_); }
    Bytes Key() const { return page_->Key(entry_); }
    std::strong_ordering Compare(const IndexPosition& position) const { return page_->Compare(entry_, position); }
    /// Appends the rows of the entries from the current position up to `to`, `limit` rows at most or a page more.
    void Collect(const IndexPosition& to, std::vector<RowId>& rows, std::size_t limit);

  private:
    bool NextPage();

    Pager* pager_;
    PageNo owner_;
    std::optional<IndexPage> page_;
    std::size_t entry_ = 0;
    bool started_ = false;
};

/// The leaf to which `position` belongs. `path`, if not null, receives the nodes above it, the root first.
IndexPage DescendIndex(Pager& pager, PageNo owner, PageNo root, const IndexPosition& position,
                       std::vector<PageNo>* path = nullptr);

} // namespace jet
