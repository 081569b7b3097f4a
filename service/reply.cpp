#include "service/reply.h"

#include "support/text.h"

namespace quorvex::service {

Reply Refused(std::wstring_view errorMessage) {
    Reply reply;
    reply.free = true;
    reply.errorMessage = errorMessage;
    return reply;
}

std::wstring ItemElement(std::wstring_view name, std::wstring_view value) {
    std::wstring text = L"<";
    text.append(name).append(1, L'>').append(value);
    return text.append(L"</").append(name).append(1, L'>');
}

std::wstring Element(std::wstring_view name, std::wstring_view value) {
    return ItemElement(name, value).append(L"\r\n");
}

std::wstring ReplyText(const Reply& reply, const HeaderValues& header) {
    const std::wstring& credits = reply.creditsText.empty() ? header.creditsText : reply.creditsText;
    return Document(Element(L"confirm", reply.confirm ? L"Yes" : L"No") +
                    Element(L"credits_display_showbutton", header.creditsButton ? L"1" : L"0") +
                    Element(L"pop_message", reply.popMessage) + Element(L"lookuplistversion", header.listVersion) +
                    Element(L"credits_display_text", credits) + Element(L"accountadminpage", header.accountPage) +
                    Element(L"errormessage", reply.errorMessage) + reply.body);
}

std::wstring Document(std::wstring_view elements) {
    std::wstring text = L"<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<reply>\r\n";
    return text.append(support::ReplaceAll(elements, L"&", L"&amp;")).append(L"</reply>\r\n");
}

} // namespace quorvex::service
