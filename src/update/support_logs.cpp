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

std::wstring HowToSendByHand(const support::MailMessage& mail) {
    std::wstring text = std::wstring(L"Please send these files to ") + kSupportAddress + L":";
    for (const std::wstring& file : mail.attachments) text += L"\r\n" + file;
    return text;
}

void Send(support::Platform& platform, const std::wstring& dataFolder) {
    const std::wstring& title = support::Process().messageTitle;
    support::MailMessage mail;
    mail.attachments = PresentLogs(dataFolder);
    if (mail.attachments.empty()) {
        platform.ShowMessage(L"There are no logs to send.", support::kStyleInformation, title);
        return;
    }
    mail.to = kSupportAddress;
    mail.subject = title + L": logs of the address data update";
    mail.body = localdata::GetDetailedSummary(platform, dataFolder) + L"\r\n";
    mail.review = true;
    const support::MailResult result = platform.SendMail(mail);
    switch (result.status) {
    case support::MailStatus::Sent:
        platform.ShowMessage(L"The logs were sent to support.", support::kStyleInformation, title);
        break;
    case support::MailStatus::Shown:
        break; // the message is before the user's eyes
    case support::MailStatus::NoProgram:
        platform.ShowMessage(L"No mail program was found.\r\n" + HowToSendByHand(mail), support::kStyleInformation,
                             title);
        break;
    case support::MailStatus::Failed:
        platform.ShowMessage(L"The mail program did not take the message: " + result.detail + L"\r\n" +
                                 HowToSendByHand(mail),
                             support::kStyleCritical, title);
        break;
    }
}

} // namespace

void SendLogsToSupport(support::Platform& platform, const std::wstring& dataFolder) {
    try {
        Send(platform, dataFolder);
    } catch (const support::Error& error) {
        support::LogError(platform, error);
    } catch (const std::exception& error) {
        support::LogError(platform, support::Error(support::kErrorInternal, support::FromUtf8(error.what())));
    }
}

} // namespace quorvex::update
