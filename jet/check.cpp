#include "jet/check.h"

#include "catalog.h"
#include "format/data_page.h"
#include "format/long_value.h"
#include "format/row_codec.h"
#include "format/sort_key.h"
#include "format/text_codec.h"
#include "format/usage_map.h"
#include "insides.h"
#include "tables/index_scan.h"

#include <algorithm>
#include <map>
#include <set>

namespace jet {
namespace {

constexpr std::size_t kMostFaults = 1000;

class Checker {
  public:
    explicit Checker(std::shared_ptr<Pager> pager) : pager_(std::move(pager)), owners_(pager_->pageCount()) {}

    std::vector<Fault> Run() {
        Guarded("file", [this] {
            Claim(0, "the header");
            Claim(kGlobalMapPage, "the map of free pages");
            ClaimMap(UsageMap(*pager_, PointerFromRowId({kGlobalMapPage, 0})), "the map of free pages");
            const auto tables = Catalog(pager_).AllTables();
            for (const auto& [name, page] : tables) {
                const std::string label = "table " + ToUtf8(name);
                Guarded(label, [&, first = page] { CheckTable(label, first); });
            }
            CheckFreePages();
        });
        return std::move(faults_);
    }

  private:
    void Report(bool isError, std::string what) {
        if (faults_.size() < kMostFaults) faults_.push_back({isError, std::move(what)});
    }
    void Require(bool holds, const std::string& where, const std::string& what) {
        if (!holds) Report(true, where + ": " + what);
    }
    template <typename Action>
    void Guarded(const std::string& where, const Action& action) {
        try {
            action();
        } catch (const Error& error) {
            // What this engine cannot judge need not be wrong.
            Report(error.code() != ErrorCode::kUnsupported, where + ": " + error.what());
        }
    }

    void Claim(PageNo page, const std::string& owner) {
        if (page >= owners_.size()) {
            Report(true, owner + ": page " + std::to_string(page) + " lies past the end");
        } else if (!owners_[page].empty()) {
            Report(true, owner + ": page " + std::to_string(page) + " belongs to " + owners_[page] + " too");
        } else {
            owners_[page] = owner;
        }
    }
    /// Bitmap pages of a map, and the page of its row (shared with other maps).
    void ClaimMap(const UsageMap& map, const std::string& owner) {
        if (!map.exists()) return;
        const PageNo rowPage = map.row().page;
        if (rowPage != kGlobalMapPage && mapPages_.insert(rowPage).second) Claim(rowPage, "usage maps");
        if (!maps_.insert(map.pointer()).second) Report(true, owner + ": its usage map serves another owner too");
        for (const PageNo page : map.BitmapPages()) Claim(page, owner + " (map)");
    }

    void CheckTable(const std::string& label, PageNo first) {
        const auto def = std::make_shared<TableDef>(ReadTableDef(*pager_, first));
        for (const PageNo page : def->pages) Claim(page, label);
        const UsageMap owned(*pager_, def->ownedMap);
        const UsageMap free(*pager_, def->freeMap);
        ClaimMap(owned, label);
        ClaimMap(free, label);
        for (const PageNo page : owned.Pages()) Claim(page, label);
        CheckFreeMap(label, owned, free);
        for (const Column& column : def->columns) {
            if (!column.IsLong()) continue;
            const std::string name = label + ", column " + ToUtf8(column.name);
            Guarded(name, [&] {
                const UsageMap longOwned(*pager_, column.ownedMap);
                const UsageMap longFree(*pager_, column.freeMap);
                ClaimMap(longOwned, name);
                ClaimMap(longFree, name);
                for (const PageNo page : longOwned.Pages()) Claim(page, name);
                CheckFreeMap(name, longOwned, longFree);
            });
        }
        std::vector<RowId> rows;
        Guarded(label, [&] { rows = CheckRows(label, *def, owned.Pages()); });
        CheckLongRows(label, *def);
        for (std::size_t i = 0; i < def->indexes.size(); ++i) {
            const std::string name = label + ", index " + ToUtf8(def->indexes[i].name);
            Guarded(name, [&] { CheckIndex(name, def, i, rows); });
        }
        const std::uint32_t counted = Load32(pager_->Read(first).data() + kDefRowCount);
        if (counted != rows.size()) {
            Report(false,
                   label + ": it counts " + std::to_string(counted) + " rows and has " + std::to_string(rows.size()));
        }
    }

    void CheckFreeMap(const std::string& label, const UsageMap& owned, const UsageMap& free) {
        const std::vector<PageNo> all = owned.Pages();
        for (const PageNo page : free.Pages()) {
            if (!std::binary_search(all.begin(), all.end(), page)) {
                Report(false, label + ": page " + std::to_string(page) + " is free in it but not its own");
            }
        }
    }

    /// Slots of a data page: packed from the end without gaps, the free field right.
    DataPage CheckLayout(const std::string& label, PageNo number, std::uint32_t owner) {
        DataPage page = OpenDataPage(*pager_, number, owner);
        std::size_t used = kDataSlots + 2 * page.slotCount();
        for (unsigned slot = 0; slot < page.slotCount(); ++slot) used += page.Get(slot).bytes.size();
        Require(used <= kPageSize && kPageSize - used == Load16(page.page().data() + kDataFree), label,
                "the free space of page " + std::to_string(number) + " is wrong");
        return page;
    }

