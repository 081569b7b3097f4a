#include "mail/mail_programs_win.h"
#include "support/dispatch_win.h"
#include "support/text.h"

namespace quorvex::mail {
namespace {

using support::Dispatch;

// Rich text knows lines, not line ends.
void AppendLines(const Dispatch& richText, std::wstring text) {
    constexpr std::int32_t kOneLine = 1;
    while (!text.empty()) {
        richText.Call(L"AppendText", {support::NextField(text, L"\r\n", true)});
        richText.Call(L"AddNewLine", {kOneLine});
    }
}

} // namespace

MailStatus SendByNotes(const MailMessage& message) {
    constexpr std::int32_t kEmbedAttachment = 1454; // EMBED_ATTACHMENT
    const Dispatch session = Dispatch::Create(kNotesProgId);
    // An unnamed database, opened as the user's own mail.
    const Dispatch database = Dispatch::From(session.Call(L"GetDatabase", {L"", L""}));
    database.Call(L"OpenMail");
    const Dispatch document = Dispatch::From(database.Call(L"CreateDocument"));
    document.Call(L"ReplaceItemValue", {L"Form", L"Memo"});
    document.Call(L"ReplaceItemValue", {L"SendTo", message.to});
    document.Call(L"ReplaceItemValue", {L"Subject", message.subject});
    const Dispatch body = Dispatch::From(document.Call(L"CreateRichTextItem", {L"Body"}));
    AppendLines(body, message.body);
    for (const std::wstring& file : message.attachments) {
        body.Call(L"EmbedObject", {kEmbedAttachment, L"", file, L"EMBEDOBJECT"});
    }
    constexpr bool kAttachForm = false;
    document.Call(L"Send", {kAttachForm});
    return MailStatus::Sent;
}

} // namespace quorvex::mail
