#include "zip/zip_directory.h"

#include "support/text.h"
#include "zip/zip_bytes.h"
#include "zip/zip_name.h"

#include <algorithm>
#include <set>

namespace quorvex::zip {
namespace {

constexpr std::string_view kEndSignature("PK\x05\x06", 4);
constexpr std::string_view kZip64LocatorSignature("PK\x06\x07", 4);
constexpr std::uint32_t kCentralSignature = 0x02014b50;
constexpr std::uint32_t kLocalSignature = 0x04034b50;
constexpr std::uint32_t kDescriptorSignature = 0x08074b50;
constexpr std::size_t kEndLength = 22;
constexpr std::size_t kLocatorLength = 20;
constexpr std::size_t kCentralLength = 46;
constexpr std::size_t kLocalLength = 30;
constexpr std::size_t kLongestComment = 0xFFFF;
constexpr std::uint32_t kMovedToZip64 = 0xFFFFFFFF;
constexpr std::uint16_t kCountMovedToZip64 = 0xFFFF;
constexpr std::uint16_t kEncryptedFlags = 0x0001 | 0x0040 | 0x2000; // encrypted, strongly, masked headers
constexpr std::uint16_t kPatchFlag = 0x0020;
constexpr std::uint16_t kDescriptorFlag = 0x0008;
constexpr std::uint16_t kUtf8Flag = 0x0800;
constexpr std::uint8_t kMadeByUnix = 3;
constexpr std::uint32_t kUnixTypeMask = 0170000;
constexpr std::uint32_t kUnixRegularFile = 0100000;

struct Directory {
    std::uint64_t offset = 0;
    std::uint32_t size = 0;
    std::uint16_t entries = 0;
};

// An entry with what only the checks need.
struct Candidate {
    ZipEntry entry;
    std::string rawName;
    std::uint16_t flags = 0;
    std::uint64_t headerOffset = 0;
    std::uint64_t end = 0; // first byte after the entry's data and descriptor
};

// Reads the end record at `at` in the archive's tail, which is `offset` in the archive. Returns why it cannot be used,
// nullptr if it can.
const wchar_t* ReadEndRecord(std::string_view tail, std::size_t at, std::uint64_t offset, Directory& directory) {
    ZipBytes record(tail.substr(at + kEndSignature.size(), kEndLength - kEndSignature.size()));
    const std::uint16_t disk = record.Take16();
    const std::uint16_t directoryDisk = record.Take16();
    const std::uint16_t entriesHere = record.Take16();
    directory.entries = record.Take16();
    directory.size = record.Take32();
    directory.offset = record.Take32();
    const bool locator = at >= kLocatorLength && tail.substr(at - kLocatorLength, 4) == kZip64LocatorSignature;
    if (locator || directory.entries == kCountMovedToZip64 || directory.size == kMovedToZip64 ||
        directory.offset == kMovedToZip64) {
        return L"The archive has the zip64 form, which is not supported";
    }
    if (disk != 0 || directoryDisk != 0 || entriesHere != directory.entries) {
        return L"The archive is one of several volumes";
    }
    if (directory.offset + directory.size != offset) return L"The archive's directory is not where its end says";
    return nullptr;
}

// Only a comment and perhaps other bytes follow the end record. They may look like an end record themselves, so the
// last one that fits is taken: the directory that it names must end where the record begins.
Directory FindDirectory(const ZipSource& archive) {
    const std::uint64_t size = archive.Size();
    if (size < kEndLength) FailArchive(L"The file is not a zip archive");
    const auto tailLength =
        static_cast<std::size_t>(std::min<std::uint64_t>(size, kLocatorLength + kEndLength + kLongestComment));
    const std::string tail = ReadZipBytes(archive, size - tailLength, tailLength);
    const wchar_t* reason = nullptr;
    for (std::size_t at = tail.rfind(kEndSignature, tail.size() - kEndLength); at != std::string::npos;
         at = at == 0 ? std::string::npos : tail.rfind(kEndSignature, at - 1)) {
        Directory directory;
        reason = ReadEndRecord(tail, at, size - tailLength + at, directory);
        if (reason == nullptr) return directory;
    }
    FailArchive(reason != nullptr ? reason : L"The file is not a zip archive");
}

void CheckKind(const Candidate& candidate) {
    if ((candidate.flags & kEncryptedFlags) != 0) FailArchive(L"The archive is encrypted");
    if ((candidate.flags & kPatchFlag) != 0) FailArchive(L"The archive holds patch data");
    const ZipEntry& entry = candidate.entry;
    if (entry.method != kZipStored && entry.method != kZipDeflated) {
        FailArchive(L"Compression method " + std::to_wstring(entry.method) + L" is not supported");
    }
    if (entry.packedSize == kMovedToZip64 || entry.unpackedSize == kMovedToZip64 ||
        candidate.headerOffset == kMovedToZip64) {
        FailArchive(L"The archive has the zip64 form, which is not supported");
    }
    if (entry.method == kZipStored && entry.packedSize != entry.unpackedSize) {
        FailArchive(L"The sizes of a stored file differ");
    }
}

Candidate ReadCentralEntry(ZipBytes& bytes) {
    if (bytes.Take32() != kCentralSignature) FailArchive(L"The archive's directory is damaged");
    Candidate candidate;
    const std::uint16_t madeBy = bytes.Take16();
    bytes.Take16(); // version needed
    candidate.flags = bytes.Take16();
    candidate.entry.method = bytes.Take16();
    bytes.Take32(); // time and date
    candidate.entry.crc = bytes.Take32();
    candidate.entry.packedSize = bytes.Take32();
    candidate.entry.unpackedSize = bytes.Take32();
    const std::uint16_t nameLength = bytes.Take16();
    const std::uint16_t extraLength = bytes.Take16();
    const std::uint16_t commentLength = bytes.Take16();
    if (bytes.Take16() != 0) FailArchive(L"The archive is one of several volumes");
    bytes.Take16(); // internal attributes
    const std::uint32_t unixType = bytes.Take32() >> 16U & kUnixTypeMask;
    candidate.headerOffset = bytes.Take32();
    candidate.rawName = bytes.Take(nameLength);
    bytes.Take(extraLength);
    bytes.Take(commentLength);
    CheckKind(candidate);
    candidate.entry.name = DecodeEntryName(candidate.rawName, (candidate.flags & kUtf8Flag) != 0);
    if (!IsPlainFileName(candidate.entry.name)) {
        FailArchive(L"The archive holds \"" + candidate.entry.name + L"\", which is not a plain file name");
    }
    if (madeBy >> 8U == kMadeByUnix && unixType != 0 && unixType != kUnixRegularFile) {
        FailArchive(L"\"" + candidate.entry.name + L"\" in the archive is not a file");
    }
    return candidate;
}

// The data of an entry that was written as a stream is followed by its CRC and sizes, with or without a signature.
std::size_t DescriptorLength(const ZipSource& archive, const Candidate& candidate, std::uint64_t limit) {
    const ZipEntry& entry = candidate.entry;
    const std::uint64_t dataEnd = entry.dataOffset + entry.packedSize;
    for (const std::size_t length : {std::size_t{16}, std::size_t{12}}) {
        if (dataEnd + length > limit) continue;
        const std::string descriptor = ReadZipBytes(archive, dataEnd, length);
        ZipBytes bytes(descriptor);
        if (length == 16 && bytes.Take32() != kDescriptorSignature) continue;
        const bool same =
            bytes.Take32() == entry.crc && bytes.Take32() == entry.packedSize && bytes.Take32() == entry.unpackedSize;
        if (same) return length;
    }
    FailArchive(L"The sizes behind \"" + entry.name + L"\" are not those of the directory");
}

void CheckLocalHeader(const ZipSource& archive, Candidate& candidate, std::uint64_t limit) {
    ZipEntry& entry = candidate.entry;
    if (candidate.headerOffset + kLocalLength > limit) FailArchive(L"The archive is cut off");
    const std::string header = ReadZipBytes(archive, candidate.headerOffset, kLocalLength);
    ZipBytes bytes(header);
    if (bytes.Take32() != kLocalSignature) FailArchive(L"The header of \"" + entry.name + L"\" is damaged");
    bytes.Take16(); // version needed
    const std::uint16_t flags = bytes.Take16();
    const std::uint16_t method = bytes.Take16();
    bytes.Take32(); // time and date
    const std::uint32_t crc = bytes.Take32();
    const std::uint32_t packedSize = bytes.Take32();
    const std::uint32_t unpackedSize = bytes.Take32();
    const std::uint16_t nameLength = bytes.Take16();
    const std::uint16_t extraLength = bytes.Take16();
    entry.dataOffset = candidate.headerOffset + kLocalLength + nameLength + extraLength;
    candidate.end = entry.dataOffset + entry.packedSize;
    if (candidate.end > limit) FailArchive(L"The archive is cut off");
    const bool streamed = (flags & kDescriptorFlag) != 0;
    const bool sizesAgree = crc == entry.crc && packedSize == entry.packedSize && unpackedSize == entry.unpackedSize;
    const bool sizesLeftOpen = streamed && packedSize == 0 && unpackedSize == 0 && crc == 0;
    const std::string name = ReadZipBytes(archive, candidate.headerOffset + kLocalLength, nameLength);
    if (flags != candidate.flags || method != entry.method || name != candidate.rawName ||
        !(sizesAgree || sizesLeftOpen)) {
        FailArchive(L"The header of \"" + entry.name + L"\" contradicts the archive's directory");
    }
    if (streamed) candidate.end += DescriptorLength(archive, candidate, limit);
}

void CheckSizes(const std::vector<Candidate>& candidates) {
    std::uint64_t packed = 0;
    std::uint64_t unpacked = 0;
    for (const Candidate& candidate : candidates) {
        packed += candidate.entry.packedSize;
        unpacked += candidate.entry.unpackedSize;
    }
    if (unpacked > kLargestUnpackedSize || (unpacked > kFreeUnpackedSize && unpacked > packed * kLargestRatio)) {
        FailArchive(L"The archive would unpack to " + std::to_wstring(unpacked) + L" bytes, which is too much");
    }
}

void CheckApart(std::vector<Candidate>& candidates) {
    std::set<std::wstring> names;
    for (const Candidate& candidate : candidates) {
        if (!names.insert(support::UpperCase(candidate.entry.name)).second) {
            FailArchive(L"The archive holds \"" + candidate.entry.name + L"\" twice");
        }
    }
    std::vector<const Candidate*> sorted;
    for (const Candidate& candidate : candidates) sorted.push_back(&candidate);
    std::sort(sorted.begin(), sorted.end(),
              [](const Candidate* a, const Candidate* b) { return a->headerOffset < b->headerOffset; });
    for (std::size_t i = 1; i < sorted.size(); ++i) {
        if (sorted[i - 1]->end > sorted[i]->headerOffset) FailArchive(L"Files in the archive overlap");
    }
}

} // namespace

std::vector<ZipEntry> ReadZipDirectory(const ZipSource& archive) {
    const Directory directory = FindDirectory(archive);
    if (directory.entries > kMostEntries) FailArchive(L"The archive holds too many files");
    if (directory.size < directory.entries * kCentralLength) FailArchive(L"The archive's directory is damaged");
    const std::string central = ReadZipBytes(archive, directory.offset, directory.size);
    ZipBytes bytes(central);
    std::vector<Candidate> candidates;
    for (std::uint16_t i = 0; i < directory.entries; ++i) candidates.push_back(ReadCentralEntry(bytes));
    if (!bytes.Empty()) FailArchive(L"The archive's directory holds more than its end says");
    CheckSizes(candidates);
    for (Candidate& candidate : candidates) CheckLocalHeader(archive, candidate, directory.offset);
    CheckApart(candidates);
    std::vector<ZipEntry> entries;
    for (Candidate& candidate : candidates) entries.push_back(std::move(candidate.entry));
    return entries;
}

} // namespace quorvex::zip
