#include "support/files.h"

#include "support/error.h"
#include "support/text.h"

#include <fstream>
#include <iterator>
#include <limits>
#include <system_error>

namespace quorvex::support {
namespace fs = std::filesystem;

std::wstring FileNameOf(std::wstring_view path) {
    const std::size_t at = path.rfind(L'\\');
    return std::wstring(at == std::wstring_view::npos ? path : path.substr(at + 1));
}

std::int32_t FileSize(const std::wstring& path) {
    const fs::path file = ToPath(path);
    std::error_code error;
    if (!fs::is_regular_file(file, error) || error) return -1;
    if (!std::ifstream(file, std::ios::binary).is_open()) return -1;
    const std::uintmax_t size = fs::file_size(file, error);
    if (error || size > static_cast<std::uintmax_t>(std::numeric_limits<std::int32_t>::max())) return -1;
    return static_cast<std::int32_t>(size);
}

bool FileExists(const std::wstring& path) {
    return FileSize(path) > 0;
}

void WriteTextFile(const std::wstring& path, std::wstring_view text) {
    WriteFileBytes(path, ToUtf8(text) + "\r\n");
}

std::string ReadFileBytes(const std::wstring& path) {
    std::ifstream file(ToPath(path), std::ios::binary);
    if (!file) throw Error(kErrorFileNotFound, L"Cannot open file " + path);
    std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    if (file.bad()) throw Error(kErrorBadFile, L"Cannot read file " + path);
    return bytes;
}

void WriteFileBytes(const std::wstring& path, std::string_view bytes) {
    std::ofstream file(ToPath(path), std::ios::binary | std::ios::trunc);
    if (!file) throw Error(kErrorPathAccess, L"Cannot create file " + path);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) throw Error(kErrorDiskFull, L"Cannot write file " + path);
}

bool DeleteFileQuietly(const std::wstring& path) {
    std::error_code error;
    return fs::remove(ToPath(path), error) && !error;
}

bool RenameFileQuietly(const std::wstring& from, const std::wstring& to) {
    std::error_code error;
    fs::rename(ToPath(from), ToPath(to), error);
    return !error;
}

std::vector<std::wstring> ListFiles(const std::wstring& folder, std::wstring_view prefix, std::wstring_view suffix) {
    std::vector<std::wstring> names;
    std::error_code error;
    const std::wstring begin = UpperCase(prefix);
    const std::wstring end = UpperCase(suffix);
    for (fs::directory_iterator it(ToPath(folder), error), last; !error && it != last; it.increment(error)) {
        std::error_code ignored;
        if (!it->is_regular_file(ignored)) continue;
        const std::wstring name = FromPath(it->path().filename());
        const std::wstring upper = UpperCase(name);
        if (upper.size() >= begin.size() + end.size() && upper.starts_with(begin) && upper.ends_with(end)) {
            names.push_back(name);
        }
    }
    return names;
}

} // namespace quorvex::support
