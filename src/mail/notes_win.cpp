#include "mail/mail_programs_win.h"
#include "support/automation_object_win.h"
#include "support/text.h"

namespace quorvex::mail {
namespace {

using support::AutomationObject;

// Rich text knows lines, not line ends.
void AppendLines(const AutomationObject& richText, std::wstring text) {
    constexpr std::int32_t kOneLine = 1;
    while (!text.empty()) {
        richText.Call(L"AppendText", {support::NextField(text, L"\r\n", true)});
        richText.Call(L"AddNewLine", {kOneLine});
    }
}

} // namespace

MailStatus SendByNotes(const MailMessage& message) {
    constexpr std::int32_t kEmbedAttachment = 1454; // EMBED_ATTACHMENT
    const AutomationObject session = AutomationObject::Create(kNotesProgId);
    // An unnamed database, opened as the user's own mail.
    const AutomationObject database = AutomationObject::From(session.Call(L"GetDatabase", {L"", L""}));
    database.Call(L"OpenMail");
    const AutomationObject document = AutomationObject::From(database.Call(L"CreateDocument"));
    document.Call(L"ReplaceItemValue", {L"Form", L"Memo"});
    document.Call(L"ReplaceItemValue", {L"SendTo", message.to});
    document.Call(L"ReplaceItemValue", {L"Subject", message.subject});
    const AutomationObject body = AutomationObject::From(document.Call(L"CreateRichTextItem", {L"Body"}));
    AppendLines(body, message.body);
    for (const std::wstring& file : message.attachments) {
        body.Call(L"EmbedObject", {kEmbedAttachment, L"", file, L"EMBEDOBJECT"});
    }
    constexpr bool kAttachForm = false;
    document.Call(L"Send", {kAttachForm});
    return MailStatus::Sent;
}

} // namespace quorvex::mail
