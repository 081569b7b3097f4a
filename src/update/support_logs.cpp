#include "update/support_logs.h"

#include "build_constants.h"
#include "localdata/status.h"
#include "support/error.h"
#include "support/files.h"
#include "support/log.h"
#include "support/process_state.h"
#include "support/text.h"

#include <exception>

namespace quorvex::update {
namespace {

std::vector<std::wstring> PresentLogs(const std::wstring& dataFolder) {
    std::vector<std::wstring> logs;
    for (const wchar_t* name : {L"\\Activity1.log", L"\\Error1.log"}) {
        if (support::FileExists(dataFolder + name))
            logs.push_back(support::FullPath(dataFolder + name)); // mail programs have a current directory of their own
    }
    return logs;
}

std::wstring HowToSendByHand(const mail::MailMessage& mail) {
    std::wstring text = std::wstring(L"Please send these files to ") + kSupportAddress + L":";
    for (const std::wstring& file : mail.attachments) text += L"\r\n" + file;
    return text;
}

void Send(const object::Quorvex& object, mail::Mailer& mailer, const std::wstring& dataFolder) {
    support::Platform& platform = object.platform;
    const std::wstring& title = support::Process().messageTitle;
    mail::MailMessage mail;
    mail.attachments = PresentLogs(dataFolder);
    if (mail.attachments.empty()) {
        platform.user.ShowMessage(L"There are no logs to send.", support::kStyleInformation, title);
        return;
    }
    mail.to = kSupportAddress;
    mail.subject = title + L": logs of the address data update";
    mail.body = localdata::GetDetailedSummary(object, dataFolder) + L"\r\n";
    mail.review = true;
    const mail::MailResult result = mailer.SendMail(mail);
    switch (result.status) {
    case mail::MailStatus::Sent:
        platform.user.ShowMessage(L"The logs were sent to support.", support::kStyleInformation, title);
        break;
    case mail::MailStatus::Shown:
        break; // the message is before the user's eyes
    case mail::MailStatus::NoProgram:
        platform.user.ShowMessage(L"No mail program was found.\r\n" + HowToSendByHand(mail), support::kStyleInformation,
                                  title);
        break;
    case mail::MailStatus::Failed:
        platform.user.ShowMessage(L"The mail program did not take the message: " + result.detail + L"\r\n" +
                                      HowToSendByHand(mail),
                                  support::kStyleCritical, title);
        break;
    }
}

} // namespace

void SendLogsToSupport(const object::Quorvex& object, mail::Mailer& mailer, const std::wstring& dataFolder) {
    try {
        Send(object, mailer, dataFolder);
    } catch (...) {
        support::LogError(object.platform, support::CurrentError());
    }
}

} // namespace quorvex::update
