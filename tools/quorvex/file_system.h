#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace quorvex::cli {

// The system's own calls: on Windows those of the standard library take the "?" of a long path's form for a wildcard.

// In bytes; nothing unless there is such a file.
std::optional<std::uint64_t> FileLength(const std::filesystem::path& file);
bool IsFolder(const std::filesystem::path& path);
// Whether both names lead to one existing file.
bool IsSameFile(const std::filesystem::path& a, const std::filesystem::path& b);
// Drops what follows the first bytes. False if the system refuses.
bool CutFile(const std::filesystem::path& file, std::uint64_t bytes);
// Replaces the target. False if it could not be written whole; part of it may then be there.
bool CopyWholeFile(const std::filesystem::path& source, const std::filesystem::path& target);

} // namespace quorvex::cli
