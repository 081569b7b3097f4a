#pragma once

#include <string>
#include <string_view>

namespace quorvex::lookups {

// A postcode as typed, in the form in which the local tables hold it and the service is asked: shifted digits of a UK
// keyboard made digits, the blank before the last three characters put, kept or dropped by length. No upper-casing, no
// trimming.
std::wstring FormatPostCode(std::wstring_view postcode);

// The form in which local queries ask: formatted and upper-cased.
std::wstring LocalPostcode(std::wstring_view postcode);

// True for a text that, trimmed, upper-cased, without inner blanks and with shifted digits put right, has the shape of
// a UK postcode, or is ZZ99.
bool HasPostcodeShape(std::wstring_view text);

// "postcode, house" or "house, postcode": the end that has a postcode's shape is the postcode, else the text before the
// first comma. Commas within the house become blanks. Without a comma the whole text is the postcode. Both are trimmed.
struct PostcodeAndHouse {
    std::wstring postcode;
    std::wstring house;
};
PostcodeAndHouse SplitCommaForm(std::wstring_view text);

} // namespace quorvex::lookups
