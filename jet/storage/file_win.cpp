#include "jet/error.h"
#include "jet/storage.h"
#include "jet/text.h"

#include <algorithm>
#include <limits>
#include <string>

#include <windows.h>

namespace jet {
namespace {

[[noreturn]] void ThrowSystem(const char* what, const std::wstring& path, DWORD error) {
    ErrorCode code = ErrorCode::kIo;
    switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
        code = ErrorCode::kFileNotFound;
        break;
    case ERROR_ACCESS_DENIED:
    case ERROR_WRITE_PROTECT:
        code = ErrorCode::kAccessDenied;
        break;
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
        code = ErrorCode::kInUse;
        break;
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
        code = ErrorCode::kFileExists;
        break;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
        code = ErrorCode::kDiskFull;
        break;
    default:
        break;
    }
    const char* reason = code == ErrorCode::kInUse ? "it is in use by someone else" : "";
    throw Error(code, std::string(what) + " \"" + ToUtf8(std::u16string(path.begin(), path.end())) + "\": " + reason +
                          " (system error " + std::to_string(error) + ")");
}

std::wstring FullPath(const std::wstring& path) {
    const DWORD needed = ::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    std::wstring full(needed, L'\0');
    const DWORD length = needed == 0 ? 0 : ::GetFullPathNameW(path.c_str(), needed, full.data(), nullptr);
    if (length == 0 || length >= needed) return path;
    full.resize(length);
    return full;
}

/// The system's own limit of 260 characters falls only for the "\\?\" form, which wants a full path with backslashes.
std::wstring SystemPath(const Path& path) {
    constexpr std::size_t kSafeLength = 240;
    std::wstring text = path.native();
    if (text.size() < kSafeLength || text.starts_with(L"\\\\?\\")) return text;
    text = FullPath(text);
    if (text.starts_with(L"\\\\")) return L"\\\\?\\UNC\\" + text.substr(2);
    return L"\\\\?\\" + text;
}

class WindowsFile final : public File {
  public:
    WindowsFile(HANDLE handle, std::wstring path) : handle_(handle), path_(std::move(path)) {}
    ~WindowsFile() override { ::CloseHandle(handle_); }
    WindowsFile(const WindowsFile&) = delete;
    WindowsFile& operator=(const WindowsFile&) = delete;

    std::uint64_t Size() override {
        LARGE_INTEGER size{};
        if (!::GetFileSizeEx(handle_, &size)) ThrowSystem("Cannot size", path_, ::GetLastError());
        return static_cast<std::uint64_t>(size.QuadPart);
    }

    std::size_t ReadAt(std::uint64_t offset, ByteSpan buffer) override {
        std::size_t done = 0;
        while (done < buffer.size()) {
            OVERLAPPED place = Place(offset + done);
            DWORD count = 0;
            if (!::ReadFile(handle_, buffer.data() + done, Chunk(buffer.size() - done), &count, &place)) {
                const DWORD error = ::GetLastError();
                if (error == ERROR_HANDLE_EOF) break;
                ThrowSystem("Cannot read", path_, error);
            }
            if (count == 0) break;
            done += count;
        }
        return done;
    }

    void WriteAt(std::uint64_t offset, ByteView data) override {
        std::size_t done = 0;
        while (done < data.size()) {
            OVERLAPPED place = Place(offset + done);
            DWORD count = 0;
            if (!::WriteFile(handle_, data.data() + done, Chunk(data.size() - done), &count, &place)) {
                ThrowSystem("Cannot write", path_, ::GetLastError());
            }
            done += count;
        }
    }

    void Resize(std::uint64_t size) override {
        LARGE_INTEGER place{};
        place.QuadPart = static_cast<LONGLONG>(size);
        if (!::SetFilePointerEx(handle_, place, nullptr, FILE_BEGIN) || !::SetEndOfFile(handle_)) {
            ThrowSystem("Cannot resize", path_, ::GetLastError());
        }
    }

    void Flush() override {
        if (!::FlushFileBuffers(handle_)) ThrowSystem("Cannot flush", path_, ::GetLastError());
    }

