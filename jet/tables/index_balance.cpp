#include "tables/index_balance.h"

#include "jet/error.h"

#include <algorithm>
#include <iterator>

namespace jet {

void IndexBalance::Settle(std::vector<PageNo> path, IndexNode node, bool lastChanged, bool appended) {
    for (;;) {
        std::optional<IndexEntry> added;
        if (node.Overflows()) {
            if (path.empty()) {
                GrowRoot(node, path);
                lastChanged = false;
            }
            added = Split(node, appended);
            appended = false;
        }
        Store(node);
        if (path.empty()) return;
        IndexNode parent = Load(path.back());
        path.pop_back();
        const ParentChange change = UpdateParent(parent, node, lastChanged, std::move(added));
        if (!change.any && !change.last) return;
        // A longer key can split the parent, even after a removal.
        node = std::move(parent);
        lastChanged = change.last;
    }
}

/// The root keeps its page number: its contents move one level down.
void IndexBalance::GrowRoot(IndexNode& node, std::vector<PageNo>& path) {
    IndexNode root{node.number, false, 0, 0, 0, {}};
    node.number = NewNode(node.leaf).number;
    root.tail = node.number;
    Store(root);
    path.push_back(root.number);
}

IndexBalance::ParentChange IndexBalance::UpdateParent(IndexNode& parent, const IndexNode& child, bool lastChanged,
                                                      std::optional<IndexEntry> added) const {
    const bool isTail = parent.tail == child.number;
    const auto mine = parent.FindChild(child.number);
    if (!isTail && mine == parent.entries.end()) ThrowCorrupt("an index node does not know its child", parent.number);
    ParentChange change;
    if (lastChanged && isTail) change.last = true; // no entry names the tail's last key
    if (lastChanged && !isTail) {
        IndexEntry last = LastBelow(child);
        mine->key = std::move(last.key);
        mine->row = last.row;
        change.any = true;
        change.last = parent.tail == 0 && std::next(mine) == parent.entries.end();
    }
    if (added) {
        parent.entries.insert(isTail ? parent.entries.end() : mine, std::move(*added));
        parent.MakeTail();
        change.any = true;
    }
    return change;
}

/// Moves the first part of an overfull page to a new page on its left, so that the parent gains one entry and no tail
/// changes. Returns that entry.
IndexEntry IndexBalance::Split(IndexNode& node, bool appended) {
    IndexNode left = NewNode(node.leaf);
    std::size_t count = node.entries.size() - 1;
    if (!appended || node.next != 0) {
        const std::size_t half = node.FullSize() / 2;
        std::size_t size = 0;
        for (count = 0; count + 1 < node.entries.size() && (count == 0 || size < half); ++count) {
            size += node.EntrySize(count);
        }
    }
    const auto middle = node.entries.begin() + static_cast<std::ptrdiff_t>(count);
    left.entries.assign(std::make_move_iterator(node.entries.begin()), std::make_move_iterator(middle));
    node.entries.erase(node.entries.begin(), middle);
    left.previous = node.previous;
    left.next = node.number;
    SetLink(node.previous, kIndexNext, left.number);
    node.previous = left.number;
    IndexEntry up{left.entries.back().key, left.entries.back().row, left.number};
    if (!node.leaf) {
        const PageNo lastChild = left.entries.back().child;
        left.MakeTail();
        // Nodes are linked with the other children of their parent only, leaves with all leaves.
        const IndexPage child = Open(lastChild);
        if (!child.isLeaf()) {
            SetLink(child.next(), kIndexPrevious, 0);
            SetLink(lastChild, kIndexNext, 0);
        }
    }
    Store(left);
    return up;
}

void IndexBalance::SettleRemoval(std::vector<PageNo> path, IndexNode node, bool lastChanged) {
    while (node.entries.empty() && node.tail == 0 && !path.empty()) {
        Release(node);
        IndexNode parent = Load(path.back());
        path.pop_back();
        lastChanged = RemoveChild(parent, node.number);
        node = std::move(parent);
    }
    if (node.entries.empty() && node.tail == 0) node.leaf = true; // an empty root becomes a leaf again
    Settle(std::move(path), std::move(node), lastChanged, false);
}

/// Removes a child from its parent. True if the last entry below the parent is another one now.
bool IndexBalance::RemoveChild(IndexNode& parent, PageNo child) const {
    if (parent.tail == child) {
        parent.tail = 0;
        parent.MakeTail();
        return true;
    }
    const auto found = parent.FindChild(child);
    if (found == parent.entries.end()) ThrowCorrupt("an index node does not know its child", parent.number);
    const bool last = parent.tail == 0 && std::next(found) == parent.entries.end();
    parent.entries.erase(found);
    if (parent.entries.empty() && parent.tail != 0) {
        IndexEntry only = LastBelow(Load(parent.tail));
        only.child = std::exchange(parent.tail, 0);
        parent.entries.push_back(std::move(only));
    }
    return last;
}

IndexNode IndexBalance::NewNode(bool leaf) {
    const PageNo number = allocator_->Allocate().number();
    owned_.Add(number, allocator_->NewPage());
    return IndexNode{number, leaf, 0, 0, 0, {}};
}

/// The last entry below a node; its child has no meaning.
IndexEntry IndexBalance::LastBelow(const IndexNode& node) const {
    if (node.leaf || (node.tail == 0 && !node.entries.empty())) return node.entries.back();
    PageNo at = node.tail;
    for (unsigned depth = 0; depth < kMaxIndexDepth; ++depth) {
        const IndexPage page = Open(at);
        if (page.isLeaf() || page.tail() == 0) {
            if (page.size() == 0) ThrowCorrupt("an index page is empty", at);
            return {page.Key(page.size() - 1), page.Row(page.size() - 1), 0};
        }
        at = page.tail();
    }
    ThrowCorrupt("an index tree has no leaves", node.number);
}

/// Sets a page's link to its neighbour; page 0 is no page.
void IndexBalance::SetLink(PageNo page, std::size_t offset, PageNo target) {
    if (page == 0) return;
    Open(page);
    Store32(pager_->Edit(page).edit() + offset, target);
}

void IndexBalance::Release(const IndexNode& node) {
    SetLink(node.previous, kIndexNext, node.next);
    SetLink(node.next, kIndexPrevious, node.previous);
    owned_.Remove(node.number);
    allocator_->Free(node.number);
}

} // namespace jet
