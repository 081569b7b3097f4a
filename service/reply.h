#pragma once

#include <string>
#include <string_view>

namespace quorvex::service {

// One answer to a lookup, before the account's part is put in.
struct Reply {
    bool confirm = false;
    bool free = false; // costs no credit
    std::wstring errorMessage;
    std::wstring popMessage;
    std::wstring creditsText; // stands in the place of the account's balance when not empty
    std::wstring body;        // elements behind the header
};

// An answer that is not confirmed and costs nothing.
Reply Refused(std::wstring_view errorMessage);

// "<name>value</name>" and a line break.
std::wstring Element(std::wstring_view name, std::wstring_view value);
// The same without the line break, for lists whose items are read one right behind the other.
std::wstring ItemElement(std::wstring_view name, std::wstring_view value);

struct HeaderValues {
    bool creditsButton = false;
    std::wstring creditsText;
    std::wstring listVersion;
    std::wstring accountPage;
};
// The whole text of a lookup's reply: the header that every reply carries, then the body.
std::wstring ReplyText(const Reply& reply, const HeaderValues& header);

// Elements wrapped as a document of their own. "&" is escaped, all else stands as it is: the readers know no other
// entity.
std::wstring Document(std::wstring_view elements);

} // namespace quorvex::service
