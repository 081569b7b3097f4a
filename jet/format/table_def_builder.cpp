#include "format/table_def.h"
#include "format/text_codec.h"
#include "jet/error.h"

#include <algorithm>
#include <set>

namespace jet {
namespace {

[[noreturn]] void Refuse(const std::string& what) {
    throw Error(ErrorCode::kUsage, "The table cannot be created: " + what);
}

void CheckName(std::u16string_view name) {
    const bool bad = std::any_of(name.begin(), name.end(), [](char16_t c) {
        return c < u' ' || std::u16string_view(u".![]`").find(c) != std::u16string_view::npos;
    });
    if (name.empty() || name.size() > kMaxName || name.front() == u' ' || bad) {
        Refuse("a name is not allowed: " + ToUtf8(name));
    }
}

void CheckSpec(const TableSpec& wanted) {
    CheckName(wanted.name);
    if (wanted.columns.empty() || wanted.columns.size() > kMaxColumns) Refuse("it needs 1 to 255 columns");
    if (wanted.indexes.size() > kMaxIndexes) Refuse("it can have at most 32 indexes");
    std::set<std::u16string> names;
    for (const ColumnSpec& column : wanted.columns) {
        CheckName(column.name);
        if (!names.insert(FoldName(column.name)).second) Refuse("two columns have the same name");
        if (column.type == ColumnType::kText && (column.length < 1 || column.length > kMaxTextLength)) {
            Refuse("a text column has 1 to 255 characters");
        }
        if (column.type == ColumnType::kBinary && (column.length < 1 || column.length > kMaxBinaryLength)) {
            Refuse("a binary column has 1 to 510 bytes");
        }
        if (column.type == ColumnType::kInternal) Refuse("a column has no usable type");
        if (column.autoNumber && column.type != ColumnType::kLong) Refuse("only LONG columns can be AutoNumber");
    }
    names.clear();
    for (const IndexSpec& index : wanted.indexes) {
        CheckName(index.name);
        if (!names.insert(FoldName(index.name)).second) Refuse("two indexes have the same name");
        if (index.columns.empty() || index.columns.size() > kMaxIndexColumns) Refuse("an index has 1 to 10 columns");
    }
}

std::size_t ColumnPosition(const TableSpec& wanted, std::u16string_view name) {
    for (std::size_t i = 0; i < wanted.columns.size(); ++i) {
        if (SameName(wanted.columns[i].name, name)) return i;
    }
    Refuse("an index names an unknown column");
}

bool IsLongType(ColumnType type) {
    return type == ColumnType::kMemo || type == ColumnType::kOle;
}
bool IsVariable(ColumnType type) {
    return IsLongType(type) || type == ColumnType::kText || type == ColumnType::kBinary;
}

/// The size of a fixed column, or the maximum of a variable one, in bytes.
std::uint16_t StoredLength(const ColumnSpec& column) {
    if (column.type == ColumnType::kBoolean) return kBooleanLength;
    if (column.type == ColumnType::kText) return static_cast<std::uint16_t>(2 * column.length);
    if (IsLongType(column.type)) return 0;
    return static_cast<std::uint16_t>(FixedSize(column.type, column.length));
}

/// Positions of the variable columns: in column order, but in user tables the long ones come last.
std::vector<std::uint16_t> VariableIndexes(const TableSpec& wanted, bool system) {
    std::vector<std::uint16_t> places(wanted.columns.size());
    std::uint16_t next = 0;
    for (const bool longs : {false, true}) {
        for (std::size_t i = 0; i < places.size(); ++i) {
            const ColumnType type = wanted.columns[i].type;
            const bool inThisRun = system ? !longs : IsLongType(type) == longs;
            if (IsVariable(type) && inThisRun) places[i] = next++;
        }
    }
    return places;
}

void AppendName(Bytes& out, std::u16string_view name) {
    Append16(out, static_cast<std::uint32_t>(2 * name.size()));
    for (const char16_t c : name) Append16(out, c);
}

void AppendColumns(Bytes& out, const TableSpec& wanted, bool system) {
    const std::vector<std::uint16_t> variableIndexes = VariableIndexes(wanted, system);
    std::uint16_t variablesBefore = 0;
    std::uint16_t fixedOffset = 0;
    for (std::size_t i = 0; i < wanted.columns.size(); ++i) {
        const ColumnSpec& column = wanted.columns[i];
        const bool variable = IsVariable(column.type);
        Bytes record(kDefColumnSize);
        record[kColumnType] = static_cast<Byte>(column.type);
        Store32(record.data() + kColumnConstant, kDefMagic);
        Store16(record.data() + kColumnNumber, static_cast<std::uint32_t>(i));
        Store16(record.data() + kColumnVariable, variable ? variableIndexes[i] : variablesBefore);
        Store16(record.data() + kColumnOrdinal, static_cast<std::uint32_t>(i));
        if (column.type == ColumnType::kNumeric) {
            record[kColumnPrecision] = column.precision;
            record[kColumnScale] = column.scale;
        } else {
            Store16(record.data() + kColumnSortOrder, kGeneralLcid);
        }
        unsigned flags = kColumnUpdatable;
        if (!variable) flags |= kColumnFixed;
        if (system) flags |= kColumnSystem;
        if (column.autoNumber) flags |= kColumnAutoNumber;
        record[kColumnFlags] = static_cast<Byte>(flags);
        const bool textual = column.type == ColumnType::kText || column.type == ColumnType::kMemo;
        record[kColumnMoreFlags] = textual && column.compressed ? kColumnCompressed : Byte{0};
        const std::uint16_t length = StoredLength(column);
        if (!variable)
            Store16(record.data() + kColumnFixedOffset, column.type == ColumnType::kBoolean ? 0U : fixedOffset);
        Store16(record.data() + kColumnLength, length);
        if (!variable && column.type != ColumnType::kBoolean)
            fixedOffset = static_cast<std::uint16_t>(fixedOffset + length);
        if (variable) ++variablesBefore;
        AppendBytes(out, record);
    }
    if (EmptyRowSize(fixedOffset, variablesBefore, wanted.columns.size()) > kMaxRow) {
        Refuse("its columns are too long for a row");
    }
    for (const ColumnSpec& column : wanted.columns) AppendName(out, column.name);
}

void AppendIndexes(Bytes& out, const TableSpec& wanted, const TablePlaces& places) {
    for (std::size_t i = 0; i < wanted.indexes.size(); ++i) {
        const IndexSpec& index = wanted.indexes[i];
        Bytes record(kDefRealIndexSize);
        Store32(record.data() + kRealIndexConstant, kDefIndexMagic);
        for (std::size_t k = 0; k < kMaxIndexColumns; ++k) {
            Byte* const part = record.data() + kRealIndexColumns + kIndexColumnSize * k;
            const bool used = k < index.columns.size();
            Store16(part, used ? static_cast<std::uint32_t>(ColumnPosition(wanted, index.columns[k]))
                               : std::uint32_t{kNoColumn});
            part[kIndexColumnOrder] = used && !index.descending ? kAscending : Byte{0};
        }
        Store32(record.data() + kRealIndexMap, places.indexMaps[i]);
        Store32(record.data() + kRealIndexRoot, places.indexRoots[i]);
        unsigned flags = kIndexAlways;
        if (index.primary || index.unique) flags |= kIndexUnique;
        if (index.ignoreNulls) flags |= kIndexIgnoreNulls;
        if (index.required || (index.primary && !places.system)) flags |= kIndexRequired;
        record[kRealIndexFlags] = static_cast<Byte>(flags);
        AppendBytes(out, record);
    }
    for (std::size_t i = 0; i < wanted.indexes.size(); ++i) {
        Bytes record(kDefLogicalIndexSize);
        Store32(record.data() + kLogicalConstant, kDefMagic);
        Store32(record.data() + kLogicalNumber, static_cast<std::uint32_t>(i));
        Store32(record.data() + kLogicalReal, static_cast<std::uint32_t>(i));
        Store32(record.data() + kLogicalRelated, kNoRelated);
        record[kLogicalCascade] = kCascadeUnused;
        record[kLogicalCascade + 1] = kCascadeUnused;
        record[kLogicalKind] = wanted.indexes[i].primary ? kPrimaryKey : Byte{0};
        AppendBytes(out, record);
    }
    for (const IndexSpec& index : wanted.indexes) AppendName(out, index.name);
}

} // namespace

Bytes BuildTableDef(const TableSpec& wanted, const TablePlaces& places) {
    CheckSpec(wanted);
    std::uint16_t variables = 0;
    for (const ColumnSpec& column : wanted.columns)
        variables = static_cast<std::uint16_t>(variables + IsVariable(column.type));
    const auto columns = static_cast<std::uint32_t>(wanted.columns.size());
    const auto indexes = static_cast<std::uint32_t>(wanted.indexes.size());
    Bytes out(kDefCounters + kDefCounterSize * indexes);
    MarkPage(out.data(), kTableDefPage);
    Store32(out.data() + kDefConstant, kDefMagic);
    out[kDefAutoNumberOn] = 1;
    out[kDefKind] = places.system ? kSystemTable : kUserTable;
    Store16(out.data() + kDefMaxColumns, columns);
    Store16(out.data() + kDefVariableColumns, variables);
    Store16(out.data() + kDefColumns, columns);
    Store32(out.data() + kDefLogicalIndexes, indexes);
    Store32(out.data() + kDefRealIndexes, indexes);
    Store32(out.data() + kDefOwnedMap, places.ownedMap);
    Store32(out.data() + kDefFreeMap, places.freeMap);
    AppendColumns(out, wanted, places.system);
    AppendIndexes(out, wanted, places);
    std::size_t nextLong = 0;
    for (std::uint32_t i = 0; i < columns; ++i) {
        if (!IsLongType(wanted.columns[i].type)) continue;
        Append16(out, i);
        Append32(out, places.longMaps[nextLong].first);
        Append32(out, places.longMaps[nextLong].second);
        ++nextLong;
    }
    Append16(out, kNoColumn);
    Store32(out.data() + kDefLength, static_cast<std::uint32_t>(out.size()));
    return out;
}

} // namespace jet
