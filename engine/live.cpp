// Live satellite calculations: the live values of one satellite and its next
// pass, found in a single forward search.

#include "engine/live.h"

#include <cmath>
#include <ctime>
#include <limits>

#include "engine/observer.h"
#include "engine/orbit.h"
#include "engine/timebase.h"
#include "engine/units.h"

namespace veloran {

namespace {

constexpr double kOneSecond = 1.0 / 86400.0;
constexpr double kLeoCoarseStep = 1.0 / 1440.0;  // one minute
constexpr double kHighCoarseStep = 1.0 / 72.0;   // twenty minutes
constexpr double kTenMinutes = 1.0 / 144.0;

int32_t WholePart(double x) {
    if (!(std::fabs(x) < 2147483647.0)) return 0;  // NaN or beyond a 32-bit count
    return static_cast<int32_t>(std::trunc(x));
}

// Where the satellite is at one instant of the search.
struct Fix {
    double meanAnomaly, trueAnomaly, radius;
    double X, Y, Z, VX, VY, VZ;
    double siteX, siteY, siteZ;
    double azimuth, elevation, range, rangeRate;
    double latitude, longitude, height;
};

void Propagate(SatRec* rec, double tau, double* meanAnomaly, double* trueAnomaly, double* radius,
               double* X, double* Y, double* Z, double* VX, double* VY, double* VZ) {
    KepRec* k = &rec->satKep;
    SolveKeplerD(tau, k, meanAnomaly, trueAnomaly, radius);
    GetSatPosition(k->epochDay, k->epochRAAN, k->epochArgPerigee, k->semiMajorAxis, k->inclination,
                   k->eccentricity, rec->satRAANPrecession, rec->perigeePrecession, tau,
                   *trueAnomaly, radius, X, Y, Z, VX, VY, VZ);
}

// Where the satellite is at tau. Range and the sub-satellite point cost as
// much as the rest together and most steps of a search need neither: they
// are computed only when `full` is set; the height always is.
Fix Locate(SatRec* rec, const SiteRec* site, double tau, double t0, double theta0, bool full) {
    Fix f{};
    Propagate(rec, tau, &f.meanAnomaly, &f.trueAnomaly, &f.radius, &f.X, &f.Y, &f.Z, &f.VX, &f.VY,
              &f.VZ);
    double siteVX = 0, siteVY = 0, rotation[3][3];
    GetSitePosition(site->siteLatRads, site->siteLongRads, site->siteAltitudeM / 1000.0, tau, t0,
                    theta0, &f.siteX, &f.siteY, &f.siteZ, &siteVX, &siteVY, rotation);
    GetNewBearings(rotation, f.X, f.Y, f.Z, f.siteX, f.siteY, f.siteZ, &f.azimuth, &f.elevation);
    if (full) {
        GetRange(f.siteX, f.siteY, f.siteZ, siteVX, siteVY, f.X, f.Y, f.Z, f.VX, f.VY, f.VZ,
                 &f.range, &f.rangeRate);
        GetNewSubSatPoint(f.X, f.Y, f.Z, tau, t0, theta0, &f.longitude, &f.latitude, &f.height);
    } else {
        f.height = std::sqrt(f.X * f.X + f.Y * f.Y + f.Z * f.Z) - kEarthRadiusKm;
    }
    return f;
}

void StoreLiveValues(SatRec* rec, SiteRec* site, const Fix& f, double tau) {
    const KepRec* k = &rec->satKep;
    site->SiteX = f.siteX;
    site->SiteY = f.siteY;
    site->SiteZ = f.siteZ;
    rec->currentOrbit =
        WholePart(k->referenceOrbit) + WholePart((tau - k->epochDay) * k->epochMeanMotion);
    rec->satVelocity = -f.rangeRate;
    rec->satOrbitRadius = f.radius;
    rec->trueAnomaly = f.trueAnomaly;
    rec->meanAnomaly = f.meanAnomaly;
    rec->satAltitude = f.height;
    rec->SatX = f.X;
    rec->SatY = f.Y;
    rec->SatZ = f.Z;
    rec->SatVX = f.VX;
    rec->SatVY = f.VY;
    rec->SatVZ = f.VZ;
    rec->subSatPtLatitudeRads = f.latitude;
    rec->subSatPtLongitudeRads = f.longitude;
    rec->subSatPtLatitudeDegs = f.latitude * kRadiansToDegrees;
    rec->subSatPtLongitudeDegs = f.longitude * kRadiansToDegrees;
    rec->azimuthRads = f.azimuth;
    rec->azimuthDegs = f.azimuth * kRadiansToDegrees;
    rec->satRange = f.range;
    rec->elevationRads = f.elevation;
    rec->elevationDegs = f.elevation * kRadiansToDegrees;
    if (f.elevation < 0.0) {
        rec->pathLoss = std::numeric_limits<double>::infinity();
    } else {
        // Free-space loss in dB for a range in km and a frequency in MHz.
        rec->pathLoss =
            20.0 * std::log10(rec->satRange) + 20.0 * std::log10(rec->currrentDownlink) + 32.44;
    }
    if (rec->hasBVals) {
        rec->squintAngleRads = CalcSquintAngle(rec, &site->sitePosition, &rec->squintSatPosition,
                                               &rec->boreSiteEndPosition, &rec->boreSiteDirection);
    }
    rec->surfaceDistance = 0;
    rec->passElevCounter = 0;
}

int LocalHour(uint32_t secs) {
    const std::time_t unixTime =
        static_cast<std::time_t>(static_cast<double>(secs) - kSecondsFrom1904To1970);
    std::tm local{};
    localtime_r(&unixTime, &local);
    return local.tm_hour;
}

}  // namespace

void SatelliteCalculationsV(double t, double span, SatRec* rec, SiteRec* site, Bool32 mainFlag,
                            uint32_t nowSecs, const SatRec* sunRec) {
    if (rec == nullptr || site == nullptr) return;
    KepRec* k = &rec->satKep;

    rec->secondsToAOS = kSecondsToAOSUnknown;
    rec->secondsToLOS = 0;
    rec->secondsToECL = 0;
    rec->secondsToApogee = 0;
    rec->passLength = 0;

    double coarseStep = kHighCoarseStep;
    k->isLEO = k->epochMeanMotion > 10.0;
    if (k->isLEO) coarseStep = kLeoCoarseStep;

    // The sidereal reference for every position of the search is taken at
    // the day value 0.5 * (t + span) + t. The angle is carried from that
    // reference day back to each instant at the sidereal rate, so the choice
    // costs well under an arc-second; kept exactly so.
    double t0 = 0, theta0 = 0;
    GetSidereal(0.5 * (t + span) + t, &t0, &theta0);

    const bool checkEclipse = sunRec != nullptr && rec->db_index != sunRec->db_index;
    const double sunEccentricity = sunRec != nullptr ? sunRec->satKep.eccentricity : 0.0;
    const double siteLatDegs = site->siteLatDegs;
    const double siteLongDegs = site->siteLongDegs;

    double previousElevation = 0, previousHeight = 0, previousLatitude = 0, previousLongitude = 0;
    bool rising = false;
    bool passEntered = false;
    int visibleSteps = 0;
    double step = kOneSecond;
    int n = 0;
    for (double tau = t; tau < t + span; tau += step) {
        ++n;
        if (n == 1) {
            const Fix before = Locate(rec, site, tau - kTenMinutes, t0, theta0, true);
            rec->oldSubSatPtLatitudeRads = before.latitude;
            rec->oldSubSatPtLongitudeRads = before.longitude;
        }

        // Only the main satellite's dead-spot check reads the sub-satellite
        // point after the first step.
        const Fix f = Locate(rec, site, tau, t0, theta0, n == 1 || mainFlag);
        const double E = f.elevation * kRadiansToDegrees;
        const double latitude = f.latitude * kRadiansToDegrees;
        const double longitude = f.longitude * kRadiansToDegrees;
        const uint32_t secondsFromNow = SecondsToUnsigned((tau - t) * 86400.0);

        if (n >= 2) {
            rising = previousElevation < E;
            const bool ascending = previousHeight < f.height;
            if (checkEclipse && rec->secondsToECL == 0 &&
                (EclipsedAt(sunEccentricity, f.radius, f.X, f.Y, f.Z, sunRec) != 0) !=
                    (rec->eclipsed != 0)) {
                rec->secondsToECL = secondsFromNow;
                rec->ECLTime = nowSecs + rec->secondsToECL;
            }
            if (n == 3) {
                rec->altitudeAscending = ascending;
                rec->elevationRising = rising;
            }
        }

        if (n == 1) {
            StoreLiveValues(rec, site, f, tau);
            // The main satellite's AOS flag belongs to the visibility check,
            // which sets and clears it at rise and set.
            if (!mainFlag) {
                rec->AOS = f.elevation >= 0.0;
                rec->eclipsed = sunRec != nullptr
                                    ? EclipsedAt(sunEccentricity, f.radius, f.X, f.Y, f.Z, sunRec)
                                    : 0;
            }
            if (f.elevation < 0.0) rec->maxElevation = -90.0;
        }
        // Elements that decode to nonsense (a zero or unreadable mean motion)
        // give no position at all; searching on would only burn the tick.
        if (std::isnan(f.elevation)) break;

        if (f.elevation < 0.0) {
            if (passEntered) {
                rec->secondsToLOS = secondsFromNow;
                rec->LOSTime = nowSecs + rec->secondsToLOS;
                rec->passLength = rec->secondsToLOS - rec->secondsToAOS;
                break;
            }
            // Once the elevation climbs, walk to the AOS second by second.
            step = (n <= 2 || rising) ? kOneSecond : coarseStep;
        } else {
            if (n % 12 == 0 && rec->passElevCounter < kMaxPassSamples) {
                const double meanAnomalyDegs = f.meanAnomaly * kRadiansToDegrees;
                rec->passMA[rec->passElevCounter] =
                    static_cast<uint8_t>(WholePart(meanAnomalyDegs * 256.0 / 360.0));
                rec->passElev[rec->passElevCounter] =
                    E > 0.0 ? static_cast<uint8_t>(WholePart(std::round(E))) : 0;
                ++rec->passElevCounter;
            }
            if (rec->secondsToAOS == kSecondsToAOSUnknown) {
                rec->secondsToAOS = secondsFromNow;
                rec->AOSTime = nowSecs + rec->secondsToAOS;
            }
            const double meanAnomalyDegs = f.meanAnomaly * kRadiansToDegrees;
            if (meanAnomalyDegs > 179.999 && meanAnomalyDegs < 181.0) {
                rec->secondsToApogee = secondsFromNow;
                rec->ApogeeTime = nowSecs + secondsFromNow;
            }
            if (E > rec->maxElevation) rec->maxElevation = E;
            if (rising) {
                rec->secondsToMAXE = secondsFromNow;
                rec->MAXETime = nowSecs + secondsFromNow;
            }
            ++visibleSteps;
            if (mainFlag && visibleSteps == 1 && n > 1 && !site->deadSpotCrossed) {
                // Does the ground track cross the site's meridian on the dead side?
                const double low = previousLongitude < longitude ? previousLongitude : longitude;
                const double high = previousLongitude < longitude ? longitude : previousLongitude;
                if (low < siteLongDegs && siteLongDegs < high) {
                    if (site->deadSpotState == 1 && previousLatitude < siteLatDegs &&
                        latitude < siteLatDegs)
                        site->deadSpotCrossed = 1;
                    else if (site->deadSpotState == 2 && previousLatitude > siteLatDegs &&
                             latitude > siteLatDegs)
                        site->deadSpotCrossed = 1;
                }
            }
            passEntered = true;
            step = kOneSecond;
        }

        previousElevation = E;
        previousHeight = f.height;
        previousLatitude = latitude;
        previousLongitude = longitude;
    }

    // A pass counts for the track list when it begins in an hour enabled for
    // this satellite and rises high enough.
    const uint32_t instant = (rec->AOS || rec->AOSTime == 0) ? nowSecs : rec->AOSTime;
    const int hour = LocalHour(instant);
    rec->satActivePass = rec->trackHours[hour] == '1' && rec->maxElevation >= site->siteMinElevDegs;
}

}  // namespace veloran
