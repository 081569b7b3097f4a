#include "localdata/jet/database.h"

#include "localdata/jet/header.h"
#include "localdata/jet/text_codec.h"
#include "localdata/jet/usage_map.h"

#include <algorithm>

namespace quorvex::localdata::jet {

Database Database::Open(const std::filesystem::path& path, std::u16string_view password, const OpenOptions& options) {
  Pager::Options pagerOptions;
  pagerOptions.writable = options.writable;
  pagerOptions.durability = options.durability;
  pagerOptions.batch = options.batch;
  pagerOptions.cachePages = std::max<std::size_t>(options.cachePages, 16);
  Storage& storage = options.storage ? *options.storage : SystemStorage();
  auto pager = Pager::Open(storage, path, pagerOptions);
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
    if (!catalog_) catalog_.emplace(pager_);
    const auto page = catalog_->FindTable(name);
    if (!page) throw Error(ErrorCode::kNoSuchTable, "The database has no table " + ToUtf8(name));
    auto read = std::make_shared<TableDef>(ReadTableDef(*pager_, *page));
    read->name = name;
    def = std::move(read);
  }
  return Table(pager_, def);
}

std::vector<std::u16string> Database::TableNames() {
  if (!catalog_) catalog_.emplace(pager_);
  return catalog_->TableNames();
}

Cursor Database::Select(std::u16string_view text) {
  const Query query = ParseQuery(text);
  const Table table = OpenTable(query.table);
  return table.Where(query.conditions);
}

Cursor Table::Where(const std::vector<Condition>& conditions) const { return Cursor(pager_, def_, conditions); }

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

}  // namespace quorvex::localdata::jet
