#pragma once

#include "support/file.h"

#include <cstdint>
#include <string>
#include <utility>

namespace quorvex::zip {

// The bytes of an archive, wherever they are.
class ZipSource {
  public:
    virtual ~ZipSource() = default;

    virtual std::uint64_t Size() const = 0;
    // Returns the bytes read, fewer than count only at the end. Throws Error.
    virtual std::size_t ReadAt(std::uint64_t offset, char* bytes, std::size_t count) const = 0;

  protected:
    ZipSource() = default;
    ZipSource(const ZipSource&) = delete;
    ZipSource& operator=(const ZipSource&) = delete;
};

// An archive that is still being copied to its place cannot be opened; it would look damaged.
class ZipFileSource final : public ZipSource {
  public:
    explicit ZipFileSource(const std::wstring& path) : file_(path, support::File::Mode::kReadFinished) {}

    std::uint64_t Size() const override { return file_.Size(); }
    std::size_t ReadAt(std::uint64_t offset, char* bytes, std::size_t count) const override {
        return file_.ReadAt(offset, bytes, count);
    }

  private:
    support::File file_;
};

class ZipMemorySource final : public ZipSource {
  public:
    explicit ZipMemorySource(std::string bytes) : bytes_(std::move(bytes)) {}

    std::uint64_t Size() const override { return bytes_.size(); }
    std::size_t ReadAt(std::uint64_t offset, char* bytes, std::size_t count) const override {
        if (offset >= bytes_.size()) return 0;
        return bytes_.copy(bytes, count, static_cast<std::size_t>(offset));
    }

  private:
    std::string bytes_;
};

} // namespace quorvex::zip
