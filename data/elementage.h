// How old a satellite's element set is, and when that is too old to trust:
// two weeks, and one week for orbits whose perigee lies below 400 km, where
// drag makes predictions drift by minutes within days.
#pragma once

#include <cstdint>
#include <string>

#include "engine/satrec.h"

namespace veloran {

constexpr double kElementAgeLimitDays = 14.0;
constexpr double kLowOrbitElementAgeLimitDays = 7.0;
constexpr double kLowOrbitPerigeeKm = 400.0;  // height above the Earth's equatorial radius

// Days from the set's epoch to `secs` (seconds since 1904); negative for an
// epoch in the future. The record must have been loaded (epochDay set).
double ElementAgeDays(const SatRec& sat, uint32_t secs);

// The age past which the set of `sat` is too old: 7 days when its perigee
// lies below 400 km, else 14.
double ElementAgeLimitDays(const SatRec& sat);

// "the element set of AO-7 is 23 days old (epoch 2026-11-01); fetch current
// ones", or empty while the set is young enough.
std::string ElementAgeWarning(const SatRec& sat, uint32_t secs);

}  // namespace veloran
