#include "object/tag_reader.h"

#include <algorithm>
#include <array>

namespace quorvex::object {
namespace {

constexpr std::size_t kLongestName = 60;

} // namespace

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

void FindElements(std::wstring_view html, std::span<const std::wstring_view> names,
                  std::span<std::wstring_view> values) {
    std::ranges::fill(values, std::wstring_view());
    std::size_t missing = names.size();
    for (std::size_t at = html.find(L'<'); at != std::wstring_view::npos && missing > 0; at = html.find(L'<', at + 1)) {
        const std::wstring_view begun = html.substr(at + 1, kLongestName + 1);
        if (begun.starts_with(L'/')) continue;
        const std::wstring_view name = begun.substr(0, begun.find(L'>'));
        const auto found = std::ranges::lower_bound(names, name);
        if (name.size() == begun.size() || found == names.end() || *found != name) continue;
        std::wstring_view& value = values[static_cast<std::size_t>(found - names.begin())];
        if (value.data() != nullptr) continue; // the first one counts
        value = html.substr(at + name.size() + 2);
        std::size_t end = value.find(L"</");
        while (end != std::wstring_view::npos &&
               !(value.substr(end + 2).starts_with(name) && value.substr(end + 2 + name.size()).starts_with(L'>'))) {
            end = value.find(L"</", end + 2);
        }
        value = value.substr(0, end);
        --missing;
    }
}

std::wstring ReadElement(std::wstring_view html, std::wstring_view name) {
    // Built in place: a record has a dozen elements, a reply thousands of records.
    std::array<wchar_t, kLongestName + 3> tag; // "</name>"
    if (name.size() > kLongestName) {
        return ReadBetweenTags(html, L"<" + std::wstring(name) + L">", L"</" + std::wstring(name) + L">");
    }
    tag[0] = tag[1] = L'<';
    name.copy(tag.data() + 2, name.size());
    tag[name.size() + 2] = L'>';
    const std::wstring_view startTag(tag.data() + 1, name.size() + 2);
    const std::size_t start = html.find(startTag);
    if (start == std::wstring_view::npos) return {};
    tag[1] = L'/';
    const std::wstring_view rest = html.substr(start + startTag.size());
    return std::wstring(rest.substr(0, rest.find(std::wstring_view(tag.data(), name.size() + 3))));
}

} // namespace quorvex::object
