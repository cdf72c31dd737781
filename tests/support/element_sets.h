// Synthetic two-line element sets with the correct column layout, and
// records loaded from them the way the program loads its element-set file.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "engine/satrec.h"
#include "engine/siterec.h"

namespace veloran::testing {

struct Elements {
    int catalog = 99001;
    int epochYear = 26;             // two-digit
    double epochDayOfYear = 320.5;  // 1.0 = 1 January 00:00 UTC
    double decay = 0.0;        // first derivative of mean motion, rev/day^2 (signed as written)
    double inclination = 0.0;  // degrees
    double raan = 0.0;         // degrees
    double eccentricity = 0.0;
    double argPerigee = 0.0;   // degrees
    double meanAnomaly = 0.0;  // degrees
    double meanMotion = 15.0;  // rev/day
    int revolution = 1000;
};

// Line 1 and line 2, each 69 characters plus "\n", with valid check digits.
std::string LineOne(const Elements& e);
std::string LineTwo(const Elements& e);
// A name line, line 1 and line 2.
std::string ElementSetText(const std::string& name, const Elements& e);

// A record filled as the loader fills it: reset, decoded, angles in radians,
// derived constants for `site`, every hour enabled.
std::unique_ptr<SatRec> LoadRecord(const std::string& name, const Elements& e, const SiteRec* site);

// The same from a real set's line 1 and line 2 (each ending in "\n").
std::unique_ptr<SatRec> LoadRecordLines(const std::string& name, const std::string& lineOne,
                                        const std::string& lineTwo, const SiteRec* site);

// The Sun pseudo-satellite, ready for the eclipse test.
std::unique_ptr<SatRec> LoadSun(const SiteRec* site);

// A site record for latitude (north +), longitude (WEST +) and height, with
// its derived fields computed.
SiteRec MakeSite(double latitudeDegs, double longitudeWestDegs, double altitudeM);

// Seconds since 1904 of a UTC calendar instant.
uint32_t Seconds(int year, int month, int day, int hour = 0, int minute = 0, int second = 0);

}  // namespace veloran::testing
