#include "format/row_codec.h"

#include "format/text_codec.h"
#include "jet/error.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace jet {

RowView::RowView(const TableDef& def, ByteView row, PageNo page) : row_(row), page_(page) {
    if (row.size() < kRowFixed + MaskSize(1)) ThrowCorrupt("a row is too short", page);
    columns_ = Load16(row.data() + kRowColumns);
    const std::size_t maskSize = MaskSize(columns_);
    if (columns_ > def.maxColumns || row.size() < kRowFixed + maskSize)
        ThrowCorrupt("a row has a wrong column count", page);
    maskStart_ = row.size() - maskSize;
    if (def.variableColumns == 0) return;
    if (maskStart_ < kRowFixed + 2 * kRowOffset) ThrowCorrupt("a row has no offset table", page);
    variables_ = Load16(row.data() + maskStart_ - kRowOffset);
    if (variables_ > def.variableColumns || maskStart_ < kRowFixed + kRowOffset * (variables_ + 2)) {
        ThrowCorrupt("a row has a wrong offset table", page);
    }
}

bool RowView::MaskBit(std::size_t number) const {
    return number < columns_ && (row_[maskStart_ + number / 8] >> (number % 8) & 1) != 0;
}

bool RowView::Flag(const Column& column) const {
    return MaskBit(column.number);
}

std::optional<ByteView> RowView::Cell(const Column& column) const {
    // Test the mask first: a row older than the column has a shorter offset table.
    if (!MaskBit(column.number)) return std::nullopt;
    if (column.IsFixed()) {
        const std::size_t start = kRowFixed + column.fixedOffset;
        if (start + column.length > maskStart_) ThrowCorrupt("a row is shorter than its columns", page_);
        return row_.subspan(start, column.length);
    }
    if (column.variableIndex >= variables_) return std::nullopt;
    // The offsets run backwards from the number of variable columns.
    const Byte* const table = row_.data() + maskStart_ - 2 * kRowOffset;
    const std::size_t start = Load16(table - kRowOffset * column.variableIndex);
    const std::size_t end = Load16(table - kRowOffset * (column.variableIndex + 1));
    const std::size_t limit = maskStart_ - kRowOffset * (variables_ + 2);
    if (start < kRowFixed || start > end || end > limit) ThrowCorrupt("a cell lies outside its row", page_);
    return row_.subspan(start, end - start);
}

namespace {

const Byte* Sized(ByteView stored, std::size_t size, PageNo page) {
    if (stored.size() < size) ThrowCorrupt("a cell is too short", page);
    return stored.data();
}

Value DecodeNumeric(const Column& column, const Byte* p) {
    Numeric value;
    value.negative = (p[0] & 0x80) != 0;
    value.scale = column.scale;
    // Four little-endian words, the most significant word first.
    for (std::size_t word = 0; word < 4; ++word)
        Store32Big(value.magnitude.data() + 4 * word, Load32(p + 1 + 4 * word));
    return value;
}

} // namespace

Value DecodeCell(const Column& column, ByteView stored, PageNo page) {
    switch (column.type) {
    case ColumnType::kByte:
        return std::int32_t{*Sized(stored, 1, page)};
    case ColumnType::kInteger:
        return std::int32_t{static_cast<std::int16_t>(Load16(Sized(stored, 2, page)))};
    case ColumnType::kLong:
        return static_cast<std::int32_t>(Load32(Sized(stored, 4, page)));
    case ColumnType::kCurrency:
        return Currency{static_cast<std::int64_t>(Load64(Sized(stored, 8, page)))};
    case ColumnType::kSingle:
        return double{std::bit_cast<float>(Load32(Sized(stored, 4, page)))};
    case ColumnType::kDouble:
        return std::bit_cast<double>(Load64(Sized(stored, 8, page)));
    case ColumnType::kDateTime:
        return DateTime{std::bit_cast<double>(Load64(Sized(stored, 8, page)))};
    case ColumnType::kText:
        return DecodeText(stored);
    case ColumnType::kGuid: {
        Guid guid;
        std::copy_n(Sized(stored, 16, page), 16, guid.bytes.begin());
        return guid;
    }
    case ColumnType::kNumeric:
        return DecodeNumeric(column, Sized(stored, 17, page));
    case ColumnType::kBinary:
    case ColumnType::kInternal:
        return Bytes(stored.begin(), stored.end());
    default:
        break;
    }
    ThrowCorrupt("a column has an unknown type", page);
}

