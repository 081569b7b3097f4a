#pragma once

#include "base/row_pointer.h"
#include "storage/pager.h"

#include <compare>

namespace jet {

/// A position in an index's order: by key bytes, then by row.
struct IndexPosition {
    ByteView key;
    RowId row;
};

inline constexpr RowId kBeforeAllRows{0, 0};
inline constexpr RowId kAfterAllRows{0xFFFFFF, 0xFF};

/// One page of an index tree. Its layout is checked on construction.
class IndexPage {
  public:
    /// Checks that `page` is an index page of the table defined on `owner`. Throws kCorrupt.
    IndexPage(PageRef page, PageNo owner);

    bool isLeaf() const { return leaf_; }
    std::size_t size() const { return ends_->size(); }
    const EntryEnds& ends() const { return *ends_; }
    PageNo number() const { return page_.number(); }
    PageNo previous() const { return Load32(page_.data() + kIndexPrevious); }
    PageNo next() const { return Load32(page_.data() + kIndexNext); }
    PageNo tail() const { return Load32(page_.data() + kIndexTail); }

    RowId Row(std::size_t entry) const;
    /// Appends the rows of entries from `from` up to, not including, `to`.
    void AppendRows(std::size_t from, std::size_t to, std::vector<RowId>& rows) const;
    PageNo Child(std::size_t entry) const;
    Bytes Key(std::size_t entry) const;
    std::strong_ordering Compare(std::size_t entry, const IndexPosition& position) const;
    /// The first entry at or after `position`; size() if there is none.
    std::size_t LowerBound(const IndexPosition& position) const;
    /// The child that leads to `position`; 0 if the node has no children.
    PageNo ChildFor(const IndexPosition& position) const;

  private:
    const Byte* Area() const { return page_.data() + kIndexEntries; }
    std::shared_ptr<const EntryEnds> CheckedEnds() const;
    std::size_t Start(std::size_t entry) const { return entry == 0 ? 0 : (*ends_)[entry - 1]; }
    std::size_t Trailer() const { return EntryTrailer(leaf_); }

    PageRef page_;
    bool leaf_ = true;
    std::size_t prefix_ = 0;
    std::shared_ptr<const EntryEnds> ends_;
};

} // namespace jet
