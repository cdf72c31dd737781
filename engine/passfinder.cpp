// Pass finder. The satellite's height above the site's horizon plane can
// change no faster than its speed allows and bend no more than gravity and
// the Earth's turning allow; with that bound each step goes as far as the
// satellite provably stays on the same side of the horizon, so it strides
// while the satellite is far below and closes in only near a rise or a set.
// Rise, set and culmination are then bracketed and refined.

#include "engine/passfinder.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "engine/observer.h"
#include "engine/orbit.h"

namespace veloran {

namespace {

constexpr double kSecondsPerDay = 86400.0;
constexpr double kSiderealDaySeconds = 86164.0905;
constexpr double kRadiansToDegrees = 57.29577951308232;
constexpr double kEarthRotationRate = kSiderealPerSolarDay * kTwoPi / kSecondsPerDay;  // rad/s
// Mean motion at which the element set's own decay date falls (CalcKepVals),
// rev/day; a set already past it describes an object that has come down.
constexpr double kDecayedMeanMotion = 16.666666;
// The curvature bound is physics plus the model's small drifts; the margin
// keeps the step safe when the drifts and the rounding add up.
constexpr double kCurvatureMargin = 1.25;
constexpr double kCrossingToleranceSeconds = 0.01;
constexpr double kMaximumToleranceSeconds = 0.05;
constexpr int kRefineLimit = 60;

// The satellite as seen from the site at one instant.
struct Look {
    double t;                // seconds from the start of the search
    double up;               // height above the site's horizon plane, km: the sign of the elevation
    double upRate;           // km/s
    double elevation;        // radians
    double elevationRate;    // rad/s
    double X, Y, Z, radius;  // satellite, Earth-centred, km
    double siteX, siteY, siteZ;  // site, Earth-centred, km
    double rotation[3][3];       // topocentric rotation (south, east, up rows)
    bool valid;
};

struct Finder {
    KepRec kep;  // a copy: propagation rewrites the decayed semi-major axis
    double nodeRate, perigeeRate;
    SiteEllipsoid ellipsoid;
    double longitude;  // site, west positive, radians
    double startDay;
    double t0, theta0;  // sidereal reference
    double curvature;   // bound on |d2 up / dt2|, km/s2
    long evaluations;
};

Look LookAt(Finder* f, double t) {
    Look l{};
    l.t = t;
    ++f->evaluations;
    const double day = f->startDay + t / kSecondsPerDay;
    KepRec* k = &f->kep;
    double M = 0, nu = 0, VX = 0, VY = 0, VZ = 0;
    SolveKeplerD(day, k, &M, &nu, &l.radius);
    GetSatPosition(k->epochDay, k->epochRAAN, k->epochArgPerigee, k->semiMajorAxis, k->inclination,
                   k->eccentricity, f->nodeRate, f->perigeeRate, day, nu, &l.radius, &l.X, &l.Y,
                   &l.Z, &VX, &VY, &VZ);
    double siteVX = 0, siteVY = 0;
    GetSitePositionFrom(&f->ellipsoid, f->longitude, day, f->t0, f->theta0, &l.siteX, &l.siteY,
                        &l.siteZ, &siteVX, &siteVY, l.rotation);
    double south = 0, east = 0;
    GetTopocentric(l.rotation, l.X, l.Y, l.Z, l.siteX, l.siteY, l.siteZ, &south, &east, &l.up);
    // The topocentric frame turns with the Earth, so what it sees move is the
    // satellite's velocity over the ground, v - w x r.
    const double gx = VX + kEarthRotationRate * l.Y;
    const double gy = VY - kEarthRotationRate * l.X;
    const double gz = VZ;
    const double(*R)[3] = l.rotation;
    const double southRate = R[0][0] * gx + R[0][1] * gy + R[0][2] * gz;
    const double eastRate = R[1][0] * gx + R[1][1] * gy;
    l.upRate = R[2][0] * gx + R[2][1] * gy + R[2][2] * gz;
    const double level = std::sqrt(south * south + east * east);
    l.elevation = std::atan(l.up / level);
    const double levelRate = (south * southRate + east * eastRate) / level;
    l.elevationRate = (l.upRate * level - l.up * levelRate) / (level * level + l.up * l.up);
    l.valid = std::isfinite(l.up) && std::isfinite(l.upRate) && std::isfinite(l.elevationRate);
    return l;
}

// How far (seconds) the satellite surely stays on its side of the horizon:
// the first instant at which a parabola with the steepest allowed bend could
// reach the plane.
double SafeStep(const Look& l, double curvature) {
    const double toward = l.up < 0 ? -l.upRate : l.upRate;
    return (toward + std::sqrt(l.upRate * l.upRate + 2.0 * curvature * std::fabs(l.up))) /
           curvature;
}

double UpValue(const Look& l) {
    return l.up;
}
double ElevationRateValue(const Look& l) {
    return l.elevationRate;
}

// Regula falsi with the Illinois tweak between a and b, where `value`
// changes sign. For a crossing (no `highest`) it narrows the bracket below
// the tolerance and returns its later end, so a rise or set is never
// reported before it happens. For a culmination it also stops once the
// estimate settles, and *highest collects the highest elevation seen.
Look Refine(Finder* f, Look a, Look b, double (*value)(const Look&), double toleranceSeconds,
            Look* highest) {
    double va = value(a), vb = value(b);
    Look c = b;
    double previous = b.t;
    int side = 0;
    for (int i = 0; i < kRefineLimit && b.t - a.t > toleranceSeconds; ++i) {
        double t = (a.t * vb - b.t * va) / (vb - va);
        if (!(t > a.t && t < b.t)) t = 0.5 * (a.t + b.t);
        c = LookAt(f, t);
        if (!c.valid) return c;
        const double vc = value(c);
        if (highest != nullptr && c.elevation > highest->elevation) *highest = c;
        if (vc == 0.0) break;
        if ((vc > 0) == (vb > 0)) {
            b = c;
            vb = vc;
            if (side == -1) va *= 0.5;
            side = -1;
        } else {
            a = c;
            va = vc;
            if (side == 1) vb *= 0.5;
            side = 1;
        }
        if (highest != nullptr && std::fabs(t - previous) < 0.25 * toleranceSeconds) break;
        previous = t;
    }
    return highest != nullptr ? c : b;
}

// The pass being followed.
struct OpenPass {
    Look aos;
    Look highest;
    bool upAtStart;
};

// Semi-major axis (km) the model gives at epoch day `day` (CalcKepVals and
// SolveKeplerD).
double SemiMajorAxisAt(const KepRec* k, double day) {
    const double motion = k->epochMeanMotion + 2.0 * (day - k->epochDay) * k->orbitalDecay;
    return 331.25 * std::exp(2.0 * std::log(1440.0 / motion) / 3.0);
}

struct SunState {
    const SatRec* sun;
    KepRec kep;
    std::unique_ptr<SatRec> position;  // the Sun where the eclipse test reads it
};

Bool32 Sunlit(SunState* s, const Finder* f, const Look& l) {
    if (s->sun == nullptr) return 0;
    if (!s->position) s->position = std::make_unique<SatRec>();
    SatRec* p = s->position.get();
    const double day = f->startDay + l.t / kSecondsPerDay;
    double r = 0, VX = 0, VY = 0, VZ = 0;
    SolveKeplerD(day, &s->kep, &p->meanAnomaly, &p->trueAnomaly, &r);
    GetSatPosition(s->kep.epochDay, s->kep.epochRAAN, s->kep.epochArgPerigee, s->kep.semiMajorAxis,
                   s->kep.inclination, s->kep.eccentricity, s->sun->satRAANPrecession,
                   s->sun->perigeePrecession, day, p->trueAnomaly, &r, &p->SatX, &p->SatY, &p->SatZ,
                   &VX, &VY, &VZ);
    return EclipsedAt(s->kep.eccentricity, l.radius, l.X, l.Y, l.Z, p) ? 0 : 1;
}

double AzimuthDegs(const Look& l) {
    double azimuth = 0, elevation = 0;
    GetNewBearings(l.rotation, l.X, l.Y, l.Z, l.siteX, l.siteY, l.siteZ, &azimuth, &elevation);
    return azimuth * kRadiansToDegrees;
}

void Prepare(const SatRec* rec, const SiteRec* site, double startDay, Finder* f) {
    f->kep = rec->satKep;
    f->nodeRate = rec->satRAANPrecession;
    f->perigeeRate = rec->perigeePrecession;
    GetSiteEllipsoid(site->siteLatRads, site->siteAltitudeM / 1000.0, &f->ellipsoid);
    f->longitude = site->siteLongRads;
    f->startDay = startDay;
    GetSidereal(startDay, &f->t0, &f->theta0);
}

}  // namespace

int LookAnglesOver(const SatRec* rec, const SiteRec* site, double fromDay, double toDay, int count,
                   double* azimuthDegs, double* elevationDegs) {
    if (rec == nullptr || site == nullptr || count < 1 || !(toDay >= fromDay)) return 0;
    Finder f{};
    Prepare(rec, site, fromDay, &f);
    const double span = (toDay - fromDay) * kSecondsPerDay;
    for (int i = 0; i < count; ++i) {
        const Look l = LookAt(&f, count == 1 ? 0.0 : span * i / (count - 1));
        if (!l.valid) return 0;
        azimuthDegs[i] = AzimuthDegs(l);
        elevationDegs[i] = l.elevation * kRadiansToDegrees;
    }
    return count;
}

int FindPassesCounted(const SatRec* rec, const SiteRec* site, const SatRec* sun, double startDay,
                      double endDay, double minElevationDegs, PassRec* passes, int maxPasses,
                      long* evaluations) {
    if (evaluations != nullptr) *evaluations = 0;
    if (rec == nullptr || site == nullptr || !(endDay > startDay) || !std::isfinite(startDay))
        return 0;
    Finder f{};
    Prepare(rec, site, startDay, &f);
    const KepRec* k = &f.kep;
    const double n = k->epochMeanMotion, e = k->eccentricity;
    // Nonsense elements give no orbit; a stationary object's zero mean
    // motion gives an infinite one.
    if (!(n > 0.0002 && n < 100.0) || !(e >= 0.0 && e < 1.0) || !std::isfinite(k->epochDay) ||
        !std::isfinite(k->orbitalDecay) || !std::isfinite(k->inclination) ||
        !std::isfinite(rec->satRAANPrecession) || !std::isfinite(rec->perigeePrecession))
        return 0;
    // The set's own decay date ends its passes.
    if (k->orbitalDecay != 0.0) {
        const double decayDay = k->epochDay + (kDecayedMeanMotion - n) / (10.0 * k->orbitalDecay);
        endDay = std::min(endDay, decayDay);
        if (!(endDay > startDay)) return 0;
    }
    const double aStart = SemiMajorAxisAt(k, startDay), aEnd = SemiMajorAxisAt(k, endDay);
    const double aLow = std::min(aStart, aEnd), aHigh = std::max(aStart, aEnd);
    const double perigee = aLow * (1.0 - e);
    if (!std::isfinite(aLow) || !std::isfinite(aHigh) || perigee < kEarthRadiusKm) return 0;

    // |d2 up/dt2| <= |a| + 2 w |v| + w^2 r, taken where each is largest, plus
    // the bend of the drifting node and perigee.
    const double perigeeSpeed = std::sqrt(kEarthGM * (1.0 + e) / perigee);
    const double drift =
        (std::fabs(f.nodeRate) + std::fabs(f.perigeeRate)) / kSecondsPerDay;  // rad/s
    f.curvature = kCurvatureMargin * (kEarthGM / (perigee * perigee) +
                                      2.0 * (kEarthRotationRate + drift) * perigeeSpeed +
                                      kEarthRotationRate * kEarthRotationRate * aHigh * (1.0 + e));

    // Step limits from the time the sky takes to change: the orbit's period,
    // or a sidereal day for anything slower.
    const double scale = std::min(kSecondsPerDay / n, kSiderealDaySeconds);
    const double shortest = std::clamp(scale / 1000.0, 1.0, 30.0);
    const double longestBelow = scale / 4.0;
    const double longestUp = scale / 40.0;  // several looks at every pass, to bracket its maximum

    SunState sunState{sun, sun != nullptr ? sun->satKep : KepRec{}, nullptr};
    const double span = (endDay - startDay) * kSecondsPerDay;
    int count = 0;
    OpenPass open{};

    const auto close = [&](const Look& los, bool upAtEnd) {
        const Look& best = open.highest;
        const double maxDegs = best.elevation * kRadiansToDegrees;
        if (maxDegs >= minElevationDegs) {
            if (count < maxPasses && passes != nullptr) {
                PassRec* p = &passes[count];
                p->aosDay = startDay + open.aos.t / kSecondsPerDay;
                p->aosAzimuthDegs = AzimuthDegs(open.aos);
                p->maxDay = startDay + best.t / kSecondsPerDay;
                p->maxElevationDegs = maxDegs;
                p->maxAzimuthDegs = AzimuthDegs(best);
                p->losDay = startDay + los.t / kSecondsPerDay;
                p->losAzimuthDegs = AzimuthDegs(los);
                p->sunlitAtAOS = Sunlit(&sunState, &f, open.aos);
                p->sunlitAtMax = Sunlit(&sunState, &f, best);
                p->sunlitAtLOS = Sunlit(&sunState, &f, los);
                p->upAtStart = open.upAtStart;
                p->upAtEnd = upAtEnd;
            }
            ++count;
        }
    };
    // Culminations between two looks inside a pass.
    const auto follow = [&](const Look& a, const Look& b) {
        if (b.elevation > open.highest.elevation) open.highest = b;
        if (a.elevationRate > 0.0 && b.elevationRate <= 0.0)
            Refine(&f, a, b, ElevationRateValue, kMaximumToleranceSeconds, &open.highest);
    };

    Look current = LookAt(&f, 0.0);
    if (!current.valid) {
        if (evaluations != nullptr) *evaluations = f.evaluations;
        return 0;
    }
    bool up = current.up >= 0.0;
    if (up) open = OpenPass{current, current, true};
    while (current.t < span) {
        const double step =
            std::clamp(SafeStep(current, f.curvature), shortest, up ? longestUp : longestBelow);
        const Look next = LookAt(&f, std::min(current.t + step, span));
        if (!next.valid) break;
        const bool nextUp = next.up >= 0.0;
        if (!up && nextUp) {
            const Look aos = Refine(&f, current, next, UpValue, kCrossingToleranceSeconds, nullptr);
            if (!aos.valid) break;
            open = OpenPass{aos, aos, false};
            follow(aos, next);
        } else if (up && !nextUp) {
            const Look los = Refine(&f, current, next, UpValue, kCrossingToleranceSeconds, nullptr);
            if (!los.valid) break;
            follow(current, los);
            close(los, false);
        } else if (up) {
            follow(current, next);
        }
        current = next;
        up = nextUp;
    }
    if (up && current.valid && current.t >= span) close(current, true);
    if (evaluations != nullptr) *evaluations = f.evaluations;
    return count;
}

int FindPasses(const SatRec* rec, const SiteRec* site, const SatRec* sun, double startDay,
               double endDay, double minElevationDegs, PassRec* passes, int maxPasses) {
    return FindPassesCounted(rec, site, sun, startDay, endDay, minElevationDegs, passes, maxPasses,
                             nullptr);
}

}  // namespace veloran
