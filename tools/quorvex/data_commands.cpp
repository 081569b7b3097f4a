#include "quorvex/data_commands.h"

#include "database/connection_string.h"
#include "database/jet/jet_translation.h"
#include "jet/check.h"
#include "jet/database.h"
#include "localdata/data_file_names.h"
#include "localdata/status.h"
#include "quorvex/file_system.h"
#include "support/error.h"
#include "support/files.h"
#include "support/text.h"
#include "update/update_procedure.h"

namespace quorvex::cli {
namespace {

constexpr std::int64_t kUnknown = -1;

// A file of the folder that is not data.
const wchar_t* LeftoverKind(const std::wstring& name) {
    const std::wstring upper = support::UpperCase(name);
    if (upper.ends_with(L"-JOURNAL")) return L"journal";
    if (upper.ends_with(L".PART")) return L"partial download";
    if (upper.starts_with(L"UPDATE_")) return upper.ends_with(L".ZIP") ? L"package" : L"unpacked package";
    return nullptr;
}

jet::Database OpenData(const std::wstring& file) {
    return jet::Database::Open(support::ToPath(file), database::ToUtf16(database::kDatabasePassword));
}

std::int64_t LengthOf(const std::wstring& file) {
    const auto bytes = FileLength(support::ToPath(file));
    return bytes ? static_cast<std::int64_t>(*bytes) : kUnknown;
}

void AddDataFile(Report& report, object::Quorvex& object, const localdata::DataFile& dataFile, bool& failed) {
    const std::wstring file = localdata::DataFilePath(object.DataPath(), dataFile);
    std::wstring date;
    std::wstring state = L"ok";
    std::int64_t rows = kUnknown;
    try {
        jet::Database database = OpenData(file);
        rows = static_cast<std::int64_t>(database.OpenTable(database::ToUtf16(dataFile.table)).CountRows());
        database.Close();
        date = localdata::LMGetLastUpdateDate(object, std::wstring(1, dataFile.kind));
    } catch (const jet::Error& error) {
        state = support::FromUtf8(error.what());
        failed = true;
    }
    report.Add({std::wstring(dataFile.fileName), std::wstring(L"data"), date, LengthOf(file), rows, state});
}

void AddLeftovers(Report& report, const std::wstring& folder) {
    for (const std::wstring& name : support::FileNames(folder)) {
        const wchar_t* const kind = LeftoverKind(name);
        if (kind == nullptr) continue;
        report.Add({name, std::wstring(kind), std::wstring(), LengthOf(folder + L"\\" + name), kUnknown,
                    std::wstring(L"waits")});
    }
}

bool IsPackage(const std::wstring& name) {
    return support::UpperCase(name).starts_with(L"UPDATE_") && support::UpperCase(name).ends_with(L".ZIP");
}

// Whole or not at all: a copy that was cut short must not be taken for a package.
void CopyPackages(const std::wstring& from, const std::wstring& dataFolder) {
    if (!IsFolder(support::ToPath(from))) {
        throw support::Error(support::kErrorPathAccess, L"cannot read the folder " + from);
    }
    for (const std::wstring& name : support::FileNames(from)) {
        if (!IsPackage(name)) continue;
        const std::wstring target = dataFolder + L"\\" + name;
        const std::wstring part = target + L".part";
        const bool copied = CopyWholeFile(support::ToPath(from + L"\\" + name), support::ToPath(part)) &&
                            support::RenameFileQuietly(part, target);
        if (copied) continue;
        support::DeleteFileQuietly(part);
        throw support::Error(support::kErrorPathAccess, L"cannot copy " + name + L" to the data folder");
    }
}

std::wstring Joined(const std::vector<std::wstring>& messages) {
    std::wstring text;
    for (const std::wstring& message : messages) text += (text.empty() ? L"" : L"; ") + message;
    return text;
}

} // namespace

Report Status(object::Quorvex& object) {
    Report report("status", {"item", "kind", "date", "bytes", "rows", "state"});
    bool failed = false;
    for (const localdata::DataFile& dataFile : localdata::kDataFiles) {
        if (support::FileExists(localdata::DataFilePath(object.DataPath(), dataFile))) {
            AddDataFile(report, object, dataFile, failed);
        }
    }
    const bool data = !report.Rows().empty();
    AddLeftovers(report, object.DataPath());
    if (!data) {
        report.End(Outcome::Nothing, L"no data files in " + object.DataPath());
    } else if (failed) {
        report.End(Outcome::Failed, L"a data file cannot be read");
    }
    return report;
}

Report Check(object::Quorvex& object) {
    Report report("check", {"file", "fault"});
    std::size_t files = 0;
    for (const localdata::DataFile& dataFile : localdata::kDataFiles) {
        const std::wstring file = localdata::DataFilePath(object.DataPath(), dataFile);
        if (!support::FileExists(file)) continue;
        ++files;
        try {
            const jet::Database database = OpenData(file);
            for (const jet::Fault& fault : jet::CheckIntegrity(database)) {
                if (fault.isError) report.Add({std::wstring(dataFile.fileName), support::FromUtf8(fault.what)});
            }
        } catch (const jet::Error& error) {
            report.Add({std::wstring(dataFile.fileName), support::FromUtf8(error.what())});
        }
    }
    if (files == 0) {
        report.End(Outcome::Nothing, L"no data files in " + object.DataPath());
    } else if (!report.Rows().empty()) {
        report.End(Outcome::Failed, std::to_wstring(report.Rows().size()) + L" faults");
    } else {
        report.End(Outcome::Done, std::to_wstring(files) + L" files are sound");
    }
    return report;
}

Report UpdateData(object::Quorvex& object, ProgramPlatform& platform, const UpdateCommand& command) {
    Report report("update", {"applied", "full", "street", "postzon"}, Report::Layout::Tall);
    const std::wstring& folder = object.DataPath();
    if (!localdata::AreDataFilesInPlace(folder)) {
        report.End(Outcome::Failed, L"no data files in " + folder);
        return report;
    }
    if (command.from) CopyPackages(*command.from, folder);
    platform.updateChoice = command.download ? update::UpdateChoice::Download : update::UpdateChoice::ApplyFromFolder;
    update::UpdateRequest request;
    request.dataFolder = folder;
    request.internetIsAvailable = command.download;
    int applied = 0;
    const bool complete = update::Update(object, platform.UpdateSurroundings(), request, applied);
    object.platform.progress.HideProgress();
    const localdata::LastUpdateDates after = localdata::GetLastUpdateDates(object, folder);
    report.Add({static_cast<std::int64_t>(applied), after.full, after.street, after.postZon});
    const Outcome outcome = !complete ? Outcome::Failed : applied == 0 ? Outcome::Nothing : Outcome::Done;
    report.End(outcome, Joined(platform.messages));
    return report;
}

} // namespace quorvex::cli
