#include "support/error.h"
#include "support/file.h"
#include "support/files.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvex::support {
namespace {

template <typename Call>
ssize_t Uninterrupted(Call call) {
    for (;;) {
        const ssize_t result = call();
        if (result >= 0 || errno != EINTR) return result;
    }
}

} // namespace

File::File(const std::wstring& path, Mode mode)
    : path_(path), handle_(open(ToPath(path).c_str(),
                                O_CLOEXEC | (mode == Mode::kCreate ? O_WRONLY | O_CREAT | O_TRUNC : O_RDONLY), 0666)) {
    if (handle_ >= 0) return;
    if (mode != Mode::kCreate) throw Error(kErrorFileNotFound, L"Cannot open file " + path);
    throw Error(kErrorPathAccess, L"Cannot create file " + path);
}

File::~File() {
    close(static_cast<int>(handle_));
}

std::uint64_t File::Size() const {
    struct stat status {};
    if (fstat(static_cast<int>(handle_), &status) != 0) throw Error(kErrorBadFile, L"Cannot read file " + path_);
    return static_cast<std::uint64_t>(status.st_size);
}

std::size_t File::ReadAt(std::uint64_t offset, char* bytes, std::size_t count) const {
    std::size_t done = 0;
    while (done < count) {
        const ssize_t part = Uninterrupted([&] {
            return pread(static_cast<int>(handle_), bytes + done, count - done, static_cast<off_t>(offset + done));
        });
        if (part < 0) throw Error(kErrorBadFile, L"Cannot read file " + path_);
        if (part == 0) break;
        done += static_cast<std::size_t>(part);
    }
    return done;
}

void File::Write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t part =
            Uninterrupted([&] { return write(static_cast<int>(handle_), bytes.data(), bytes.size()); });
        if (part <= 0) throw Error(kErrorDiskFull, L"Cannot write file " + path_);
        bytes.remove_prefix(static_cast<std::size_t>(part));
    }
}

} // namespace quorvex::support
