#include "support/text.h"

#include <algorithm>

namespace quorvex::support {

std::wstring_view Trim(std::wstring_view text) {
    const std::size_t first = text.find_first_not_of(L' ');
    if (first == std::wstring_view::npos) return {};
    return text.substr(first, text.find_last_not_of(L' ') - first + 1);
}

std::wstring_view TrimRightControl(std::wstring_view text) {
    while (!text.empty() && text.back() < 33) text.remove_suffix(1);
    return text;
}

std::wstring RemoveControlChars(std::wstring_view text) {
    std::wstring kept;
    kept.reserve(text.size());
    std::copy_if(text.begin(), text.end(), std::back_inserter(kept), [](wchar_t c) { return c >= 32; });
    return kept;
}

std::wstring ReplaceAll(std::wstring_view text, std::wstring_view sought, std::wstring_view replacement) {
    if (sought.empty()) return std::wstring(text);
    std::wstring result;
    result.reserve(text.size());
    for (;;) {
        const std::size_t at = text.find(sought);
        result.append(text.substr(0, at));
        if (at == std::wstring_view::npos) return result;
        result.append(replacement);
        text.remove_prefix(at + sought.size());
    }
}

std::size_t CountOccurrences(std::wstring_view text, std::wstring_view sought) {
    if (sought.empty()) return 0;
    std::size_t count = 0;
    for (std::size_t at = text.find(sought); at != std::wstring_view::npos;
         at = text.find(sought, at + sought.size())) {
        ++count;
    }
    return count;
}

std::wstring PadRight(std::wstring_view text, std::size_t width, wchar_t padChar) {
    std::wstring result(text.substr(0, width));
    result.resize(width, padChar);
    return result;
}

std::wstring NextField(std::wstring& list, std::wstring_view separator, bool remove) {
    const std::size_t at = list.find(separator);
    std::wstring field = list.substr(0, at);
    if (remove) list.erase(0, at == std::wstring::npos ? at : at + separator.size());
    return field;
}

std::wstring CleanLogText(std::wstring_view text) {
    std::wstring line(TrimRightControl(text));
    for (wchar_t& c : line) {
        if (c == L'\r') {
            c = L',';
        } else if (c < 32) {
            c = L' ';
        }
    }
    std::wstring_view trimmed = Trim(line);
    if (!trimmed.empty() && trimmed.back() == L',') trimmed.remove_suffix(1);
    return std::wstring(trimmed);
}

} // namespace quorvex::support
