#include "tables/index_node.h"

#include "jet/error.h"

#include <algorithm>
#include <cstring>

namespace jet {
namespace {

bool Precedes(const IndexEntry& entry, const IndexPosition& position) {
    const auto order = std::lexicographical_compare_three_way(entry.key.begin(), entry.key.end(), position.key.begin(),
                                                              position.key.end());
    return order < 0 || (order == 0 && entry.row < position.row);
}

/// The length of the prefix to store once. Pages share it only when they would overflow otherwise.
std::size_t SharedPrefix(const IndexNode& node) {
    if (node.entries.size() < 2 || node.FullSize() <= kIndexArea) return 0;
    const Bytes& first = node.entries.front().key;
    const Bytes& last = node.entries.back().key;
    const auto size = static_cast<std::ptrdiff_t>(std::min(first.size(), last.size()));
    return static_cast<std::size_t>(std::mismatch(first.begin(), first.begin() + size, last.begin()).first -
                                    first.begin());
}

void AppendRow(Bytes& out, RowId row) {
    out.resize(out.size() + kEntryRow);
    Store24Big(out.data() + out.size() - kEntryRow, row.page);
    out.back() = row.slot;
}

/// Writes the ends from the entry `from` on; those of the entries before it are stored as they are.
void StoreEnds(Byte* page, const EntryEnds& ends, std::size_t from = 0) {
    Byte* const bitmap = page + kIndexBitmap;
    const std::size_t kept = from == 0 ? 0 : ends[from - 1];
    if (from > 0) bitmap[kept / 8] = static_cast<Byte>(bitmap[kept / 8] & ((2U << (kept % 8)) - 1));
    std::fill(bitmap + (from == 0 ? 0 : kept / 8 + 1), page + kIndexEntries, Byte{0});
    for (std::size_t i = from; i < ends.size(); ++i) {
        Byte& byte = bitmap[ends[i] / 8];
        byte = static_cast<Byte>(byte | 1U << (ends[i] % 8));
    }
    Store16(page + kIndexFree, static_cast<std::uint32_t>(kIndexArea - (ends.empty() ? 0 : ends.back())));
}

void KeepEnds(const PageEdit& page, EntryEnds ends, std::size_t from) {
    StoreEnds(page.edit(), ends, from);
    page.KeepEnds(std::make_shared<const EntryEnds>(std::move(ends)));
}

} // namespace

std::vector<IndexEntry>::iterator IndexNode::LowerBound(const IndexPosition& position) {
    return std::lower_bound(entries.begin(), entries.end(), position, Precedes);
}

std::vector<IndexEntry>::iterator IndexNode::FindChild(PageNo child) {
    return std::find_if(entries.begin(), entries.end(), [child](const IndexEntry& e) { return e.child == child; });
}

void IndexNode::MakeTail() {
    if (tail != 0 || entries.size() < 2) return;
    tail = entries.back().child;
    entries.pop_back();
}

std::size_t IndexNode::FullSize() const {
    std::size_t size = 0;
    for (std::size_t i = 0; i < entries.size(); ++i) size += EntrySize(i);
    return size;
}

bool IndexNode::Overflows() const {
    const std::size_t size = FullSize();
    return size > kIndexArea && size - SharedPrefix(*this) * (entries.size() - 1) > kIndexArea;
}

IndexNode LoadIndexNode(Pager& pager, PageNo owner, PageNo number) {
    const IndexPage page(pager.Read(number), owner);
    IndexNode node{number, page.isLeaf(), page.previous(), page.next(), page.tail(), {}};
    node.entries.reserve(page.size() + 1);
    for (std::size_t i = 0; i < page.size(); ++i) {
        node.entries.push_back({page.Key(i), page.Row(i), page.isLeaf() ? 0 : page.Child(i)});
    }
    return node;
}

void StoreIndexNode(Pager& pager, PageNo owner, const IndexNode& node) {
    const PageEdit page = pager.Edit(node.number);
    Byte* const p = page.edit();
    std::fill_n(p, kPageSize, Byte{0});
    MarkPage(p, node.leaf ? kIndexLeafPage : kIndexNodePage);
    Store32(p + kIndexOwner, owner);
    Store32(p + kIndexPrevious, node.previous);
    Store32(p + kIndexNext, node.next);
    Store32(p + kIndexTail, node.tail);
    const std::size_t prefix = SharedPrefix(node);
    Store16(p + kIndexPrefix, static_cast<std::uint32_t>(prefix));
    Bytes area;
    EntryEnds ends;
    for (const IndexEntry& entry : node.entries) {
        AppendBytes(area, ByteView(entry.key).subspan(ends.empty() ? 0 : prefix));
        AppendRow(area, entry.row);
        if (!node.leaf) {
            area.resize(area.size() + kEntryChild);
            Store32Big(area.data() + area.size() - kEntryChild, entry.child);
        }
        ends.push_back(static_cast<std::uint16_t>(area.size()));
    }
    if (area.size() > kIndexArea) ThrowCorrupt("an index page overflows", node.number);
    std::copy(area.begin(), area.end(), p + kIndexEntries);
    StoreEnds(p, ends);
}

bool InsertInPlace(Pager& pager, const IndexPage& leaf, std::size_t at, ByteView key, RowId row) {
    if (at == 0) return false;
    const PageRef held = pager.Read(leaf.number());
    const Byte* const old = held.data();
    const std::size_t prefix = Load16(old + kIndexPrefix);
    EntryEnds ends;
    ends.reserve(leaf.size() + 1);
    ends = leaf.ends();
    // The first entry stores the prefix.
    if (key.size() < prefix || std::memcmp(key.data(), old + kIndexEntries, prefix) != 0) return false;
    Bytes entry;
    entry.reserve(key.size() + kEntryRow);
    AppendBytes(entry, key.subspan(prefix));
    AppendRow(entry, row);
    if (Load16(old + kIndexFree) < entry.size()) return false;
    const PageEdit edit = pager.Edit(leaf.number());
    Byte* const area = edit.edit() + kIndexEntries;
    const std::size_t start = ends[at - 1];
    std::memmove(area + start + entry.size(), area + start, ends.back() - start);
    std::copy(entry.begin(), entry.end(), area + start);
    ends.insert(ends.begin() + static_cast<std::ptrdiff_t>(at), static_cast<std::uint16_t>(start));
    for (std::size_t i = at; i < ends.size(); ++i) ends[i] = static_cast<std::uint16_t>(ends[i] + entry.size());
    KeepEnds(edit, std::move(ends), at);
    return true;
}

bool RemoveInPlace(Pager& pager, const IndexPage& leaf, std::size_t at) {
    if (at == 0 || at + 1 >= leaf.size()) return false;
    const PageEdit edit = pager.Edit(leaf.number());
    EntryEnds ends = leaf.ends();
    Byte* const area = edit.edit() + kIndexEntries;
    const std::size_t start = ends[at - 1];
    const std::size_t size = ends[at] - start;
    std::memmove(area + start, area + ends[at], ends.back() - ends[at]);
    std::fill_n(area + ends.back() - size, size, Byte{0});
    ends.erase(ends.begin() + static_cast<std::ptrdiff_t>(at));
    for (std::size_t i = at; i < ends.size(); ++i) ends[i] = static_cast<std::uint16_t>(ends[i] - size);
    KeepEnds(edit, std::move(ends), at);
    return true;
}

} // namespace jet
