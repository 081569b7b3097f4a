#include "mail/mail.h"

#include "mail/mail_programs_win.h"
#include "support/error.h"
#include "support/files.h"
#include "support/text.h"

#include <exception>
#include <windows.h>

#include <objbase.h>

namespace quorvex::mail {
namespace {

using support::MailMessage;
using support::MailResult;
using support::MailStatus;

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
        } catch (const support::Error& error) {
            return {MailStatus::Failed, error.Description()};
        } catch (const std::exception& error) {
            return {MailStatus::Failed, support::FromUtf8(error.what())};
        }
    } catch (...) { // no memory left even for the reason
        return {MailStatus::Failed, {}};
    }
}

} // namespace quorvex::mail
