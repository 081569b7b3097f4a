#include "jet/database.h"

#include "format/header.h"
#include "format/text_codec.h"
#include "format/usage_map.h"

#include <algorithm>

namespace jet {
namespace {

Storage& StorageOf(const OpenOptions& options) {
    return options.storage ? *options.storage : SystemStorage();
}

Pager::Options PagerOptions(const OpenOptions& options) {
    Pager::Options out;
    out.writable = options.writable;
    out.durability = options.durability;
    out.batch = options.batch;
    out.cachePages = std::max<std::size_t>(options.cachePages, 16);
    out.spillPages = options.spillPages;
    return out;
}

} // namespace

Database::Database(std::shared_ptr<Pager> pager)
    : pager_(std::move(pager)),
      allocator_(std::make_shared<Allocator>(*pager_, [held = pager_] { return ClaimedPages(held); })) {}

Database Database::Open(const std::filesystem::path& path, std::u16string_view password, const OpenOptions& options) {
    auto pager = Pager::Open(StorageOf(options), path, PagerOptions(options));
    CheckHeader(*pager, password);
    return Database(std::move(pager));
}

Table Database::OpenTable(std::u16string_view name) {
    if (rollbacks_ != pager_->rollbacks()) {
        tables_.clear();
        rollbacks_ = pager_->rollbacks();
    }
    auto& def = tables_[FoldName(name)];
    if (!def) {
        const auto page = GetCatalog().FindTable(name);
        if (!page) throw Error(ErrorCode::kNoSuchTable, "The database has no table " + ToUtf8(name));
        auto read = std::make_shared<TableDef>(ReadTableDef(*pager_, *page));
        read->name = name;
        def = std::move(read);
    }
    return Table(pager_, allocator_, def);
}

const Catalog& Database::GetCatalog() {
    if (!catalog_) catalog_.emplace(pager_);
    return *catalog_;
}

std::vector<std::u16string> Database::TableNames() {
    return GetCatalog().TableNames();
}

Cursor Database::Select(std::u16string_view text) {
    const Query query = ParseQuery(text);
    const Table table = OpenTable(query.table);
    return table.Where(query.conditions);
}

RowId Table::Insert(std::span<const Assignment> values) {
    Statement statement(*pager_);
    const RowId id = TableWriter(pager_, *allocator_, def_).Insert(values);
    statement.Done();
    return id;
}

void Table::Update(RowId id, std::span<const Assignment> values) {
    Statement statement(*pager_);
    TableWriter(pager_, *allocator_, def_).Update(id, values);
    statement.Done();
}

void Table::Delete(RowId id) {
    Statement statement(*pager_);
    TableWriter(pager_, *allocator_, def_).Delete(id);
    statement.Done();
}

Cursor Table::Where(const std::vector<Condition>& conditions) const {
    return Cursor(pager_, def_, conditions);
}

Row Table::Fetch(RowId id) const {
    const DataPage page = OpenDataPage(*pager_, id.page, def_->page);
    if (id.slot >= page.slotCount() || (page.Get(id.slot).flags & kSlotBody) != 0) {
        throw Error(ErrorCode::kUsage, "The record is not there any more");
    }
    const RowBody body = FollowRow(*pager_, def_->page, id);
    return Row(pager_, def_, id, body.bytes, body.id.page);
}

std::optional<RowId> Table::FindFirst(std::u16string_view text) const {
    Cursor cursor = Where(ParseConditions(text));
    std::optional<RowId> first;
    // An index yields rows in its own order; table order is by page and slot.
    while (cursor.Next()) {
        const RowId id = cursor.Current().id();
        if (!first || id < *first) first = id;
        if (!cursor.usesIndex()) break;
    }
    return first;
}

std::uint64_t Table::CountRows() const {
    std::uint64_t count = 0;
    for (const PageNo number : UsageMap(*pager_, def_->ownedMap).Pages()) {
        const DataPage page = OpenDataPage(*pager_, number, def_->page);
        for (unsigned slot = 0; slot < page.slotCount(); ++slot) {
            if ((page.Get(slot).flags & kSlotBody) == 0) ++count;
        }
    }
    return count;
}

} // namespace jet
