#include "support/error.h"
#include "support/file_lock.h"
#include "support/files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvex::support {
namespace {

class LockedFile final : public FileLock {
  public:
    LockedFile(int file, std::filesystem::path path) : file_(file), path_(std::move(path)) {}
    ~LockedFile() override {
        unlink(path_.c_str()); // while the lock is held: nobody else's file can stand here
        close(file_);
    }

  private:
    int file_;
    std::filesystem::path path_;
};

// A file that its holder has just removed can still be locked; such a lock guards nothing.
bool StillThere(int file, const std::filesystem::path& path) {
    struct stat open {};
    struct stat named {};
    return fstat(file, &open) == 0 && stat(path.c_str(), &named) == 0 && open.st_dev == named.st_dev &&
           open.st_ino == named.st_ino;
}

} // namespace

std::unique_ptr<FileLock> FileLock::TryAcquire(const std::wstring& path) {
    const std::filesystem::path place = ToPath(path);
    for (;;) {
        const int file = open(place.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
        if (file < 0) throw Error(kErrorPathAccess, L"Cannot create file " + path);
        if (flock(file, LOCK_EX | LOCK_NB) != 0) {
            close(file);
            return nullptr;
        }
        if (StillThere(file, place)) return std::make_unique<LockedFile>(file, place);
        close(file);
    }
}

} // namespace quorvex::support
