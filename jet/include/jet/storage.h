#pragma once

#include "jet/bytes.h"
#include "jet/path.h"

#include <memory>

namespace jet {

/// What a lock on a side file means to the engine. Locks lie far beyond the file's contents.
enum class LockByte {
    kSession, ///< exclusive: a writer that lets go of the database between groups, for its whole life
    kGate,    ///< exclusive: that writer has or wants the database; a reader that finds it locked keeps out
    kWaiting, ///< shared: a reader waits for the database
};

/// One open file. Closing (destruction) never throws and gives up its locks. Failures throw Error: kDiskFull when there
/// is no room, else kIo; whether the failed call took effect is then unknown.
class File {
  public:
    virtual ~File() = default;
    virtual std::uint64_t Size() = 0;
    /// Reads up to buffer.size() bytes at `offset`; returns how many there were (less only at the end of the file).
    virtual std::size_t ReadAt(std::uint64_t offset, ByteSpan buffer) = 0;
    /// Writes all of `data` at `offset`, lengthening the file where needed. After a failure any part may be written.
    virtual void WriteAt(std::uint64_t offset, ByteView data) = 0;
    virtual void Resize(std::uint64_t size) = 0;
    /// Returns when everything written is on the medium. The file's name need not be (see Storage::FlushNames).
    virtual void Flush() = 0;
    /// Takes a lock without waiting; false if somebody else's lock excludes it. Ends with Unlock or with the file.
    virtual bool TryLock(LockByte byte, bool exclusive) = 0;
    virtual void Unlock(LockByte byte) noexcept = 0;
};

/// How a file is opened, and what others may do meanwhile.
enum class OpenMode {
    kReadDenyWrite,  ///< existing file; others may read, nobody may write
    kWriteDenyWrite, ///< existing file; nobody else may have it open in a deny-write way or write it
    kCreateNew,      ///< must not exist yet; then as kWriteDenyWrite
    kSideFile,       ///< opened or created for reading and writing; guarded by the lock on the file beside it
    kSideFileRead,   ///< existing, for reading only
};

/// The file calls the engine needs: its only way to the outside.
class Storage {
  public:
    virtual ~Storage() = default;
    /// Opens a file. Throws kFileNotFound, kAccessDenied, kInUse, kFileExists, kDiskFull or kIo.
    virtual std::unique_ptr<File> Open(const Path& path, OpenMode mode) = 0;
    /// False only if there is certainly no such file; throws if that cannot be told.
    virtual bool Exists(const Path& path) = 0;
    /// Removes a file. A missing file is not an error.
    virtual void Remove(const Path& path) = 0;
    /// Gives a file another name in the same folder. Throws kFileNotFound if it does not exist.
    virtual void Rename(const Path& from, const Path& to) = 0;
    /// Returns when the names in the folder of `path` are on the medium as they are now.
    virtual void FlushNames(const Path& path) = 0;
};

/// The operating system's files. Paths may be long and hold any character.
Storage& SystemStorage();

} // namespace jet
