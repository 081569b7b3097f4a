#include "format/table_def.h"

#include "jet/error.h"

#include <algorithm>

namespace jet {
namespace {

constexpr std::size_t kMaxDefPages = 64;
constexpr std::size_t kMaxIndexesRead = 255; ///< other programs may exceed the documented limit

/// The joined definition with checked reads.
class Definition {
  public:
    Definition(Pager& pager, PageNo first) : first_(first) {
        for (PageNo next = first; next != 0;) {
            if (pages_.size() >= kMaxDefPages || std::find(pages_.begin(), pages_.end(), next) != pages_.end()) {
                ThrowCorrupt("a table definition has no end", first);
            }
            const PageRef page = pager.Read(next);
            if (!IsPage(page.data(), kTableDefPage)) {
                ThrowCorrupt("a table definition page has another type", next);
            }
            AppendBytes(bytes_, ByteView(page.data(), kPageSize).subspan(pages_.empty() ? 0 : kDefPageHead));
            pages_.push_back(next);
            next = Load32(page.data() + kDefNext);
        }
        const std::uint32_t length = Load32(bytes_.data() + kDefLength);
        if (length > bytes_.size()) ThrowCorrupt("a table definition is cut off", first);
        if (length >= kDefCounters) bytes_.resize(length);
    }

    const std::vector<PageNo>& pages() const { return pages_; }
    const Byte* At(std::size_t offset, std::size_t size) const {
        if (offset > bytes_.size() || size > bytes_.size() - offset)
            ThrowCorrupt("a table definition is cut off", first_);
        return bytes_.data() + offset;
    }
    std::u16string Name(std::size_t& offset) const {
        const std::size_t size = Load16(At(offset, kNameText));
        if (size % 2 != 0 || size > 2 * kMaxName) ThrowCorrupt("a name in a table definition is too long", first_);
        const Byte* const text = At(offset + kNameText, size);
        std::u16string name(size / 2, u'\0');
        for (std::size_t i = 0; i < name.size(); ++i) name[i] = Load16(text + 2 * i);
        offset += kNameText + size;
        return name;
    }

  private:
    PageNo first_;
    std::vector<PageNo> pages_;
    Bytes bytes_;
};

Column ReadColumn(const Byte* record) {
    Column column;
    column.type = static_cast<ColumnType>(record[kColumnType]);
    column.number = Load16(record + kColumnNumber);
    column.variableIndex = Load16(record + kColumnVariable);
    if (column.type == ColumnType::kNumeric) {
        column.scale = record[kColumnScale];
    } else {
        column.sortOrder = Load16(record + kColumnSortOrder);
        column.sortVersion = record[kColumnSortVersion];
    }
    column.flags = record[kColumnFlags];
    column.moreFlags = record[kColumnMoreFlags];
    column.fixedOffset = Load16(record + kColumnFixedOffset);
    column.length = Load16(record + kColumnLength);
    return column;
}

void CheckColumns(TableDef& def) {
    std::vector<bool> seen(def.maxColumns);
    for (Column& column : def.columns) {
        if (column.number >= def.maxColumns || seen[column.number])
            ThrowCorrupt("a column has a wrong number", def.page);
        seen[column.number] = true;
        if (column.type == ColumnType::kBoolean || !column.IsFixed()) continue;
        column.length = static_cast<std::uint16_t>(FixedSize(column.type, column.length));
        const std::size_t end = std::size_t{column.fixedOffset} + column.length;
        if (end > kPageSize) ThrowCorrupt("a column lies outside its row", def.page);
        def.fixedSize = std::max(def.fixedSize, end);
    }
    std::sort(def.columns.begin(), def.columns.end(),
              [](const Column& a, const Column& b) { return a.number < b.number; });
}

Index ReadIndex(const TableDef& def, const Byte* record) {
    Index index;
    for (std::size_t i = 0; i < kMaxIndexColumns; ++i) {
        const Byte* const part = record + kRealIndexColumns + kIndexColumnSize * i;
        const std::uint16_t number = Load16(part);
        if (number == kNoColumn) continue;
        const auto found = std::find_if(def.columns.begin(), def.columns.end(),
                                        [number](const Column& column) { return column.number == number; });
        if (found == def.columns.end()) ThrowCorrupt("an index has an unknown column", def.page);
        index.columns.push_back(
            {static_cast<std::size_t>(found - def.columns.begin()), (part[kIndexColumnOrder] & kAscending) != 0});
    }
    if (index.columns.empty()) ThrowCorrupt("an index has no columns", def.page);
    index.ownedMap = Load32(record + kRealIndexMap);
    index.root = Load32(record + kRealIndexRoot);
    index.flags = record[kRealIndexFlags];
    return index;
}

void ReadLogicalIndexes(TableDef& def, const Definition& definition, std::size_t& offset, std::size_t count) {
    std::vector<std::size_t> realOf(count);
    for (std::size_t i = 0; i < count; ++i) {
        const Byte* const record = definition.At(offset, kDefLogicalIndexSize);
        realOf[i] = Load32(record + kLogicalReal);
        if (realOf[i] >= def.indexes.size()) ThrowCorrupt("an index names an unknown tree", def.page);
        if (record[kLogicalKind] == kPrimaryKey) def.indexes[realOf[i]].primary = true;
        offset += kDefLogicalIndexSize;
    }
    for (std::size_t i = 0; i < count; ++i) {
        std::u16string name = definition.Name(offset);
        Index& index = def.indexes[realOf[i]];
        if (index.name.empty()) index.name = std::move(name);
    }
}

void ReadLongMaps(TableDef& def, const Definition& definition, std::size_t offset) {
    for (std::size_t i = 0; i <= kMaxColumns; ++i) {
        const std::uint16_t number = Load16(definition.At(offset, sizeof kNoColumn));
        if (number == kNoColumn) return;
        const Byte* const record = definition.At(offset, kDefLongMapsSize);
        for (Column& column : def.columns) {
            if (column.number != number || !column.IsLong()) continue;
            column.ownedMap = Load32(record + kLongMapsOwned);
            column.freeMap = Load32(record + kLongMapsFree);
        }
        offset += kDefLongMapsSize;
    }
    ThrowCorrupt("a table definition has too many long columns", def.page);
}

} // namespace

std::size_t FixedSize(ColumnType type, std::size_t length) {
    switch (type) {
    case ColumnType::kBoolean:
        return 0;
    case ColumnType::kByte:
        return 1;
    case ColumnType::kInteger:
        return 2;
    case ColumnType::kLong:
    case ColumnType::kSingle:
        return 4;
    case ColumnType::kCurrency:
    case ColumnType::kDouble:
    case ColumnType::kDateTime:
        return 8;
    case ColumnType::kGuid:
        return 16;
    case ColumnType::kNumeric:
        return 17;
    default:
        return length;
    }
}

std::optional<std::size_t> TableDef::FindColumn(std::u16string_view columnName) const {
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (SameName(columns[i].name, columnName)) return i;
    }
    return std::nullopt;
}

