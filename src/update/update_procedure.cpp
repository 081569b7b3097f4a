#include "update/update_procedure.h"

#include "localdata/data_file_names.h"
#include "localdata/package_date.h"
#include "localdata/status.h"
#include "support/error.h"
#include "support/file_lock.h"
#include "support/files.h"
#include "support/log.h"
#include "support/process_state.h"
#include "support/text.h"
#include "update/package_name.h"
#include "update/progress.h"
#include "update/support_logs.h"
#include "update/unzip.h"
#include "update/update_applier.h"
#include "update/update_list.h"

#include <algorithm>
#include <set>
#include <vector>

namespace quorvex::update {
namespace {

constexpr wchar_t kLockFile[] = L"\\Update.lock";

void SetStage(const std::wstring& stage) {
    support::Process().currentOperation = L"Update:" + stage;
}

// Counters and steps of one run.
class UpdateRun {
  public:
    UpdateRun(object::Quorvex& object, const Surroundings& surroundings, const UpdateRequest& request)
        : object_(object), platform_(object.platform), surroundings_(surroundings), request_(request) {}

    // False if the user cancelled.
    bool Choose();
    // Everything after the choice. Throws Error.
    void Work();

    int Applied() const { return applied_; }
    bool Complete() const { return finished_ && listed_ && failedDownloads_ == 0 && failed_ == 0; }
    void ShowAndLogFault(const support::Error& error);

  private:
    void DownloadPackages();
    void Download(const ListedPackage& package, std::size_t number, std::size_t total);
    bool HasListedSize(const ListedPackage& package, const std::wstring& file);
    void ApplyPackages();
    void ProcessPackage(Progress& progress, const PackageName& package);
    bool ApplyIfNewer(Progress& progress, const PackageName& package, Extraction extraction, long& recordCount);
    bool Apply(Progress& progress, const PackageName& package, long& recordCount);
    void Succeeded(const PackageName& package, long recordCount);
    void Failed(const PackageName& package, Extraction extraction);
    void Report();
    void Message(const std::wstring& text, int style);
    std::wstring InFolder(const std::wstring& name) const { return request_.dataFolder + L"\\" + name; }

