#pragma once

#include "database/database.h"
#include "object/quorvex.h"
#include "update/progress.h"

#include <string>

namespace quorvex::update {

// Merges one unpacked package (full path) into the data file of its kind ("F", "T" or "Z") and stamps that file with
// the package's date; recordCount receives the number of records in the package. CurrentOperation names the step in
// progress throughout. Throws Error for another kind, an invalid date, a file that cannot be opened, a package without
// records, a bad record or a missing version row. Records merged before a failure stay; the stamp is then not moved.
void UpdateData(const object::Quorvex& object, Progress& progress, const std::wstring& dataFolder,
                const std::wstring& updateFile, wchar_t kind, const std::wstring& packageDate, long& recordCount);

// Merge the current record of a package into the first target record of the same postcode, or add it. Throw Error.
void AddOrUpdateRecordAddress(database::Recordset& updateRecords, database::Recordset& targetRecords);
void AddOrUpdateRecordPostZon(database::Recordset& updateRecords, database::Recordset& targetRecords);

} // namespace quorvex::update
