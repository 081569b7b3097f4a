#include "tables/table_maker.h"

#include "format/header.h"
#include "jet/error.h"

#include <algorithm>

namespace jet {
namespace {

/// A new map row: inline, holding one page or none.
Bytes MapRow(PageNo page) {
    Bytes row(kMapRowSize);
    if (page == 0) return row;
    Store32(row.data() + kMapBase, page / kMapBaseUnit * kMapBaseUnit);
    row[kMapBits] = static_cast<Byte>(1U << (page % kMapBaseUnit));
    return row;
}

void AppendSlot(Byte* page, ByteView row) {
    const unsigned slot = Load16(page + kDataSlotCount);
    const std::size_t end = slot == 0 ? kPageSize : Load16(page + SlotOffset(slot - 1));
    const std::size_t start = end - row.size();
    std::copy(row.begin(), row.end(), page + start);
    Store16(page + SlotOffset(slot), static_cast<std::uint32_t>(start));
    Store16(page + kDataSlotCount, slot + 1);
    Store16(page + kDataFree, static_cast<std::uint32_t>(start - SlotOffset(slot + 1)));
}

void StartDataPage(Byte* page, std::uint32_t owner) {
    MarkPage(page, kDataPage);
    Store16(page + kDataFree, kPageSize - kDataSlots);
    Store32(page + kDataOwner, owner);
}

void StartIndexRoot(Byte* page, PageNo owner) {
    MarkPage(page, kIndexLeafPage);
    Store16(page + kIndexFree, kIndexArea);
    Store32(page + kIndexOwner, owner);
}

/// Cuts a definition into pages, whose numbers are given.
void StoreDefinition(ByteView definition, const std::vector<PageNo>& pages, const std::vector<Byte*>& bytes) {
    std::size_t done = 0;
    for (std::size_t i = 0; i < pages.size(); ++i) {
        const std::size_t head = i == 0 ? 0 : kDefPageHead;
        const std::size_t count = std::min(kPageSize - head, definition.size() - done);
        const ByteView part = definition.subspan(done, count);
        std::copy(part.begin(), part.end(), bytes[i] + head);
        MarkPage(bytes[i], kTableDefPage);
        const std::size_t used = head + count;
        const std::size_t full = used + kDefPageReserve;
        Store16(bytes[i] + kDefFree, static_cast<std::uint32_t>(full <= kPageSize ? kPageSize - full : 0));
        Store32(bytes[i] + kDefNext, i + 1 < pages.size() ? pages[i + 1] : 0);
        done += count;
    }
}

std::size_t DefinitionPages(std::size_t size) {
    constexpr std::size_t kPerPage = kPageSize - kDefPageHead; // after the first page
    return size <= kPageSize ? 1 : 1 + (size - kPageSize + kPerPage - 1) / kPerPage;
}

std::size_t LongColumns(const TableSpec& wanted) {
    return static_cast<std::size_t>(
        std::count_if(wanted.columns.begin(), wanted.columns.end(),
                      [](const ColumnSpec& c) { return c.type == ColumnType::kMemo || c.type == ColumnType::kOle; }));
}

/// Hands out map rows on pages of their own.
class MapRows {
  public:
    MapRows(Pager& pager, Allocator& allocator) : pager_(&pager), allocator_(&allocator) {}
    std::uint32_t Add(PageNo page, bool keepNextOnSamePage = false) {
        if (number_ == 0 || used_ + (keepNextOnSamePage ? 1 : 0) >= kMapRowsPerPage) {
            const PageEdit fresh = allocator_->Allocate();
            StartDataPage(fresh.edit(), kMapPageOwner);
            number_ = fresh.number();
            used_ = 0;
        }
        AppendSlot(pager_->Edit(number_).edit(), MapRow(page));
        return PointerFromRowId({number_, static_cast<std::uint8_t>(used_++)});
    }

