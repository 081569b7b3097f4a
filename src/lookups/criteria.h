#pragma once

#include "web/endpoints.h"

#include <string>
#include <string_view>
#include <vector>

namespace quorvex::lookups {

// The rules of the advanced search's criteria, without a window.

// Numbers by which the field events name their field.
enum Field : int { kOrganisation = 1, kBuilding = 2, kStreet = 3, kTown = 4, kCounty = 5, kPostcodeArea = 6 };

// The summary with one more field: value as words, with "*" (starts with) and without (exact), under the field's label;
// soFar unchanged when the value holds no word. joiner stands between two phrases, each phrase ends in a line break.
std::wstring buildSummary(std::wstring_view value, const std::wstring& label, const std::wstring& soFar,
                          const std::wstring& joiner);

// What a look at all criteria shows.
struct CriteriaState {
    bool criteriaMissing = false; // organisation, building and street all empty
    bool placeMissing = false;    // town, county and postcode area all empty
    std::wstring summary;
    bool Complete() const { return !criteriaMissing && !placeMissing; }
};
CriteriaState CheckCriteria(const web::AdvancedCriteria& criteria);

// The message for a text field (1 to 3) that is left with too little in it; empty when the text is accepted. "*" does
// not count.
std::wstring TextFieldWarning(int field, std::wstring_view text);

// True for an empty text and for a text that stands between commas in the comma-joined list. Exact.
bool IsListValue(std::wstring_view text, std::wstring_view list);

// The place fields that a choice in one of them empties.
std::vector<int> OtherPlaceFields(int field);

} // namespace quorvex::lookups
