#pragma once

#include <string>
#include <string_view>

namespace quorvex::object {

// Adds <name>value</name>; the value as it is, entities are the caller's business.
inline void AppendItem(std::wstring& text, std::wstring_view name, std::wstring_view value) {
    text.append(1, L'<').append(name).append(1, L'>').append(value).append(L"</").append(name).append(1, L'>');
}

// The same as a line of a reply.
inline void AppendElement(std::wstring& text, std::wstring_view name, std::wstring_view value) {
    AppendItem(text, name, value);
    text.append(L"\r\n");
}

} // namespace quorvex::object
