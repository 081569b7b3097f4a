#pragma once

#include "jet/path.h"
#include "jet/storage.h"

#include <map>

namespace jet {

/// Files that live in memory only, for reading bytes that are not (or should not become) a file on disk.
/// Share modes are kept as the system keeps them; the storage must outlive the files opened from it.
class MemoryStorage final : public Storage {
  public:
    std::unique_ptr<File> Open(const Path& path, OpenMode mode) override;
    bool Exists(const Path& path) override { return entries_.contains(path); }
    void Remove(const Path& path) override { entries_.erase(path); }
    void Rename(const Path& from, const Path& to) override;
    void FlushNames(const Path&) override {}

    void Put(const Path& path, Bytes bytes);
    /// The bytes of a file; it must exist.
    const Bytes& Get(const Path& path) const { return *entries_.at(path).bytes; }

    struct Lock {
        LockByte byte;
        const File* owner;
        bool exclusive;
    };
    struct Holders {
        int readers = 0;
        int writers = 0;
        std::vector<Lock> locks;
    };

  private:
    struct Entry {
        std::shared_ptr<Bytes> bytes = std::make_shared<Bytes>();
        std::shared_ptr<Holders> holders = std::make_shared<Holders>();
    };
    std::map<Path, Entry> entries_;
};

} // namespace jet
