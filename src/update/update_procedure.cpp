#include "update/update_procedure.h"

#include "localdata/data_file_names.h"
#include "localdata/package_date.h"
#include "support/error.h"
#include "support/file_lock.h"
#include "support/files.h"
#include "support/log.h"
#include "support/process_state.h"
#include "support/text.h"
#include "update/progress.h"
#include "update/support_logs.h"
#include "update/unzip.h"
#include "update/update_applier.h"
#include "update/update_list.h"

#include <algorithm>
#include <exception>

namespace quorvex::update {
namespace {

using support::UpdateChoice;

// Positions in a package's file name, "UPDATE_F_20260131.zip".
constexpr std::size_t kKindPosition = 7;
constexpr std::size_t kDatePosition = 9;
constexpr std::size_t kDateLength = 8;

constexpr wchar_t kLockFile[] = L"\\Update.lock";

void SetStage(const std::wstring& stage) {
    support::Process().currentOperation = L"Update:" + stage;
}

// A file found in the data folder. The layout of its name is relied on; a shorter name has no kind or no date.
struct Package {
    explicit Package(const std::wstring& fileName) : name(fileName) {
        if (name.size() > kKindPosition) kind = name[kKindPosition];
        if (name.size() > kDatePosition) date = name.substr(kDatePosition, kDateLength);
    }

    std::wstring name;
    wchar_t kind = 0;
    std::wstring date;
};

// Counters and steps of one run.
class UpdateRun {
  public:
    UpdateRun(object::Quorvex& object, const UpdateRequest& request)
        : object_(object), platform_(object.platform), request_(request) {}

    // False when the user cancelled.
    bool Choose();
    // Everything behind the choice. Throws Error.
    void Work();

    int Applied() const { return applied_; }
    bool Complete() const { return finished_ && listed_ && failedDownloads_ == 0 && failed_ == 0; }
    void ShowAndLogFault(const support::Error& error);

  private:
    void DownloadPackages();
    void Download(const ListedPackage& package, std::size_t number, std::size_t total);
    void ApplyPackages();
    void ProcessPackage(Progress& progress, const Package& package);
    bool IsToBeApplied(const Package& package) const;
    bool Apply(Progress& progress, const Package& package, const std::wstring& updateFile, long& recordCount);
    void Report();
    void Message(const std::wstring& text, int style) {
        platform_.ShowMessage(text, style, support::Process().messageTitle);
    }
    std::wstring InFolder(const std::wstring& name) const { return request_.dataFolder + L"\\" + name; }

