#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quorvex::testing {

// Makes zip archives, also those that no honest program writes: every field of an entry's two headers can be set to a
// lie after the entry was added.
struct ZipPart {
    std::string name;
    std::string data; // as it stands in the archive
    std::uint16_t flags = 0;
    std::uint16_t method = 8;
    std::uint16_t madeBy = 20;
    std::uint32_t crc = 0;
    std::uint32_t packedSize = 0;
    std::uint32_t unpackedSize = 0;
    std::uint32_t externalAttributes = 0;
    std::string centralExtra;
    std::int64_t claimedOffset = -1; // not negative: where the directory says that the local header stands

    std::string localName; // the local header's own
    std::uint16_t localMethod = 8;
    std::uint16_t localFlags = 0;
    std::uint32_t localPackedSize = 0;
    std::uint32_t localUnpackedSize = 0;
    std::uint32_t localCrc = 0;
    std::string descriptor; // behind the data
};

class ZipBuilder {
  public:
    // Deflated, or stored as it is. Returns the part for changes.
    ZipPart& Add(const std::string& name, const std::string& contents, bool deflated = true);
    // As a program does that writes to a pipe: sizes behind the data only, with or without the signature.
    ZipPart& AddStreamed(const std::string& name, const std::string& contents, bool withSignature);

    std::vector<ZipPart> parts;
    std::string comment;
    std::string behind;                  // foreign bytes behind everything
    std::int32_t centralOffsetError = 0; // added to the offset that the end record states
    std::int32_t countError = 0;
    std::uint16_t disk = 0;
    bool zip64Locator = false;

    std::string Bytes() const;
};

// Raw deflate data.
std::string Deflated(const std::string& contents);
std::uint32_t Crc32(const std::string& contents);

} // namespace quorvex::testing
