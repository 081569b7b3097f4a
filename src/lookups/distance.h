#pragma once

#include "support/platform.h"

namespace quorvex::lookups {

// Great-circle distances by the spherical law of cosines, WGS84 degrees.
class zDistance {
  public:
    // unit: 'K' kilometres, 'N' nautical miles, anything else statute miles; case ignored. A point to itself is 0; not
    // a number when rounding pushes the cosine above 1.
    static double Distance(double latitude1, double longitude1, double latitude2, double longitude2, wchar_t unit);
    static double ArcCos(double x);
    static double DegToRad(double degrees);
    static double RadToDeg(double radians);
};

// Kilometres. Where the arithmetic fails (points that practically coincide, or no numbers at all) it is logged and the
// distance is 0.
double GetDistance(const support::Platform& platform, double latitude1, double longitude1, double latitude2,
                   double longitude2);

} // namespace quorvex::lookups
