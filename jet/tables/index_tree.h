#pragma once

#include "format/table_def.h"
#include "tables/allocator.h"
#include "tables/index_scan.h"

namespace jet {

/// Changes one index's tree. Changes need an open statement.
class IndexTree {
  public:
    IndexTree(Pager& pager, Allocator& allocator, const TableDef& def, const Index& index)
        : pager_(&pager), allocator_(&allocator), def_(&def), index_(&index) {}

    /// Whether a row other than `except` has this key.
    bool HasOther(ByteView key, RowId except) const;
    /// Adds an entry. Throws kValueTooLong if the key is so long that a page could not hold two, kCorrupt if the entry
    /// exists already.
    void Insert(const Bytes& key, RowId row);
    /// Removes a row's entry. Throws kCorrupt if there is none.
    void Remove(const Bytes& key, RowId row);

  private:
    IndexPage Descend(const IndexPosition& position, std::vector<PageNo>& path) const {
        return DescendIndex(*pager_, def_->page, index_->root, position, &path);
    }
    bool IsAlwaysLast(const IndexPage& page, const std::vector<PageNo>& path) const;
    Bytes StoredKey(RowId row) const;
    void RemoveEntry(const IndexPage& page, std::size_t at, std::vector<PageNo> path);

    Pager* pager_;
    Allocator* allocator_;
    const TableDef* def_;
    const Index* index_;
};

} // namespace jet
