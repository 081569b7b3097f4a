#include "jet/memory_storage.h"

#include "jet/error.h"

#include <algorithm>

namespace jet {
namespace {

class MemoryFile final : public File {
  public:
    MemoryFile(std::shared_ptr<Bytes> bytes, std::shared_ptr<MemoryStorage::Holders> holders, OpenMode mode)
        : bytes_(std::move(bytes)), holders_(std::move(holders)), mode_(mode) {
        if (Reads()) ++holders_->readers;
        if (Writes()) ++holders_->writers;
    }
    ~MemoryFile() override {
        if (Reads()) --holders_->readers;
        if (Writes()) --holders_->writers;
        std::erase_if(holders_->locks, [this](const auto& lock) { return lock.owner == this; });
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::uint64_t Size() override { return bytes_->size(); }

    std::size_t ReadAt(std::uint64_t offset, ByteSpan buffer) override {
        if (offset >= bytes_->size()) return 0;
        const std::size_t start = Offset(offset);
        const std::size_t count = std::min(buffer.size(), bytes_->size() - start);
        std::copy_n(bytes_->data() + start, count, buffer.data());
        return count;
    }

    void WriteAt(std::uint64_t offset, ByteView data) override {
        const std::size_t start = Offset(offset);
        if (bytes_->size() < start + data.size()) bytes_->resize(start + data.size());
        std::copy(data.begin(), data.end(), bytes_->data() + start);
    }

    void Resize(std::uint64_t size) override { bytes_->resize(Offset(size)); }
    void Flush() override {}

    bool TryLock(LockByte byte, bool exclusive) override {
        for (const MemoryStorage::Lock& lock : holders_->locks) {
            if (lock.byte == byte && lock.owner != this && (exclusive || lock.exclusive)) return false;
        }
        holders_->locks.push_back({byte, this, exclusive});
        return true;
    }
    void Unlock(LockByte byte) noexcept override {
        std::erase_if(holders_->locks,
                      [this, byte](const auto& lock) { return lock.byte == byte && lock.owner == this; });
    }

  private:
    /// What lies in memory can be counted in memory's own units, whatever the width of the build.
    static std::size_t Offset(std::uint64_t offset) {
        return static_cast<std::size_t>(static_cast<std::ptrdiff_t>(offset));
    }
    bool Reads() const { return mode_ == OpenMode::kReadDenyWrite; }
    bool Writes() const { return mode_ == OpenMode::kWriteDenyWrite || mode_ == OpenMode::kCreateNew; }

    std::shared_ptr<Bytes> bytes_;
    std::shared_ptr<MemoryStorage::Holders> holders_;
    OpenMode mode_;
};

} // namespace

std::unique_ptr<File> MemoryStorage::Open(const Path& path, OpenMode mode) {
    const bool makes = mode == OpenMode::kCreateNew || mode == OpenMode::kSideFile;
    auto found = entries_.find(path);
    if (found == entries_.end() && !makes) throw Error(ErrorCode::kFileNotFound, "No such file in memory");
    if (found != entries_.end() && mode == OpenMode::kCreateNew) {
        throw Error(ErrorCode::kFileExists, "The file stands in memory already");
    }
    if (found == entries_.end()) found = entries_.emplace(path, Entry{}).first;
    const Holders& holders = *found->second.holders;
    const bool shared = mode == OpenMode::kReadDenyWrite;
    const bool exclusive = mode == OpenMode::kWriteDenyWrite || mode == OpenMode::kCreateNew;
    if ((shared && holders.writers > 0) || (exclusive && holders.writers + holders.readers > 0)) {
        throw Error(ErrorCode::kInUse, "The file is in use by someone else");
    }
    return std::make_unique<MemoryFile>(found->second.bytes, found->second.holders, mode);
}

void MemoryStorage::Rename(const Path& from, const Path& to) {
    const auto found = entries_.find(from);
    if (found == entries_.end()) throw Error(ErrorCode::kFileNotFound, "No such file in memory");
    entries_[to] = found->second;
    entries_.erase(from);
}

void MemoryStorage::Put(const Path& path, Bytes bytes) {
    *entries_[path].bytes = std::move(bytes);
}

} // namespace jet