  private:
    Pager* pager_;
    Allocator* allocator_;
    PageNo number_ = 0;
    std::size_t used_ = 0;
};

} // namespace

PageNo MakeTable(Pager& pager, Allocator& allocator, const TableSpec& wanted) {
    TablePlaces places;
    places.indexMaps.resize(wanted.indexes.size());
    places.indexRoots.resize(wanted.indexes.size());
    places.longMaps.resize(LongColumns(wanted));
    const std::size_t pageCount = DefinitionPages(BuildTableDef(wanted, places).size());
    std::vector<PageNo> pages;
    for (std::size_t i = 0; i < pageCount; ++i) pages.push_back(allocator.Allocate().number());
    MapRows maps(pager, allocator);
    places.ownedMap = maps.Add(0, true);
    places.freeMap = maps.Add(0);
    for (std::size_t i = 0; i < wanted.indexes.size(); ++i) {
        const PageEdit root = allocator.Allocate();
        StartIndexRoot(root.edit(), pages[0]);
        places.indexRoots[i] = root.number();
        places.indexMaps[i] = maps.Add(root.number());
    }
    for (auto& [owned, free] : places.longMaps) {
        owned = maps.Add(0, true);
        free = maps.Add(0);
    }
    std::vector<PageEdit> edits;
    std::vector<Byte*> bytes;
    for (const PageNo page : pages) {
        edits.push_back(pager.Edit(page));
        bytes.push_back(edits.back().edit());
    }
    StoreDefinition(BuildTableDef(wanted, places), pages, bytes);
    return pages[0];
}

SecurityIds NewFileSecurityIds() {
    return {{0x64, 0x8B}, {0x65, 0x89}, {0x65, 0x8B}, {0x65, 0x8E}};
}

namespace {

// Pages of a new file.
constexpr PageNo kMapPage = 6;
constexpr PageNo kFirstRoot = 7;
constexpr PageNo kCatalogData = 14;
constexpr PageNo kAccessData = 15;
constexpr PageNo kNewFilePages = 16;

ColumnSpec Plain(const char16_t* name, ColumnType type, std::size_t length = kMaxTextLength) {
    ColumnSpec column;
    column.name = name;
    column.type = type;
    column.length = static_cast<std::uint16_t>(length);
    return column;
}

IndexSpec PlainIndex(const char16_t* name, std::vector<std::u16string> columns) {
    IndexSpec index;
    index.name = name;
    index.columns = std::move(columns);
    return index;
}

TableSpec ObjectsTable() {
    using enum ColumnType;
    TableSpec wanted{u"MSysObjects", {}, {}};
    wanted.columns = {Plain(u"Id", kLong),
                      Plain(u"ParentId", kLong),
                      Plain(u"Name", kText),
                      Plain(u"Type", kInteger),
                      Plain(u"DateCreate", kDateTime),
                      Plain(u"DateUpdate", kDateTime),
                      Plain(u"Owner", kBinary, kMaxBinaryLength),
                      Plain(u"Flags", kLong),
                      Plain(u"Database", kMemo),
                      Plain(u"Connect", kMemo),
                      Plain(u"ForeignName", kText),
                      Plain(u"RmtInfoShort", kBinary, kMaxBinaryLength),
                      Plain(u"RmtInfoLong", kOle),
                      Plain(u"Lv", kOle),
                      Plain(u"LvProp", kOle),
                      Plain(u"LvModule", kOle),
                      Plain(u"LvExtra", kOle)};
    wanted.indexes = {PlainIndex(u"ParentIdName", {u"ParentId", u"Name"}), PlainIndex(u"Id", {u"Id"})};
    wanted.indexes[0].unique = true;
    wanted.indexes[1].primary = true;
    return wanted;
}

TableSpec AccessTable() {
    using enum ColumnType;
    TableSpec wanted{u"MSysACEs", {}, {PlainIndex(u"ObjectId", {u"ObjectId"})}};
    wanted.columns = {Plain(u"ObjectId", kLong), Plain(u"SID", kBinary, kMaxBinaryLength), Plain(u"ACM", kLong),
                      Plain(u"FInheritable", kBoolean)};
    wanted.indexes[0].required = true;
    return wanted;
}

TableSpec QueriesTable() {
    using enum ColumnType;
    TableSpec wanted{u"MSysQueries", {}, {PlainIndex(u"ObjectIdAttribute", {u"ObjectId", u"Attribute", u"Order"})}};
    wanted.columns = {Plain(u"ObjectId", kLong), Plain(u"Attribute", kByte), Plain(u"Order", kBinary, 255),
                      Plain(u"Name1", kText),    Plain(u"Name2", kText),     Plain(u"Expression", kMemo),
                      Plain(u"Flag", kInteger),  Plain(u"LvExtra", kLong)};
    wanted.indexes[0].primary = true;
    return wanted;
}

TableSpec RelationshipsTable() {
    using enum ColumnType;
    TableSpec wanted{u"MSysRelationships", {}, {}};
    wanted.columns = {Plain(u"szRelationship", kText),
                      Plain(u"grbit", kLong),
                      Plain(u"ccolumn", kLong),
                      Plain(u"icolumn", kLong),
                      Plain(u"szObject", kText),
                      Plain(u"szColumn", kText),
                      Plain(u"szReferencedObject", kText),
                      Plain(u"szReferencedColumn", kText)};
    wanted.indexes = {PlainIndex(u"szRelationship", {u"szRelationship"}), PlainIndex(u"szObject", {u"szObject"}),
                      PlainIndex(u"szReferencedObject", {u"szReferencedObject"})};
    for (IndexSpec& index : wanted.indexes) index.ignoreNulls = true;
    return wanted;
}

} // namespace

Bytes MakeEmptyDatabase(double date, std::u16string_view password) {
    Bytes file(kNewFilePages * kPageSize);
    const auto at = [&file](PageNo page) { return file.data() + page * kPageSize; };
    BuildHeader(at(0), date, password);
    StartDataPage(at(kGlobalMapPage), kGlobalMapOwner);
    Bytes global(kMapRowSize);
    std::fill(global.begin() + kMapBits + kNewFilePages / 8, global.end(), Byte{0xFF});
    AppendSlot(at(kGlobalMapPage), global);
    AppendSlot(at(kGlobalMapPage), MapRow(0));
    StartDataPage(at(kMapPage), kMapPageOwner);
    StartDataPage(at(kCatalogData), kCatalogPage);
    StartDataPage(at(kAccessData), kAccessPage);

    std::uint8_t mapSlot = 0;
    PageNo root = kFirstRoot;
    const auto addMap = [&](PageNo page) {
        AppendSlot(at(kMapPage), MapRow(page));
        return PointerFromRowId({kMapPage, mapSlot++});
    };
    const TableSpec tables[] = {ObjectsTable(), AccessTable(), QueriesTable(), RelationshipsTable()};
    const PageNo data[] = {kCatalogData, kAccessData, 0, 0};
    for (PageNo i = 0; i < 4; ++i) {
        TablePlaces places;
        places.system = true;
        places.ownedMap = addMap(data[i]);
        places.freeMap = addMap(data[i]);
        for (std::size_t k = LongColumns(tables[i]); k > 0; --k) {
            const std::uint32_t owned = addMap(0);
            places.longMaps.emplace_back(owned, addMap(0));
        }
        for (std::size_t k = 0; k < tables[i].indexes.size(); ++k, ++root) {
            StartIndexRoot(at(root), kCatalogPage + i);
            places.indexRoots.push_back(root);
            places.indexMaps.push_back(addMap(root));
        }
        StoreDefinition(BuildTableDef(tables[i], places), {kCatalogPage + i}, {at(kCatalogPage + i)});
    }
    return file;
}

} // namespace jet
