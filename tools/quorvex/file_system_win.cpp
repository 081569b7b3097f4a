#include "quorvex/file_system.h"

#include <windows.h>

#include <memory>
#include <type_traits>

namespace quorvex::cli {
namespace {

struct CloseFile {
    void operator()(HANDLE file) const { CloseHandle(file); }
};
using FileHandle = std::unique_ptr<std::remove_pointer_t<HANDLE>, CloseFile>;

FileHandle OpenExisting(const std::filesystem::path& path, DWORD access) {
    const HANDLE file = CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    return FileHandle(file == INVALID_HANDLE_VALUE ? nullptr : file);
}

} // namespace

std::optional<std::uint64_t> FileLength(const std::filesystem::path& file) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (!GetFileAttributesExW(file.c_str(), GetFileExInfoStandard, &data)) return std::nullopt;
    if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return std::nullopt;
    return (static_cast<std::uint64_t>(data.nFileSizeHigh) << 32U) | data.nFileSizeLow;
}

bool IsFolder(const std::filesystem::path& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool IsSameFile(const std::filesystem::path& a, const std::filesystem::path& b) {
    const FileHandle first = OpenExisting(a, 0);
    const FileHandle second = OpenExisting(b, 0);
    BY_HANDLE_FILE_INFORMATION one{};
    BY_HANDLE_FILE_INFORMATION other{};
    return first && second && GetFileInformationByHandle(first.get(), &one) &&
           GetFileInformationByHandle(second.get(), &other) && one.dwVolumeSerialNumber == other.dwVolumeSerialNumber &&
           one.nFileIndexHigh == other.nFileIndexHigh && one.nFileIndexLow == other.nFileIndexLow;
}

bool CutFile(const std::filesystem::path& file, std::uint64_t bytes) {
    const FileHandle handle = OpenExisting(file, GENERIC_WRITE);
    LARGE_INTEGER size{};
    size.QuadPart = static_cast<LONGLONG>(bytes);
    return handle && SetFilePointerEx(handle.get(), size, nullptr, FILE_BEGIN) && SetEndOfFile(handle.get());
}

bool CopyWholeFile(const std::filesystem::path& source, const std::filesystem::path& target) {
    return CopyFileW(source.c_str(), target.c_str(), FALSE) != 0;
}

} // namespace quorvex::cli
