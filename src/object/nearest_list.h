#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quorvex::object {

// The host's own points around a start point. Entry texts lead with their distance in a fixed width, so that sorting
// the texts sorts by distance. Until the list is sorted, position count is an empty text; before the first list there
// are no positions at all.
struct NearestList {
    double homeLongitude = 0;
    double homeLatitude = 0;
    double maximumDistance = 0; // kilometres
    std::int32_t capacity = 0;
    std::int32_t count = 0;
    bool sorted = false;               // the empty text is at position 0 and the points follow it
    std::vector<std::wstring> entries; // positions 0 to capacity
};

} // namespace quorvex::object
