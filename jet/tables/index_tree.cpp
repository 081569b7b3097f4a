#include "tables/index_tree.h"

#include "jet/error.h"
#include "tables/index_scan.h"

#include <algorithm>
#include <cstring>

namespace jet {
namespace {

constexpr std::size_t kLeafTrailer = 4;
constexpr std::size_t kNodeTrailer = 8;

std::size_t CommonPrefix(ByteView a, ByteView b) {
    const auto [end, ignored] =
        std::mismatch(a.begin(), a.begin() + static_cast<std::ptrdiff_t>(std::min(a.size(), b.size())), b.begin());
    return static_cast<std::size_t>(end - a.begin());
}

void AppendRow(Bytes& out, RowId row) {
    out.resize(out.size() + 4);
    Store24Big(out.data() + out.size() - 4, row.page);
    out.back() = row.slot;
}

/// The key of entry 0 as the page stores it, whole.
ByteView FirstKey(const Byte* page, std::size_t firstEnd) {
    return ByteView(page + kIndexEntries, firstEnd - kLeafTrailer);
}

void StoreEnds(Byte* page, const EntryEnds& ends) {
    std::fill(page + kIndexBitmap, page + kIndexEntries, Byte{0});
    for (const std::size_t end : ends) {
        Byte& byte = page[kIndexBitmap + end / 8];
        byte = static_cast<Byte>(byte | 1U << (end % 8));
    }
    Store16(page + kIndexFree, static_cast<std::uint32_t>(kIndexArea - (ends.empty() ? 0 : ends.back())));
}

} // namespace

bool IndexTree::HasOther(ByteView key, RowId except) const {
    IndexScan scan(*pager_, def_->page, index_->root, {key, kBeforeAllRows});
    while (scan.Next() && scan.Compare({key, kAfterAllRows}) < 0) {
        if (scan.Row() != except) return true;
    }
    return false;
}

/// The leaf for a position; `path` takes the nodes above it, the root first.
IndexPage IndexTree::Descend(const IndexPosition& position, std::vector<PageNo>& path) const {
    PageNo at = index_->root;
    for (unsigned depth = 0; depth < kMaxIndexDepth; ++depth) {
        IndexPage page = Open(at);
        if (page.isLeaf()) return page;
        path.push_back(at);
        at = page.ChildFor(position);
        if (at == 0) ThrowCorrupt("an index node has no children", page.number());
    }
    ThrowCorrupt("an index tree has no leaves", index_->root);
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
            ThrowCorrupt("an index entry is there already", page.number());
        const bool inside = at > 0 && (at < page.size() || IsAlwaysLast(page, path));
        if (inside && InsertInPlace(page, at, key, row)) return;
        leaf = page.number();
    }
    Node node = Load(leaf);
    const auto place = std::lower_bound(
        node.entries.begin(), node.entries.end(), position, [](const Entry& entry, const IndexPosition& p) {
            const auto order =
                std::lexicographical_compare_three_way(entry.key.begin(), entry.key.end(), p.key.begin(), p.key.end());
            return order < 0 || (order == 0 && entry.row < p.row);
        });
    const bool last = place == node.entries.end();
    node.entries.insert(place, Entry{key, row, 0});
    Settle(std::move(path), std::move(node), last, last);
}

/// Whether no node above names the last entry of this leaf, so that a new last one changes nothing there.
bool IndexTree::IsAlwaysLast(const IndexPage& page, const std::vector<PageNo>& path) const {
    return page.next() == 0 &&
           std::all_of(path.begin(), path.end(), [this](PageNo node) { return Open(node).tail() != 0; });
}

/// The common case: the entry goes behind another one and the page has room, so nothing else changes.
bool IndexTree::InsertInPlace(const IndexPage& page, std::size_t at, const Bytes& key, RowId row) {
    const PageRef held = pager_->Read(page.number());
    const Byte* const old = held.data();
    const std::size_t prefix = Load16(old + kIndexPrefix);
    EntryEnds ends;
    ends.reserve(page.size() + 1);
    ends = page.ends();
    const ByteView first = FirstKey(old, ends[0]);
    if (key.size() < prefix ||
        !std::equal(key.begin(), key.begin() + static_cast<std::ptrdiff_t>(prefix), first.begin())) {
        return false;
    }
    Bytes entry;
    entry.reserve(key.size() + kLeafTrailer);
    entry.assign(key.begin() + static_cast<std::ptrdiff_t>(prefix), key.end());
    AppendRow(entry, row);
    if (Load16(old + kIndexFree) < entry.size()) return false;
    const PageEdit edit = pager_->Edit(page.number());
    Byte* const area = edit.edit() + kIndexEntries;
    const std::size_t start = ends[at - 1];
    std::memmove(area + start + entry.size(), area + start, ends.back() - start);
    std::copy(entry.begin(), entry.end(), area + start);
    ends.insert(ends.begin() + static_cast<std::ptrdiff_t>(at), static_cast<std::uint16_t>(start));
    for (std::size_t i = at; i < ends.size(); ++i) ends[i] = static_cast<std::uint16_t>(ends[i] + entry.size());
    StoreEnds(edit.edit(), ends);
    edit.KeepEnds(std::make_shared<const EntryEnds>(std::move(ends)));
    return true;
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
    // For a few letters other programs make another key; the row then tells its entry.
    Bytes stored;
    {
        IndexScan scan(*pager_, def_->page, index_->root, {{}, kBeforeAllRows});
        bool found = false;
        while (!found && scan.Next()) found = scan.Row() == row;
        if (!found) ThrowCorrupt("a row has no entry in an index", row.page);
        stored = scan.Key();
    }
    std::vector<PageNo> path;
    const IndexPage page = Descend({stored, row}, path);
    RemoveEntry(page, page.LowerBound({stored, row}), std::move(path));
}

