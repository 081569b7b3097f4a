#include "quorvex/file_system.h"

#include <system_error>

namespace quorvex::cli {

std::optional<std::uint64_t> FileLength(const std::filesystem::path& file) {
    std::error_code error;
    const auto size = std::filesystem::file_size(file, error);
    return error ? std::nullopt : std::optional<std::uint64_t>(size);
}

bool IsFolder(const std::filesystem::path& path) {
    std::error_code error;
    return std::filesystem::is_directory(path, error);
}

bool IsSameFile(const std::filesystem::path& a, const std::filesystem::path& b) {
    std::error_code error;
    return std::filesystem::equivalent(a, b, error);
}

bool CutFile(const std::filesystem::path& file, std::uint64_t bytes) {
    std::error_code error;
    std::filesystem::resize_file(file, bytes, error);
    return !error;
}

bool CopyWholeFile(const std::filesystem::path& source, const std::filesystem::path& target) {
    std::error_code error;
    return std::filesystem::copy_file(source, target, std::filesystem::copy_options::overwrite_existing, error);
}

} // namespace quorvex::cli