    object::Quorvex& object_;
    support::Platform& platform_;
    const Surroundings& surroundings_;
    const UpdateRequest& request_;
    UpdateChoice choice_ = UpdateChoice::Cancel;
    bool finished_ = false;
    bool listed_ = true;
    int failedDownloads_ = 0;
    std::size_t found_ = 0;
    int applied_ = 0;
    int failed_ = 0;
    std::vector<std::wstring> kept_; // failed packages that stay for the next run
    std::set<wchar_t> waiting_;      // their kinds
};

bool UpdateRun::Choose() {
    SetStage(L"Stage 1");
    if (request_.unattended) return true;
    for (;;) {
        choice_ = surroundings_.windows.AskUpdateChoice(request_.caption + L":Update Postcode Address Data",
                                                        request_.dataFolder, request_.internetIsAvailable);
        if (choice_ == UpdateChoice::ShowDetails) {
            Message(localdata::GetDetailedSummary(object_, request_.dataFolder), support::kStyleInformation);
        } else if (choice_ == UpdateChoice::SendLogs) {
            SendLogsToSupport(object_, surroundings_.mailer, request_.dataFolder);
        } else {
            return choice_ != UpdateChoice::Cancel;
        }
    }
}

void UpdateRun::Work() {
    const auto lock = support::FileLock::TryAcquire(request_.dataFolder + kLockFile);
    if (!lock) {
        throw support::Error(support::kErrorPermissionDenied, L"Another update of this data is running");
    }
    SweepLeftovers(request_.dataFolder);
    if (choice_ == UpdateChoice::Download) DownloadPackages();
    ApplyPackages();
    Report();
    finished_ = true;
}

void UpdateRun::DownloadPackages() {
    SetStage(L"Stage 2");
    // Read under the lock: another run may have applied packages while the dialog was open.
    const localdata::LastUpdateDates dates = localdata::GetLastUpdateDates(object_, request_.dataFolder);
    support::LogActivity(platform_, L"Requesting upgrade data",
                         {L"F=" + dates.full, L"T=" + dates.street, L"Z=" + dates.postZon});
    const std::wstring list = GetUpdateList(object_, dates);
    if (list == kUpdateListFailed) {
        listed_ = false;
        Message(L"Cannot contact server, please check internet connection and try again!", support::kStyleCritical);
        return;
    }
    SetStage(L"Stage 3");
    const std::size_t total = support::CountOccurrences(list, L"http");
    std::size_t number = 0;
    for (const ListedPackage& package : ParseUpdateList(list)) {
        SetStage(L"Stage 4 Downloading file");
        Download(package, ++number, total);
        SetStage(L"Stage 5");
    }
}

void UpdateRun::Download(const ListedPackage& package, std::size_t number, std::size_t total) {
    support::LogActivity(platform_, L"Attempting download " + package.address);
    const std::wstring name = PackageFileName(package.address);
    const std::wstring caption =
        L"Downloading Update:" + name + L" " + std::to_wstring(number) + L"/" + std::to_wstring(total);
    // Only a package's name is safe to write into the data folder.
    if (!name.empty() && platform_.web.GetHttpFile(package.address, InFolder(name), caption) &&
        HasListedSize(package, InFolder(name))) {
        support::LogActivity(platform_, L"Attempting Complete " + package.address);
    } else {
        ++failedDownloads_;
        support::LogActivity(platform_, L"Download Cancel or Failed " + package.address);
    }
}

// A file of another size than listed is deleted.
bool UpdateRun::HasListedSize(const ListedPackage& package, const std::wstring& file) {
    const std::int32_t size = support::FileSize(file);
    if (package.size <= 0 || package.size == size) return true;
    support::DeleteFileQuietly(file);
    support::LogError(platform_,
                      support::Error(support::kErrorBadFile, L"The download has " + std::to_wstring(size) +
                                                                 L" bytes and is listed with another size"),
                      {}, {package.address});
    return false;
}

void UpdateRun::ApplyPackages() {
    SetStage(L"Stage 6");
    std::vector<std::wstring> names = support::ListFiles(request_.dataFolder, kPackagePrefix, kPackageEnding);
    // The order in which NTFS lists them. Other file systems have none, and an older package after a newer one would
    // put old records back.
    std::sort(names.begin(), names.end(), [](const std::wstring& a, const std::wstring& b) {
        return support::UpperCase(a) < support::UpperCase(b);
    });
    found_ = names.size();
    SetStage(L"Stage 7");
    Progress progress(platform_);
    progress.SetCaption(L"Apply changes");
    for (std::size_t i = 0; i < names.size(); ++i) {
        const PackageName package(names[i]);
        support::LogActivity(platform_, L"Processing file " + package.name);
        progress.SetCaption(L"Apply changes:" + package.name + L" " + std::to_wstring(i + 1) + L"/" +
                            std::to_wstring(found_));
        ProcessPackage(progress, package);
        SetStage(L"Stage 12");
    }
}

void UpdateRun::ProcessPackage(Progress& progress, const PackageName& package) {
    SetStage(L"Stage 10 unzip date file " + package.name);
    progress.SetText(L"Unziping file:" + package.name);
    const Extraction extraction = ExtractArchive(platform_, surroundings_.windows, L"Unziping file", L"Unziping file",
                                                 InFolder(package.name), request_.dataFolder, {}, true);
    long recordCount = 0;
    if (ApplyIfNewer(progress, package, extraction, recordCount)) {
        Succeeded(package, recordCount);
    } else {
        Failed(package, extraction);
    }
}

// True if the package was applied, or has nothing to change: its kind is unknown, the data of its kind is missing or
// was never updated, or is as new as the package.
bool UpdateRun::ApplyIfNewer(Progress& progress, const PackageName& package, Extraction extraction, long& recordCount) {
    SetStage(L"Stage 10b filter file date ");
    const localdata::DataDate last = localdata::ReadDataDate(object_, request_.dataFolder, package.kind);
    if (!last.readable) return false;
    if (last.date.empty() || package.date <= last.date) return true;
    SetStage(L"Stage 10c Apply data ");
    if (waiting_.contains(package.kind)) {
        // The data's date would move past the older package, which would then never be applied.
        support::LogError(
            platform_,
            support::Error(support::kErrorInvalidCall, L"An older package of this kind has not been applied yet"), {},
            {package.name});
        return false;
    }
    return extraction == Extraction::Done && Apply(progress, package, recordCount);
}

bool UpdateRun::Apply(Progress& progress, const PackageName& package, long& recordCount) {
    try {
        UpdateData(object_, progress, request_.dataFolder, InFolder(package.DatabaseName()), package.kind, package.date,
                   recordCount);
        return true;
    } catch (const support::Error& error) {
        support::LogError(platform_, error, {}, {package.name, localdata::FindDataFile(package.kind)->label});
        return false;
    }
}

void UpdateRun::Succeeded(const PackageName& package, long recordCount) {
    SetStage(L"Stage 10a kill unzip date file ");
    support::DeleteFileQuietly(InFolder(package.name));
    support::DeleteFileQuietly(InFolder(package.DatabaseName()));
    ++applied_;
    support::LogActivity(platform_, L"Applied:" + package.name,
                         {localdata::DisplayDate(package.date), std::to_wstring(recordCount) + L" records"});
}

// A package that no run can ever apply is deleted; any other stays for the next run, and the packages of its kind that
// follow wait for it.
void UpdateRun::Failed(const PackageName& package, Extraction extraction) {
    SetStage(L"Stage 10a kill unzip date file ");
    if (extraction == Extraction::Refused || !package.CanBeApplied()) {
        support::DeleteFileQuietly(InFolder(package.name));
    } else {
        kept_.push_back(package.name);
        waiting_.insert(package.kind);
    }
    ++failed_;
    support::LogActivity(platform_, L"Failed to apply " + package.name);
}

void UpdateRun::Report() {
    SetStage(L"Stage 13");
    if (failed_ > 0) {
        for (const std::wstring& name : kept_) support::LogActivity(platform_, L"Kept for the next run " + name);
        const std::wstring text = L"Failed to apply:" + std::to_wstring(failed_) + L", please try again later";
        support::LogActivity(platform_, text);
        Message(text + L" ", support::kStyleCritical);
    } else if (found_ == 0) {
        Message(L"No updates to apply!", support::kStyleInformation);
    } else {
        const std::wstring text = L"\r\nFiles applied:" + std::to_wstring(applied_) + L" ok \r\n";
        support::LogActivity(platform_, text);
        Message(text, support::kStyleInformation);
    }
}

void UpdateRun::ShowAndLogFault(const support::Error& error) {
    support::LogError(platform_, error);
    if (!request_.unattended) Message(L"The update has stopped: " + error.Description(), support::kStyleCritical);
}

// Nobody is there to close the message of an unattended run, so the logs have it.
void UpdateRun::Message(const std::wstring& text, int style) {
    if (!request_.unattended) {
        platform_.user.ShowMessage(text, style, support::Process().messageTitle);
    } else if (style == support::kStyleCritical) {
        support::LogError(platform_, support::Error(support::kErrorInternal, text), text);
    } else if (found_ == 0) {
        support::LogActivity(platform_, text); // the other outcomes are in the activity log in any case
    }
}

} // namespace

bool Update(object::Quorvex& object, const Surroundings& surroundings, const UpdateRequest& request,
            int& appliedCount) {
    UpdateRun run(object, surroundings, request);
    appliedCount = 0;
    try {
        if (run.Choose()) run.Work();
    } catch (...) {
        run.ShowAndLogFault(support::CurrentError());
    }
    appliedCount = run.Applied();
    return run.Complete();
}

bool LMUpdateData(object::Quorvex& object, const Surroundings& surroundings, bool internetIsAvailable,
                  const std::wstring& title) {
    if (!object.LocalMode()) {
        localdata::ShowDataPathMissing(object.platform);
        return false;
    }
    UpdateRequest request;
    request.dataFolder = object.DataPath();
    request.internetIsAvailable = internetIsAvailable;
    request.caption = title;
    int appliedCount = 0;
    return Update(object, surroundings, request, appliedCount);
}

} // namespace quorvex::update
