#include "lookup/tag_reader.h"

#include <algorithm>

namespace quorvex::lookup {

TagMatch FindBetweenTags(std::wstring_view text, std::wstring_view startTag, std::wstring_view endTag) {
    TagMatch match;
    if (text.empty()) return match;
    const std::size_t start = text.find(startTag);
    if (start == std::wstring_view::npos) return match;
    match.found = true;
    const std::wstring_view rest = text.substr(start + startTag.size());
    const std::size_t end = rest.find(endTag);
    if (end != std::wstring_view::npos) {
        match.value = rest.substr(0, end);
        match.consumed = start + startTag.size() + end + endTag.size();
    } else {
        match.value = rest;
        // One character short: the position of a missing marker counts as 0, and (0 - 1) is part of the sum.
        const std::size_t sum = start + startTag.size() + endTag.size();
        match.consumed = std::min(text.size(), sum == 0 ? 0 : sum - 1);
    }
    return match;
}

std::wstring GetBetweenTags(std::wstring_view attributeName, std::wstring& html, std::wstring_view toEndChr,
                            bool consume, std::wstring_view defaultValue) {
    const TagMatch match = FindBetweenTags(html, attributeName, toEndChr);
    std::wstring value(match.value.empty() ? defaultValue : match.value);
    if (consume) html.erase(0, match.consumed);
    return value;
}

std::wstring ReadBetweenTags(std::wstring_view html, std::wstring_view startTag, std::wstring_view endTag,
                             std::wstring_view defaultValue) {
    const TagMatch match = FindBetweenTags(html, startTag, endTag);
    return std::wstring(match.value.empty() ? defaultValue : match.value);
}

std::wstring ReadElement(std::wstring_view html, std::wstring_view name) {
    std::wstring startTag;
    startTag.reserve(name.size() + 2);
    startTag.append(1, L'<').append(name).append(1, L'>');
    std::wstring endTag;
    endTag.reserve(name.size() + 3);
    endTag.append(L"</").append(name).append(1, L'>');
    return ReadBetweenTags(html, startTag, endTag);
}

} // namespace quorvex::lookup
