#pragma once

#include "jet/value.h"
#include "storage/pager.h"

#include <functional>

namespace jet {

/// A set of page numbers kept as a row on a map page. A pointer of 0 is a map that was never made: empty.
class UsageMap {
  public:
    UsageMap(Pager& pager, std::uint32_t pointer) : pager_(&pager), at_(RowIdFromPointer(pointer)) {}

    bool exists() const { return at_.page != 0; }
    std::uint32_t pointer() const { return PointerFromRowId(at_); }
    /// All pages inside the file, ascending. A listed page past the end of the file throws kCorrupt.
    std::vector<PageNo> Pages() const;
    bool Contains(PageNo page) const;
    /// The highest page of the set below `below`, or 0.
    PageNo HighestBelow(PageNo below) const;
    /// Bitmap pages (type 0x05) this map uses.
    std::vector<PageNo> BitmapPages() const;
    /// The row that holds the map.
    RowId row() const { return at_; }

    // Changes; inside a statement. `newPage` appends a zeroed page that the caller has marked as used.
    using NewPage = std::function<PageEdit()>;
    void Add(PageNo page, const NewPage& newPage);
    void Remove(PageNo page);

  private:
    /// The row's bytes as they stand in their page; empty for a map that was never made.
    struct MapRow {
        PageRef page;
        ByteView bytes;
    };
    MapRow Row() const;
    void Convert(const std::vector<PageNo>& pages, const NewPage& newPage);

    Pager* pager_;
    RowId at_;
};

} // namespace jet
