#pragma once

#include "object/quorvex.h"
#include "support/platform.h"

#include <string>

namespace quorvex::localdata {

// What local data is present. Nothing here throws or changes a file; a data file that cannot be read has an empty date,
// the reason is in the error log.

// Dates of the last update packages applied, eight digits each; empty for data that is not there or was never updated.
struct LastUpdateDates {
    std::wstring full;
    std::wstring street;
    std::wstring postZon;

    // The date of a kind letter; nullptr for an unknown letter. Case matters.
    const std::wstring* Of(wchar_t kind) const;
};

// A data file's date as an update run needs it.
struct DataDate {
    std::wstring date;    // empty: the file is missing or was never updated
    bool readable = true; // false: the file exists but its date cannot be read; the error log says why
};
// Of a kind letter; an empty date for an unknown letter.
DataDate ReadDataDate(const object::Quorvex& object, const std::wstring& dataFolder, wchar_t kind);

// Intended: one of the three files is enough.
bool AreDataFilesInPlace(const std::wstring& dataFolder);

std::wstring GetLastUpdateFULL(const object::Quorvex& object, const std::wstring& dataFolder);
std::wstring GetLastUpdateStreet(const object::Quorvex& object, const std::wstring& dataFolder);
std::wstring GetLastUpdatePostZon(const object::Quorvex& object, const std::wstring& dataFolder);
LastUpdateDates GetLastUpdateDates(const object::Quorvex& object, const std::wstring& dataFolder);

// For hosts: the kind as a letter in any case, "19000101" for any other text. Without a data path a message and an
// empty text.
std::wstring LMGetLastUpdateDate(object::Quorvex& object, const std::wstring& kind);

// Name of the computer that holds the folder, in upper case: the server of a network path or mapped drive (its first
// label when it is dotted), else this computer.
std::wstring GetDataStorageComputerName(support::Platform& platform, const std::wstring& dataFolder);

// Lines of two blanks and a text, with CR LF between them; the dates read for it are left in dates.
std::wstring GetSummary(const object::Quorvex& object, const std::wstring& dataFolder, LastUpdateDates& dates);
// The summary, preceded by the system and followed by the size and record count of each file.
std::wstring GetDetailedSummary(const object::Quorvex& object, const std::wstring& dataFolder);

// The message about a missing data path, as all methods that need one show it.
void ShowDataPathMissing(support::Platform& platform);

} // namespace quorvex::localdata
