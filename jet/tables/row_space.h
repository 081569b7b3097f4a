#pragma once

#include "format/data_page.h"
#include "tables/allocator.h"

namespace jet {

/// Finds and frees room for rows on the data pages of one owner (a table, or a column's long values).
class RowSpace {
  public:
    RowSpace(Pager& pager, Allocator& allocator, std::uint32_t owner, std::uint32_t ownedMap, std::uint32_t freeMap)
        : pager_(&pager), allocator_(&allocator), owner_(owner), owned_(pager, ownedMap), free_(pager, freeMap) {}

    /// Puts a row into a page with room, or a new one.
    RowId Place(ByteView row, std::uint16_t flags);
    /// Puts new bytes and flags into a slot; false (and nothing done) when the page has no room.
    bool Replace(RowId id, ByteView row, std::uint16_t flags);
    /// Marks a slot as deleted and makes its room usable again.
    void Delete(RowId id);
    /// Whether no slot of the page is in use.
    bool IsDead(PageNo page) const;
    /// Gives a page back to the file.
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
