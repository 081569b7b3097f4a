#include "lookup/quorvex.h"

#include "build_constants.h"
#include "support/process_state.h"
#include "support/text.h"

namespace quorvex::lookup {

void Quorvex::LMSetDataPath(const std::wstring& dataPath) {
    dataPath_ = dataPath;
    support::Process().dataPath = dataPath;
}

void Quorvex::SetDataKey(const std::wstring& dataKey) {
    dataKey_ = support::RemoveControlChars(support::UpperCase(dataKey));
}

std::wstring Quorvex::LocalUserName() const {
    return overrideComputerName_.empty() ? platform.ComputerName() : overrideComputerName_;
}

const std::wstring& Quorvex::EnsureServerURL() {
    if (ServerURL.empty()) ServerURL = kDefaultServiceUrl;
    return ServerURL;
}

std::wstring GetVersion() {
    return std::to_wstring(kVersionMajor) + L"." + std::to_wstring(kVersionMinor) + L"." +
           std::to_wstring(kVersionRevision);
}

} // namespace quorvex::lookup
