#include "service/reply.h"

#include "object/tag_writer.h"
#include "support/text.h"

namespace quorvex::service {
namespace {

std::wstring AmpersandsEscaped(std::wstring_view text) {
    return support::ReplaceAll(text, L"&", L"&amp;");
}

// What the operator or the caller wrote must not end an element.
std::wstring Escaped(std::wstring_view text) {
    return support::ReplaceAll(support::ReplaceAll(AmpersandsEscaped(text), L"<", L"&lt;"), L">", L"&gt;");
}

std::wstring Wrapped(std::wstring_view elements) {
    std::wstring text = L"<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<reply>\r\n";
    return text.append(elements).append(L"</reply>\r\n");
}

} // namespace

Reply Refused(std::wstring_view errorMessage) {
    Reply reply;
    reply.free = true;
    reply.errorMessage = errorMessage;
    return reply;
}

std::wstring ItemElement(std::wstring_view name, std::wstring_view value) {
    std::wstring text;
    object::AppendItem(text, name, value);
    return text;
}

std::wstring Element(std::wstring_view name, std::wstring_view value) {
    return ItemElement(name, value).append(L"\r\n");
}

std::wstring ReplyText(const Reply& reply, const HeaderValues& header) {
    const std::wstring& credits = reply.creditsText.empty() ? header.creditsText : reply.creditsText;
    return Wrapped(
        Element(L"confirm", reply.confirm ? L"Yes" : L"No") +
        Element(L"credits_display_showbutton", header.creditsButton ? L"1" : L"0") +
        Element(L"pop_message", Escaped(reply.popMessage)) + Element(L"lookuplistversion", header.listVersion) +
        Element(L"credits_display_text", Escaped(credits)) + Element(L"accountadminpage", Escaped(header.accountPage)) +
        Element(L"errormessage", Escaped(reply.errorMessage)) + AmpersandsEscaped(reply.body));
}

std::wstring Document(std::wstring_view elements) {
    return Wrapped(AmpersandsEscaped(elements));
}

} // namespace quorvex::service
