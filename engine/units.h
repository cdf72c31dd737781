// Units and physical constants shared by every layer: angles, distances and
// the 1904 epoch the program counts its seconds from.
#pragma once

namespace veloran {

constexpr double kPi = 3.141592653589793;
constexpr double kTwoPi = 6.283185307179586;
constexpr double kDegreesToRadians = 0.017453292519943295;  // pi / 180
constexpr double kRadiansToDegrees = 57.29577951308232;     // 180 / pi

// Equatorial radius of the Earth as the orbit model and the map use it, km.
constexpr double kEarthRadiusKm = 6378.16;
// Statute miles per kilometre, as the range columns and status lines convert.
constexpr double kMilesPerKilometre = 0.6214;

// Seconds between 1904-01-01 00:00:00 UTC and the Unix epoch.
constexpr double kSecondsFrom1904To1970 = 2082844800.0;

}  // namespace veloran
