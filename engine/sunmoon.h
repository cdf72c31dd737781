// The Sun and the Moon as pseudo-satellites with built-in elements, the
// astronomical Sun position, and the day/night terminator of the world map.
#pragma once

#include <cstdint>

#include "engine/satrec.h"
#include "engine/siterec.h"

namespace veloran {

// Elements of the Sun's apparent orbit (epoch 1990-01-01), angles in radians.
void LoadSunKeps(KepRec* kep);
// Elements of the Moon for set 1..12 (one per calendar month); any other set
// number loads set 12. Angles in radians.
void LoadMoonKeps(KepRec* kep, int32_t setNumber);

// Sun position for Julian date jd, degrees: right ascension [0, 360),
// declination, radius vector (AU) and ecliptic longitude. With `apparent` set,
// nutation and aberration are applied.
void sunpos(double jd, bool apparent, double* rightAscension, double* declination,
            double* radiusVector, double* eclipticLongitude);

// Fills one entry per map row (mapHeight entries) with the column where the
// terminator crosses that row, -1 where it does not. No entry is ever 0.
void projillum(int16_t* table, int mapWidth, int mapHeight, double declinationDegs);

// Brings the Sun and then the Moon record up to date for the time value
// timeBaseSecs; the Sun's results serve the Moon's eclipse test. Null records
// are skipped.
void sunCalcTask(uint32_t timeBaseSecs, SatRec* sun, SatRec* moon, SiteRec* site);

}  // namespace veloran
