#pragma once

#include "jet/bytes.h"

#include <filesystem>
#include <memory>

namespace jet {

/// One open file. Closing (destruction) never throws. Failures throw Error: kDiskFull when there is no room, else kIo.
class File {
  public:
    virtual ~File() = default;
    virtual std::uint64_t Size() = 0;
    /// Reads up to buffer.size() bytes at `offset`; returns how many there were (less only at the end of the file).
    virtual std::size_t ReadAt(std::uint64_t offset, ByteSpan buffer) = 0;
    /// Writes all of `data` at `offset`, lengthening the file where needed. After a failure any part may be written.
    virtual void WriteAt(std::uint64_t offset, ByteView data) = 0;
    virtual void Resize(std::uint64_t size) = 0;
    /// Returns when everything written is on the medium.
    virtual void Flush() = 0;
};

/// How a file is opened, and what others may do meanwhile.
enum class OpenMode {
    kReadDenyWrite,  ///< existing file; others may read, nobody may write
    kWriteDenyWrite, ///< existing file; nobody else may have it open in a deny-write way or write it
    kCreateNew,      ///< must not exist yet; then as kWriteDenyWrite
    kSideFile,       ///< opened or created for reading and writing; guarded by the lock on the file beside it
    kSideFileRead,   ///< existing, for reading only
};

/// The file calls the engine needs: the one door to the outside.
class Storage {
  public:
    virtual ~Storage() = default;
    /// Opens a file. Throws kFileNotFound, kAccessDenied, kInUse, kFileExists, kDiskFull or kIo.
    virtual std::unique_ptr<File> Open(const std::filesystem::path& path, OpenMode mode) = 0;
    virtual bool Exists(const std::filesystem::path& path) = 0;
    /// Removes a file; a file that is not there is no error.
    virtual void Remove(const std::filesystem::path& path) = 0;
};

/// The operating system's files. Paths may be long and hold any character.
Storage& SystemStorage();

} // namespace jet
