#include "support/files.h"

#include "support/error.h"
#include "support/file.h"
#include "support/text.h"

#include <chrono>
#include <limits>

namespace quorvex::support {

bool FileStamp::Settled() const {
    constexpr std::int64_t kCoarsestStep = 2; // seconds; that of FAT
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const std::int64_t seconds = std::chrono::duration_cast<std::chrono::seconds>(now).count() + kSecondsFrom1601;
    return size < 0 || seconds - written / kStepsPerSecond > kCoarsestStep;
}

std::wstring FileNameOf(std::wstring_view path) {
    const std::size_t at = path.rfind(L'\\');
    return std::wstring(at == std::wstring_view::npos ? path : path.substr(at + 1));
}

bool FileExists(const std::wstring& path) {
    return FileSize(path) > 0;
}

void WriteTextFile(const std::wstring& path, std::wstring_view text) {
    WriteFileBytes(path, ToUtf8(text) + "\r\n");
}

std::string ReadFileBytes(const std::wstring& path) {
    const File file(path, File::Mode::kRead);
    constexpr std::uint64_t kMost = std::numeric_limits<std::int32_t>::max();
    const std::uint64_t size = file.Size();
    if (size > kMost) throw Error(kErrorBadFile, L"Cannot read file " + path);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    bytes.resize(file.ReadAt(0, bytes.data(), bytes.size()));
    return bytes;
}

void WriteFileBytes(const std::wstring& path, std::string_view bytes) {
    File(path, File::Mode::kCreate).Write(bytes);
}

std::vector<std::wstring> ListFiles(const std::wstring& folder, std::wstring_view prefix, std::wstring_view suffix) {
    std::vector<std::wstring> names = FileNames(folder);
    const std::wstring begin = UpperCase(prefix);
    const std::wstring end = UpperCase(suffix);
    std::erase_if(names, [&](const std::wstring& name) {
        const std::wstring upper = UpperCase(name);
        return upper.size() < begin.size() + end.size() || !upper.starts_with(begin) || !upper.ends_with(end);
    });
    return names;
}

} // namespace quorvex::support
