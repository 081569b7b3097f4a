#pragma once

#include "format/index_page.h"
#include "format/table_def.h"
#include "tables/allocator.h"

namespace jet {

/// Changes one index's tree. All calls need an open statement but HasOther.
class IndexTree {
  public:
    IndexTree(Pager& pager, Allocator& allocator, const TableDef& def, const Index& index)
        : pager_(&pager), allocator_(&allocator), def_(&def), index_(&index), owned_(pager, index.ownedMap) {}

    /// Whether a row other than `except` has this key.
    bool HasOther(ByteView key, RowId except) const;
    /// Adds an entry that is not there yet. Throws kValueTooLong for a key no page could hold twice.
    void Insert(const Bytes& key, RowId row);
    /// Removes a row's entry. Throws kCorrupt when there is none.
    void Remove(const Bytes& key, RowId row);

  private:
    struct Entry {
        Bytes key;
        RowId row;
        PageNo child = 0;
    };
    /// A page in a form that is easy to change.
    struct Node {
        PageNo number = 0;
        bool leaf = true;
        PageNo previous = 0;
        PageNo next = 0;
        PageNo tail = 0;
        std::vector<Entry> entries;
    };

    IndexPage Open(PageNo page) const { return IndexPage(pager_->Read(page), def_->page); }
    IndexPage Descend(const IndexPosition& position, std::vector<PageNo>& path) const;
    bool IsAlwaysLast(const IndexPage& page, const std::vector<PageNo>& path) const;
    bool InsertInPlace(const IndexPage& page, std::size_t at, const Bytes& key, RowId row);
    bool RemoveInPlace(const IndexPage& page, std::size_t at);
    void RemoveEntry(const IndexPage& page, std::size_t at, std::vector<PageNo> path);

    Node Load(PageNo page) const;
    void Store(const Node& node);
    Node NewNode(bool leaf);
    Entry LastOf(const Node& node) const;
    void SetNext(PageNo page, PageNo next);
    void SetPrevious(PageNo page, PageNo previous);
    void Settle(std::vector<PageNo> path, Node node, bool lastChanged, bool appended);
    Entry Split(Node& node, bool appended);
    void RemovePage(const Node& node);

    Pager* pager_;
    Allocator* allocator_;
    const TableDef* def_;
    const Index* index_;
    UsageMap owned_;
};

} // namespace jet
