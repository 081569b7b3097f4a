#include "jet/error.h"
#include "jet/storage.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace jet {
namespace {

[[noreturn]] void ThrowSystem(const char* what, const std::string& path, int error) {
    ErrorCode code = ErrorCode::kIo;
    if (error == ENOENT || error == ENOTDIR) code = ErrorCode::kFileNotFound;
    if (error == EACCES || error == EPERM || error == EROFS || error == EISDIR) code = ErrorCode::kAccessDenied;
    if (error == EEXIST) code = ErrorCode::kFileExists;
    if (error == ENOSPC || error == EDQUOT || error == EFBIG) code = ErrorCode::kDiskFull;
    throw Error(code, std::string(what) + " \"" + path + "\": " + std::strerror(error));
}

class PosixFile final : public File {
  public:
    PosixFile(int handle, std::string path) : handle_(handle), path_(std::move(path)) {}
    ~PosixFile() override { ::close(handle_); }
    PosixFile(const PosixFile&) = delete;
    PosixFile& operator=(const PosixFile&) = delete;

    std::uint64_t Size() override {
        struct stat info {};
        if (::fstat(handle_, &info) != 0) ThrowSystem("Cannot size", path_, errno);
        if (!S_ISREG(info.st_mode)) throw Error(ErrorCode::kAccessDenied, "\"" + path_ + "\" is not a file");
        return static_cast<std::uint64_t>(info.st_size);
    }

    std::size_t ReadAt(std::uint64_t offset, ByteSpan buffer) override {
        std::size_t done = 0;
        while (done < buffer.size()) {
            const ssize_t n =
                ::pread(handle_, buffer.data() + done, buffer.size() - done, static_cast<off_t>(offset + done));
            if (n < 0 && errno == EINTR) continue;
            if (n < 0) ThrowSystem("Cannot read", path_, errno);
            if (n == 0) break;
            done += static_cast<std::size_t>(n);
        }
        return done;
    }

    void WriteAt(std::uint64_t offset, ByteView data) override {
        std::size_t done = 0;
        while (done < data.size()) {
            const ssize_t n =
                ::pwrite(handle_, data.data() + done, data.size() - done, static_cast<off_t>(offset + done));
            if (n < 0 && errno == EINTR) continue;
            if (n < 0) ThrowSystem("Cannot write", path_, errno);
            done += static_cast<std::size_t>(n);
        }
    }

    void Resize(std::uint64_t size) override {
        if (::ftruncate(handle_, static_cast<off_t>(size)) != 0) ThrowSystem("Cannot resize", path_, errno);
    }

    void Flush() override {
        if (::fdatasync(handle_) != 0) ThrowSystem("Cannot flush", path_, errno);
    }

    bool TryLock(LockByte byte, bool exclusive) override {
        struct flock lock = Range(byte, exclusive ? F_WRLCK : F_RDLCK);
        // An exclusive lock needs the right to write, and is asked for by those who have it.
        if (::fcntl(handle_, F_OFD_SETLK, &lock) == 0) return true;
        if (errno == EAGAIN || errno == EACCES) return false;
        ThrowSystem("Cannot lock", path_, errno);
    }
    void Unlock(LockByte byte) noexcept override {
        struct flock lock = Range(byte, F_UNLCK);
        ::fcntl(handle_, F_OFD_SETLK, &lock);
    }

    /// Locks by open file, not by process, so that two openings inside one process exclude each other as well.
    void Lock(bool exclusive) {
        struct flock lock {};
        lock.l_type = static_cast<short>(exclusive ? F_WRLCK : F_RDLCK);
        lock.l_whence = SEEK_SET;
        if (::fcntl(handle_, F_OFD_SETLK, &lock) == 0) return;
        if (errno == EAGAIN || errno == EACCES) {
            throw Error(ErrorCode::kInUse, "The file \"" + path_ + "\" is in use by someone else");
        }
        ThrowSystem("Cannot lock", path_, errno);
    }

  private:
    static struct flock Range(LockByte byte, int type) {
        constexpr off_t kFirst = off_t{1} << 62;
        struct flock lock {};
        lock.l_type = static_cast<short>(type);
        lock.l_whence = SEEK_SET;
        lock.l_start = kFirst + static_cast<off_t>(byte);
        lock.l_len = 1;
        return lock;
    }

    int handle_;
    std::string path_;
};

class PosixStorage final : public Storage {
  public:
    std::unique_ptr<File> Open(const Path& path, OpenMode mode) override {
        int flags = O_CLOEXEC;
        switch (mode) {
        case OpenMode::kReadDenyWrite:
        case OpenMode::kSideFileRead:
            flags |= O_RDONLY;
            break;
        case OpenMode::kWriteDenyWrite:
            flags |= O_RDWR;
            break;
        case OpenMode::kCreateNew:
            flags |= O_RDWR | O_CREAT | O_EXCL;
            break;
        case OpenMode::kSideFile:
            flags |= O_RDWR | O_CREAT;
            break;
        }
        const int handle = ::open(path.c_str(), flags, 0666);
        if (handle < 0) ThrowSystem("Cannot open", path.native(), errno);
        auto file = std::make_unique<PosixFile>(handle, path.native());
        if (mode == OpenMode::kReadDenyWrite) file->Lock(false);
        if (mode == OpenMode::kWriteDenyWrite || mode == OpenMode::kCreateNew) file->Lock(true);
        return file;
    }

    bool Exists(const Path& path) override {
        if (::access(path.c_str(), F_OK) == 0) return true;
        if (errno == ENOENT || errno == ENOTDIR) return false;
        ThrowSystem("Cannot look for", path.native(), errno);
    }

    void Remove(const Path& path) override {
        if (::unlink(path.c_str()) != 0 && errno != ENOENT) ThrowSystem("Cannot remove", path.native(), errno);
    }

    void Rename(const Path& from, const Path& to) override {
        if (::rename(from.c_str(), to.c_str()) != 0) ThrowSystem("Cannot rename", from.native(), errno);
    }

    void FlushNames(const Path& path) override {
        const std::size_t end = path.native().rfind('/');
        const std::string folder =
            end == std::string::npos ? "." : path.native().substr(0, std::max<std::size_t>(end, 1));
        const int handle = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (handle < 0) ThrowSystem("Cannot open", folder, errno);
        const int result = ::fsync(handle);
        const int error = errno;
        ::close(handle);
        // Some file systems cannot flush a folder and say so; their names are durable by other means or not at all.
        if (result != 0 && error != EINVAL) ThrowSystem("Cannot flush", folder, error);
    }
};

} // namespace

Storage& SystemStorage() {
    static PosixStorage storage;
    return storage;
}

} // namespace jet
