#pragma once

#include "support/error.h"
#include "zip/zip_directory.h"
#include "zip/zip_source.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace quorvex::zip {

[[noreturn]] inline void FailArchive(const std::wstring& what) {
    throw support::Error(kErrorArchive, what);
}

// Little-endian numbers and texts one after another; running out of bytes is an archive error.
class ZipBytes {
  public:
    explicit ZipBytes(std::string_view bytes) : bytes_(bytes) {}

    std::string_view Take(std::size_t count) {
        if (bytes_.size() < count) FailArchive(L"The archive's directory is damaged");
        const std::string_view taken = bytes_.substr(0, count);
        bytes_.remove_prefix(count);
        return taken;
    }
    std::uint16_t Take16() {
        const std::string_view taken = Take(2);
        return static_cast<std::uint16_t>(Byte(taken, 0) | Byte(taken, 1) << 8U);
    }
    std::uint32_t Take32() {
        const std::string_view taken = Take(4);
        return Byte(taken, 0) | Byte(taken, 1) << 8U | Byte(taken, 2) << 16U | Byte(taken, 3) << 24U;
    }
    bool Empty() const { return bytes_.empty(); }

  private:
    static std::uint32_t Byte(std::string_view bytes, std::size_t at) { return static_cast<unsigned char>(bytes[at]); }

    std::string_view bytes_;
};

// Bytes of the archive at an offset; fewer than asked for is an archive error.
inline std::string ReadZipBytes(const ZipSource& archive, std::uint64_t offset, std::size_t count) {
    std::string bytes(count, '\0');
    if (archive.ReadAt(offset, bytes.data(), count) != count) FailArchive(L"The archive is cut off");
    return bytes;
}

} // namespace quorvex::zip
