#pragma once

#include "object/quorvex.h"

#include <cstdint>
#include <string>

namespace quorvex::lookups {

// The host's own points, ranked by distance from a postcode: start, add, count (which sorts), read 1 to the count, end.
// What fails inside is logged and gives false or 0.

// False when the postcode is not found; an earlier list then stays as it was. boxSize is a half-width in degrees for
// the host's own pre-selection.
bool Nearest_StartList(object::Quorvex& object, const std::wstring& postcode, double maxDistanceKm, double& longitude,
                       double& latitude, double& boxSize);
// Points farther away than the maximum are dropped. False before the first list.
bool Nearest_AddToList(object::Quorvex& object, double longitude, double latitude, const std::wstring& text1,
                       const std::wstring& text2, const std::wstring& text3);
std::int32_t Nearest_GetNumberOfRecordsReturned(object::Quorvex& object);

struct NearestRecord {
    double distance = 0; // kilometres
    double longitude = 0;
    double latitude = 0;
    std::wstring text1;
    std::wstring text2;
    std::wstring text3;
};
// False for an index above the count; index 0 is the empty entry. False where no entry is.
bool Nearest_GetRecord(object::Quorvex& object, std::int32_t index, NearestRecord& record);
void Nearest_EndList(object::Quorvex& object);

} // namespace quorvex::lookups
