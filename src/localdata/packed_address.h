#pragma once

#include "localdata/substitution.h"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex::localdata {

// The packed address field: "{premise!premise!...}common part" with fields cut by "|". All functions take
// plain (unscrambled) text, are pure, and take any text whatever: odd data gives odd fields, never a failure.

inline constexpr std::size_t kRecordFields = 14;
inline constexpr std::size_t kUnusedRecordField = 7; // of a record; no reader wants it
inline constexpr std::size_t kThoroughfareFields = 9;
inline constexpr std::size_t kStreetPartFields = 5; // of the common part; the address line ends with them

// organisation, line1, line2, line3, town, county, postcode, unused, country, delivery point suffix, number
// of households, small organisation, mailsort code, spare.
using RecordFields = std::array<std::wstring, kRecordFields>;
// line1, line2, line3, town, county, postcode, country, unused, mailsort code.
using ThoroughfareFields = std::array<std::wstring, kThoroughfareFields>;

// Parts of the text that was split.
struct PackedAddress {
    std::vector<std::wstring_view> premises; // in stored order; empty ones keep their places
    std::wstring_view common;                // what all premises share
};

// Text without an opening brace, or with one that is never closed, has no premises and is all common part.
PackedAddress SplitPackedAddress(std::wstring_view plain);

// The first five fields of the common part (all of it when it has fewer) with blanks between them, runs of
// blanks shortened.
std::wstring StreetPart(std::wstring_view common);
// The line of a premise in a list: its fields, then the street part.
std::wstring DisplayLine(std::wstring_view premise, std::wstring_view streetPart);

// The full record of a premise. Premise and common part together are brought to 14 fields: empty fields
// between them when they are fewer; when they are more, the common part loses fields from its front. Values
// have no outer blanks.
RecordFields AddressRecord(std::wstring_view premise, std::wstring_view common);

// The fields of a street's row; missing ones are empty, further ones are not read.
ThoroughfareFields ThoroughfareRecord(std::wstring_view plain);

// Each three blanks in a row made one in one pass, then each two in one pass: longer runs are shortened, not
// always to one.
std::wstring ShortenBlanks(std::wstring_view text);

} // namespace quorvex::localdata
