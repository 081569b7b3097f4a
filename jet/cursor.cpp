#include "jet/cursor.h"

#include "format/long_value.h"
#include "format/sort_key.h"
#include "format/text_codec.h"
#include "format/usage_map.h"
#include "jet/error.h"

#include <algorithm>
#include <bit>

namespace jet {

Row::Row(std::shared_ptr<Pager> pager, std::shared_ptr<const TableDef> def, RowId id, ByteView bytes, PageNo page)
    : pager_(std::move(pager)), def_(std::move(def)) {
    Assign(id, bytes, page);
}

void Row::Assign(RowId id, ByteView bytes, PageNo page) {
    id_ = id;
    bytes_.assign(bytes.begin(), bytes.end());
    page_ = page;
}

Value Row::Get(std::size_t position) const {
    const Column& column = def_->columns.at(position);
    const RowView view(*def_, bytes_, page_);
    if (column.type == ColumnType::kBoolean) return view.Flag(column);
    const auto cell = view.Cell(column);
    if (!cell) return {};
    if (!column.IsLong()) return DecodeCell(column, *cell, page_);
    if (cell->empty()) return {};
    Bytes value = ReadLongValue(*pager_, *cell, page_);
    if (column.type == ColumnType::kOle) return value;
    return DecodeText(value);
}

std::optional<ByteView> Row::Stored(std::size_t position) const {
    return RowView(*def_, bytes_, page_).Cell(def_->columns.at(position));
}

bool Row::IsFlagSet(std::size_t position) const {
    return RowView(*def_, bytes_, page_).Flag(def_->columns.at(position));
}

BoundCondition::BoundCondition(const TableDef& def, const Condition& condition) : op_(condition.op) {
    const auto found = def.FindColumn(condition.column);
    if (!found || (!condition.table.empty() && !SameName(condition.table, def.name))) {
        throw Error(ErrorCode::kNoSuchColumn,
                    "The table " + ToUtf8(def.name) + " has no column " + ToUtf8(condition.column));
    }
    position_ = *found;
    column_ = &def.columns[position_];
    isText_ = std::holds_alternative<std::u16string>(condition.literal);
    bool suits = false;
    switch (column_->type) {
    case ColumnType::kText:
    case ColumnType::kMemo:
        suits = isText_;
        break;
    case ColumnType::kByte:
    case ColumnType::kInteger:
    case ColumnType::kLong:
    case ColumnType::kSingle:
    case ColumnType::kDouble:
        suits = !isText_;
        break;
    default:
        break;
    }
    if (!suits) {
        throw Error(ErrorCode::kTypeMismatch,
                    "The column " + ToUtf8(column_->name) + " cannot be compared with this literal");
    }
    if (isText_) {
        text_ = std::get<std::u16string>(condition.literal);
        key_ = CompareKey(text_);
    } else {
        number_ = std::get<double>(condition.literal);
    }
}

namespace {

template <typename T>
bool Meets(CompareOp op, const T& left, const T& right) {
    switch (op) {
    case CompareOp::kEqual:
        return left == right;
    case CompareOp::kNotEqual:
        return left != right;
    case CompareOp::kLess:
        return left < right;
    case CompareOp::kLessEqual:
        return left <= right;
    case CompareOp::kGreater:
        return left > right;
    case CompareOp::kGreaterEqual:
        return left >= right;
    }
    return false;
}

} // namespace

bool BoundCondition::Holds(Pager& pager, const RowView& row, PageNo page) const {
    const auto cell = row.Cell(*column_);
    if (!cell) return false; // a comparison with NULL is never true
    if (column_->type == ColumnType::kDouble && cell->size() >= 8) {
        return Meets(op_, std::bit_cast<double>(Load64(cell->data())), number_);
    }
    if (column_->type == ColumnType::kMemo) {
        if (cell->empty()) return false;
        return Meets(op_, CompareKey(DecodeText(ReadLongValue(pager, *cell, page))), key_);
    }
    const Value value = DecodeCell(*column_, *cell, page);
    if (isText_) return Meets(op_, CompareKey(std::get<std::u16string>(value)), key_);
    if (const auto* whole = std::get_if<std::int32_t>(&value)) return Meets(op_, static_cast<double>(*whole), number_);
    return Meets(op_, std::get<double>(value), number_);
}

Cursor::Cursor(std::shared_ptr<Pager> pager, std::shared_ptr<const TableDef> def,
               const std::vector<Condition>& conditions)
    : pager_(std::move(pager)), def_(std::move(def)) {
    row_.pager_ = pager_;
    row_.def_ = def_;
    for (const Condition& condition : conditions) conditions_.emplace_back(*def_, condition);
    Rewind();
}

void Cursor::Rewind() {
    place_ = 0;
    slot_ = 0;
    page_.reset();
    auto planned = conditions_.empty() ? std::nullopt : PlanByIndex(*pager_, *def_, conditions_);
    useIndex_ = planned.has_value();
    if (useIndex_) {
        rows_ = std::move(*planned);
    } else {
        pages_ = UsageMap(*pager_, def_->ownedMap).Pages();
    }
}

bool Cursor::Next() {
    return useIndex_ ? NextByIndex() : NextByScan();
}

/// Keeps the row when it meets the conditions.
bool Cursor::Take(RowId id, const RowBody& body) {
    const RowView view(*def_, body.bytes, body.id.page);
    for (const BoundCondition& condition : conditions_) {
        if (!condition.Holds(*pager_, view, body.id.page)) return false;
    }
    row_.Assign(id, body.bytes, body.id.page);
    return true;
}

bool Cursor::NextByIndex() {
    while (place_ < rows_.size()) {
        const RowId id = rows_[place_++];
        if (Take(id, FollowRow(*pager_, def_->page, id))) return true;
    }
    return false;
}

bool Cursor::NextByScan() {
    for (;;) {
        if (!page_) {
            if (place_ >= pages_.size()) return false;
            page_ = OpenDataPage(*pager_, pages_[place_++], def_->page);
            slot_ = 0;
        }
        while (slot_ < page_->slotCount()) {
            const RowId id{page_->page().number(), static_cast<std::uint8_t>(slot_++)};
            const DataPage::Slot slot = page_->Get(id.slot);
            if ((slot.flags & kSlotBody) != 0) continue; // deleted, or found through its header
            const bool moved = (slot.flags & kSlotHeader) != 0;
            const RowBody body =
                moved ? FollowRow(*pager_, def_->page, id) : RowBody{page_->page(), id, slot.flags, slot.bytes};
            if (Take(id, body)) return true;
        }
        page_.reset();
    }
}

} // namespace jet
