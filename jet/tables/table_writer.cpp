#include "tables/table_writer.h"

#include "format/row_codec.h"
#include "format/sort_key.h"
#include "format/text_codec.h"
#include "jet/error.h"
#include "tables/index_tree.h"
#include "tables/long_value_writer.h"

#include <algorithm>

namespace jet {
namespace {

bool IsIndexed(const TableDef& def, std::size_t column) {
    return std::any_of(def.indexes.begin(), def.indexes.end(), [column](const Index& index) {
        return std::any_of(index.columns.begin(), index.columns.end(),
                           [column](const IndexColumn& part) { return part.column == column; });
    });
}

Bytes LongBytes(const Column& column, const Value& value) {
    if (const auto* text = std::get_if<std::u16string>(&value)) {
        return EncodeText(*text, (column.moreFlags & kColumnCompressed) != 0);
    }
    return std::get<Bytes>(value);
}

} // namespace

/// A row's values in the columns that some index uses; the others are NULL.
TableWriter::RowValues TableWriter::IndexedValues(const Row& row) const {
    RowValues values(def_->columns.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (IsIndexed(*def_, i)) values.Set(i, row.Get(i));
    }
    return values;
}

/// The given values and, of an old row, those that an index needs. It refers to both.
TableWriter::RowValues TableWriter::NewValues(std::span<const Assignment> values, const RowValues* old,
                                              Flags& changed) {
    RowValues all(def_->columns.size());
    for (std::size_t i = 0; old && i < all.size(); ++i) all.Refer(i, (*old)[i]);
    for (const auto& [i, value] : values) {
        if (i >= all.size())
            throw Error(ErrorCode::kNoSuchColumn, "A value is assigned to a column that does not exist");
        const Column& column = def_->columns[i];
        if (column.IsTextual() && std::holds_alternative<std::u16string>(value)) {
            all.Refer(i, value);
        } else {
            all.Set(i, Coerce(column, value));
        }
        changed[i] = true;
    }
    return all;
}

void TableWriter::AssignAutoNumbers(RowValues& values, Flags& changed) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        const Column& column = def_->columns[i];
        if ((column.flags & kColumnAutoNumber) == 0 || column.type != ColumnType::kLong) continue;
        const PageEdit page = pager_->Edit(def_->page);
        const auto last = static_cast<std::int32_t>(Load32(page.data() + kDefAutoNumber));
        if (IsNull(values[i])) values.Set(i, static_cast<std::int32_t>(static_cast<std::uint32_t>(last) + 1));
        changed[i] = true;
        const std::int32_t number = std::max(last, std::get<std::int32_t>(values[i]));
        Store32(page.edit() + kDefAutoNumber, static_cast<std::uint32_t>(number));
    }
}

std::optional<Bytes> TableWriter::MakeKey(const Index& index, const RowValues& values) const {
    Bytes key;
    key.reserve(kUsualKey);
    std::size_t nulls = 0;
    for (const IndexColumn& part : index.columns) {
        const Value& value = values[part.column];
        if (IsNull(value)) ++nulls;
        if (IsNull(value) && index.IsRequired()) {
            throw Error(ErrorCode::kNullKey,
                        "The column " + ToUtf8(def_->columns[part.column].name) + " must not be NULL");
        }
        AppendKey(key, def_->columns[part.column], value, part.ascending);
    }
    if (key.size() > kMaxKey) throw Error(ErrorCode::kValueTooLong, "A value is too long for its index");
    if (index.IgnoresNulls() && nulls == index.columns.size()) return std::nullopt;
    return key;
}

/// The keys of a row's entries; nothing for an index whose columns hold the same in the row's other values.
TableWriter::Keys TableWriter::MakeKeys(const RowValues& values, const RowValues* other) const {
    Keys keys;
    keys.reserve(def_->indexes.size());
    for (const Index& index : def_->indexes) {
        const bool same = other && std::all_of(index.columns.begin(), index.columns.end(), [&](const auto& part) {
                              return values[part.column] == (*other)[part.column];
                          });
        keys.push_back(same ? std::nullopt : MakeKey(index, values));
    }
    return keys;
}

void TableWriter::CheckUnique(const Keys& keys, RowId except) const {
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const Index& index = def_->indexes[i];
        if (!index.IsUnique() || !keys[i]) continue;
        // Several rows may have only NULLs in the indexed columns; such a key is one flag byte per column.
        if (keys[i]->size() == index.columns.size()) continue;
        if (IndexTree(*pager_, *allocator_, *def_, index).HasOther(*keys[i], except)) {
            throw Error(ErrorCode::kDuplicateKey, "A record with this key exists already");
        }
    }
}

