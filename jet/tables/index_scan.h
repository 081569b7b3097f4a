#pragma once

#include "format/index_page.h"
#include "format/table_def.h"

#include <optional>

namespace jet {

/// Runs over an index's entries in order. Checks the links and the order from page to page, so that a damaged tree ends
/// in kCorrupt and never in a circle.
class IndexScan {
  public:
    /// Stands before the first entry that is not before `from`.
    IndexScan(Pager& pager, PageNo owner, PageNo root, const IndexPosition& from);

    /// Moves to the next entry; false at the end.
    bool Next();
    RowId Row() const { return page_->Row(entry_); }
    Bytes Key() const { return page_->Key(entry_); }
    std::strong_ordering Compare(const IndexPosition& position) const { return page_->Compare(entry_, position); }
    /// Adds the rows of all entries before `to`, from the present place on.
    void Collect(const IndexPosition& to, std::vector<RowId>& rows, std::size_t limit);

  private:
    bool NextPage();

    Pager* pager_;
    PageNo owner_;
    std::optional<IndexPage> page_;
    std::size_t entry_ = 0;
    bool started_ = false;
};

/// The leaf in which `position` belongs.
IndexPage DescendIndex(Pager& pager, PageNo owner, PageNo root, const IndexPosition& position);

} // namespace jet
