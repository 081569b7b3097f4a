#pragma once

#include "base/row_pointer.h"
#include "storage/pager.h"

namespace jet {

/// A data page. Each slot is checked before it is returned.
class DataPage {
  public:
    /// Checks the type and the owner: a definition's page, kMapPageOwner or kLongValueOwner. Throws kCorrupt.
    DataPage(PageRef page, std::uint32_t owner);

    unsigned slotCount() const { return slotCount_; }
    const PageRef& page() const { return page_; }

    struct Slot {
        std::uint16_t flags;
        ByteView bytes;
    };
    /// Throws kCorrupt if the slot does not exist or is out of bounds.
    Slot Get(unsigned slot) const;
    /// Where the lowest row begins. Checks all slots, which is necessary before a page is changed. Throws kCorrupt.
    std::size_t CheckedLowest() const;

  private:
    PageRef page_;
    unsigned slotCount_;
};

/// Opens `number` as a data page of `owner`.
DataPage OpenDataPage(Pager& pager, PageNo number, std::uint32_t owner);

/// A row's body, found from its header. `bytes` is valid while `page` is held.
struct RowBody {
    PageRef page;
    RowId id;
    std::uint16_t flags = 0;
    ByteView bytes;
};

/// Follows a row from its header to its body. Throws kCorrupt if the row is deleted or missing, or the chain endless.
RowBody FollowRow(Pager& pager, std::uint32_t owner, RowId header);

} // namespace jet
