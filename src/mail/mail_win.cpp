#include "mail/mail.h"

#include "mail/mail_programs_win.h"
#include "support/error.h"
#include "support/files.h"

#include <windows.h>

#include <objbase.h>

namespace quorvex::mail {
namespace {

bool IsInstalled(const wchar_t* progId) {
    CLSID classId{};
    return SUCCEEDED(CLSIDFromProgID(progId, &classId));
}

MailResult SendByInstalledProgram(const MailMessage& message) {
    for (const std::wstring& file : message.attachments) {
        if (!support::FileExists(file)) return {MailStatus::Failed, L"The file " + file + L" does not exist"};
    }
    if (IsInstalled(kOutlookProgId)) return {SendByOutlook(message), {}};
    if (IsInstalled(kNotesProgId)) return {SendByNotes(message), {}};
    return {};
}

} // namespace

MailResult Send(const MailMessage& message) noexcept {
    try {
        try {
            return SendByInstalledProgram(message);
        } catch (...) {
            return {MailStatus::Failed, support::CurrentError().Description()};
        }
    } catch (...) { // no memory left even for the reason
        return {MailStatus::Failed, {}};
    }
}

} // namespace quorvex::mail
