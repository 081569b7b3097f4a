#include "support/files.h"
#include "support/text.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <limits>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvex::support {

std::string NativePath(std::wstring_view path) {
    std::string narrow = ToUtf8(path);
    std::replace(narrow.begin(), narrow.end(), '\\', '/');
    return narrow;
}

std::wstring FromNativePath(const std::string& path) {
    return FromUtf8(path);
}

std::wstring FullPath(const std::wstring& path) {
    std::error_code error;
    const std::filesystem::path full = std::filesystem::absolute(ToPath(path), error);
    return error ? path : FromPath(full);
}

std::int32_t FileSize(const std::wstring& path) {
    struct stat status {};
    const std::filesystem::path file = ToPath(path);
    if (stat(file.c_str(), &status) != 0 || !S_ISREG(status.st_mode) || access(file.c_str(), R_OK) != 0) return -1;
    if (status.st_size > std::numeric_limits<std::int32_t>::max()) return -1;
    return static_cast<std::int32_t>(status.st_size);
}

FileStamp FileStampOf(const std::wstring& path) {
    struct stat status {};
    if (stat(NativePath(path).c_str(), &status) != 0) return {};
    return {status.st_size,
            (status.st_mtim.tv_sec + kSecondsFrom1601) * kStepsPerSecond + status.st_mtim.tv_nsec / 100};
}

bool PathExists(const std::wstring& path) {
    struct stat status {};
    return lstat(ToPath(path).c_str(), &status) == 0 || (errno != ENOENT && errno != ENOTDIR);
}

bool DeleteFileQuietly(const std::wstring& path) {
    return unlink(ToPath(path).c_str()) == 0;
}

bool RenameFileQuietly(const std::wstring& from, const std::wstring& to) {
    return rename(ToPath(from).c_str(), ToPath(to).c_str()) == 0;
}

std::wstring UserLogFolder() {
    const char* const state = std::getenv("XDG_STATE_HOME");
    const char* const home = std::getenv("HOME");
    std::filesystem::path folder = state != nullptr  ? std::filesystem::path(state)
                                   : home != nullptr ? std::filesystem::path(home) / ".local/state"
                                                     : std::filesystem::path("/tmp");
    folder /= "quorvex";
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    return FromPath(folder);
}

std::vector<std::wstring> FileNames(const std::wstring& folder) {
    std::vector<std::wstring> names;
    std::error_code error;
    for (std::filesystem::directory_iterator it(ToPath(folder), error), last; !error && it != last;
         it.increment(error)) {
        std::error_code ignored;
        if (it->is_regular_file(ignored)) names.push_back(FromPath(it->path().filename()));
    }
    return names;
}

FileHold::FileHold(const std::wstring& path, bool create) {
    const std::filesystem::path file = ToPath(path);
    const int descriptor = open(file.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC | (create ? O_CREAT : 0), 0666);
    if (descriptor < 0) return;
    // Between opening and locking the file may have been renamed by the one who held it.
    struct stat held {};
    struct stat named {};
    if (flock(descriptor, LOCK_EX | LOCK_NB) == 0 && fstat(descriptor, &held) == 0 && stat(file.c_str(), &named) == 0 &&
        held.st_ino == named.st_ino && held.st_dev == named.st_dev) {
        handle_ = descriptor;
    } else {
        close(descriptor);
    }
}

FileHold::~FileHold() {
    if (handle_ != kNone) close(static_cast<int>(handle_));
}

bool FileHold::Append(std::string_view bytes) {
    if (handle_ == kNone) return false;
    const int descriptor = static_cast<int>(handle_);
    const off_t size = lseek(descriptor, 0, SEEK_END);
    if (write(descriptor, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size())) return true;
    if (size < 0 || ftruncate(descriptor, size) != 0) return false; // a part of it may stay: nothing more can be done
    return false;
}

} // namespace quorvex::support
