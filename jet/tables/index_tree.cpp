#include "tables/index_tree.h"

#include "jet/error.h"
#include "tables/index_balance.h"

#include <algorithm>

namespace jet {

bool IndexTree::HasOther(ByteView key, RowId except) const {
    IndexScan scan(*pager_, def_->page, index_->root, {key, kBeforeAllRows});
    while (scan.Next() && scan.Compare({key, kAfterAllRows}) < 0) {
        if (scan.Row() != except) return true;
    }
    return false;
}

void IndexTree::Insert(const Bytes& key, RowId row) {
    if (key.size() > kMaxKey) throw Error(ErrorCode::kValueTooLong, "A value is too long for its index");
    std::vector<PageNo> path;
    const IndexPosition position{key, row};
    PageNo leaf = 0;
    {
        const IndexPage page = Descend(position, path);
        const std::size_t at = page.LowerBound(position);
        if (at < page.size() && page.Compare(at, position) == 0)
            ThrowCorrupt("an index entry exists already", page.number());
        const bool inside = at < page.size() || IsAlwaysLast(page, path);
        if (inside && InsertInPlace(*pager_, page, at, key, row)) return;
        leaf = page.number();
    }
    IndexNode node = LoadIndexNode(*pager_, def_->page, leaf);
    const auto at = node.LowerBound(position);
    const bool last = at == node.entries.end();
    node.entries.insert(at, IndexEntry{key, row, 0});
    IndexBalance(*pager_, *allocator_, *def_, *index_).Settle(std::move(path), std::move(node), last, last);
}

/// Whether no node above repeats the last entry of this leaf, so that appending an entry changes nothing there.
bool IndexTree::IsAlwaysLast(const IndexPage& page, const std::vector<PageNo>& path) const {
    return page.next() == 0 && std::all_of(path.begin(), path.end(), [this](PageNo node) {
               return IndexPage(pager_->Read(node), def_->page).tail() != 0;
           });
}

void IndexTree::Remove(const Bytes& key, RowId row) {
    {
        std::vector<PageNo> path;
        const IndexPosition position{key, row};
        const IndexPage page = Descend(position, path);
        const std::size_t at = page.LowerBound(position);
        if (at < page.size() && page.Compare(at, position) == 0) {
            RemoveEntry(page, at, std::move(path));
            return;
        }
    }
    // Other programs make different keys for a few letters.
    const Bytes stored = StoredKey(row);
    std::vector<PageNo> path;
    const IndexPage page = Descend({stored, row}, path);
    RemoveEntry(page, page.LowerBound({stored, row}), std::move(path));
}

/// The key under which the index holds a row.
Bytes IndexTree::StoredKey(RowId row) const {
    IndexScan scan(*pager_, def_->page, index_->root, {{}, kBeforeAllRows});
    while (scan.Next()) {
        if (scan.Row() == row) return scan.Key();
    }
    ThrowCorrupt("a row has no entry in an index", row.page);
}

void IndexTree::RemoveEntry(const IndexPage& page, std::size_t at, std::vector<PageNo> path) {
    if (RemoveInPlace(*pager_, page, at)) return;
    IndexNode node = LoadIndexNode(*pager_, def_->page, page.number());
    const bool last = at + 1 == node.entries.size();
    node.entries.erase(node.entries.begin() + static_cast<std::ptrdiff_t>(at));
    IndexBalance(*pager_, *allocator_, *def_, *index_).SettleRemoval(std::move(path), std::move(node), last);
}

} // namespace jet
