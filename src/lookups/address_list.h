#pragma once

#include "object/quorvex.h"
#include "web/endpoints.h"

#include <string>

namespace quorvex::lookups {

// All addresses at a postcode, or at "postcode, house". The object then holds the list and RecordCount; true when the
// reply was confirmed. Nothing found is no failure.
bool GetFullAddressToList(object::Quorvex& object, const std::wstring& postcode);
// Web only: the list by organisation, house, street and place; headings and lines.
bool GetFullAddressToListAdv(object::Quorvex& object, const web::AdvancedCriteria& criteria);

// The next display line of a postcode search, at most 101 of them; empty when the list is used up. Its identifier is
// kept for GetFullAddressRecord.
std::wstring GetFullAddressLineForSelection(object::Quorvex& object);

// The next item of an advanced search.
struct AdvancedLine {
    std::wstring text;
    std::wstring id;       // empty for a heading
    std::wstring lineType; // "h" heading, "l" line, empty when the list is used up
};
AdvancedLine GetFullAddressLineForSelectionAdv(object::Quorvex& object);

} // namespace quorvex::lookups