/// The common case again: an entry between two others.
bool IndexTree::RemoveInPlace(const IndexPage& page, std::size_t at) {
    if (at == 0 || at + 1 >= page.size()) return false;
    const PageEdit edit = pager_->Edit(page.number());
    EntryEnds ends = page.ends();
    Byte* const area = edit.edit() + kIndexEntries;
    const std::size_t start = ends[at - 1];
    const std::size_t size = ends[at] - start;
    std::memmove(area + start, area + ends[at], ends.back() - ends[at]);
    std::fill_n(area + ends.back() - size, size, Byte{0});
    ends.erase(ends.begin() + static_cast<std::ptrdiff_t>(at));
    for (std::size_t i = at; i < ends.size(); ++i) ends[i] = static_cast<std::uint16_t>(ends[i] - size);
    StoreEnds(edit.edit(), ends);
    edit.KeepEnds(std::make_shared<const EntryEnds>(std::move(ends)));
    return true;
}

void IndexTree::RemoveEntry(const IndexPage& page, std::size_t at, std::vector<PageNo> path) {
    if (RemoveInPlace(page, at)) return;
    Node node = Load(page.number());
    bool last = at + 1 == node.entries.size();
    node.entries.erase(node.entries.begin() + static_cast<std::ptrdiff_t>(at));
    while (node.entries.empty() && node.tail == 0 && !path.empty()) {
        RemovePage(node);
        Node parent = Load(path.back());
        path.pop_back();
        if (parent.tail == node.number) {
            last = true;
            parent.tail = 0;
            if (parent.entries.size() > 1) {
                parent.tail = parent.entries.back().child;
                parent.entries.pop_back();
            }
        } else {
            const auto found = std::find_if(parent.entries.begin(), parent.entries.end(),
                                            [&node](const Entry& entry) { return entry.child == node.number; });
            if (found == parent.entries.end()) ThrowCorrupt("an index node does not know its child", parent.number);
            last = parent.tail == 0 && found + 1 == parent.entries.end();
            parent.entries.erase(found);
            if (parent.entries.empty() && parent.tail != 0) {
                Entry only = LastOf(Load(parent.tail));
                only.child = std::exchange(parent.tail, 0);
                parent.entries.push_back(std::move(only));
            }
        }
        node = std::move(parent);
    }
    if (node.entries.empty() && node.tail == 0) node.leaf = true; // an empty root is a leaf again
    Settle(std::move(path), std::move(node), last, false);
}

IndexTree::Node IndexTree::Load(PageNo number) const {
    const IndexPage page = Open(number);
    Node node{number, page.isLeaf(), page.previous(), page.next(), page.tail(), {}};
    node.entries.reserve(page.size() + 1);
    for (std::size_t i = 0; i < page.size(); ++i) {
        node.entries.push_back({page.Key(i), page.Row(i), page.isLeaf() ? 0 : page.Child(i)});
    }
    return node;
}

namespace {

template <typename Entries>
std::size_t StoredSize(const Entries& entries, bool leaf, std::size_t prefix) {
    std::size_t size = 0;
    for (const auto& entry : entries) size += entry.key.size() + (leaf ? kLeafTrailer : kNodeTrailer);
    return entries.empty() ? 0 : size - prefix * (entries.size() - 1);
}

/// Prefixes are shortened only where a page would overflow.
template <typename Entries>
std::size_t PrefixFor(const Entries& entries, bool leaf) {
    if (entries.size() < 2 || StoredSize(entries, leaf, 0) <= kIndexArea) return 0;
    return CommonPrefix(entries.front().key, entries.back().key);
}

} // namespace

void IndexTree::Store(const Node& node) {
    const PageEdit page = pager_->Edit(node.number);
    Byte* const p = page.edit();
    std::fill_n(p, kPageSize, Byte{0});
    p[0] = node.leaf ? kIndexLeafPage : kIndexNodePage;
    p[1] = 1;
    Store32(p + kIndexOwner, def_->page);
    Store32(p + kIndexPrevious, node.previous);
    Store32(p + kIndexNext, node.next);
    Store32(p + kIndexTail, node.tail);
    const std::size_t prefix = PrefixFor(node.entries, node.leaf);
    Store16(p + kIndexPrefix, static_cast<std::uint32_t>(prefix));
    Bytes area;
    EntryEnds ends;
    for (const Entry& entry : node.entries) {
        AppendBytes(area, ByteView(entry.key).subspan(ends.empty() ? 0 : prefix));
        AppendRow(area, entry.row);
        if (!node.leaf) {
            area.resize(area.size() + 4);
            Store32Big(area.data() + area.size() - 4, entry.child);
        }
        ends.push_back(static_cast<std::uint16_t>(area.size()));
    }
    if (area.size() > kIndexArea) ThrowCorrupt("an index page overflows", node.number);
    std::copy(area.begin(), area.end(), p + kIndexEntries);
    StoreEnds(p, ends);
}