/// The stored cells: new ones where `changed`, otherwise those of the old row. Writes long values and frees replaced
/// ones.
TableWriter::Cells TableWriter::MakeCells(const RowValues& values, const Flags& changed, const Row* old) {
    const std::size_t count = def_->columns.size();
    Cells cells(count);
    std::vector<Bytes> longBytes(count);
    std::size_t size = EmptyRowSize(*def_);
    for (std::size_t i = 0; i < count; ++i) {
        const Column& column = def_->columns[i];
        const bool keep = old && !changed[i];
        if (keep && column.type == ColumnType::kBoolean) {
            cells[i] = Bytes{old->IsFlagSet(i) ? Byte{1} : Byte{0}};
        } else if (keep) {
            if (const auto stored = old->Stored(i)) cells[i] = Bytes(stored->begin(), stored->end());
        } else if (column.type == ColumnType::kBoolean) {
            cells[i] = EncodeCell(column, IsNull(values[i]) ? Value(false) : values[i]);
        } else if (!IsNull(values[i]) && column.IsLong()) {
            longBytes[i] = LongBytes(column, values[i]);
            size += kLongCell + (longBytes[i].size() <= kMaxInlineLong ? longBytes[i].size() : 0);
        } else if (!IsNull(values[i])) {
            cells[i] = EncodeCell(column, values[i]);
        }
        if (cells[i] && !column.IsFixed()) size += cells[i]->size();
    }
    const bool mayInline = size <= kMaxRow;
    for (std::size_t i = 0; i < count; ++i) {
        const Column& column = def_->columns[i];
        if (cells[i] || !column.IsLong() || (old && !changed[i])) continue;
        const auto oldCell = old ? old->Stored(i) : std::nullopt;
        if (!oldCell || oldCell->empty()) {
            if (!IsNull(values[i])) cells[i] = WriteLongValue(*pager_, *allocator_, column, longBytes[i], mayInline);
        } else if (IsNull(values[i])) {
            FreeLongValue(*pager_, *allocator_, column, *oldCell, old->id().page);
        } else {
            cells[i] =
                ReplaceLongValue(*pager_, *allocator_, column, longBytes[i], mayInline, *oldCell, old->id().page);
        }
    }
    return cells;
}

RowId TableWriter::Insert(std::span<const Assignment> given) {
    Flags changed(def_->columns.size());
    RowValues values = NewValues(given, nullptr, changed);
    AssignAutoNumbers(values, changed);
    const Keys keys = MakeKeys(values);
    CheckUnique(keys, kAfterAllRows);
    const Bytes row = EncodeRow(*def_, MakeCells(values, changed, nullptr));
    const RowId id = RowSpace(*pager_, *allocator_, def_->page, def_->ownedMap, def_->freeMap).Place(row, 0);
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (keys[i]) AddEntry(i, *keys[i], id);
    }
    CountRow(1);
    return id;
}

void TableWriter::Update(RowId id, std::span<const Assignment> given) {
    const RowBody body = FollowRow(*pager_, def_->page, id);
    const Row old(pager_, def_, id, body.bytes, body.id.page);
    Flags changed(def_->columns.size());
    const RowValues oldValues = IndexedValues(old);
    const RowValues values = NewValues(given, &oldValues, changed);
    Keys keys = MakeKeys(values, &oldValues);
    Keys oldKeys = MakeKeys(oldValues, &values);
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (keys[i] == oldKeys[i]) keys[i] = oldKeys[i] = std::nullopt; // another spelling of the same key
    }
    CheckUnique(keys, id);
    const Bytes row = EncodeRow(*def_, MakeCells(values, changed, &old));

    RowSpace space(*pager_, *allocator_, def_->page, def_->ownedMap, def_->freeMap);
    if (!space.Replace(body.id, row, body.flags)) Relocate(id, body, row);
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (oldKeys[i]) IndexTree(*pager_, *allocator_, *def_, def_->indexes[i]).Remove(*oldKeys[i], id);
        if (keys[i]) AddEntry(i, *keys[i], id);
    }
}

/// Stores a row's body elsewhere and leaves its address in the header's slot.
void TableWriter::Relocate(RowId id, const RowBody& old, ByteView row) {
    RowSpace space(*pager_, *allocator_, def_->page, def_->ownedMap, def_->freeMap);
    Bytes address;
    Append32(address, PointerFromRowId(space.Place(row, kSlotBody)));
    // Only a row of another program can be shorter than an address, and then only a full page has no room for it.
    if (!space.Replace(id, address, kSlotHeader)) throw Error(ErrorCode::kUnsupported, "The record cannot be moved");
    if (old.id != id) space.Delete(old.id);
}

void TableWriter::Delete(RowId id) {
    const RowBody body = FollowRow(*pager_, def_->page, id);
    const Row old(pager_, def_, id, body.bytes, body.id.page);
    const Keys keys = MakeKeys(IndexedValues(old));
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (keys[i]) IndexTree(*pager_, *allocator_, *def_, def_->indexes[i]).Remove(*keys[i], id);
    }
    RowSpace space(*pager_, *allocator_, def_->page, def_->ownedMap, def_->freeMap);
    space.Delete(id);
    if (body.id != id) space.Delete(body.id);
    for (std::size_t i = 0; i < def_->columns.size(); ++i) FreeLongCell(old, i);
    CountRow(-1);
}

void TableWriter::FreeLongCell(const Row& row, std::size_t column) {
    if (!def_->columns[column].IsLong()) return;
    const auto cell = row.Stored(column);
    if (cell && !cell->empty()) FreeLongValue(*pager_, *allocator_, def_->columns[column], *cell, row.id().page);
}

/// Adds an entry and counts distinct keys. The count never shrinks, as in the format's own engine.
void TableWriter::AddEntry(std::size_t number, const Bytes& key, RowId id) {
    const Index& index = def_->indexes[number];
    IndexTree tree(*pager_, *allocator_, *def_, index);
    const bool known = !index.IsUnique() && tree.HasOther(key, id);
    tree.Insert(key, id);
    if (known) return;
    const PageEdit page = pager_->Edit(def_->page);
    Byte* const count = page.edit() + kDefCounters + kDefCounterSize * number + kCounterUnique;
    Store32(count, Load32(count) + 1);
}

void TableWriter::CountRow(int change) {
    const PageEdit page = pager_->Edit(def_->page);
    const std::uint32_t count = Load32(page.data() + kDefRowCount);
    if (change < 0 && count == 0) return; // the stored count is a statistic and may be wrong
    Store32(page.edit() + kDefRowCount, change < 0 ? count - 1 : count + 1);
}

} // namespace jet
