#include "quorvex/doctor.h"

#include "database/connection_string.h"
#include "database/jet/jet_translation.h"
#include "jet/database.h"
#include "localdata/data_file_names.h"
#include "localdata/package_date.h"
#include "localdata/status.h"
#include "localdata/substitution.h"
#include "quorvex/file_system.h"
#include "support/error.h"
#include "support/file_lock.h"
#include "support/files.h"
#include "support/text.h"

#include <fstream>

namespace quorvex::cli {
namespace {

constexpr wchar_t kSubject[] = L"data";

void Add(Findings& findings, Grade grade, std::wstring what, std::wstring advice = {}) {
    findings.push_back({grade, kSubject, std::move(what), std::move(advice)});
}

// What to do about an error of the engine.
std::wstring AdviceFor(const jet::Error& error) {
    switch (error.code()) {
    case jet::ErrorCode::kInUse:
        return L"an update is writing it; try again when it has ended";
    case jet::ErrorCode::kAccessDenied:
        return L"give this account read rights on the folder";
    case jet::ErrorCode::kRecoveryNeeded:
        return L"an update was interrupted: make the folder writable, then run quorvex status once";
    default:
        return L"restore the file from a good copy";
    }
}

void ExamineFile(object::Quorvex& object, const localdata::DataFile& dataFile, Findings& findings) {
    const std::wstring name = dataFile.fileName;
    const std::wstring file = localdata::DataFilePath(object.DataPath(), dataFile);
    if (!support::PathExists(file)) {
        Add(findings, Grade::Warning, name + L" is missing",
            L"lookups that need it fail; copy it into the data folder");
        return;
    }
    if (!support::FileExists(file)) {
        Add(findings, Grade::Problem, name + L" is empty or cannot be opened", L"restore the file from a good copy");
        return;
    }
    try {
        jet::Database database =
            jet::Database::Open(support::ToPath(file), database::ToUtf16(database::kDatabasePassword));
        if (!database.OpenTable(database::ToUtf16(dataFile.table)).Rows().Next()) {
            Add(findings, Grade::Problem, name + L" holds no rows", L"restore the file from a good copy");
            return;
        }
        database.Close();
    } catch (const jet::Error& error) {
        Add(findings, Grade::Problem, name + L": " + support::FromUtf8(error.what()), AdviceFor(error));
        return;
    }
    const std::wstring date = localdata::LMGetLastUpdateDate(object, std::wstring(1, dataFile.kind));
    if (localdata::IsPackageDate(date)) {
        Add(findings, Grade::Ok, name + L" can be read, last updated " + localdata::DisplayDate(date));
    } else {
        Add(findings, Grade::Warning, name + L" can be read but has no date",
            L"updates do not apply to it; get a full set");
    }
}

void ExamineRights(const std::wstring& folder, Findings& findings) {
    const std::wstring probe = folder + L"\\quorvex-doctor.tmp";
    std::ofstream(support::ToPath(probe), std::ios::binary | std::ios::app).close();
    if (support::DeleteFileQuietly(probe)) {
        Add(findings, Grade::Ok, L"this account may write to the folder");
    } else {
        Add(findings, Grade::Warning, L"this account may not write to the folder",
            L"lookups work; updates and logs need write rights");
    }
}

void ExamineLeftovers(const std::wstring& folder, Findings& findings) {
    for (const std::wstring& name : support::FileNames(folder)) {
        const std::wstring upper = support::UpperCase(name);
        if (upper.ends_with(L"-JOURNAL")) {
            Add(findings, Grade::Warning, name + L" is in the folder",
                L"an update was interrupted or is running; never delete it, the next opening puts it right");
        } else if (upper.starts_with(L"UPDATE_") && upper.ends_with(L".ZIP")) {
            Add(findings, Grade::Warning, name + L" waits to be applied", L"run quorvex update");
        }
    }
}

void ExamineSubstitution(const std::wstring& folder, Findings& findings) {
    try {
        if (!support::FileExists(folder + L"\\" + localdata::kSubstitutionFile)) {
            Add(findings, Grade::Warning, std::wstring(localdata::kSubstitutionFile) + L" is missing",
                L"addresses come out scrambled; copy it into the data folder");
        }
        localdata::LoadSubstitution(folder);
    } catch (const support::Error& error) {
        Add(findings, Grade::Problem, error.Description(), L"restore the file from a good copy");
    }
}

} // namespace

void ExamineData(object::Quorvex& object, Findings& findings) {
    if (!object.LocalMode()) {
        Add(findings, Grade::Ok, L"no data folder was named", L"name it with --data to have it examined");
        return;
    }
    const std::wstring& folder = object.DataPath();
    if (!IsFolder(support::ToPath(folder))) {
        Add(findings, Grade::Problem, L"the folder " + folder + L" does not exist or cannot be reached",
            L"check the path, the share and this account's rights");
        return;
    }
    bool any = false;
    for (const localdata::DataFile& dataFile : localdata::kDataFiles) {
        any = any || support::PathExists(localdata::DataFilePath(folder, dataFile));
    }
    if (!any) {
        Add(findings, Grade::Problem, L"no data files in " + folder, L"copy the data there or name another folder");
        return;
    }
    for (const localdata::DataFile& dataFile : localdata::kDataFiles) ExamineFile(object, dataFile, findings);
    ExamineSubstitution(folder, findings);
    ExamineRights(folder, findings);
    ExamineLeftovers(folder, findings);
}

} // namespace quorvex::cli
