#pragma once

#include "format/index_page.h"

namespace jet {

/// An entry of an index page: its whole key, its row and, in nodes, the child whose last entry it repeats.
struct IndexEntry {
    Bytes key;
    RowId row;
    PageNo child = 0;
};

/// An index page in a form that is easy to change.
struct IndexNode {
    PageNo number = 0;
    bool leaf = true;
    PageNo previous = 0;
    PageNo next = 0;
    PageNo tail = 0; ///< the child after the last entry's; 0 if there is none
    std::vector<IndexEntry> entries;

    /// The first entry at or after `position`.
    std::vector<IndexEntry>::iterator LowerBound(const IndexPosition& position);
    /// The entry of a child; end() if there is none.
    std::vector<IndexEntry>::iterator FindChild(PageNo child);
    /// Makes the last entry's child the tail. A node keeps at least one entry.
    void MakeTail();
    /// Bytes of an entry when nothing of its key is shared.
    std::size_t EntrySize(std::size_t entry) const { return entries[entry].key.size() + EntryTrailer(leaf); }
    /// Bytes of all entries when nothing is shared.
    std::size_t FullSize() const;
    /// Whether the page cannot hold the entries, even with their common prefix stored once.
    bool Overflows() const;
};

/// Reads a page of the index tree that belongs to the table defined on `owner`. Throws kCorrupt.
IndexNode LoadIndexNode(Pager& pager, PageNo owner, PageNo page);

/// Writes the whole page. Throws kCorrupt if it overflows.
void StoreIndexNode(Pager& pager, PageNo owner, const IndexNode& node);

/// Adds an entry at `at` to a leaf without touching anything else. False, and nothing changed, if the page would have
/// to be laid out anew: the entry would be the first one, does not fit, or lacks the common prefix.
bool InsertInPlace(Pager& pager, const IndexPage& leaf, std::size_t at, ByteView key, RowId row);

/// Removes the entry `at` of a leaf in the same way; false for the first and the last one.
bool RemoveInPlace(Pager& pager, const IndexPage& leaf, std::size_t at);

} // namespace jet
