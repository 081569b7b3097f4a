#pragma once

#include <exception>
#include <string>
#include <utility>

namespace jet {

/// What went wrong, for callers that act on it; the message is for people.
enum class ErrorCode {
    kFileNotFound,       ///< the file, or the folder it should lie in, does not exist
    kAccessDenied,       ///< the system refuses this kind of access
    kInUse,              ///< somebody else holds the file in a way that excludes this opening
    kFileExists,         ///< a new file was to be made where one stands
    kIo,                 ///< reading or writing failed
    kDiskFull,           ///< no room to write
    kNotADatabase,       ///< the file is something else
    kUnsupportedVersion, ///< a database of an older or newer generation
    kEncrypted,          ///< pages are stored encoded
    kTruncated,          ///< the file ends too early
    kWrongPassword,
    kCorrupt,        ///< contents contradict the format
    kRecoveryNeeded, ///< a half-written change must be undone first, and cannot be here
    kForeignJournal, ///< the journal beside the file was made from another file or state, and was set aside
    kNoSuchTable,
    kNoSuchColumn,
    kTableExists,
    kQuerySyntax,
    kTypeMismatch,
    kDuplicateKey,
    kNullKey,
    kValueTooLong,
    kReadOnly,    ///< a change was asked of a file opened for reading
    kUnsupported, ///< valid, but outside what this engine does
    kUsage,       ///< the caller broke the contract (closed file, dead row)
};

/// The one exception of this room.
class Error : public std::exception {
  public:
    Error(ErrorCode code, std::string message) : code_(code), message_(std::move(message)) {}
    ErrorCode code() const noexcept { return code_; }
    const char* what() const noexcept override { return message_.c_str(); }

  private:
    ErrorCode code_;
    std::string message_;
};

/// Throws kCorrupt. `where` names the structure, `page` the page it stands on.
[[noreturn]] void ThrowCorrupt(const char* where, unsigned long page);

} // namespace jet
