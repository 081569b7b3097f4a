#pragma once

#include <algorithm>
#include <array>
#include <string>

namespace quorvex::localdata {

// One of the three local data files. The update packages of a kind hold a table of the same name.
struct DataFile {
    wchar_t kind; // letter of the kind in package names and host calls
    const wchar_t* fileName;
    const wchar_t* table;
    const wchar_t* label;          // in progress texts and logs
    const wchar_t* summaryHeading; // in the data summary
};

// Intended: "THOURGHFARE", "Thourghfare" and "Thorughfare" are spelled as installed data and its readers know them.
inline constexpr std::array<DataFile, 3> kDataFiles = {{
    {L'F', L"PAF_FULL.dat", L"PAF_FULLAddress", L"Full PAF", L"Full PAF data present"},
    {L'T', L"PAF_THOURGHFARE.dat", L"PAF_StreetAddress", L"Thourghfare PAF", L"Thorughfare (Street) PAF data present"},
    {L'Z', L"PAF_POSTZON.dat", L"PAF_PostZon", L"PostZon Data", L"PostZon data present"},
}};

// The file of a kind; nullptr for an unknown letter. Case matters.
inline const DataFile* FindDataFile(wchar_t kind) {
    const auto found =
        std::find_if(kDataFiles.begin(), kDataFiles.end(), [kind](const DataFile& file) { return file.kind == kind; });
    return found == kDataFiles.end() ? nullptr : &*found;
}

inline std::wstring DataFilePath(const std::wstring& dataFolder, const DataFile& file) {
    return dataFolder + L"\\" + file.fileName;
}

} // namespace quorvex::localdata
