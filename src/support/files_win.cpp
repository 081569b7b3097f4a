#include "support/files.h"

#include "support/system_path_win.h"

#include <array>
#include <limits>
#include <shlobj.h>

namespace quorvex::support {
namespace {

constexpr std::size_t kClassicPathLimit = 240; // MAX_PATH less room for a short file name

std::wstring FullName(const std::wstring& path) {
    const DWORD needed = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    std::wstring full(needed, L'\0');
    const DWORD length = needed == 0 ? 0 : GetFullPathNameW(path.c_str(), needed, full.data(), nullptr);
    if (length == 0 || length >= needed) return path;
    full.resize(length);
    return full;
}

} // namespace

std::wstring SystemPath(std::wstring_view path) {
    std::wstring text(path);
    if (text.size() < kClassicPathLimit || text.starts_with(L"\\\\?\\")) return text;
    // The long form allows neither "/" nor doubled separators nor relative paths: let the system complete it first.
    std::wstring full = FullName(text);
    if (full.size() < 3 || full.starts_with(L"\\\\.\\")) return full;
    if (full.starts_with(L"\\\\")) return L"\\\\?\\UNC\\" + full.substr(2);
    return full[1] == L':' ? L"\\\\?\\" + full : full;
}

std::wstring NativePath(std::wstring_view path) {
    return SystemPath(path);
}

std::wstring FromNativePath(const std::wstring& path) {
    return path;
}

std::wstring FullPath(const std::wstring& path) {
    return FullName(path);
}

std::int32_t FileSize(const std::wstring& path) {
    const std::wstring name = SystemPath(path);
    const DWORD attributes = GetFileAttributesW(name.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return -1;
    const auto open = [&] {
        return CreateFileW(name.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                           OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    };
    const HANDLE file = RetryWhileHeld(open, IsSharingError);
    if (file == INVALID_HANDLE_VALUE) return -1;
    LARGE_INTEGER size{};
    const bool sized = GetFileSizeEx(file, &size) && size.QuadPart <= std::numeric_limits<std::int32_t>::max();
    CloseHandle(file);
    return sized ? static_cast<std::int32_t>(size.QuadPart) : -1;
}

FileStamp FileStampOf(const std::wstring& path) {
    WIN32_FILE_ATTRIBUTE_DATA found{};
    if (!GetFileAttributesExW(SystemPath(path).c_str(), GetFileExInfoStandard, &found)) return {};
    const auto whole = [](DWORD high, DWORD low) {
        return static_cast<std::int64_t>((std::uint64_t{high} << 32) | low);
    };
    return {whole(found.nFileSizeHigh, found.nFileSizeLow),
            whole(found.ftLastWriteTime.dwHighDateTime, found.ftLastWriteTime.dwLowDateTime)};
}

bool PathExists(const std::wstring& path) {
    if (GetFileAttributesW(SystemPath(path).c_str()) != INVALID_FILE_ATTRIBUTES) return true;
    const DWORD error = GetLastError();
    return error != ERROR_FILE_NOT_FOUND && error != ERROR_PATH_NOT_FOUND;
}

bool DeleteFileQuietly(const std::wstring& path) {
    const std::wstring name = SystemPath(path);
    return RetryWhileHeld([&] { return DeleteFileW(name.c_str()); }) != FALSE;
}

bool RenameFileQuietly(const std::wstring& from, const std::wstring& to) {
    const std::wstring source = SystemPath(from);
    const std::wstring target = SystemPath(to);
    return RetryWhileHeld([&] { return MoveFileExW(source.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING); }) !=
           FALSE;
}

std::wstring UserLogFolder() {
    std::array<wchar_t, MAX_PATH + 1> buffer{};
    std::wstring folder;
    if (SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, buffer.data()) == S_OK) {
        folder = std::wstring(buffer.data()) + L"\\Quorvex";
    } else if (GetTempPathW(static_cast<DWORD>(buffer.size()), buffer.data()) != 0) {
        folder = std::wstring(buffer.data()) + L"Quorvex";
    }
    CreateDirectoryW(folder.c_str(), nullptr);
    return folder;
}

std::vector<std::wstring> FileNames(const std::wstring& folder) {
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW(SystemPath(folder + L"\\*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return names;
    do {
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) names.emplace_back(found.cFileName);
    } while (FindNextFileW(search, &found));
    FindClose(search);
    return names;
}

// Without FILE_SHARE_WRITE nobody else gets a handle for writing.
FileHold::FileHold(const std::wstring& path, bool create) {
    const HANDLE file = CreateFileW(SystemPath(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                                    nullptr, create ? OPEN_ALWAYS : OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file != INVALID_HANDLE_VALUE) handle_ = reinterpret_cast<std::intptr_t>(file);
}

FileHold::~FileHold() {
    if (handle_ != kNone) CloseHandle(reinterpret_cast<HANDLE>(handle_));
}

bool FileHold::Append(std::string_view bytes) {
    if (handle_ == kNone) return false;
    const HANDLE file = reinterpret_cast<HANDLE>(handle_);
    LARGE_INTEGER end{};
    DWORD written = 0;
    if (!SetFilePointerEx(file, {}, &end, FILE_END)) return false;
    if (WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) && written == bytes.size()) {
        return true;
    }
    if (SetFilePointerEx(file, end, nullptr, FILE_BEGIN)) SetEndOfFile(file);
    return false;
}

} // namespace quorvex::support
