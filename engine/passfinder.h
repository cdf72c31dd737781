// Pass finder: every pass of one satellite over a stretch of time, with its
// rise, culmination and set, found by stepping on the orbit's geometry.
#pragma once

#include "engine/satrec.h"
#include "engine/siterec.h"

namespace veloran {

// One pass over the site. A pass rises and sets at the geometric horizon
// (elevation 0); the minimum elevation only decides which passes are kept.
struct PassRec {
    double aosDay;            // epoch day of acquisition; the start of the span when already up
    double aosAzimuthDegs;    // azimuth at AOS, degrees from north through east
    double maxDay;            // epoch day of the highest elevation
    double maxElevationDegs;  // highest elevation of the pass (within the span), degrees
    double maxAzimuthDegs;    // azimuth at the maximum, degrees
    double losDay;            // epoch day of loss of signal; the end of the span when still up
    double losAzimuthDegs;    // azimuth at LOS, degrees
    Bool32 sunlitAtAOS, sunlitAtMax, sunlitAtLOS;  // outside the Earth's shadow at those instants
    Bool32 upAtStart;  // already in view at the start of the span (aosDay is the start)
    Bool32 upAtEnd;    // still in view at the end of the span (losDay is the end)
};

// Every pass of `rec` seen from `site` between the epoch days startDay and
// endDay whose highest elevation reaches minElevationDegs, in time order.
// Writes at most maxPasses records to `passes` and returns how many passes
// there are, which may be more than were written (call again with more room).
// `sun` is the Sun pseudo-satellite's record (its elements are read); without
// it every pass counts as not sunlit. Neither record is changed and nothing
// is shared between calls, so any number of threads may search at once.
// A decayed, unreadable or impossible element set gives 0 passes; so does an
// empty span. Passes shorter than about a thousandth of the orbital period
// that barely clear the horizon (well under 0.1 degree) may be passed over.
int FindPasses(const SatRec* rec, const SiteRec* site, const SatRec* sun, double startDay,
               double endDay, double minElevationDegs, PassRec* passes, int maxPasses);

// The same search, counting the position evaluations it needed; for the
// benchmarks, which report how the time splits.
int FindPassesCounted(const SatRec* rec, const SiteRec* site, const SatRec* sun, double startDay,
                      double endDay, double minElevationDegs, PassRec* passes, int maxPasses,
                      long* evaluations);

// Azimuth and elevation (degrees) of `rec` from `site` at `count` instants
// spread evenly from fromDay to toDay, both included: a pass's track for the
// sky plot. Returns how many were written, 0 for a null record or elements
// that give no position. Thread-safe like FindPasses.
int LookAnglesOver(const SatRec* rec, const SiteRec* site, double fromDay, double toDay, int count,
                   double* azimuthDegs, double* elevationDegs);

}  // namespace veloran
