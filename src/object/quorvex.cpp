#include "object/quorvex.h"

#include "build_constants.h"
#include "support/process_state.h"
#include "support/text.h"

namespace quorvex::object {

void Quorvex::LMSetDataPath(const std::wstring& dataPath) {
    dataPath_ = dataPath;
    support::Process().dataPath = dataPath;
    NameLogUser();
}

void Quorvex::SetDataKey(const std::wstring& dataKey) {
    dataKey_ = support::RemoveControlChars(support::UpperCase(dataKey));
    NameLogUser();
}

void Quorvex::LMSetOverideComputerName(const std::wstring& computerName) {
    overrideComputerName_ = computerName;
    NameLogUser();
}

void Quorvex::NameLogUser() {
    platform.logUserName = InternalKey() && LocalMode() ? overrideComputerName_ : std::wstring();
}

const std::wstring& Quorvex::EnsureServerURL() {
    if (ServerURL.empty()) ServerURL = kDefaultServiceUrl;
    // A name alone, as people type it into a browser.
    if (ServerURL.find(L"://") == std::wstring::npos) ServerURL.insert(0, L"http://");
    return ServerURL;
}

std::wstring GetVersion() {
    return std::to_wstring(kVersionMajor) + L"." + std::to_wstring(kVersionMinor) + L"." +
           std::to_wstring(kVersionRevision);
}

} // namespace quorvex::object
