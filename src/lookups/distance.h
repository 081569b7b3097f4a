#pragma once

namespace quorvex::lookups {

// Great-circle distances by the spherical law of cosines, WGS84 degrees.
class zDistance {
  public:
    // unit: 'K' kilometres, 'N' nautical miles, anything else statute miles; case ignored. Not a number when rounding pushes
    // the cosine above 1.
    static double Distance(double latitude1, double longitude1, double latitude2, double longitude2, wchar_t unit);
    static double ArcCos(double x);
    static double DegToRad(double degrees);
    static double RadToDeg(double radians);
};

// Kilometres. Throws support::Error where the arithmetic fails.
double GetDistance(double latitude1, double longitude1, double latitude2, double longitude2);

} // namespace quorvex::lookups
