#include "update/package_name.h"

#include "localdata/package_date.h"
#include "support/characters.h"
#include "support/files.h"
#include "support/text.h"

#include <algorithm>

namespace quorvex::update {
namespace {

constexpr std::size_t kKindPosition = kPackagePrefix.size();
constexpr std::size_t kDatePosition = kKindPosition + 2;
constexpr std::size_t kDateDigits = 8;

} // namespace

bool HasUpdateLayout(std::wstring_view name, std::wstring_view ending) {
    if (name.size() != kDatePosition + kDateDigits + ending.size() || !name.starts_with(kPackagePrefix)) return false;
    if (!support::IsLetter(name[kKindPosition]) || name[kKindPosition + 1] != L'_') return false;
    const std::wstring_view date = name.substr(kDatePosition, kDateDigits);
    return std::all_of(date.begin(), date.end(), support::IsDigit<wchar_t>) &&
           support::UpperCase(name.substr(kDatePosition + kDateDigits)) == support::UpperCase(ending);
}

PackageName::PackageName(const std::wstring& fileName) : name(fileName) {
    if (name.size() > kKindPosition) kind = name[kKindPosition];
    if (name.size() > kDatePosition) date = name.substr(kDatePosition, kDateDigits);
}

std::wstring PackageName::DatabaseName() const {
    return support::ReplaceAll(name, std::wstring(kPackageEnding), std::wstring(kDatabaseEnding));
}

bool PackageName::CanBeApplied() const {
    return name.ends_with(kPackageEnding) && localdata::IsPackageDate(date);
}

void SweepLeftovers(const std::wstring& dataFolder) {
    constexpr std::wstring_view kEndings[] = {L".dat", L".dat.unpacking", L".dat.replaced", L".dat.journal",
                                              L".zip.part"};
    for (const std::wstring& name : support::ListFiles(dataFolder, kPackagePrefix, {})) {
        const bool isLeftover =
            std::any_of(std::begin(kEndings), std::end(kEndings),
                        [&name](std::wstring_view ending) { return HasUpdateLayout(name, ending); });
        if (isLeftover) support::DeleteFileQuietly(dataFolder + L"\\" + name);
    }
}

} // namespace quorvex::update
