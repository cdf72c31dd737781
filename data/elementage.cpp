// The age of element sets and the warning when they are stale.

#include "data/elementage.h"

#include <cmath>
#include <cstdio>

#include "engine/orbit.h"
#include "engine/timebase.h"

namespace veloran {

double ElementAgeDays(const SatRec& sat, uint32_t secs) {
    return EpochTime(secs) - sat.satKep.epochDay;
}

double ElementAgeLimitDays(const SatRec& sat) {
    const double perigeeKm =
        sat.satKep.semiMajorAxis * (1.0 - sat.satKep.eccentricity) - kEarthRadiusKm;
    return perigeeKm < kLowOrbitPerigeeKm ? kLowOrbitElementAgeLimitDays : kElementAgeLimitDays;
}

std::string ElementAgeWarning(const SatRec& sat, uint32_t secs) {
    const double age = ElementAgeDays(sat, secs);
    if (!std::isfinite(age) || age <= ElementAgeLimitDays(sat)) return "";
    // The epoch as a date: secs moved back by the age.
    const double epochSecs = static_cast<double>(secs) - age * 86400.0;
    DateTimeRec d{};
    if (epochSecs > 0) QFSecondsToDate(static_cast<uint32_t>(epochSecs), &d);
    char text[sizeof sat.name + 128];
    std::snprintf(text, sizeof text,
                  "the element set of %s is %.1f days old (epoch %04d-%02d-%02d); fetch current "
                  "ones",
                  sat.name, age, d.year, d.month, d.day);
    return text;
}

}  // namespace veloran