    bool TryLock(LockByte byte, bool exclusive) override {
        OVERLAPPED place = Place(kFirstLock + static_cast<std::uint64_t>(byte));
        const DWORD flags = LOCKFILE_FAIL_IMMEDIATELY | (exclusive ? LOCKFILE_EXCLUSIVE_LOCK : 0);
        if (::LockFileEx(handle_, flags, 0, 1, 0, &place)) return true;
        const DWORD error = ::GetLastError();
        if (error == ERROR_LOCK_VIOLATION || error == ERROR_IO_PENDING) return false;
        ThrowSystem("Cannot lock", path_, error);
    }
    void Unlock(LockByte byte) noexcept override {
        OVERLAPPED place = Place(kFirstLock + static_cast<std::uint64_t>(byte));
        ::UnlockFileEx(handle_, 0, 1, 0, &place);
    }

  private:
    /// Far beyond any contents, because locked bytes cannot be read.
    static constexpr std::uint64_t kFirstLock = std::uint64_t{1} << 62;

    static OVERLAPPED Place(std::uint64_t offset) {
        OVERLAPPED place{};
        place.Offset = static_cast<DWORD>(offset);
        place.OffsetHigh = static_cast<DWORD>(offset >> 32);
        return place;
    }
    static DWORD Chunk(std::size_t size) {
        constexpr std::size_t kMost = std::size_t{1} << 30;
        return static_cast<DWORD>(std::min(size, kMost));
    }

    HANDLE handle_;
    std::wstring path_;
};

class WindowsStorage final : public Storage {
  public:
    std::unique_ptr<File> Open(const Path& path, OpenMode mode) override {
        DWORD access = GENERIC_READ;
        DWORD share = FILE_SHARE_READ;
        DWORD disposition = OPEN_EXISTING;
        switch (mode) {
        case OpenMode::kReadDenyWrite:
            break;
        case OpenMode::kSideFileRead:
            share = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
            break;
        case OpenMode::kWriteDenyWrite:
            access |= GENERIC_WRITE;
            break;
        case OpenMode::kCreateNew:
            access |= GENERIC_WRITE;
            disposition = CREATE_NEW;
            break;
        case OpenMode::kSideFile:
            access |= GENERIC_WRITE;
            share = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
            disposition = OPEN_ALWAYS;
            break;
        }
        std::wstring name = SystemPath(path);
        const HANDLE handle =
            ::CreateFileW(name.c_str(), access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (handle == INVALID_HANDLE_VALUE) ThrowSystem("Cannot open", name, ::GetLastError());
        return std::make_unique<WindowsFile>(handle, std::move(name));
    }

    bool Exists(const Path& path) override {
        const std::wstring name = SystemPath(path);
        if (::GetFileAttributesW(name.c_str()) != INVALID_FILE_ATTRIBUTES) return true;
        // Anything else, such as a share that does not answer, says nothing about the file.
        const DWORD error = ::GetLastError();
        if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) return false;
        ThrowSystem("Cannot look for", name, error);
    }

    void Remove(const Path& path) override {
        const std::wstring name = SystemPath(path);
        if (::DeleteFileW(name.c_str())) return;
        const DWORD error = ::GetLastError();
        if (error != ERROR_FILE_NOT_FOUND && error != ERROR_PATH_NOT_FOUND) ThrowSystem("Cannot remove", name, error);
    }

    void Rename(const Path& from, const Path& to) override {
        const std::wstring name = SystemPath(from);
        if (::MoveFileExW(name.c_str(), SystemPath(to).c_str(), MOVEFILE_WRITE_THROUGH)) return;
        ThrowSystem("Cannot rename", name, ::GetLastError());
    }

    /// Nothing to do: Windows cannot flush a folder, and its file systems log the making of a name before the flush of
    /// the new file returns.
    void FlushNames(const Path&) override {}
};

} // namespace

Storage& SystemStorage() {
    static WindowsStorage storage;
    return storage;
}

} // namespace jet
