#pragma once

#include "format/table_def.h"
#include "tables/allocator.h"
#include "tables/index_node.h"

namespace jet {

/// Writes changed pages of one index tree and carries the consequences towards the root: splits, new last keys, pages
/// that have become empty. Changes need an open statement.
class IndexBalance {
  public:
    IndexBalance(Pager& pager, Allocator& allocator, const TableDef& def, const Index& index)
        : pager_(&pager), allocator_(&allocator), owner_(def.page), owned_(pager, index.ownedMap) {}

    /// Writes `node`, which lies below the nodes of `path` (the root first). `lastChanged`: its last entry is another
    /// one now. `appended`: the change was an entry at the end.
    void Settle(std::vector<PageNo> path, IndexNode node, bool lastChanged, bool appended);
    /// The same for a node that has just lost an entry: if it is empty, it is removed from its parent and freed.
    void SettleRemoval(std::vector<PageNo> path, IndexNode node, bool lastChanged);

  private:
    /// What a changed child leaves to do in its parent.
    struct ParentChange {
        bool any = false;
        bool last = false; ///< the last entry below the parent is another one
    };

    IndexPage Open(PageNo page) const { return IndexPage(pager_->Read(page), owner_); }
    IndexNode Load(PageNo page) const { return LoadIndexNode(*pager_, owner_, page); }
    void Store(const IndexNode& node) { StoreIndexNode(*pager_, owner_, node); }
    IndexNode NewNode(bool leaf);
    IndexEntry LastBelow(const IndexNode& node) const;
    void SetLink(PageNo page, std::size_t offset, PageNo target);
    IndexEntry Split(IndexNode& node, bool appended);
    void GrowRoot(IndexNode& node, std::vector<PageNo>& path);
    ParentChange UpdateParent(IndexNode& parent, const IndexNode& child, bool lastChanged,
                              std::optional<IndexEntry> added) const;
    bool RemoveChild(IndexNode& parent, PageNo child) const;
    void Release(const IndexNode& node);

    Pager* pager_;
    Allocator* allocator_;
    PageNo owner_;
    UsageMap owned_;
};

} // namespace jet
