#include "service/kept_databases.h"

#include "jet/database.h"
#include "jet/storage.h"
#include "support/files.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <utility>

namespace quorvex::service {
namespace {

// The system's clock for files moves in steps of up to 10 ms: a stamp is only good once it is older than that.
constexpr std::int64_t kSettledNs = 100'000'000;

// File systems that may tell an old stamp for a while: NFS, SMB, SMB 2, FUSE.
constexpr std::array<unsigned long, 4> kRemote = {0x6969, 0xFF534D42, 0xFE534D42, 0x65735546};

struct Stamp {
    ino_t number = 0;
    off_t size = -1;
    std::int64_t changed = 0; // nanoseconds since 1970

    bool operator==(const Stamp&) const = default;
};

std::int64_t Nanoseconds(const timespec& time) {
    return static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

Stamp StampOf(const std::filesystem::path& file) {
    struct stat status {};
    if (stat(file.c_str(), &status) != 0) return {};
    return {status.st_ino, status.st_size, Nanoseconds(status.st_mtim)};
}

bool IsRemote(const std::filesystem::path& file) {
    struct statfs status {};
    if (statfs(file.c_str(), &status) != 0) return true;
    const auto kind = static_cast<unsigned long>(status.f_type) & 0xFFFFFFFF;
    return std::find(kRemote.begin(), kRemote.end(), kind) != kRemote.end();
}

bool Settled(const Stamp& stamp) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return stamp.size >= 0 && Nanoseconds(now) - stamp.changed > kSettledNs;
}

// A file opened twice: with the engine's lock, and without.
class UnlockableFile final : public jet::File {
  public:
    UnlockableFile(std::unique_ptr<jet::File> locked, std::unique_ptr<jet::File> plain)
        : locked_(std::move(locked)), plain_(std::move(plain)) {}

    void Unlock() { locked_.reset(); }

    std::uint64_t Size() override { return plain_->Size(); }
    std::size_t ReadAt(std::uint64_t offset, jet::ByteSpan buffer) override { return plain_->ReadAt(offset, buffer); }
    void WriteAt(std::uint64_t offset, jet::ByteView data) override { plain_->WriteAt(offset, data); }
    void Resize(std::uint64_t size) override { plain_->Resize(size); }
    void Flush() override { plain_->Flush(); }
    bool TryLock(jet::LockByte byte, bool exclusive) override { return plain_->TryLock(byte, exclusive); }
    void Unlock(jet::LockByte byte) noexcept override { plain_->Unlock(byte); }

  private:
    std::unique_ptr<jet::File> locked_;
    std::unique_ptr<jet::File> plain_;
};

} // namespace

struct KeptDatabases::Kept {
    std::filesystem::path path;
    Stamp stamp;
    const jet::Database* own = nullptr;
    std::unique_ptr<jet::Database> database; // null while it is in use
};

// The system's files; remembers the one opened last.
class KeptDatabases::UnlockableStorage final : public jet::Storage {
  public:
    std::unique_ptr<jet::File> Open(const jet::Path& path, jet::OpenMode mode) override {
        auto file = jet::SystemStorage().Open(path, mode);
        if (mode != jet::OpenMode::kReadDenyWrite) return file;
        auto both = std::make_unique<UnlockableFile>(std::move(file),
                                                     jet::SystemStorage().Open(path, jet::OpenMode::kSideFileRead));
        last = both.get();
        stamp = StampOf(path.native());
        return both;
    }
    bool Exists(const jet::Path& path) override { return jet::SystemStorage().Exists(path); }
    void Remove(const jet::Path& path) override { jet::SystemStorage().Remove(path); }
    void Rename(const jet::Path& from, const jet::Path& to) override { jet::SystemStorage().Rename(from, to); }
    void FlushNames(const jet::Path& path) override { jet::SystemStorage().FlushNames(path); }

    UnlockableFile* last = nullptr;
    Stamp stamp; // of that file, under its lock
};

KeptDatabases::KeptDatabases() : storage_(std::make_unique<UnlockableStorage>()) {}

KeptDatabases::~KeptDatabases() = default;

jet::Storage& KeptDatabases::Files() {
    return *storage_;
}

std::unique_ptr<jet::Database> KeptDatabases::Take(const std::wstring& file) {
    const auto found = kept_.find(file);
    if (found == kept_.end() || !found->second.database) return nullptr;
    if (!locked_ && StampOf(found->second.path) == found->second.stamp) return std::move(found->second.database);
    kept_.erase(found);
    return nullptr;
}

void KeptDatabases::Keep(const std::wstring& file, std::unique_ptr<jet::Database> database) {
    const auto found = kept_.find(file);
    if (found != kept_.end()) {
        Kept& kept = found->second;
        if (database.get() != kept.own) return database->Close(); // a second one beside it, which holds its lock
        if (StampOf(kept.path) == kept.stamp) {
            kept.database = std::move(database);
        } else {
            changed_ = true;
            kept_.erase(found);
        }
        return;
    }
    const std::filesystem::path path = support::ToPath(file);
    if (locked_ || !Settled(storage_->stamp) || IsRemote(path)) return database->Close();
    storage_->last->Unlock();
    const jet::Database* const own = database.get();
    kept_.emplace(file, Kept{path, storage_->stamp, own, std::move(database)});
}

bool KeptDatabases::Unchanged() {
    // A database that was not given back was in use when something failed; its file is looked at once more.
    std::erase_if(kept_, [this](const auto& entry) {
        if (entry.second.database) return false;
        changed_ = changed_ || StampOf(entry.second.path) != entry.second.stamp;
        return true;
    });
    return !std::exchange(changed_, false);
}

KeptDatabases::Locked::Locked(KeptDatabases& kept) : kept_(kept) {
    kept_.kept_.clear();
    kept_.locked_ = true;
}

KeptDatabases::Locked::~Locked() {
    kept_.locked_ = false;
}

} // namespace quorvex::service
