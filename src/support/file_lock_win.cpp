#include "support/error.h"
#include "support/file_lock.h"
#include "support/files.h"

#include <windows.h>

namespace quorvex::support {
namespace {

class LockedFile final : public FileLock {
  public:
    explicit LockedFile(HANDLE file) : file_(file) {}
    ~LockedFile() override { CloseHandle(file_); }

  private:
    HANDLE file_;
};

} // namespace

std::unique_ptr<FileLock> FileLock::TryAcquire(const std::wstring& path) {
    // Shared with nobody, and deleted by the system when the handle goes, even when the process is ended.
    const HANDLE file = CreateFileW(ToPath(path).c_str(), GENERIC_WRITE | DELETE, 0, nullptr, OPEN_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file != INVALID_HANDLE_VALUE) return std::make_unique<LockedFile>(file);
    if (GetLastError() == ERROR_SHARING_VIOLATION) return nullptr;
    throw Error(kErrorPathAccess, L"Cannot create file " + path);
}

} // namespace quorvex::support
