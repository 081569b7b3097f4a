#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex::support {

// Paths in texts are folder + "\" + name, used as they stand. Natively a backslash separates folders, too; on Windows a
// path too long for the classic calls takes its long form.
std::filesystem::path::string_type NativePath(std::wstring_view path);
std::wstring FromNativePath(const std::filesystem::path::string_type& path);
// The same as the standard library's paths. Intended: these are inline, since the DLLs do without that library's code.
inline std::filesystem::path ToPath(std::wstring_view path) {
    return NativePath(path);
}
inline std::wstring FromPath(const std::filesystem::path& path) {
    return FromNativePath(path.native());
}
// Absolute; a path that cannot be completed is returned as it is.
std::wstring FullPath(const std::wstring& path);
// The part after the last backslash.
std::wstring FileNameOf(std::wstring_view path);

// Size in bytes, -1 when the file cannot be opened (or is larger than 2 GiB - 1).
std::int32_t FileSize(const std::wstring& path);
// Windows counts the times of files in steps of 100 ns since 1601.
inline constexpr std::int64_t kSecondsFrom1601 = 11644473600; // to 1970
inline constexpr std::int64_t kStepsPerSecond = 10000000;

// What changes with a file's contents, once it is settled: file systems count time in steps, so that a file that was
// written a moment ago may change without its stamp.
struct FileStamp {
    std::int64_t size = -1;   // bytes; -1: no such file
    std::int64_t written = 0; // time of the last change, as Windows counts it
    bool operator==(const FileStamp&) const = default;
    bool Settled() const;
};
FileStamp FileStampOf(const std::wstring& path);
// True only for a file of more than 0 bytes. Intended: an empty file counts as absent.
bool FileExists(const std::wstring& path);
// True for anything of that name, an empty file or a folder included. Also true if the system cannot tell.
bool PathExists(const std::wstring& path);
// The file then holds the text and one line end (CR LF), in UTF-8. Throws Error.
void WriteTextFile(const std::wstring& path, std::wstring_view text);
// Whole contents, at most 2 GiB - 1. Throw Error if the file cannot be opened, read or written.
std::string ReadFileBytes(const std::wstring& path);
void WriteFileBytes(const std::wstring& path, std::string_view bytes);
// A file held for appending: while it lives nobody else can hold the same file so, in this process or another. The file
// may be read and renamed meanwhile.
class FileHold {
  public:
    // create: an absent file is made; without it an absent file is not held.
    FileHold(const std::wstring& path, bool create);
    FileHold(const FileHold&) = delete;
    FileHold& operator=(const FileHold&) = delete;
    ~FileHold();

    explicit operator bool() const { return handle_ != kNone; }
    // One write; false when not all of it could be written, of which nothing stays then.
    bool Append(std::string_view bytes);

  private:
    static constexpr std::intptr_t kNone = -1;
    std::intptr_t handle_ = kNone; // the system's handle or descriptor
};
// The user's own folder for logs, created if it does not exist: Quorvex in the folder for local application data
// (natively quorvex in the state folder), the folder for temporary files if the user has none.
std::wstring UserLogFolder();
// False when there was nothing or it could not be deleted.
bool DeleteFileQuietly(const std::wstring& path);
bool RenameFileQuietly(const std::wstring& from, const std::wstring& to);
// Names (without folder) of a folder's files, in the order in which the directory returns them; empty if it cannot be
// read.
std::vector<std::wstring> FileNames(const std::wstring& folder);
// Those that match prefix + anything + suffix, case ignored.
std::vector<std::wstring> ListFiles(const std::wstring& folder, std::wstring_view prefix, std::wstring_view suffix);

} // namespace quorvex::support
