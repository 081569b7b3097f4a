#pragma once

#include "format/data_page.h"
#include "tables/allocator.h"

namespace jet {

/// Finds and frees room for rows on the data pages of one owner: a table, or the long values of a column.
class RowSpace {
  public:
    RowSpace(Pager& pager, Allocator& allocator, std::uint32_t owner, std::uint32_t ownedMap, std::uint32_t freeMap)
        : pager_(&pager), allocator_(&allocator), owner_(owner), owned_(pager, ownedMap), free_(pager, freeMap) {}

    /// Stores a row on a page with room, or on a new page.
    RowId Place(ByteView row, std::uint16_t flags);
    /// Gives a slot new bytes and flags. False, and nothing changed, if the page has no room.
    bool Replace(RowId id, ByteView row, std::uint16_t flags);
    /// Marks a slot as deleted and frees its room.
    void Delete(RowId id);
    /// Whether all slots of the page are deleted.
    bool IsDead(PageNo page) const;
    /// Frees a page.
    void Release(PageNo page);

  private:
    void NoteFree(PageNo page);

    Pager* pager_;
    Allocator* allocator_;
    std::uint32_t owner_;
    UsageMap owned_;
    UsageMap free_;
};

} // namespace jet
