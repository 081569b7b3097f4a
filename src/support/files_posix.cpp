#include "support/files.h"
#include "support/text.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace quorvex::support {

std::filesystem::path ToPath(std::wstring_view path) {
    std::string narrow = ToUtf8(path);
    std::replace(narrow.begin(), narrow.end(), '\\', '/');
    return std::filesystem::path(narrow);
}

std::wstring FromPath(const std::filesystem::path& path) {
    return FromUtf8(path.string());
}

bool AppendExclusively(const std::wstring& path, std::string_view bytes) {
    const int file = open(ToPath(path).c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    if (file < 0) return false;
    bool done = false;
    if (flock(file, LOCK_EX | LOCK_NB) == 0) {
        done = write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    }
    return close(file) == 0 && done;
}

} // namespace quorvex::support
