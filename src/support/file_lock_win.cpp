#include "support/error.h"
#include "support/file_lock.h"
#include "support/system_path_win.h"

namespace quorvex::support {
namespace {

class LockedFile final : public FileLock {
  public:
    explicit LockedFile(HANDLE file) : file_(file) {}
    ~LockedFile() override { CloseHandle(file_); }

  private:
    HANDLE file_;
};

// A name whose deletion is pending cannot be examined either; only a free name is "not found".
bool IsTaken(const std::wstring& name) {
    return GetFileAttributesW(name.c_str()) != INVALID_FILE_ATTRIBUTES || GetLastError() == ERROR_ACCESS_DENIED;
}

} // namespace

std::unique_ptr<FileLock> FileLock::TryAcquire(const std::wstring& path) {
    // Shared with nobody, and deleted by the system when the handle goes, even when the process is ended.
    const std::wstring name = SystemPath(path);
    const HANDLE file = CreateFileW(name.c_str(), GENERIC_WRITE | DELETE, 0, nullptr, OPEN_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file != INVALID_HANDLE_VALUE) return std::make_unique<LockedFile>(file);
    const DWORD error = GetLastError();
    // A lock file whose holder has ended but which a scanner still has open answers "access denied" until it is gone.
    if (error == ERROR_SHARING_VIOLATION || error == ERROR_DELETE_PENDING) return nullptr;
    if (error == ERROR_ACCESS_DENIED && IsTaken(name)) return nullptr;
    throw Error(kErrorPathAccess, L"Cannot create file " + path);
}

} // namespace quorvex::support