namespace {

[[noreturn]] void Mismatch(const Column& column) {
    throw Error(ErrorCode::kTypeMismatch, "A value has the wrong type for the column " + ToUtf8(column.name));
}

std::int32_t WholeNumber(const Column& column, const Value& value) {
    if (const auto* whole = std::get_if<std::int32_t>(&value)) return *whole;
    if (const auto* real = std::get_if<double>(&value)) {
        const bool fits = *real >= std::numeric_limits<std::int32_t>::min() &&
                          *real <= std::numeric_limits<std::int32_t>::max() && *real == std::trunc(*real);
        if (fits) return static_cast<std::int32_t>(*real);
    }
    Mismatch(column);
}

} // namespace

Value Coerce(const Column& column, Value value) {
    if (IsNull(value)) return column.type == ColumnType::kBoolean ? Value(false) : value;
    switch (column.type) {
    case ColumnType::kBoolean:
        if (const auto* whole = std::get_if<std::int32_t>(&value)) return *whole != 0;
        if (std::holds_alternative<bool>(value)) return value;
        break;
    case ColumnType::kByte: {
        const std::int32_t whole = WholeNumber(column, value);
        if (whole >= 0 && whole <= 255) return whole;
        break;
    }
    case ColumnType::kInteger: {
        const std::int32_t whole = WholeNumber(column, value);
        if (whole >= -32768 && whole <= 32767) return whole;
        break;
    }
    case ColumnType::kLong:
        return WholeNumber(column, value);
    case ColumnType::kSingle:
    case ColumnType::kDouble: {
        double real = 0;
        if (const auto* whole = std::get_if<std::int32_t>(&value)) {
            real = *whole;
        } else if (const auto* given = std::get_if<double>(&value)) {
            real = *given;
        } else {
            break;
        }
        if (std::isnan(real)) break;
        return column.type == ColumnType::kSingle ? double{static_cast<float>(real)} : real;
    }
    case ColumnType::kCurrency:
        if (std::holds_alternative<Currency>(value)) return value;
        break;
    case ColumnType::kDateTime:
        if (std::holds_alternative<DateTime>(value)) return value;
        break;
    case ColumnType::kText:
    case ColumnType::kMemo:
        if (std::holds_alternative<std::u16string>(value)) return value;
        break;
    case ColumnType::kBinary:
    case ColumnType::kOle:
    case ColumnType::kInternal:
        if (std::holds_alternative<Bytes>(value)) return value;
        break;
    case ColumnType::kGuid:
        if (std::holds_alternative<Guid>(value)) return value;
        break;
    case ColumnType::kNumeric:
        if (const auto* number = std::get_if<Numeric>(&value); number && number->scale == column.scale) return value;
        break;
    }
    Mismatch(column);
}

namespace {

Bytes FixedBytes(std::uint64_t value, std::size_t size) {
    Bytes out(8);
    Store64(out.data(), value);
    out.resize(size);
    return out;
}

Bytes EncodeNumeric(const Numeric& value) {
    Bytes out(17);
    out[0] = value.negative ? 0x80 : 0;
    for (std::size_t word = 0; word < 4; ++word) {
        Store32(out.data() + 1 + 4 * word, Load32Big(value.magnitude.data() + 4 * word));
    }
    return out;
}

[[noreturn]] void TooLong(const Column& column) {
    throw Error(ErrorCode::kValueTooLong, "A value is too long for the column " + ToUtf8(column.name));
}

Bytes EncodeTextCell(const Column& column, const std::u16string& text) {
    if (text.size() * 2 > column.length) TooLong(column);
    Bytes stored = EncodeText(text, !column.IsFixed() && (column.moreFlags & kColumnCompressed) != 0);
    if (column.IsFixed()) {
        while (stored.size() + 1 < column.length) Append16(stored, u' ');
    }
    return stored;
}

} // namespace

