#pragma once

#include "object/quorvex.h"

#include <cstdint>
#include <string>

namespace quorvex::lookups {

// The full record of the line handed out at a position (0 to 99), of an address identifier, or the street record of a
// postcode. True when the reply was confirmed; the record then stands in the Address_ properties.
bool GetFullAddressRecord(object::Quorvex& object, std::int32_t selectedListIndex);
bool GetFullAddressRecordByAddressID(object::Quorvex& object, const std::wstring& addressId);
bool GetThoroughfareAddressRecord(object::Quorvex& object, const std::wstring& postcode);

} // namespace quorvex::lookups
