#include "jet/table.h"

#include "format/data_page.h"
#include "format/table_def.h"
#include "format/usage_map.h"
#include "jet/error.h"
#include "tables/table_writer.h"

namespace jet {

Table::Table(std::shared_ptr<Pager> pager, std::shared_ptr<Allocator> allocator, std::shared_ptr<const TableDef> def)
    : pager_(std::move(pager)), allocator_(std::move(allocator)), def_(std::move(def)) {}

const std::u16string& Table::name() const {
    return def_->name;
}

std::size_t Table::columnCount() const {
    return def_->columns.size();
}

const ColumnInfo& Table::column(std::size_t position) const {
    return def_->columns.at(position);
}

std::optional<std::size_t> Table::FindColumn(std::u16string_view columnName) const {
    return def_->FindColumn(columnName);
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