Bytes EncodeCell(const Column& column, const Value& value) {
    switch (column.type) {
    case ColumnType::kBoolean:
        return {std::get<bool>(value) ? Byte{1} : Byte{0}};
    case ColumnType::kByte:
        return FixedBytes(static_cast<std::uint64_t>(std::get<std::int32_t>(value)), 1);
    case ColumnType::kInteger:
        return FixedBytes(static_cast<std::uint64_t>(std::get<std::int32_t>(value)), 2);
    case ColumnType::kLong:
        return FixedBytes(static_cast<std::uint64_t>(std::get<std::int32_t>(value)), 4);
    case ColumnType::kCurrency:
        return FixedBytes(static_cast<std::uint64_t>(std::get<Currency>(value).scaled), 8);
    case ColumnType::kSingle:
        return FixedBytes(std::bit_cast<std::uint32_t>(static_cast<float>(std::get<double>(value))), 4);
    case ColumnType::kDouble:
        return FixedBytes(std::bit_cast<std::uint64_t>(std::get<double>(value)), 8);
    case ColumnType::kDateTime:
        return FixedBytes(std::bit_cast<std::uint64_t>(std::get<DateTime>(value).days), 8);
    case ColumnType::kText:
        return EncodeTextCell(column, std::get<std::u16string>(value));
    case ColumnType::kGuid: {
        const Guid& guid = std::get<Guid>(value);
        return Bytes(guid.bytes.begin(), guid.bytes.end());
    }
    case ColumnType::kNumeric:
        return EncodeNumeric(std::get<Numeric>(value));
    case ColumnType::kBinary:
    case ColumnType::kInternal: {
        const Bytes& bytes = std::get<Bytes>(value);
        if (bytes.size() > column.length || (column.IsFixed() && bytes.size() != column.length)) TooLong(column);
        return bytes;
    }
    case ColumnType::kOle:
    case ColumnType::kMemo:
        break;
    }
    Mismatch(column);
}

std::size_t EmptyRowSize(const TableDef& def) {
    return EmptyRowSize(def.fixedSize, def.variableColumns, def.maxColumns);
}

Bytes EncodeRow(const TableDef& def, const std::vector<std::optional<Bytes>>& cells) {
    const std::size_t variables = def.variableColumns;
    std::size_t size = EmptyRowSize(def);
    std::vector<const Bytes*> cellAt(variables); // by variable index
    for (std::size_t i = 0; i < def.columns.size(); ++i) {
        const Column& column = def.columns[i];
        if (!cells[i] || column.IsFixed() || column.type == ColumnType::kBoolean) continue;
        if (column.variableIndex >= variables) ThrowCorrupt("a column has a wrong position", def.page);
        cellAt[column.variableIndex] = &*cells[i];
        size += cells[i]->size();
    }
    if (size > kMaxRow) throw Error(ErrorCode::kValueTooLong, "The record is too large");

    // A row must have room for the pointer that replaces it when it is relocated.
    Bytes row(std::max(size, kPointerSize));
    Store16(row.data() + kRowColumns, def.maxColumns);
    Byte* const mask = row.data() + row.size() - MaskSize(def.maxColumns);
    for (std::size_t i = 0; i < def.columns.size(); ++i) {
        const Column& column = def.columns[i];
        if (!cells[i]) continue;
        const bool isFalse = column.type == ColumnType::kBoolean && cells[i]->at(0) == 0;
        if (!isFalse) mask[column.number / 8] = static_cast<Byte>(mask[column.number / 8] | 1U << (column.number % 8));
        if (column.type == ColumnType::kBoolean || !column.IsFixed()) continue;
        std::copy_n(cells[i]->begin(), std::min<std::size_t>(cells[i]->size(), column.length),
                    row.begin() + static_cast<std::ptrdiff_t>(kRowFixed + column.fixedOffset));
    }
    if (variables == 0) return row;
    std::size_t at = kRowFixed + def.fixedSize;
    Byte* offset = mask - kRowOffset;
    Store16(offset, def.variableColumns);
    for (std::size_t k = 0; k < variables; ++k) {
        offset -= kRowOffset;
        Store16(offset, static_cast<std::uint32_t>(at));
        if (!cellAt[k]) continue;
        std::copy(cellAt[k]->begin(), cellAt[k]->end(), row.begin() + static_cast<std::ptrdiff_t>(at));
        at += cellAt[k]->size();
    }
    Store16(offset - kRowOffset, static_cast<std::uint32_t>(at));
    return row;
}

} // namespace jet
