#include "quorvex/data_commands.h"

#include "database/connection_string.h"
#include "database/jet/jet_translation.h"
#include "jet/check.h"
#include "jet/database.h"
#include "localdata/data_file_names.h"
#include "localdata/status.h"
#include "support/error.h"
#include "support/files.h"
#include "support/text.h"
#include "update/update_procedure.h"

#include <system_error>

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

void AddDataFile(Report& report, object::Quorvex& object, const localdata::DataFile& dataFile, bool& failed) {
    const std::wstring file = localdata::DataFilePath(object.DataPath(), dataFile);
    std::error_code missing;
    const auto bytes = std::filesystem::file_size(support::ToPath(file), missing);
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
    report.Add({std::wstring(dataFile.fileName), std::wstring(L"data"), date,
                missing ? kUnknown : static_cast<std::int64_t>(bytes), rows, state});
}

void AddLeftovers(Report& report, const std::wstring& folder) {
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(support::ToPath(folder), error)) {
        const std::wstring name = support::FromPath(entry.path().filename());
        const wchar_t* const kind = LeftoverKind(name);
        if (kind == nullptr) continue;
        const auto bytes = entry.file_size(error);
        report.Add({name, std::wstring(kind), std::wstring(), error ? kUnknown : static_cast<std::int64_t>(bytes),
                    kUnknown, std::wstring(L"waits")});
    }
}

bool IsPackage(const std::wstring& name) {
    return support::UpperCase(name).starts_with(L"UPDATE_") && support::UpperCase(name).ends_with(L".ZIP");
}

// Whole or not at all: a copy that was cut short must not be taken for a package.
void CopyPackages(const std::filesystem::path& from, const std::wstring& dataFolder) {
    std::error_code error;
    const std::filesystem::directory_iterator entries(from, error);
    if (error) throw support::Error(support::kErrorPathAccess, L"cannot read the folder " + support::FromPath(from));
    for (const auto& entry : entries) {
        const std::wstring name = support::FromPath(entry.path().filename());
        if (!IsPackage(name)) continue;
        const std::filesystem::path target = support::ToPath(dataFolder + L"\\" + name);
        std::filesystem::path part = target;
        part += ".part";
        std::filesystem::copy_file(entry.path(), part, std::filesystem::copy_options::overwrite_existing, error);
        if (!error) std::filesystem::rename(part, target, error);
        if (error) {
            std::error_code ignored;
            std::filesystem::remove(part, ignored);
            throw support::Error(support::kErrorPathAccess, L"cannot copy " + name + L" to the data folder: " +
                                                                support::FromUtf8(error.message()));
        }
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
