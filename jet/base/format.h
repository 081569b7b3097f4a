#pragma once

#include <cstddef>
#include <cstdint>

namespace jet {

// The Jet 4 file format's fixed numbers. Page code holds no literal offsets of its own where a name here fits.

using PageNo = std::uint32_t;

inline constexpr std::size_t kPageSize = 4096;
inline constexpr PageNo kMaxPages = 524288; ///< 2 GiB
inline constexpr PageNo kGlobalMapPage = 1;
inline constexpr PageNo kCatalogPage = 2; ///< definition of MSysObjects

// First byte of a page.
inline constexpr std::uint8_t kDataPage = 0x01;
inline constexpr std::uint8_t kTableDefPage = 0x02;
inline constexpr std::uint8_t kIndexNodePage = 0x03;
inline constexpr std::uint8_t kIndexLeafPage = 0x04;
inline constexpr std::uint8_t kBitmapPage = 0x05;
inline constexpr std::uint8_t kFreedPageBit = 0x08;

// Data pages: header, then the slot table; rows are packed from the end downwards.
inline constexpr std::size_t kDataFree = 2;
inline constexpr std::size_t kDataOwner = 4;
inline constexpr std::size_t kDataSlotCount = 12;
inline constexpr std::size_t kDataSlots = 14;
inline constexpr std::uint32_t kLongValueOwner = 0x4C41564C; ///< "LVAL"
inline constexpr unsigned kMaxSlots = 255;
inline constexpr std::uint16_t kSlotStart = 0x1FFF;
inline constexpr std::uint16_t kSlotHeader = 0x4000; ///< the row's body lies elsewhere
inline constexpr std::uint16_t kSlotBody = 0x8000;   ///< body of a relocated row
inline constexpr std::uint16_t kSlotDeleted = 0xC000;
inline constexpr std::size_t kMaxRow = 4060;

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
inline constexpr std::size_t kMaxKey = 1800; ///< a page must hold two entries
inline constexpr unsigned kMaxIndexDepth = 16;

// Usage maps.
inline constexpr std::uint32_t kBitmapPageBits = (kPageSize - 4) * 8;
inline constexpr std::size_t kMapRowSize = 69;

// Long values.
inline constexpr std::uint32_t kLongInline = 0x80000000;
inline constexpr std::uint32_t kLongSingle = 0x40000000;
inline constexpr std::uint32_t kLongLength = 0x3FFFFFFF;
inline constexpr std::size_t kLongCell = 12;
inline constexpr std::size_t kMaxInlineLong = 64;
inline constexpr std::size_t kMaxLongRow = 4076;

// Table definitions: offsets into the joined definition.
inline constexpr std::size_t kDefRowCount = 16;
inline constexpr std::size_t kDefAutoNumber = 20;
inline constexpr std::size_t kDefMaxColumns = 41;
inline constexpr std::size_t kDefVariableColumns = 43;
inline constexpr std::size_t kDefColumns = 45;
inline constexpr std::size_t kDefLogicalIndexes = 47;
inline constexpr std::size_t kDefRealIndexes = 51;
inline constexpr std::size_t kDefOwnedMap = 55;
inline constexpr std::size_t kDefFreeMap = 59;
inline constexpr std::size_t kDefCounters = 63;
inline constexpr std::size_t kDefCounterSize = 12;
inline constexpr std::size_t kDefColumnSize = 25;
inline constexpr std::size_t kDefRealIndexSize = 52;
inline constexpr std::size_t kDefLogicalIndexSize = 28;
inline constexpr std::uint32_t kDefMagic = 1625;
inline constexpr std::uint32_t kDefIndexMagic = 1923;

// Column flags.
inline constexpr std::uint8_t kColumnFixed = 0x01;
inline constexpr std::uint8_t kColumnUpdatable = 0x02;
inline constexpr std::uint8_t kColumnAutoNumber = 0x04;
inline constexpr std::uint8_t kColumnSystem = 0x10;
inline constexpr std::uint8_t kColumnCompressed = 0x01; ///< in the byte after the flags

// Index flags.
inline constexpr std::uint8_t kIndexUnique = 0x01;
inline constexpr std::uint8_t kIndexIgnoreNulls = 0x02;
inline constexpr std::uint8_t kIndexRequired = 0x08;
inline constexpr std::uint8_t kIndexAlways = 0x80;

inline constexpr std::uint16_t kGeneralLcid = 0x0409;

} // namespace jet
