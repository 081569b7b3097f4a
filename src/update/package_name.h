#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quorvex::update {

// "UPDATE_F_20260131.zip": a kind letter and a date of eight digits. The database in a package has the same name with
// the ending ".dat".
inline constexpr std::wstring_view kPackagePrefix = L"UPDATE_";
inline constexpr std::wstring_view kPackageEnding = L".zip";
inline constexpr std::wstring_view kDatabaseEnding = L".dat";

// Whether the name is the prefix, a letter, "_", eight digits and the ending. Case matters, except in the ending.
bool HasUpdateLayout(std::wstring_view name, std::wstring_view ending);

// A package found in the data folder. A name that is too short has no kind or no date.
struct PackageName {
    explicit PackageName(const std::wstring& fileName);

    // The database that the package unpacks to. Intended: case matters, so a name in ".ZIP" stays as it is and is then
    // not a database. Packages are published in lower case.
    std::wstring DatabaseName() const;
    // False if no run can apply it, because of the name alone.
    bool CanBeApplied() const;

    std::wstring name;
    wchar_t kind = 0;
    std::wstring date;
};

// Deletes what runs that were killed, or packages that failed, left in the data folder: downloads and extractions that
// were not finished, and unpacked packages. The caller holds the run's lock.
void SweepLeftovers(const std::wstring& dataFolder);

} // namespace quorvex::update