    std::vector<RowId> CheckRows(const std::string& label, const TableDef& def, const std::vector<PageNo>& pages) {
        std::vector<RowId> rows;
        std::set<RowId> bodies;
        std::map<RowId, int> reached;
        for (const PageNo number : pages) {
            Guarded(label, [&] {
                const DataPage page = CheckLayout(label, number, def.page);
                for (unsigned i = 0; i < page.slotCount(); ++i) {
                    const RowId id{number, static_cast<std::uint8_t>(i)};
                    const std::uint16_t kind = page.Get(i).flags & kSlotDeleted;
                    if (kind == kSlotDeleted) continue;
                    if (kind == kSlotBody) {
                        bodies.insert(id);
                        continue;
                    }
                    rows.push_back(id);
                    Guarded(label, [&] { CheckRow(label, def, id, reached); });
                }
            });
        }
        for (const RowId body : bodies) {
            Require(reached[body] == 1, label,
                    "a moved row on page " + std::to_string(body.page) + " has " + std::to_string(reached[body]) +
                        " addresses");
        }
        for (const auto& [body, count] : reached) {
            Require(count == 0 || bodies.contains(body), label,
                    "an address leads to no moved row on page " + std::to_string(body.page));
        }
        return rows;
    }

    void CheckRow(const std::string& label, const TableDef& def, RowId id, std::map<RowId, int>& reached) {
        const RowBody body = FollowRow(*pager_, def.page, id);
        if (body.id != id) ++reached[body.id];
        const RowView view(def, body.bytes, body.id.page);
        for (const Column& column : def.columns) {
            if (column.type == ColumnType::kBoolean) continue;
            const auto cell = view.Cell(column);
            if (!cell) continue;
            if (!column.IsLong()) {
                DecodeCell(column, *cell, body.id.page);
                continue;
            }
            if (cell->empty()) continue;
            ReadLongValue(*pager_, *cell, body.id.page);
            for (const RowId row : LongValueRows(*pager_, *cell, body.id.page)) {
                Require(longRows_.emplace(row, column.number).second, label,
                        "a long value on page " + std::to_string(row.page) + " is used twice");
            }
        }
    }

    /// Every row on the long-value pages of a column must be some cell's.
    void CheckLongRows(const std::string& label, const TableDef& def) {
        for (const Column& column : def.columns) {
            if (!column.IsLong()) continue;
            Guarded(label, [&] {
                const std::vector<PageNo> pages = UsageMap(*pager_, column.ownedMap).Pages();
                for (const PageNo number : pages) {
                    const DataPage page = CheckLayout(label, number, kLongValueOwner);
                    for (unsigned i = 0; i < page.slotCount(); ++i) {
                        if (page.Get(i).flags == kSlotDeleted) continue;
                        const auto found = longRows_.find({number, static_cast<std::uint8_t>(i)});
                        if (found == longRows_.end()) {
                            Report(false,
                                   label + ": a long value on page " + std::to_string(number) + " is used by no row");
                        }
                    }
                }
                for (const auto& [row, number] : longRows_) {
                    if (number != column.number || column.ownedMap == 0) continue;
                    Require(std::binary_search(pages.begin(), pages.end(), row.page), label,
                            "a long value stands on page " + std::to_string(row.page) + ", which is not its column's");
                }
            });
        }
        longRows_.clear();
    }

    void CheckIndex(const std::string& label, const std::shared_ptr<const TableDef>& def, std::size_t number,
                    const std::vector<RowId>& rows) {
        const Index& index = def->indexes[number];
        const UsageMap owned(*pager_, index.ownedMap);
        ClaimMap(owned, label);
        std::vector<PageNo> pages = owned.Pages();
        for (const PageNo page : pages) Claim(page, label);
        Tree tree{label, def->page, {}, {}, {}, 0};
        WalkTree(tree, index.root, 1, true);
        std::sort(tree.pages.begin(), tree.pages.end());
        Require(tree.pages == pages, label, "its map and its tree do not hold the same pages");
        Require(tree.nextLeaf == 0, label, "its last leaf has a next one");
        CheckEntries(label, def, index, rows, tree.entries);
        const std::uint32_t unique =
            Load32(pager_->Read(def->page).data() + kDefCounters + kDefCounterSize * number + 4);
        if (unique < CountDistinct(tree.entries)) Report(false, label + ": its count of distinct keys is too small");
    }

    struct TreeEntry {
        Bytes key;
        RowId row;
    };
    struct Tree {
        const std::string& label;
        PageNo owner;
        std::vector<PageNo> pages;
        std::vector<TreeEntry> entries;
        std::optional<unsigned> leafDepth;
        PageNo nextLeaf;
        PageNo lastLeaf = 0;
    };

