#include "catalog.h"

#include "format/data_page.h"
#include "format/sort_key.h"
#include "format/usage_map.h"
#include "jet/error.h"
#include "tables/index_scan.h"

namespace jet {
namespace {

constexpr std::int32_t kLocalTable = 1;
constexpr std::uint32_t kSystemObject = 0x80000002;
constexpr std::uint32_t kIdToPage = 0x00FFFFFF;

std::int32_t Whole(const Row& row, std::size_t column) {
    const Value value = row.Get(column);
    const auto* whole = std::get_if<std::int32_t>(&value);
    return whole ? *whole : 0;
}

std::u16string Text(const Row& row, std::size_t column) {
    Value value = row.Get(column);
    auto* const text = std::get_if<std::u16string>(&value);
    return text ? std::move(*text) : std::u16string();
}

PageNo PageOf(const Pager& pager, std::int32_t id) {
    const PageNo page = static_cast<PageNo>(id) & kIdToPage;
    if (page < kCatalogPage || page >= pager.pageCount()) ThrowCorrupt("the catalog names a wrong page", page);
    return page;
}

} // namespace

Catalog::Catalog(std::shared_ptr<Pager> pager) : pager_(std::move(pager)) {
    auto def = std::make_shared<TableDef>(ReadTableDef(*pager_, kCatalogPage));
    def->name = u"MSysObjects";
    const auto find = [&def](std::u16string_view name, ColumnType type) {
        const auto column = def->FindColumn(name);
        if (!column || def->columns[*column].type != type) ThrowCorrupt("the catalog lacks a column", kCatalogPage);
        return *column;
    };
    id_ = find(u"Id", ColumnType::kLong);
    parent_ = find(u"ParentId", ColumnType::kLong);
    name_ = find(u"Name", ColumnType::kText);
    type_ = find(u"Type", ColumnType::kInteger);
    flags_ = find(u"Flags", ColumnType::kLong);
    def_ = std::move(def);
}

std::optional<PageNo> Catalog::FindTable(std::u16string_view name) const {
    if (!IsIndexableText(name)) {
        for (const auto& [known, page] : AllTables()) {
            if (SameName(known, name)) return page;
        }
        return std::nullopt;
    }
    for (const Index& index : def_->indexes) {
        if (index.columns.size() != 2 || index.columns[0].column != parent_ || index.columns[1].column != name_)
            continue;
        Bytes key;
        AppendKey(key, def_->columns[parent_], kTablesContainer, index.columns[0].ascending);
        AppendKey(key, def_->columns[name_], std::u16string(name), index.columns[1].ascending);
        IndexScan scan(*pager_, def_->page, index.root, {key, kBeforeAllRows});
        while (scan.Next() && scan.Compare({key, kAfterAllRows}) < 0) {
            const RowBody body = FollowRow(*pager_, def_->page, scan.Row());
            const Row row(pager_, def_, scan.Row(), body.bytes, body.id.page);
            if (Whole(row, type_) == kLocalTable && SameName(Text(row, name_), name))
                return PageOf(*pager_, Whole(row, id_));
        }
        return std::nullopt;
    }
    ThrowCorrupt("the catalog lacks its index", kCatalogPage);
}

std::vector<std::pair<std::u16string, PageNo>> Catalog::AllTables() const {
    std::vector<std::pair<std::u16string, PageNo>> tables;
    Cursor cursor(pager_, def_, {});
    while (cursor.Next()) {
        const Row& row = cursor.Current();
        if (Whole(row, type_) == kLocalTable) tables.emplace_back(Text(row, name_), PageOf(*pager_, Whole(row, id_)));
    }
    return tables;
}

std::vector<std::u16string> Catalog::TableNames() const {
    std::vector<std::u16string> names;
    Cursor cursor(pager_, def_, {});
    while (cursor.Next()) {
        const Row& row = cursor.Current();
        const bool system = (static_cast<std::uint32_t>(Whole(row, flags_)) & kSystemObject) != 0;
        if (Whole(row, type_) == kLocalTable && !system) names.push_back(Text(row, name_));
    }
    return names;
}

std::vector<PageNo> ClaimedPages(const std::shared_ptr<Pager>& pager) {
    std::vector<PageNo> claimed;
    const auto claim = [&](std::uint32_t map) {
        const std::vector<PageNo> pages = UsageMap(*pager, map).Pages();
        claimed.insert(claimed.end(), pages.begin(), pages.end());
    };
    for (const auto& [name, page] : Catalog(pager).AllTables()) {
        const TableDef def = ReadTableDef(*pager, page);
        claim(def.ownedMap);
        for (const Index& index : def.indexes) claim(index.ownedMap);
        for (const Column& column : def.columns) claim(column.ownedMap);
    }
    return claimed;
}

} // namespace jet