TableDef ReadTableDef(Pager& pager, PageNo page) {
    const Definition definition(pager, page);
    TableDef def;
    def.page = page;
    def.pages = definition.pages();
    const Byte* const head = definition.At(0, kDefCounters);
    def.system = head[kDefKind] == kSystemTable;
    def.maxColumns = Load16(head + kDefMaxColumns);
    def.variableColumns = Load16(head + kDefVariableColumns);
    const std::size_t columns = Load16(head + kDefColumns);
    const std::size_t logical = Load32(head + kDefLogicalIndexes);
    const std::size_t real = Load32(head + kDefRealIndexes);
    def.ownedMap = Load32(head + kDefOwnedMap);
    def.freeMap = Load32(head + kDefFreeMap);
    if (columns > kMaxColumns || real > kMaxIndexesRead || logical > kMaxIndexesRead ||
        def.variableColumns > def.maxColumns) {
        ThrowCorrupt("a table definition has impossible counts", page);
    }
    std::size_t offset = kDefCounters + kDefCounterSize * real;
    def.columns.reserve(columns);
    for (std::size_t i = 0; i < columns; ++i, offset += kDefColumnSize) {
        def.columns.push_back(ReadColumn(definition.At(offset, kDefColumnSize)));
    }
    for (Column& column : def.columns) column.name = definition.Name(offset);
    CheckColumns(def);
    def.indexes.reserve(real);
    for (std::size_t i = 0; i < real; ++i, offset += kDefRealIndexSize) {
        def.indexes.push_back(ReadIndex(def, definition.At(offset, kDefRealIndexSize)));
    }
    ReadLogicalIndexes(def, definition, offset, logical);
    ReadLongMaps(def, definition, offset);
    return def;
}

namespace {

char16_t FoldUnit(char16_t c) {
    if (c < 0x80) return c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - 32) : c;
    if (c >= 0xE0 && c <= 0xFE && c != 0xF7) return static_cast<char16_t>(c - 32);
    if (c >= 0x0100 && c <= 0x0137) return static_cast<char16_t>(c & ~1);
    if (c >= 0x03B1 && c <= 0x03C9 && c != 0x03C2) return static_cast<char16_t>(c - 32);
    if (c >= 0x0430 && c <= 0x044F) return static_cast<char16_t>(c - 32);
    if (c >= 0x0450 && c <= 0x045F) return static_cast<char16_t>(c - 80);
    return c;
}

} // namespace

bool SameName(std::u16string_view a, std::u16string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char16_t x, char16_t y) { return FoldUnit(x) == FoldUnit(y); });
}

std::u16string FoldName(std::u16string_view name) {
    std::u16string folded(name);
    std::transform(folded.begin(), folded.end(), folded.begin(), FoldUnit);
    return folded;
}

} // namespace jet
