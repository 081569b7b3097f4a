#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace quorvex::object {

// The tag reader with which every XML text here is read: a plain scan, no XML parsing, entities untouched.

struct TagMatch {
    bool found = false;       // the start marker was there
    std::wstring_view value;  // what stands between the markers; the whole rest when the end marker is missing
    std::size_t consumed = 0; // characters that consumption cuts off the front of the text; 0 when not found
};

// First exact occurrence of startTag in text, and what follows it up to endTag. An empty startTag matches at the front.
// Consumption with a missing end marker cuts as if the end marker began one character before the value: intended, hosts
// have relied on it.
TagMatch FindBetweenTags(std::wstring_view text, std::wstring_view startTag, std::wstring_view endTag);

// The value between the markers, defaultValue when it is empty or not there. With consume, everything up to and
// including the end marker is cut off html.
std::wstring GetBetweenTags(std::wstring_view attributeName, std::wstring& html, std::wstring_view toEndChr = L"\"",
                            bool consume = false, std::wstring_view defaultValue = {});

// The same without consumption.
std::wstring ReadBetweenTags(std::wstring_view html, std::wstring_view startTag, std::wstring_view endTag,
                             std::wstring_view defaultValue = {});
// The elements of several names in one pass: what ReadElement gives for each, as a part of html. names are in ascending
// order; values has a place for each, null data where an element is not there.
void FindElements(std::wstring_view html, std::span<const std::wstring_view> names,
                  std::span<std::wstring_view> values);
// The element <name>...</name>.
std::wstring ReadElement(std::wstring_view html, std::wstring_view name);

} // namespace quorvex::object
