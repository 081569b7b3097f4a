#include "testing/zip_builder.h"

#include <stdexcept>
#include <zlib.h>

namespace quorvex::testing {
namespace {

void Put16(std::string& bytes, std::uint32_t number) {
    bytes.push_back(static_cast<char>(number & 0xFFU));
    bytes.push_back(static_cast<char>(number >> 8U & 0xFFU));
}

void Put32(std::string& bytes, std::uint32_t number) {
    Put16(bytes, number & 0xFFFFU);
    Put16(bytes, number >> 16U);
}

std::string LocalHeader(const ZipPart& part) {
    std::string bytes = "PK\x03\x04";
    Put16(bytes, 20);
    Put16(bytes, part.localFlags);
    Put16(bytes, part.localMethod);
    Put32(bytes, 0);
    Put32(bytes, part.localCrc);
    Put32(bytes, part.localPackedSize);
    Put32(bytes, part.localUnpackedSize);
    Put16(bytes, static_cast<std::uint32_t>(part.localName.size()));
    Put16(bytes, 0);
    return bytes + part.localName;
}

std::string CentralHeader(const ZipPart& part, std::uint32_t offset) {
    std::string bytes = "PK\x01\x02";
    Put16(bytes, part.madeBy);
    Put16(bytes, 20);
    Put16(bytes, part.flags);
    Put16(bytes, part.method);
    Put32(bytes, 0);
    Put32(bytes, part.crc);
    Put32(bytes, part.packedSize);
    Put32(bytes, part.unpackedSize);
    Put16(bytes, static_cast<std::uint32_t>(part.name.size()));
    Put16(bytes, static_cast<std::uint32_t>(part.centralExtra.size()));
    Put16(bytes, 0);
    Put16(bytes, 0);
    Put16(bytes, 0);
    Put32(bytes, part.externalAttributes);
    Put32(bytes, offset);
    return bytes + part.name + part.centralExtra;
}

} // namespace

std::string Deflated(const std::string& contents) {
    z_stream stream{};
    if (deflateInit2(&stream, 9, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY) != Z_OK) {
        throw std::runtime_error("deflateInit2");
    }
    std::string packed(deflateBound(&stream, static_cast<uLong>(contents.size())), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(contents.data()));
    stream.avail_in = static_cast<uInt>(contents.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    const int result = deflate(&stream, Z_FINISH);
    packed.resize(packed.size() - stream.avail_out);
    deflateEnd(&stream);
    if (result != Z_STREAM_END) throw std::runtime_error("deflate");
    return packed;
}

std::uint32_t Crc32(const std::string& contents) {
    return static_cast<std::uint32_t>(
        crc32(0, reinterpret_cast<const Bytef*>(contents.data()), static_cast<uInt>(contents.size())));
}

ZipPart& ZipBuilder::Add(const std::string& name, const std::string& contents, bool deflated) {
    ZipPart part;
    part.name = part.localName = name;
    part.data = deflated ? Deflated(contents) : contents;
    part.method = part.localMethod = deflated ? 8 : 0;
    part.crc = part.localCrc = Crc32(contents);
    part.packedSize = part.localPackedSize = static_cast<std::uint32_t>(part.data.size());
    part.unpackedSize = part.localUnpackedSize = static_cast<std::uint32_t>(contents.size());
    return parts.emplace_back(std::move(part));
}

ZipPart& ZipBuilder::AddStreamed(const std::string& name, const std::string& contents, bool withSignature) {
    ZipPart& part = Add(name, contents);
    part.flags = part.localFlags = 8;
    part.localCrc = part.localPackedSize = part.localUnpackedSize = 0;
    if (withSignature) part.descriptor = "PK\x07\x08";
    Put32(part.descriptor, part.crc);
    Put32(part.descriptor, part.packedSize);
    Put32(part.descriptor, part.unpackedSize);
    return part;
}

std::string ZipBuilder::Bytes() const {
    std::string bytes;
    std::string central;
    for (const ZipPart& part : parts) {
        auto offset = static_cast<std::uint32_t>(bytes.size());
        bytes += LocalHeader(part) + part.data + part.descriptor;
        if (part.claimedOffset >= 0) offset = static_cast<std::uint32_t>(part.claimedOffset);
        central += CentralHeader(part, offset);
    }
    const std::size_t centralOffset = bytes.size();
    bytes += central;
    if (zip64Locator) bytes += "PK\x06\x07" + std::string(16, '\0');
    bytes += "PK\x05\x06";
    Put16(bytes, disk);
    Put16(bytes, disk);
    const auto count = static_cast<std::uint32_t>(static_cast<std::int64_t>(parts.size()) + countError);
    Put16(bytes, count);
    Put16(bytes, count);
    Put32(bytes, static_cast<std::uint32_t>(central.size()));
    Put32(bytes, static_cast<std::uint32_t>(static_cast<std::int64_t>(centralOffset) + centralOffsetError));
    Put16(bytes, static_cast<std::uint32_t>(comment.size()));
    return bytes + comment + behind;
}

} // namespace quorvex::testing
