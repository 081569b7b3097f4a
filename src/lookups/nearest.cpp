#include "lookups/nearest.h"

#include "lookups/distance.h"
#include "lookups/guarded.h"
#include "lookups/postzon.h"
#include "support/error.h"
#include "support/quick_sort.h"
#include "support/text.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace quorvex::lookups {
namespace {

constexpr double kDegreesPerKilometre = 0.0091;
constexpr std::int32_t kCapacityStep = 1000;
constexpr std::size_t kDistanceDigits = 7;

// "00000.00": five integer digits with leading zeros, two decimals. Longer figures take more digits and then sort out
// of numeric order: intended.
std::wstring DistanceText(double kilometres) {
    // Halves round away from zero as hosts know it from their own formats; 2.675 is stored below the half and still
    // goes up.
    const double hundredths = std::floor(kilometres * 100 * (1 + 1e-15) + 0.5);
    std::wstring text = support::NumberText(hundredths);
    if (text.size() < kDistanceDigits) text.insert(0, kDistanceDigits - text.size(), L'0');
    text.insert(text.size() - 2, 1, L'.');
    return text;
}

std::size_t Position(const object::NearestList& list, std::int32_t index) {
    if (index < 0 || static_cast<std::size_t>(index) >= list.entries.size()) {
        throw support::Error(support::kErrorSubscript, L"Subscript out of range");
    }
    return static_cast<std::size_t>(index);
}

} // namespace

bool Nearest_StartList(object::Quorvex& object, const std::wstring& postcode, double maxDistanceKm, double& longitude,
                       double& latitude, double& boxSize) {
    if (!GetPostZonAddressRecord(object, postcode)) return false;
    return Guarded(object, false, [&] {
        const double homeLongitude = support::ParseNumber(object.PostZon_Longitude_wgs84);
        const double homeLatitude = support::ParseNumber(object.PostZon_Latitude_wgs84);
        object::NearestList& list = object.nearest;
        list.homeLongitude = longitude = homeLongitude;
        list.homeLatitude = latitude = homeLatitude;
        boxSize = maxDistanceKm * kDegreesPerKilometre;
        list.maximumDistance = maxDistanceKm;
        list.count = 0;
        list.sorted = false;
        list.capacity = kCapacityStep;
        list.entries.assign(static_cast<std::size_t>(kCapacityStep) + 1, {});
        return true;
    });
}

bool Nearest_AddToList(object::Quorvex& object, double longitude, double latitude, const std::wstring& text1,
                       const std::wstring& text2, const std::wstring& text3) {
    return Guarded(object, false, [&] {
        object::NearestList& list = object.nearest;
        if (list.entries.empty()) throw support::Error(support::kErrorSubscript, L"No list was started");
        // Longitudes stand where latitudes are read and the other way round: intended, lists are ranked by this figure.
        const double kilometres =
            GetDistance(object.platform, list.homeLongitude, list.homeLatitude, longitude, latitude);
        if (kilometres > list.maximumDistance) return true;
        if (list.sorted) { // counting put the empty entry first: it goes back after the points
            const auto first = list.entries.begin();
            std::rotate(first, first + 1, first + list.count + 1);
            list.sorted = false;
        }
        list.entries[Position(list, list.count)] = DistanceText(kilometres) + L"|" + text1 + L"|" + text2 + L"|" +
                                                   text3 + L"|" + support::NumberText(longitude) + L"|" +
                                                   support::NumberText(latitude);
        if (++list.count > list.capacity) list.capacity += kCapacityStep;
        const std::size_t positions = static_cast<std::size_t>(list.capacity) + 1;
        if (list.entries.size() < positions) list.entries.resize(positions);
        return true;
    });
}

std::int32_t Nearest_GetNumberOfRecordsReturned(object::Quorvex& object) {
    return Guarded(object, std::int32_t{0}, [&] {
        object::NearestList& list = object.nearest;
        // The empty entry at position count takes part and sorts to position 0, the nearest point to 1.
        if (!list.entries.empty()) {
            support::QuickSort(list.entries, 0, static_cast<std::ptrdiff_t>(Position(list, list.count)));
            list.sorted = true;
        }
        return list.count;
    });
}

bool Nearest_GetRecord(object::Quorvex& object, std::int32_t index, NearestRecord& record) {
    const object::NearestList& list = object.nearest;
    if (index > list.count) return false;
    return Guarded(object, false, [&] {
        std::wstring entry = list.entries[Position(list, index)] + L"|";
        const auto piece = [&entry] { return support::NextField(entry, L"|", true); };
        record.distance = support::LeadingNumber(piece());
        record.text1 = piece();
        record.text2 = piece();
        record.text3 = piece();
        record.longitude = support::LeadingNumber(piece());
        record.latitude = support::LeadingNumber(piece());
        return true;
    });
}

void Nearest_EndList(object::Quorvex& object) {
    object.nearest.entries.assign(1, {});
    object.nearest.entries.shrink_to_fit();
}

} // namespace quorvex::lookups
