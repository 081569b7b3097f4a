#include "dialogs/lookup_lists.h"

#include "object/tag_reader.h"
#include "support/error.h"
#include "support/files.h"
#include "support/text.h"
#include "web/data_request.h"
#include "web/endpoints.h"

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
    const std::wstring incoming = path + L".new";
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
    hasFolder_ = !folder.empty();
    versionFile_ = folder + L"\\lookupVersion.xml";
    lookupFile_ = folder + L"\\lookup.xml";
    updateFile_ = folder + L"\\lookupUpdate.xml";
}

bool LookupLists::LoadLists() {
    const bool present = hasFolder_ ? support::FileExists(lookupFile_) : !unsavedList_.empty();
    if (!present) {
        const Download outcome = DownloadList();
        if (outcome == Download::NotReceived) ShowNotUpdated();
        if (outcome != Download::Stored) return false;
    }
    if (hasFolder_) return ReadStoredList();
    Parse(unsavedList_);
    return true;
}

bool LookupLists::ReadStoredList() {
    try {
        Parse(support::DecodeReply(support::ReadFileBytes(lookupFile_), {}));
        return true;
    } catch (const support::Error&) {
        ShowFileError(Access::Open, lookupFile_);
        return false;
    }
}

void LookupLists::Parse(std::wstring_view lookup) {
    postcodeAreas_ = ReadList(lookup, L"<A>", L"</A>");
    towns_ = ReadList(lookup, L"<T>", L"</T>");
    counties_ = ReadList(lookup, L"<O>", L"</O>");
}

LookupLists::Download LookupLists::DownloadList() {
    const std::wstring reply = web::GetDataFromHTTPRequest(object_, web::GetLookupsUrl(object_));
    if (reply.find(kVersionTag) == std::wstring::npos) return Download::NotReceived;
    if (!hasFolder_) {
        unsavedList_ = reply;
        return Download::Stored;
    }
    // The list goes first: should the version not be stored after it, the list is only offered once more.
    const std::wstring version = object::ReadBetweenTags(reply, kVersionTag, kVersionEndTag);
    if (!Store(lookupFile_, reply, Access::Write) ||
        !Store(versionFile_, VersionFileText(version) + L"\r\n", Access::Create)) {
        return Download::NotStored;
    }
    support::DeleteFileQuietly(updateFile_); // the announcement is served
    return Download::Stored;
}

bool LookupLists::UpdateList(bool quiet) {
    const Download outcome = DownloadList();
    if (!quiet && outcome == Download::NotReceived) ShowNotUpdated();
    if (!quiet && outcome == Download::Stored) {
        object_.platform.user.ShowMessage(L"The Lookup List has been updated...", support::kStyleInformation, kTitle);
    }
    return outcome == Download::Stored;
}

void LookupLists::ShowNotUpdated() const {
    object_.platform.user.ShowMessage(L"The Lookup List was not updated properly, please try later...",
                                      support::kStyleInformation, kTitle);
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

std::wstring LookupLists::GetLookupListVersion() const {
    if (!hasFolder_ || !support::FileExists(versionFile_)) return {};
    try {
        return object::ReadBetweenTags(support::DecodeReply(support::ReadFileBytes(versionFile_), {}), kVersionTag,
                                       kVersionEndTag);
    } catch (const support::Error&) {
        ShowFileError(Access::Open, versionFile_);
        return {};
    }
}

bool LookupLists::Store(const std::wstring& path, std::wstring_view text, Access access) {
    try {
        ReplaceFileBytes(path, support::ToUtf8(text));
        return true;
    } catch (const support::Error&) {
        ShowFileError(access, path);
        return false;
    }
}

void LookupLists::ShowFileError(Access access, const std::wstring& path) const {
    const wchar_t* verb = access == Access::Open ? L"open" : access == Access::Create ? L"create" : L"write to";
    std::wstring text = std::wstring(L"An error occured trying to ") + verb + L" file " + path +
                        L" which is needed for the Advanced Lookup functionality!";
    if (access == Access::Write) text += L"   Please allow access to this file.";
    object_.platform.user.ShowMessage(text, support::kStyleCritical, kTitle);
}

} // namespace quorvex::dialogs
