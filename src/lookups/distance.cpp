#include "lookups/distance.h"

#include "support/floating_point.h"
#include "support/log.h"

#include <cmath>

namespace quorvex::lookups {
namespace {

constexpr double kPi = 3.14159265358979; // 15 digits, intended: figures must agree with those of earlier releases
constexpr double kNauticalMilesPerDegree = 60;
constexpr double kMilesPerNauticalMile = 1.1515;
constexpr double kKilometresPerMile = 1.609344;
constexpr double kNauticalMilesPerMile = 0.8684;

} // namespace

double zDistance::DegToRad(double degrees) {
    return degrees * kPi / 180;
}

double zDistance::RadToDeg(double radians) {
    return radians * 180 / kPi;
}

double zDistance::ArcCos(double x) {
    if (x == 1) return 0;
    if (x == -1) return kPi;
    return kPi / 2 - std::atan(x / std::sqrt(1 - x * x));
}

double zDistance::Distance(double latitude1, double longitude1, double latitude2, double longitude2, wchar_t unit) {
    if (latitude1 == latitude2 && longitude1 == longitude2) return 0;
    const support::DefaultArithmetic precision;
    const double theta = longitude1 - longitude2;
    const double cosine = std::sin(DegToRad(latitude1)) * std::sin(DegToRad(latitude2)) +
                          std::cos(DegToRad(latitude1)) * std::cos(DegToRad(latitude2)) * std::cos(DegToRad(theta));
    const double miles = RadToDeg(ArcCos(cosine)) * kNauticalMilesPerDegree * kMilesPerNauticalMile;
    switch (unit) {
    case L'K':
    case L'k':
        return miles * kKilometresPerMile;
    case L'N':
    case L'n':
        return miles * kNauticalMilesPerMile;
    default:
        return miles;
    }
}

double GetDistance(const support::Platform& platform, double latitude1, double longitude1, double latitude2,
                   double longitude2) {
    const double kilometres = zDistance::Distance(latitude1, longitude1, latitude2, longitude2, L'K');
    if (std::isfinite(kilometres)) return kilometres;
    support::LogError(platform, support::Error(support::kErrorInvalidCall, L"Invalid procedure call or argument"));
    return 0;
}

} // namespace quorvex::lookups
