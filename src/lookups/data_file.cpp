#include "lookups/data_file.h"

#include "database/database.h"
#include "support/error.h"
#include "support/files.h"

namespace quorvex::lookups {

bool DataFileUsable(object::Quorvex& object, const std::wstring& fileName, bool showMessages) {
    if (!object.LocalMode()) return true;
    const std::wstring fullName = object.DataPath() + L"\\" + fileName;
    if (!support::FileExists(fullName)) {
        object.General_errormessage = L"Data file does not exist " + fullName;
        if (showMessages) {
            object.platform.user.ShowMessage(object.General_errormessage, support::kStyleCritical, L"Quorvex Lookup");
        }
        return false;
    }
    object.databases.CreateConnection(); // proves that database access is there
    return true;
}

void RequireDataFile(const object::Quorvex& object, wchar_t kind) {
    const std::wstring file = localdata::DataFilePath(object.DataPath(), *localdata::FindDataFile(kind));
    if (!support::FileExists(file)) throw support::Error(support::kErrorFileNotFound, L"File not found");
}

} // namespace quorvex::lookups
