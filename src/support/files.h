#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex::support {

// Paths in texts are folder + "\" + name, used as they stand. Natively a backslash separates folders, too; on Windows a
// path too long for the classic calls takes its long form.
std::filesystem::path ToPath(std::wstring_view path);
std::wstring FromPath(const std::filesystem::path& path);
// The part after the last backslash.
std::wstring FileNameOf(std::wstring_view path);

// Size in bytes, -1 when the file cannot be opened (or is larger than 2 GiB - 1).
std::int32_t FileSize(const std::wstring& path);
// True only for a file of more than 0 bytes: an empty file counts as absent, intended.
bool FileExists(const std::wstring& path);
// The file then holds the text and one line end (CR LF), in UTF-8. Throws Error.
void WriteTextFile(const std::wstring& path, std::wstring_view text);
// Whole contents. Throw Error when the file cannot be opened, read or written.
std::string ReadFileBytes(const std::wstring& path);
void WriteFileBytes(const std::wstring& path, std::string_view bytes);
// Appends in one write to a file that nobody else is writing to; false when that is not possible now.
bool AppendExclusively(const std::wstring& path, std::string_view bytes);
// False when there was nothing or it could not be deleted.
bool DeleteFileQuietly(const std::wstring& path);
bool RenameFileQuietly(const std::wstring& from, const std::wstring& to);
// Names (without folder) that match prefix + anything + suffix, case ignored, in the order in which the directory
// returns them.
std::vector<std::wstring> ListFiles(const std::wstring& folder, std::wstring_view prefix, std::wstring_view suffix);

} // namespace quorvex::support