IndexTree::Node IndexTree::NewNode(bool leaf) {
    const PageNo number = allocator_->Allocate().number();
    owned_.Add(number, allocator_->NewPage());
    return Node{number, leaf, 0, 0, 0, {}};
}

/// The last entry below a node; its child is of no meaning.
IndexTree::Entry IndexTree::LastOf(const Node& node) const {
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

void IndexTree::SetNext(PageNo page, PageNo next) {
    if (page == 0) return;
    Open(page);
    Store32(pager_->Edit(page).edit() + kIndexNext, next);
}

void IndexTree::SetPrevious(PageNo page, PageNo previous) {
    if (page == 0) return;
    Open(page);
    Store32(pager_->Edit(page).edit() + kIndexPrevious, previous);
}

/// Moves the first part of an overfull page to a new page on its left, so that the parent gains one entry and no tail
/// moves. Returns that entry.
IndexTree::Entry IndexTree::Split(Node& node, bool appended) {
    Node left = NewNode(node.leaf);
    std::size_t count = node.entries.size() - 1;
    if (!appended || node.next != 0) {
        const std::size_t half = StoredSize(node.entries, node.leaf, 0) / 2;
        std::size_t size = 0;
        for (count = 0; count + 1 < node.entries.size() && (count == 0 || size < half); ++count) {
            size += node.entries[count].key.size() + (node.leaf ? kLeafTrailer : kNodeTrailer);
        }
    }
    const auto middle = node.entries.begin() + static_cast<std::ptrdiff_t>(count);
    left.entries.assign(std::make_move_iterator(node.entries.begin()), std::make_move_iterator(middle));
    node.entries.erase(node.entries.begin(), middle);
    left.previous = node.previous;
    left.next = node.number;
    SetNext(node.previous, left.number);
    node.previous = left.number;
    Entry up{left.entries.back().key, left.entries.back().row, left.number};
    if (!node.leaf) {
        const PageNo lastChild = left.entries.back().child;
        if (left.entries.size() > 1) {
            left.tail = lastChild;
            left.entries.pop_back();
        }
        // Nodes are linked among the children of one parent only, leaves throughout.
        const IndexPage child = Open(lastChild);
        if (!child.isLeaf()) {
            SetPrevious(child.next(), 0);
            SetNext(lastChild, 0);
        }
    }
    Store(left);
    return up;
}

/// Writes a changed page and carries the consequences upwards. A longer key in a parent can split that parent, so a
/// removal comes here too.
void IndexTree::Settle(std::vector<PageNo> path, Node node, bool lastChanged, bool appended) {
    for (;;) {
        std::optional<Entry> up;
        if (StoredSize(node.entries, node.leaf, PrefixFor(node.entries, node.leaf)) > kIndexArea) {
            if (path.empty()) {
                // The root keeps its number: its contents move one level down.
                Node root{node.number, false, 0, 0, 0, {}};
                node.number = NewNode(node.leaf).number;
                root.tail = node.number;
                Store(root);
                path.push_back(root.number);
                lastChanged = false;
            }
            up = Split(node, appended);
            appended = false;
        }
        Store(node);
        if (path.empty()) return;
        Node parent = Load(path.back());
        path.pop_back();
        const bool isTail = parent.tail == node.number;
        auto mine = std::find_if(parent.entries.begin(), parent.entries.end(),
                                 [&node](const Entry& entry) { return entry.child == node.number; });
        if (!isTail && mine == parent.entries.end())
            ThrowCorrupt("an index node does not know its child", parent.number);
        bool changed = false;
        bool parentLast = false;
        if (lastChanged && isTail) parentLast = true;
        if (lastChanged && !isTail) {
            Entry last = LastOf(node);
            mine->key = std::move(last.key);
            mine->row = last.row;
            changed = true;
            parentLast = parent.tail == 0 && mine + 1 == parent.entries.end();
        }
        if (up) {
            parent.entries.insert(isTail ? parent.entries.end() : mine, std::move(*up));
            changed = true;
            if (parent.tail == 0 && parent.entries.size() > 1) {
                parent.tail = parent.entries.back().child;
                parent.entries.pop_back();
            }
        }
        if (!changed && !parentLast) return;
        node = std::move(parent);
        lastChanged = parentLast;
    }
}

void IndexTree::RemovePage(const Node& node) {
    SetNext(node.previous, node.next);
    SetPrevious(node.next, node.previous);
    owned_.Remove(node.number);
    allocator_->Free(node.number);
}

} // namespace jet
