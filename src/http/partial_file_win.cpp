#include "http/partial_file_win.h"

#include "support/error.h"
#include "support/files.h"

namespace quorvex::http {

PartialFile::PartialFile(const std::wstring& target)
    : target_(support::ToPath(target).wstring()), partial_(support::ToPath(target + L".part").wstring()),
      file_(CreateFileW(partial_.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr)) {
    if (file_ == INVALID_HANDLE_VALUE) {
        throw support::Error(support::kErrorPathAccess, L"Cannot create file " + partial_);
    }
}

PartialFile::~PartialFile() {
    if (file_ == INVALID_HANDLE_VALUE) return;
    CloseHandle(file_);
    DeleteFileW(partial_.c_str());
}

void PartialFile::Append(std::string_view bytes) {
    DWORD written = 0;
    if (!WriteFile(file_, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) ||
        written != bytes.size()) {
        throw support::Error(support::kErrorDiskFull, L"Cannot write file " + partial_);
    }
}

void PartialFile::Commit() {
    CloseHandle(file_);
    file_ = INVALID_HANDLE_VALUE;
    if (!MoveFileExW(partial_.c_str(), target_.c_str(), MOVEFILE_REPLACE_EXISTING)) {
        DeleteFileW(partial_.c_str());
        throw support::Error(support::kErrorPathAccess, L"Cannot create file " + target_);
    }
}

} // namespace quorvex::http
