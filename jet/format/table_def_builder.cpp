#include "format/table_def.h"
#include "format/text_codec.h"
#include "jet/error.h"

#include <algorithm>
#include <set>

namespace jet {
namespace {

constexpr std::size_t kMaxName = 64;

[[noreturn]] void Refuse(const std::string& what) {
    throw Error(ErrorCode::kUsage, "A table cannot be made: " + what);
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
    if (wanted.columns.empty() || wanted.columns.size() > 255) Refuse("it needs 1 to 255 columns");
    if (wanted.indexes.size() > 32) Refuse("it can have 32 indexes");
    std::set<std::u16string> names;
    for (const ColumnSpec& column : wanted.columns) {
        CheckName(column.name);
        if (!names.insert(FoldName(column.name)).second) Refuse("two columns have one name");
        if (column.type == ColumnType::kText && (column.length < 1 || column.length > 255)) {
            Refuse("a text column has 1 to 255 characters");
        }
        if (column.type == ColumnType::kBinary && (column.length < 1 || column.length > 510)) {
            Refuse("a binary column has 1 to 510 bytes");
        }
        if (column.type == ColumnType::kInternal) Refuse("a column has no usable type");
        if (column.autoNumber && column.type != ColumnType::kLong) Refuse("only whole numbers can be counted on");
    }
    names.clear();
    for (const IndexSpec& index : wanted.indexes) {
        CheckName(index.name);
        if (!names.insert(FoldName(index.name)).second) Refuse("two indexes have one name");
        if (index.columns.empty() || index.columns.size() > 10) Refuse("an index has 1 to 10 columns");
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

/// Bytes in a fixed column, or the most in a variable one.
std::uint16_t StoredLength(const ColumnSpec& column) {
    if (column.type == ColumnType::kBoolean) return 1;
    if (column.type == ColumnType::kText) return static_cast<std::uint16_t>(2 * column.length);
    if (IsLongType(column.type)) return 0;
    return static_cast<std::uint16_t>(FixedSize(column.type, column.length));
}

/// Places of the variable columns: in column order, but in user tables the long ones after all others.
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
        record[0] = static_cast<Byte>(column.type);
        Store32(record.data() + 1, kDefMagic);
        Store16(record.data() + 5, static_cast<std::uint32_t>(i));
        Store16(record.data() + 7, variable ? variableIndexes[i] : variablesBefore);
        Store16(record.data() + 9, static_cast<std::uint32_t>(i));
        if (column.type == ColumnType::kNumeric) {
            record[11] = column.precision;
            record[12] = column.scale;
        } else {
            Store16(record.data() + 11, kGeneralLcid);
        }
        unsigned flags = kColumnUpdatable;
        if (!variable) flags |= kColumnFixed;
        if (system) flags |= kColumnSystem;
        if (column.autoNumber) flags |= kColumnAutoNumber;
        record[15] = static_cast<Byte>(flags);
        const bool textual = column.type == ColumnType::kText || column.type == ColumnType::kMemo;
        record[16] = textual && column.compressed ? kColumnCompressed : Byte{0};
        const std::uint16_t length = StoredLength(column);
        if (!variable) Store16(record.data() + 21, column.type == ColumnType::kBoolean ? 0U : fixedOffset);
        Store16(record.data() + 23, length);
        if (!variable && column.type != ColumnType::kBoolean)
            fixedOffset = static_cast<std::uint16_t>(fixedOffset + length);
        if (variable) ++variablesBefore;
        AppendBytes(out, record);
    }
    if (fixedOffset > kMaxRow - 64) Refuse("its columns are too long for a row");
    for (const ColumnSpec& column : wanted.columns) AppendName(out, column.name);
}

void AppendIndexes(Bytes& out, const TableSpec& wanted, const TablePlaces& places) {
    for (std::size_t i = 0; i < wanted.indexes.size(); ++i) {
        const IndexSpec& index = wanted.indexes[i];
        Bytes record(kDefRealIndexSize);
        Store32(record.data(), kDefIndexMagic);
        for (std::size_t k = 0; k < 10; ++k) {
            Byte* const part = record.data() + 4 + 3 * k;
            const bool used = k < index.columns.size();
            Store16(part, used ? static_cast<std::uint32_t>(ColumnPosition(wanted, index.columns[k])) : 0xFFFFU);
            part[2] = used && !index.descending ? 1 : 0;
        }
        Store32(record.data() + 34, places.indexMaps[i]);
        Store32(record.data() + 38, places.indexRoots[i]);
        unsigned flags = kIndexAlways;
        if (index.primary || index.unique) flags |= kIndexUnique;
        if (index.ignoreNulls) flags |= kIndexIgnoreNulls;
        if (index.required || (index.primary && !places.system)) flags |= kIndexRequired;
        record[46] = static_cast<Byte>(flags);
        AppendBytes(out, record);
    }
    for (std::size_t i = 0; i < wanted.indexes.size(); ++i) {
        Bytes record(kDefLogicalIndexSize);
        Store32(record.data(), kDefMagic);
        Store32(record.data() + 4, static_cast<std::uint32_t>(i));
        Store32(record.data() + 8, static_cast<std::uint32_t>(i));
        Store32(record.data() + 13, 0xFFFFFFFF);
        record[21] = 4;
        record[22] = 4;
        record[23] = wanted.indexes[i].primary ? 1 : 0;
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
    Store16(out.data(), kTableDefPage | 0x100U);
    Store32(out.data() + 12, kDefMagic);
    out[24] = 1;
    out[40] = places.system ? 0x53 : 0x4E;
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
    Append16(out, 0xFFFF);
    Store32(out.data() + 8, static_cast<std::uint32_t>(out.size()));
    return out;
}

} // namespace jet
