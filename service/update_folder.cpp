#include "service/update_folder.h"

#include "support/characters.h"

#include <algorithm>
#include <system_error>
#include <tuple>

namespace quorvex::service {
namespace {

constexpr std::string_view kPrefix = "UPDATE_";
constexpr std::size_t kKindAt = 7;
constexpr std::size_t kDateAt = 9;
constexpr std::size_t kDateLength = 8;
constexpr std::string_view kEnding = ".zip";

bool IsPackageName(std::string_view name) {
    return name.size() == kDateAt + kDateLength + kEnding.size() &&
           support::EqualButCase(name.substr(0, kKindAt), kPrefix) && support::IsLetter(name[kKindAt]) &&
           name[kKindAt + 1] == '_' && support::AllDigits(name.substr(kDateAt, kDateLength)) &&
           support::EqualButCase(name.substr(kDateAt + kDateLength), kEnding);
}

// A folder that is not there holds no packages.
std::vector<UpdateFolder::Package> PackagesIn(const std::filesystem::path& folder) {
    std::vector<UpdateFolder::Package> packages;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        std::error_code unreadable;
        if (!IsPackageName(name) || !entry->is_regular_file(unreadable)) continue;
        const std::uintmax_t size = entry->file_size(unreadable);
        if (unreadable) continue;
        packages.push_back({name, support::ToUpper(name[kKindAt]), name.substr(kDateAt, kDateLength), size});
    }
    return packages;
}

} // namespace

bool IsDateText(std::string_view text) {
    return text.empty() || (text.size() == kDateLength && support::AllDigits(text));
}

std::vector<UpdateFolder::Package> UpdateFolder::Newer(std::string_view fullDate, std::string_view streetDate,
                                                       std::string_view postZonDate) const {
    std::vector<Package> packages = PackagesIn(folder_);
    std::erase_if(packages, [&](const Package& package) {
        const std::string_view date = package.kind == 'F'   ? fullDate
                                      : package.kind == 'T' ? streetDate
                                      : package.kind == 'Z' ? postZonDate
                                                            : std::string_view();
        return date.empty() || package.date <= date || !package.name.ends_with(kEnding);
    });
    std::sort(packages.begin(), packages.end(), [](const Package& a, const Package& b) {
        return std::tie(a.date, a.kind, a.name) < std::tie(b.date, b.kind, b.name);
    });
    return packages;
}

std::optional<std::filesystem::path> UpdateFolder::Find(std::string_view name) const {
    if (!IsPackageName(name)) return std::nullopt;
    for (const Package& package : PackagesIn(folder_)) {
        if (support::EqualButCase(package.name, name)) return folder_ / package.name;
    }
    return std::nullopt;
}

} // namespace quorvex::service
