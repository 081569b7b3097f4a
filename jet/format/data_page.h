#pragma once

#include "jet/value.h"
#include "storage/pager.h"

namespace jet {

/// A data page's slots, every one checked before it is handed out.
class DataPage {
  public:
    /// Checks type and owner (a definition's page, 0 for map pages, kLongValueOwner).
    DataPage(PageRef page, std::uint32_t owner);

    unsigned slotCount() const { return slotCount_; }
    const PageRef& page() const { return page_; }

    struct Slot {
        std::uint16_t flags;
        ByteView bytes;
    };
    /// Throws kCorrupt for a slot that does not exist or is out of bounds.
    Slot Get(unsigned slot) const;
    /// Where the lowest row begins. Checks all slots, as is due before a page is changed. Throws kCorrupt.
    std::size_t CheckedLowest() const;

  private:
    PageRef page_;
    unsigned slotCount_;
};

/// Opens `number` as a data page of `owner`.
DataPage OpenDataPage(Pager& pager, PageNo number, std::uint32_t owner);

/// A row's body found from its header: where it is and its bytes (valid while `page` is held).
struct RowBody {
    PageRef page;
    RowId id;
    std::uint16_t flags = 0;
    ByteView bytes;
};

/// Follows a row from its header to its body. Throws kCorrupt for a deleted or missing row or a chain without end.
RowBody FollowRow(Pager& pager, std::uint32_t owner, RowId header);

} // namespace jet
