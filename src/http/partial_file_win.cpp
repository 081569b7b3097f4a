#include "http/partial_file_win.h"

#include "support/error.h"
#include "support/system_path_win.h"

namespace quorvex::http {

PartialFile::PartialFile(const std::wstring& target)
    : target_(support::SystemPath(target)), partial_(support::SystemPath(target + L".part")),
      file_(support::RetryWhileHeld([this] {
          return CreateFileW(partial_.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                             nullptr);
      })) {
    if (file_ == INVALID_HANDLE_VALUE) {
        throw support::Error(support::kErrorPathAccess, L"Cannot create file " + partial_);
    }
}

PartialFile::~PartialFile() {
    if (file_ == INVALID_HANDLE_VALUE) return;
    CloseHandle(file_);
    Discard();
}

void PartialFile::Discard() {
    support::RetryWhileHeld([this] { return DeleteFileW(partial_.c_str()); });
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
    if (!support::RetryWhileHeld(
            [this] { return MoveFileExW(partial_.c_str(), target_.c_str(), MOVEFILE_REPLACE_EXISTING); })) {
        Discard();
        throw support::Error(support::kErrorPathAccess, L"Cannot create file " + target_);
    }
}

} // namespace quorvex::http