    object::Quorvex& object_;
    support::Platform& platform_;
    const UpdateRequest& request_;
    UpdateChoice choice_ = UpdateChoice::Cancel;
    bool finished_ = false;
    bool listed_ = true;
    int failedDownloads_ = 0;
    std::size_t found_ = 0;
    int applied_ = 0;
    int failed_ = 0;
};

bool UpdateRun::Choose() {
    SetStage(L"Stage 1");
    if (request_.unattended) return true;
    for (;;) {
        choice_ = platform_.AskUpdateChoice(request_.caption + L":Update Postcode Address Data", request_.dataFolder,
                                            request_.internetIsAvailable);
        if (choice_ == UpdateChoice::ShowDetails) {
            Message(localdata::GetDetailedSummary(platform_, request_.dataFolder), support::kStyleInformation);
        } else if (choice_ == UpdateChoice::SendLogs) {
            SendLogsToSupport(platform_, request_.dataFolder);
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
    if (choice_ == UpdateChoice::Download) DownloadPackages();
    ApplyPackages();
    Report();
    finished_ = true;
}

void UpdateRun::DownloadPackages() {
    SetStage(L"Stage 2");
    const localdata::LastUpdateDates& dates = request_.dates;
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
    // A name that is no package's could lead out of the data folder.
    if (!name.empty() && platform_.GetHttpFile(package.address, InFolder(name), caption)) {
        support::LogActivity(platform_, L"Attempting Complete " + package.address);
    } else {
        ++failedDownloads_;
        support::LogActivity(platform_, L"Download Cancel or Failed " + package.address);
    }
}

void UpdateRun::ApplyPackages() {
    SetStage(L"Stage 6");
    std::vector<std::wstring> names = support::ListFiles(request_.dataFolder, L"UPDATE_", L".ZIP");
    // As Windows' own file system lists them. Elsewhere the order is any, and an older package after a newer one would
    // put old records back.
    std::sort(names.begin(), names.end(), [](const std::wstring& a, const std::wstring& b) {
        return support::UpperCase(a) < support::UpperCase(b);
    });
    found_ = names.size();
    SetStage(L"Stage 7");
    Progress progress(platform_);
    progress.SetCaption(L"Apply changes");
    for (std::size_t i = 0; i < names.size(); ++i) {
        const Package package(names[i]);
        support::LogActivity(platform_, L"Processing file " + package.name);
        progress.SetCaption(L"Apply changes:" + package.name + L" " + std::to_wstring(i + 1) + L"/" +
                            std::to_wstring(found_));
        ProcessPackage(progress, package);
        SetStage(L"Stage 12");
    }
}

void UpdateRun::ProcessPackage(Progress& progress, const Package& package) {
    SetStage(L"Stage 10 unzip date file " + package.name);
    progress.SetText(L"Unziping file:" + package.name);
    const bool unpacked =
        Unzip(platform_, L"Unziping file", L"Unziping file", InFolder(package.name), request_.dataFolder, {}, true);
    SetStage(L"Stage 10a kill unzip date file ");
    support::DeleteFileQuietly(InFolder(package.name)); // gone from here on, whatever happens next
    SetStage(L"Stage 10b filter file date ");
    const bool wanted = IsToBeApplied(package);
    // Case matters, intended: a name in ".ZIP" stays as it is and is then no database. Packages are published in lower
    // case.
    const std::wstring updateFile = InFolder(support::ReplaceAll(package.name, L".zip", L".dat"));
    long recordCount = 0;
    if (wanted) SetStage(L"Stage 10c Apply data ");
    // What an earlier run left unpacked under this name is not what this package holds.
    if (wanted && !(unpacked && Apply(progress, package, updateFile, recordCount))) {
        ++failed_;
        support::LogActivity(platform_, L"Failed to apply " + package.name);
        return;
    }
    support::DeleteFileQuietly(updateFile);
    ++applied_;
    support::LogActivity(platform_, L"Applied:" + package.name,
                         {localdata::DisplayDate(package.date), std::to_wstring(recordCount) + L" records"});
}

bool UpdateRun::IsToBeApplied(const Package& package) const {
    const std::wstring* const last = request_.dates.Of(package.kind);
    return last != nullptr && !last->empty() && package.date > *last;
}

bool UpdateRun::Apply(Progress& progress, const Package& package, const std::wstring& updateFile, long& recordCount) {
    try {
        UpdateData(platform_, progress, request_.dataFolder, updateFile, package.kind, package.date, recordCount);
        return true;
    } catch (const support::Error& error) {
        support::LogError(platform_, error, {}, {package.name, localdata::FindDataFile(package.kind)->label});
        return false;
    }
}

void UpdateRun::Report() {
    SetStage(L"Stage 13");
    if (failed_ > 0) {
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
    Message(L"The update has stopped: " + error.Description(), support::kStyleCritical);
}

} // namespace

bool Update(object::Quorvex& object, const UpdateRequest& request, int& appliedCount) {
    UpdateRun run(object, request);
    appliedCount = 0;
    try {
        if (run.Choose()) run.Work();
    } catch (const support::Error& error) {
        run.ShowAndLogFault(error);
    } catch (const std::exception& error) {
        run.ShowAndLogFault(support::Error(support::kErrorInternal, support::FromUtf8(error.what())));
    }
    appliedCount = run.Applied();
    return run.Complete();
}

bool LMUpdateData(object::Quorvex& object, bool internetIsAvailable, const std::wstring& title) {
    if (!object.LocalMode()) {
        localdata::ShowDataPathMissing(object.platform);
        return false;
    }
    UpdateRequest request;
    request.dataFolder = object.DataPath();
    request.internetIsAvailable = internetIsAvailable;
    request.caption = title;
    request.dates = localdata::GetLastUpdateDates(object.platform, request.dataFolder);
    int appliedCount = 0;
    return Update(object, request, appliedCount);
}

} // namespace quorvex::update
