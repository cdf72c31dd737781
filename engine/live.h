// Live satellite calculations: one forward search that fills a satellite
// record's live values and the times and shape of its next pass.
#pragma once

#include <cstdint>

#include "engine/satrec.h"
#include "engine/siterec.h"

namespace veloran {

// Search window for satellites and for the Sun and the Moon, days.
constexpr double kSatelliteSearchSpan = 0.75;
constexpr double kSunMoonSearchSpan = 1.0 / 24.0;

// Brings `rec` up to date for epoch day t (the same instant as nowSecs) and
// searches up to `span` days ahead for its next AOS, maximum elevation, apogee
// in view and LOS. Refreshes site->SiteX/Y/Z and may set site->deadSpotCrossed
// (main satellite only). sunRec supplies the Sun for the eclipse test.
void SatelliteCalculationsV(double t, double span, SatRec* rec, SiteRec* site, Bool32 mainFlag,
                            uint32_t nowSecs, const SatRec* sunRec);

}  // namespace veloran