    /// Walks the tree from the left; returns its last entry.
    std::optional<TreeEntry> WalkTree(Tree& tree, PageNo number, unsigned depth, bool isRoot) {
        if (depth > kMaxIndexDepth || tree.pages.size() > owners_.size())
            ThrowCorrupt("an index tree has no end", number);
        tree.pages.push_back(number);
        const IndexPage page(pager_->Read(number), tree.owner);
        const std::string at = " (page " + std::to_string(number) + ")";
        if (page.isLeaf()) {
            Require(!tree.leafDepth || *tree.leafDepth == depth, tree.label, "leaves of different depth" + at);
            tree.leafDepth = depth;
            Require(isRoot || page.size() > 0, tree.label, "an empty leaf" + at);
            Require(page.previous() == tree.lastLeaf && (tree.lastLeaf == 0 || tree.nextLeaf == number), tree.label,
                    "leaves are linked wrongly" + at);
            tree.lastLeaf = number;
            tree.nextLeaf = page.next();
            for (std::size_t i = 0; i < page.size(); ++i) {
                TreeEntry entry{page.Key(i), page.Row(i)};
                if (!tree.entries.empty()) {
                    const TreeEntry& last = tree.entries.back();
                    Require(page.Compare(i, {last.key, last.row}) > 0, tree.label, "entries out of order" + at);
                }
                tree.entries.push_back(std::move(entry));
            }
            return tree.entries.empty() ? std::nullopt : std::optional(tree.entries.back());
        }
        Require(page.size() > 0, tree.label, "a node without entries" + at);
        Require(page.size() == 1 || page.tail() != 0, tree.label, "a node of several children without a tail" + at);
        std::optional<TreeEntry> last;
        for (std::size_t i = 0; i < page.size(); ++i) {
            last = WalkTree(tree, page.Child(i), depth + 1, false);
            Require(last && page.Compare(i, {last->key, last->row}) == 0, tree.label,
                    "a node's entry is not the last one below it" + at);
        }
        return page.tail() == 0 ? last : WalkTree(tree, page.tail(), depth + 1, false);
    }

    static std::size_t CountDistinct(const std::vector<TreeEntry>& entries) {
        std::size_t count = 0;
        for (std::size_t i = 0; i < entries.size(); ++i) {
            if (i == 0 || entries[i].key != entries[i - 1].key) ++count;
        }
        return count;
    }

    void CheckEntries(const std::string& label, const std::shared_ptr<const TableDef>& def, const Index& index,
                      const std::vector<RowId>& rows, const std::vector<TreeEntry>& entries) {
        std::map<RowId, const Bytes*> byRow;
        for (std::size_t i = 0; i < entries.size(); ++i) {
            Require(byRow.emplace(entries[i].row, &entries[i].key).second, label, "two entries for one row");
            const bool allNull = entries[i].key.size() == index.columns.size();
            Require(!index.IsUnique() || allNull || i == 0 || entries[i].key != entries[i - 1].key, label,
                    "a key stands twice in a unique index");
        }
        std::size_t used = 0;
        for (const RowId id : rows) {
            const RowBody body = FollowRow(*pager_, def->page, id);
            const Row row(pager_, def, id, body.bytes, body.id.page);
            Bytes key;
            bool anyValue = false;
            for (const IndexColumn& part : index.columns) {
                const Value value = row.Get(part.column);
                anyValue = anyValue || !IsNull(value);
                AppendKey(key, def->columns[part.column], value, part.ascending);
            }
            const auto found = byRow.find(id);
            const std::string at = " (row " + std::to_string(id.page) + "/" + std::to_string(id.slot) + ")";
            if (found == byRow.end()) {
                Require(index.IgnoresNulls() && !anyValue, label, "a row has no entry" + at);
                continue;
            }
            ++used;
            Require(*found->second == key, label, "an entry's key is not its row's" + at);
        }
        Require(used == entries.size(), label, "an entry has no row");
    }

    void CheckFreePages() {
        const UsageMap global(*pager_, PointerFromRowId({kGlobalMapPage, 0}));
        std::size_t leaked = 0;
        for (PageNo page = 0; page < owners_.size(); ++page) {
            const bool free = global.Contains(page);
            if (free && !owners_[page].empty()) {
                Report(true, "page " + std::to_string(page) + " is free but belongs to " + owners_[page]);
            }
            if (!free && owners_[page].empty()) ++leaked;
        }
        if (leaked > 0) Report(false, std::to_string(leaked) + " pages are neither free nor in use");
    }

    std::shared_ptr<Pager> pager_;
    std::vector<std::string> owners_; ///< by page; empty: nobody
    std::set<PageNo> mapPages_;
    std::set<std::uint32_t> maps_;
    std::map<RowId, std::uint16_t> longRows_; ///< of the table in hand: long-value row to column
    std::vector<Fault> faults_;
};

} // namespace

std::vector<Fault> CheckIntegrity(const Database& database) {
    return Checker(Insides::PagerOf(database)).Run();
}

std::string ErrorsOf(const std::vector<Fault>& faults) {
    std::string text;
    for (const Fault& fault : faults) {
        if (fault.isError) text += fault.what + "\n";
    }
    return text;
}

} // namespace jet
