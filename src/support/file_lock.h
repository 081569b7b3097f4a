#pragma once

#include <memory>
#include <string>

namespace quorvex::support {

// A lock that one run holds at a time, in this process, another or on another machine that shares the folder. It stands
// as an empty file and is gone with its holder, however that ends.
class FileLock {
  public:
    virtual ~FileLock() = default;

    // nullptr when somebody else holds it. Throws Error when the file cannot be made at all.
    static std::unique_ptr<FileLock> TryAcquire(const std::wstring& path);

  protected:
    FileLock() = default;
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
};

} // namespace quorvex::support
