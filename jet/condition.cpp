#include "condition.h"

#include "format/long_value.h"
#include "format/sort_key.h"
#include "format/text_codec.h"
#include "jet/error.h"

#include <bit>

namespace jet {

BoundCondition::BoundCondition(const TableDef& def, const Condition& condition) : op_(condition.op) {
    const auto found = def.FindColumn(condition.column);
    if (!found || (!condition.table.empty() && !SameName(condition.table, def.name))) {
        throw Error(ErrorCode::kNoSuchColumn,
                    "The table " + ToUtf8(def.name) + " has no column " + ToUtf8(condition.column));
    }
    position_ = *found;
    column_ = &def.columns[position_];
    const auto* const text = std::get_if<std::u16string>(&condition.literal);
    bool suits = false;
    switch (column_->type) {
    case ColumnType::kText:
    case ColumnType::kMemo:
        suits = text != nullptr;
        break;
    case ColumnType::kByte:
    case ColumnType::kInteger:
    case ColumnType::kLong:
    case ColumnType::kSingle:
    case ColumnType::kDouble:
        suits = text == nullptr;
        break;
    default:
        break;
    }
    if (!suits) {
        throw Error(ErrorCode::kTypeMismatch,
                    "The column " + ToUtf8(column_->name) + " cannot be compared with this literal");
    }
    if (text) {
        literal_ = *text;
        key_ = CompareKey(*text);
    } else {
        literal_ = std::get<double>(condition.literal);
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
        return Meets(op_, std::bit_cast<double>(Load64(cell->data())), number());
    }
    if (column_->type == ColumnType::kMemo) {
        if (cell->empty()) return false;
        return Meets(op_, CompareKey(DecodeText(ReadLongValue(pager, *cell, page))), key_);
    }
    const Value value = DecodeCell(*column_, *cell, page);
    if (isText()) {
        const bool same = op_ == CompareOp::kEqual && value == literal_; // as most found rows are; needs no key
        return same || Meets(op_, CompareKey(std::get<std::u16string>(value)), key_);
    }
    if (const auto* whole = std::get_if<std::int32_t>(&value)) return Meets(op_, static_cast<double>(*whole), number());
    return Meets(op_, std::get<double>(value), number());
}

} // namespace jet
