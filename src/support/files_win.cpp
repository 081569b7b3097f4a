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

// Without FILE_SHARE_WRITE nobody else gets a handle for writing.
FileHold::FileHold(const std::wstring& path, bool create) {
    const HANDLE file = CreateFileW(ToPath(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                                    create ? OPEN_ALWAYS : OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
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
