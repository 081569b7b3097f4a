#pragma once

#include "object/quorvex.h"

#include <string>

namespace quorvex::lookups {

// The PostZon record of a postcode (5 to 8 characters), a grid reference (9 or more) or, in local mode,
// "longitude|latitude".
bool GetPostZonAddressRecord(object::Quorvex& object, const std::wstring& key);
// The postcode nearest to a point among the local data's rows within about 10 km; empty when there is none.
std::wstring GetPostZonAddressLongLat(object::Quorvex& object, double longitude, double latitude);

} // namespace quorvex::lookups
