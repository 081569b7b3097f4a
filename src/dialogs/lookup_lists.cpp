#include "dialogs/lookup_lists.h"

#include "object/tag_reader.h"
#include "support/error.h"
#include "support/files.h"
#include "support/text.h"
#include "web/data_request.h"
#include "web/endpoints.h"

#include <chrono>
#include <map>
#include <mutex>

namespace quorvex::dialogs {
namespace {

constexpr std::wstring_view kVersionTag = L"<LookupListVersion>";
constexpr std::wstring_view kVersionEndTag = L"</LookupListVersion>";

std::wstring VersionFileText(const std::wstring& version) {
    return L"<?xml version=\"1.0\" ?><data><LookupListVersion>" + version + L"</LookupListVersion></data>";
}

// The list between two tags as it is kept: values trimmed, so that a value taken from a combo is found in it again.
std::wstring ReadList(std::wstring_view lookup, std::wstring_view startTag, std::wstring_view endTag) {
    const object::TagMatch match = object::FindBetweenTags(lookup, startTag, endTag);
    std::wstring list;
    for (const std::wstring& value : SplitList(match.value)) {
        if (!list.empty()) list += L',';
        list += value;
    }
    return list;
}

// Old contents stay until the new ones are complete. Throws Error.
void ReplaceFileBytes(const std::wstring& path, const std::string& bytes) {
    // A name of its own: another program may be writing the same list.
    const auto ticks = std::chrono::system_clock::now().time_since_epoch().count();
    const std::wstring incoming = path + L'.' + std::to_wstring(ticks) + L".new";
    try {
        support::WriteFileBytes(incoming, bytes);
    } catch (const support::Error&) {
        support::DeleteFileQuietly(incoming);
        throw;
    }
    if (!support::RenameFileQuietly(incoming, path)) {
        support::DeleteFileQuietly(incoming);
        throw support::Error(support::kErrorPathAccess, L"Cannot replace file " + path);
    }
}

// Lists that were received and could not be saved, by folder: they serve as long as this process runs.
class UnsavedLists {
  public:
    std::wstring Get(const std::wstring& folder) {
        const std::lock_guard lock(mutex_);
        const auto found = lists_.find(folder);
        return found == lists_.end() ? std::wstring() : found->second;
    }
    void Set(const std::wstring& folder, const std::wstring& list) {
        const std::lock_guard lock(mutex_);
        lists_[folder] = list;
    }

