#include "support/file.h"

#include "support/error.h"
#include "support/system_path_win.h"

#include <algorithm>

namespace quorvex::support {
namespace {

constexpr std::size_t kLargestPiece = std::size_t{1} << 30U;

HANDLE HandleOf(std::intptr_t handle) {
    return reinterpret_cast<HANDLE>(handle);
}

HANDLE OpenFor(const std::wstring& path, File::Mode mode) {
    const std::wstring name = SystemPath(path);
    const bool creates = mode == File::Mode::kCreate;
    DWORD share = FILE_SHARE_READ;
    if (!creates) share |= FILE_SHARE_DELETE;
    if (mode == File::Mode::kRead) share |= FILE_SHARE_WRITE;
    return RetryWhileHeld([&] {
        return CreateFileW(name.c_str(), creates ? GENERIC_WRITE : GENERIC_READ, share, nullptr,
                           creates ? CREATE_ALWAYS : OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    });
}

} // namespace

File::File(const std::wstring& path, Mode mode)
    : path_(path), handle_(reinterpret_cast<std::intptr_t>(OpenFor(path, mode))) {
    if (HandleOf(handle_) != INVALID_HANDLE_VALUE) return;
    if (mode != Mode::kCreate) throw Error(kErrorFileNotFound, L"Cannot open file " + path);
    throw Error(kErrorPathAccess, L"Cannot create file " + path);
}

File::~File() {
    CloseHandle(HandleOf(handle_));
}

std::uint64_t File::Size() const {
    LARGE_INTEGER size{};
    if (!GetFileSizeEx(HandleOf(handle_), &size)) throw Error(kErrorBadFile, L"Cannot read file " + path_);
    return static_cast<std::uint64_t>(size.QuadPart);
}

std::size_t File::ReadAt(std::uint64_t offset, char* bytes, std::size_t count) const {
    std::size_t done = 0;
    while (done < count) {
        OVERLAPPED place{};
        place.Offset = static_cast<DWORD>(offset + done);
        place.OffsetHigh = static_cast<DWORD>((offset + done) >> 32U);
        DWORD part = 0;
        const auto piece = static_cast<DWORD>(std::min(count - done, kLargestPiece));
        if (!ReadFile(HandleOf(handle_), bytes + done, piece, &part, &place) && GetLastError() != ERROR_HANDLE_EOF) {
            throw Error(kErrorBadFile, L"Cannot read file " + path_);
        }
        if (part == 0) break;
        done += part;
    }
    return done;
}

void File::Write(std::string_view bytes) {
    while (!bytes.empty()) {
        DWORD part = 0;
        const auto piece = static_cast<DWORD>(std::min(bytes.size(), kLargestPiece));
        if (!WriteFile(HandleOf(handle_), bytes.data(), piece, &part, nullptr) || part == 0) {
            throw Error(kErrorDiskFull, L"Cannot write file " + path_);
        }
        bytes.remove_prefix(part);
    }
}

} // namespace quorvex::support
