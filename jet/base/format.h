#pragma once

#include <cstddef>
#include <cstdint>

namespace jet {

// The numbers of the Jet 4 file format: every offset and size has its name here.

/// A page's position in the file, counted from 0.
using PageNo = std::uint32_t;

inline constexpr std::size_t kPageSize = 4096;
inline constexpr PageNo kMaxPages = 524288; ///< 2 GiB
inline constexpr PageNo kGlobalMapPage = 1;
inline constexpr PageNo kCatalogPage = 2;       ///< definition of MSysObjects
inline constexpr PageNo kAccessPage = 3;        ///< definition of MSysACEs
inline constexpr PageNo kQueriesPage = 4;       ///< definition of MSysQueries
inline constexpr PageNo kRelationshipsPage = 5; ///< definition of MSysRelationships

// The head of every page but the first.
inline constexpr std::size_t kPageType = 0;
inline constexpr std::size_t kPageMark = 1;
inline constexpr std::uint8_t kLivePage = 0x01; ///< in the byte kPageMark
inline constexpr std::uint8_t kDataPage = 0x01;
inline constexpr std::uint8_t kTableDefPage = 0x02;
inline constexpr std::uint8_t kIndexNodePage = 0x03;
inline constexpr std::uint8_t kIndexLeafPage = 0x04;
inline constexpr std::uint8_t kBitmapPage = 0x05;
inline constexpr std::uint8_t kFreedPageBit = 0x08;

inline bool IsPage(const std::uint8_t* page, std::uint8_t type) {
    return page[kPageType] == type && page[kPageMark] == kLivePage;
}
inline void MarkPage(std::uint8_t* page, std::uint8_t type) {
    page[kPageType] = type;
    page[kPageMark] = kLivePage;
}

// Page 0, the header. Part of it is masked with a fixed keystream.
inline constexpr std::size_t kHeaderStart = 0;
inline constexpr std::uint32_t kHeaderStartValue = 0x100;
inline constexpr std::size_t kHeaderName = 0x04;
inline constexpr std::size_t kHeaderVersion = 0x14;
inline constexpr std::uint32_t kVersionJet3 = 0;
inline constexpr std::uint32_t kVersionJet4 = 1;
inline constexpr std::size_t kHeaderMaskStart = 0x18;
inline constexpr std::size_t kHeaderMaskSize = 0x80;
inline constexpr std::size_t kHeaderGlobalMap = 0x18;
inline constexpr std::size_t kHeaderSecondMap = 0x1C; ///< a map that is always empty
inline constexpr std::size_t kHeaderSystemTables = 0x20;
inline constexpr std::size_t kHeaderCodePage = 0x3C;
inline constexpr std::uint32_t kCodePageLatin1 = 1252;
inline constexpr std::size_t kHeaderPageKey = 0x3E; ///< 0: pages are stored plain
inline constexpr std::size_t kHeaderPassword = 0x42;
inline constexpr std::size_t kHeaderPasswordSize = 40;
inline constexpr std::size_t kHeaderBuild = 0x6A;
inline constexpr std::uint32_t kBuildNumber = 4431; ///< any number will do
inline constexpr std::size_t kHeaderSortOrder = 0x6E;
inline constexpr std::size_t kHeaderDate = 0x72;
inline constexpr std::size_t kHeaderConstant = 0x98;
inline constexpr std::uint32_t kHeaderConstantValue = 1620;
inline constexpr std::size_t kHeaderEngine = 0x9C; ///< "4.0"
/// Of this engine alone: 8 bytes by which a journal knows the state it was made from (see Journal). Zero in files that
/// other engines made, in a part of the page that they leave alone.
inline constexpr std::size_t kHeaderStamp = 0xC00;
inline constexpr std::size_t kHeaderCommitBytes = 0xE00;
inline constexpr std::size_t kCommitPairs = 256;
inline constexpr std::uint32_t kCommitStart = 0x0100;

// Data pages: the head, then the slot table. Rows are packed downwards from the end of the page.
inline constexpr std::size_t kDataFree = 2;
inline constexpr std::size_t kDataOwner = 4;
inline constexpr std::size_t kDataSlotCount = 12;
inline constexpr std::size_t kDataSlots = 14;
inline constexpr std::size_t kSlotSize = 2;
inline constexpr std::uint32_t kMapPageOwner = 0;            ///< pages of usage maps belong to nobody
inline constexpr std::uint32_t kGlobalMapOwner = 1;          ///< ... but page 1 says 1
inline constexpr std::uint32_t kLongValueOwner = 0x4C41564C; ///< "LVAL"
inline constexpr unsigned kMaxSlots = 255;
inline constexpr std::uint16_t kSlotStart = 0x1FFF;
inline constexpr std::uint16_t kSlotHeader = 0x4000; ///< the slot holds the address of a relocated row
inline constexpr std::uint16_t kSlotBody = 0x8000;   ///< the slot holds the body of a relocated row
inline constexpr std::uint16_t kSlotDeleted = 0xC000;
inline constexpr std::size_t kMaxRow = 4060;
inline constexpr std::size_t kPointerSize = 4; ///< a row pointer: the slot in the low byte, the page above it

inline constexpr std::size_t SlotOffset(unsigned slot) {
    return kDataSlots + kSlotSize * slot;
}

// Rows: the number of columns, the fixed area, the variable cells, their end and starts, their number, the null mask.
inline constexpr std::size_t kRowColumns = 0;
inline constexpr std::size_t kRowFixed = 2;  ///< where the fixed area starts
inline constexpr std::size_t kRowOffset = 2; ///< bytes of one offset in the table, and of the number after it
inline constexpr std::size_t MaskSize(std::size_t columns) {
    return (columns + 7) / 8;
}
/// Bytes of the table of variable cells: one offset each, the end of the last one, and their number.
inline constexpr std::size_t OffsetTableSize(std::size_t variables) {
    return variables > 0 ? kRowOffset * (variables + 2) : 0;
}
/// Bytes of a row in which every variable cell is empty.
inline constexpr std::size_t EmptyRowSize(std::size_t fixed, std::size_t variables, std::size_t columns) {
    return kRowFixed + fixed + OffsetTableSize(variables) + MaskSize(columns);
}

// Index pages.
inline constexpr std::size_t kIndexFree = 2;
inline constexpr std::size_t kIndexOwner = 4;
inline constexpr std::size_t kIndexPrevious = 12;
inline constexpr std::size_t kIndexNext = 16;
inline constexpr std::size_t kIndexTail = 20;
inline constexpr std::size_t kIndexPrefix = 24;
inline constexpr std::size_t kIndexBitmap = 27;
inline constexpr std::size_t kIndexEntries = 480;
inline constexpr std::size_t kIndexArea = kPageSize - kIndexEntries;
inline constexpr std::size_t kEntryRow = 4;   ///< after the key: the row, page first and big-endian
inline constexpr std::size_t kEntryChild = 4; ///< in nodes, after the row: the child page, big-endian
inline constexpr std::size_t kMaxKey = 1800;  ///< a page must hold two entries
inline constexpr unsigned kMaxIndexDepth = 16;

inline constexpr std::size_t EntryTrailer(bool leaf) {
    return leaf ? kEntryRow : kEntryRow + kEntryChild;
}

// Usage maps: rows on map pages. An inline map holds a base page and a bitmap, a reference map the numbers of bitmap
// pages.
inline constexpr std::size_t kMapRowSize = 69;
inline constexpr std::size_t kMapRowsPerPage = 57;
inline constexpr std::size_t kMapKind = 0;
inline constexpr std::uint8_t kInlineMap = 0;
inline constexpr std::uint8_t kReferenceMap = 1;
inline constexpr std::size_t kMapBase = 1;
inline constexpr std::size_t kMapBits = 5;
inline constexpr std::size_t kMapReferences = 1;
inline constexpr std::size_t kMapReferenceSize = 4;
inline constexpr PageNo kMapBaseUnit = 8; ///< bases are multiples of this
inline constexpr std::size_t kBitmapStart = 4;
inline constexpr std::size_t kBitmapSize = kPageSize - kBitmapStart;
inline constexpr std::uint32_t kBitmapPageBits = kBitmapSize * 8;

// Long values: the cell in the row, and the rows of a chain.
inline constexpr std::size_t kLongWord = 0; ///< length and kind
inline constexpr std::size_t kLongPointer = 4;
inline constexpr std::size_t kLongCell = 12;
inline constexpr std::uint32_t kLongInline = 0x80000000;
inline constexpr std::uint32_t kLongSingle = 0x40000000;
inline constexpr std::uint32_t kLongLength = 0x3FFFFFFF;
inline constexpr std::size_t kMaxInlineLong = 64;
inline constexpr std::size_t kMaxLongRow = 4076;
inline constexpr std::size_t kChainData = 4; ///< in a chain's row, after the pointer to the next one
inline constexpr std::size_t kMaxChainData = kMaxLongRow - kChainData;

// Table definition pages.
inline constexpr std::size_t kDefFree = 2;
inline constexpr std::size_t kDefNext = 4;
inline constexpr std::size_t kDefPageHead = 8; ///< not part of the definition on the pages after the first
inline constexpr std::size_t kDefPageReserve = 8;

// Table definitions: offsets into the joined definition.
inline constexpr std::size_t kDefLength = 8;
inline constexpr std::size_t kDefConstant = 12;
inline constexpr std::size_t kDefRowCount = 16;
inline constexpr std::size_t kDefAutoNumber = 20;
inline constexpr std::size_t kDefAutoNumberOn = 24;
inline constexpr std::size_t kDefKind = 40;
inline constexpr std::uint8_t kUserTable = 0x4E;
inline constexpr std::uint8_t kSystemTable = 0x53;
inline constexpr std::size_t kDefMaxColumns = 41;
inline constexpr std::size_t kDefVariableColumns = 43;
inline constexpr std::size_t kDefColumns = 45;
inline constexpr std::size_t kDefLogicalIndexes = 47;
inline constexpr std::size_t kDefRealIndexes = 51;
inline constexpr std::size_t kDefOwnedMap = 55;
inline constexpr std::size_t kDefFreeMap = 59;
inline constexpr std::size_t kDefCounters = 63;
inline constexpr std::size_t kDefCounterSize = 12;
inline constexpr std::size_t kCounterUnique = 4; ///< in a counter: the number of distinct keys
inline constexpr std::uint32_t kDefMagic = 1625;
inline constexpr std::uint32_t kDefIndexMagic = 1923;
inline constexpr std::uint16_t kNoColumn = 0xFFFF; ///< an unused place in an index, and the end of the definition
inline constexpr std::size_t kMaxColumns = 255;
inline constexpr std::size_t kMaxIndexes = 32;
inline constexpr std::size_t kMaxName = 64;
inline constexpr std::size_t kNameText = 2; ///< in a name, after its length

// A column in a definition.
inline constexpr std::size_t kDefColumnSize = 25;
inline constexpr std::size_t kColumnType = 0;
inline constexpr std::size_t kColumnConstant = 1;
inline constexpr std::size_t kColumnNumber = 5;
inline constexpr std::size_t kColumnVariable = 7;
inline constexpr std::size_t kColumnOrdinal = 9;
inline constexpr std::size_t kColumnSortOrder = 11;
inline constexpr std::size_t kColumnSortVersion = 14;
inline constexpr std::size_t kColumnPrecision = 11; ///< NUMERIC
inline constexpr std::size_t kColumnScale = 12;     ///< NUMERIC
inline constexpr std::size_t kColumnFlags = 15;
inline constexpr std::size_t kColumnMoreFlags = 16;
inline constexpr std::size_t kColumnFixedOffset = 21;
inline constexpr std::size_t kColumnLength = 23;
inline constexpr std::uint8_t kColumnFixed = 0x01;
inline constexpr std::uint8_t kColumnUpdatable = 0x02;
inline constexpr std::uint8_t kColumnAutoNumber = 0x04;
inline constexpr std::uint8_t kColumnSystem = 0x10;
inline constexpr std::uint8_t kColumnCompressed = 0x01; ///< in kColumnMoreFlags
inline constexpr std::uint16_t kBooleanLength = 1;
inline constexpr std::uint16_t kGeneralLcid = 0x0409;
inline constexpr std::size_t kMaxTextLength = 255;
inline constexpr std::size_t kMaxBinaryLength = 510;

// A real index in a definition: one tree.
inline constexpr std::size_t kDefRealIndexSize = 52;
inline constexpr std::size_t kRealIndexConstant = 0;
inline constexpr std::size_t kRealIndexColumns = 4;
inline constexpr std::size_t kMaxIndexColumns = 10;
inline constexpr std::size_t kIndexColumnSize = 3;
inline constexpr std::size_t kIndexColumnOrder = 2;
inline constexpr std::uint8_t kAscending = 0x01;
inline constexpr std::size_t kRealIndexMap = 34;
inline constexpr std::size_t kRealIndexRoot = 38;
inline constexpr std::size_t kRealIndexFlags = 46;
inline constexpr std::uint8_t kIndexUnique = 0x01;
inline constexpr std::uint8_t kIndexIgnoreNulls = 0x02;
inline constexpr std::uint8_t kIndexRequired = 0x08;
inline constexpr std::uint8_t kIndexAlways = 0x80;

// A logical index in a definition: a use of a tree.
inline constexpr std::size_t kDefLogicalIndexSize = 28;
inline constexpr std::size_t kLogicalConstant = 0;
inline constexpr std::size_t kLogicalNumber = 4;
inline constexpr std::size_t kLogicalReal = 8;
inline constexpr std::size_t kLogicalRelated = 13;
inline constexpr std::uint32_t kNoRelated = 0xFFFFFFFF;
inline constexpr std::size_t kLogicalCascade = 21; ///< two bytes: updates, deletes
inline constexpr std::uint8_t kCascadeUnused = 4;
inline constexpr std::size_t kLogicalKind = 23;
inline constexpr std::uint8_t kPrimaryKey = 1;

// The maps of a MEMO or OLE column, at the end of a definition.
inline constexpr std::size_t kDefLongMapsSize = 10;
inline constexpr std::size_t kLongMapsColumn = 0;
inline constexpr std::size_t kLongMapsOwned = 2;
inline constexpr std::size_t kLongMapsFree = 6;

} // namespace jet