  private:
    std::mutex mutex_;
    std::map<std::wstring, std::wstring> lists_;
};

UnsavedLists& Unsaved() {
    static UnsavedLists lists;
    return lists;
}

} // namespace

std::vector<std::wstring> SplitList(std::wstring_view list) {
    std::vector<std::wstring> values;
    while (!list.empty()) {
        const std::size_t comma = list.find(L',');
        const std::wstring_view value = support::Trim(list.substr(0, comma));
        if (!value.empty()) values.emplace_back(value);
        list.remove_prefix(comma == std::wstring_view::npos ? list.size() : comma + 1);
    }
    return values;
}

const wchar_t* LookupLists::ConfirmText() {
    return L"This option will download a new 'Lookup List' for the Advanced search functionality.\r\n\r\n"
           L"This will only take a few seconds!  Continue?";
}

void LookupLists::SetPath(const std::wstring& folder) {
    folder_ = folder;
    hasFolder_ = !folder.empty();
    versionFile_ = folder + L"\\lookupVersion.xml";
    lookupFile_ = folder + L"\\lookup.xml";
    updateFile_ = folder + L"\\lookupUpdate.xml";
}

bool LookupLists::LoadLists() {
    if (UnsavedList().empty()) {
        if (hasFolder_ && support::FileExists(lookupFile_)) return ReadStoredList();
        if (!DownloadList()) {
            NoteNotUpdated();
            return false;
        }
    }
    const std::wstring unsaved = UnsavedList();
    if (unsaved.empty()) return ReadStoredList();
    Parse(unsaved);
    return true;
}

bool LookupLists::ReadStoredList() {
    try {
        Parse(support::DecodeReply(support::ReadFileBytes(lookupFile_), {}));
        return true;
    } catch (const support::Error&) {
        NoteFileError(Access::Open, lookupFile_);
        return false;
    }
}

void LookupLists::Parse(std::wstring_view lookup) {
    postcodeAreas_ = ReadList(lookup, L"<A>", L"</A>");
    towns_ = ReadList(lookup, L"<T>", L"</T>");
    counties_ = ReadList(lookup, L"<O>", L"</O>");
}

std::wstring LookupLists::UnsavedList() const {
    return hasFolder_ ? Unsaved().Get(folder_) : unsavedHere_;
}

// False when no list was received.
bool LookupLists::DownloadList() {
    const std::wstring reply = web::GetDataFromHTTPRequest(object_, web::GetLookupsUrl(object_));
    if (reply.find(kVersionTag) == std::wstring::npos) return false;
    // The list goes first: should the version not be stored after it, the list is only offered once more.
    const std::wstring version = object::ReadBetweenTags(reply, kVersionTag, kVersionEndTag);
    const bool stored = hasFolder_ && Store(lookupFile_, reply, Access::Write) &&
                        Store(versionFile_, VersionFileText(version) + L"\r\n", Access::Create);
    if (hasFolder_) {
        Unsaved().Set(folder_, stored ? std::wstring() : reply);
    } else {
        unsavedHere_ = reply;
    }
    if (stored) support::DeleteFileQuietly(updateFile_); // the announcement is served
    return true;
}

bool LookupLists::UpdateList(bool quiet) {
    const std::size_t errors = notes_.size();
    const bool received = DownloadList();
    if (quiet) return received;
    if (!received) {
        NoteNotUpdated();
    } else if (notes_.size() == errors) {
        notes_.push_back({L"The Lookup List has been updated...", support::kStyleInformation});
    }
    return received;
}

void LookupLists::NoteNotUpdated() {
    notes_.push_back({L"The Lookup List was not updated properly, please try later...", support::kStyleInformation});
}

bool LookupLists::CheckForAddressUpdates(const std::wstring& announcedVersion) {
    if (checkDone_ || announcedVersion.empty() || !hasFolder_) return false;
    const bool differs = GetLookupListVersion() != announcedVersion;
    if (differs) Store(updateFile_, VersionFileText(announcedVersion) + L"\r\n", Access::Create);
    checkDone_ = true;
    return differs;
}

bool LookupLists::UpdateAnnounced() const {
    return hasFolder_ && support::FileExists(updateFile_);
}

std::wstring LookupLists::GetLookupListVersion() {
    if (const std::wstring unsaved = UnsavedList(); hasFolder_ && !unsaved.empty())
        return object::ReadBetweenTags(unsaved, kVersionTag, kVersionEndTag);
    if (!hasFolder_ || !support::FileExists(versionFile_)) return {};
    try {
        return object::ReadBetweenTags(support::DecodeReply(support::ReadFileBytes(versionFile_), {}), kVersionTag,
                                       kVersionEndTag);
    } catch (const support::Error&) {
        NoteFileError(Access::Open, versionFile_);
        return {};
    }
}

bool LookupLists::Store(const std::wstring& path, std::wstring_view text, Access access) {
    try {
        ReplaceFileBytes(path, support::ToUtf8(text));
        return true;
    } catch (const support::Error&) {
        NoteFileError(access, path);
        return false;
    }
}

void LookupLists::NoteFileError(Access access, const std::wstring& path) {
    const wchar_t* verb = access == Access::Open ? L"open" : access == Access::Create ? L"create" : L"write to";
    std::wstring text = std::wstring(L"An error occured trying to ") + verb + L" file " + path +
                        L" which is needed for the Advanced Lookup functionality!";
    if (access == Access::Write) text += L"   Please allow access to this file.";
    notes_.push_back({text, support::kStyleCritical});
}

} // namespace quorvex::dialogs
