#include "support/files.h"

#include <windows.h>

namespace quorvex::support {
namespace {

constexpr std::size_t kClassicPathLimit = 240; // MAX_PATH less room for a short file name

} // namespace

std::filesystem::path ToPath(std::wstring_view path) {
    std::wstring text(path);
    if (text.size() < kClassicPathLimit || text.starts_with(L"\\\\?\\")) return text;
    // The long form knows neither "/" nor doubled separators nor relative paths: let the system make it whole first.
    const DWORD needed = GetFullPathNameW(text.c_str(), 0, nullptr, nullptr);
    std::wstring full(needed, L'\0');
    const DWORD length = needed == 0 ? 0 : GetFullPathNameW(text.c_str(), needed, full.data(), nullptr);
    if (length == 0 || length >= needed) return text;
    full.resize(length);
    if (full.starts_with(L"\\\\")) return L"\\\\?\\UNC\\" + full.substr(2);
    return L"\\\\?\\" + full;
}

std::wstring FromPath(const std::filesystem::path& path) {
    return path.wstring();
}

bool AppendExclusively(const std::wstring& path, std::string_view bytes) {
    const HANDLE file = CreateFileW(ToPath(path).c_str(), FILE_APPEND_DATA, FILE_SHARE_READ, nullptr, OPEN_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    DWORD written = 0;
    const BOOL ok = WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    CloseHandle(file);
    return ok && written == bytes.size();
}

} // namespace quorvex::support
