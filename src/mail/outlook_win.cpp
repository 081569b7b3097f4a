#include "mail/mail_programs_win.h"
#include "support/automation_object_win.h"

namespace quorvex::mail {

using support::AutomationObject;

MailStatus SendByOutlook(const MailMessage& message) {
    constexpr std::int32_t kMailItem = 0;
    const AutomationObject outlook = AutomationObject::Create(kOutlookProgId);
    const AutomationObject item = AutomationObject::From(outlook.Call(L"CreateItem", {kMailItem}));
    item.Put(L"Subject", message.subject);
    item.Put(L"Body", message.body);
    item.Put(L"To", message.to);
    const AutomationObject attachments = item.Object(L"Attachments");
    for (const std::wstring& file : message.attachments) attachments.Call(L"Add", {file});
    if (message.review) {
        item.Call(L"Display");
        return MailStatus::Shown;
    }
    item.Call(L"Send");
    return MailStatus::Sent;
}

} // namespace quorvex::mail
