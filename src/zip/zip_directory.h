#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quorvex::zip {

class ZipSource;

// Number of every error about a damaged or unsupported archive ("invalid file format").
inline constexpr long kErrorArchive = 321;

inline constexpr std::uint16_t kZipStored = 0;
inline constexpr std::uint16_t kZipDeflated = 8;

// One file of an archive, checked: its data lies within the archive, apart from all others.
struct ZipEntry {
    std::wstring name;              // a plain file name
    std::uint16_t method = 0;       // kZipStored or kZipDeflated
    std::uint32_t crc = 0;          // CRC-32 of the unpacked bytes
    std::uint32_t packedSize = 0;   // bytes
    std::uint32_t unpackedSize = 0; // bytes
    std::uint64_t dataOffset = 0;   // of the packed bytes in the archive
};

// Limits against archives that unpack to absurd sizes. A Jet file cannot be larger than 2 GiB; beyond the free
// allowance a package may unpack to at most the ratio times its packed size (Jet files of real data reach about 20).
inline constexpr std::uint64_t kLargestUnpackedSize = std::uint64_t{2} << 30U;
inline constexpr std::uint64_t kFreeUnpackedSize = std::uint64_t{64} << 20U;
inline constexpr std::uint64_t kLargestRatio = 200;
inline constexpr std::uint16_t kMostEntries = 1000;

// Reads and checks the directory and every entry's own header. A comment or other bytes after the archive are
// ignored. Throws Error (kErrorArchive) that says what is wrong: cut off, several volumes, zip64, encrypted, another
// method, names that are no plain file names or occur twice, entries that overlap, headers that contradict each other,
// sizes beyond the limits.
std::vector<ZipEntry> ReadZipDirectory(const ZipSource& archive);

} // namespace quorvex::zip
