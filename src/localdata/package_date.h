#pragma once

#include <string>
#include <string_view>

namespace quorvex::localdata {

// Dates of packages and data files are eight digits, year, month, day; they compare as texts.

// True when the text is such a date and that day exists.
bool IsPackageDate(std::wstring_view text);

// "31 Jan 2026", English months whatever the locale; any other text is returned unchanged.
std::wstring DisplayDate(const std::wstring& date);

} // namespace quorvex::localdata
