#pragma once

#include <memory>
#include <string>

namespace quorvex::support {

// A lock that one run holds at a time, in this process, another one or on another machine that shares the folder. It is
// an empty file, which is gone when its holder ends, in whatever way.
class FileLock {
  public:
    virtual ~FileLock() = default;

    // nullptr if somebody else holds it, or is just letting go of it. Throws Error if the file cannot be created.
    static std::unique_ptr<FileLock> TryAcquire(const std::wstring& path);

  protected:
    FileLock() = default;
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
};

} // namespace quorvex::support
