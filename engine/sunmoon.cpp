// The Sun and the Moon as pseudo-satellites, the astronomical Sun position,
// and the terminator table of the world map.

#include "engine/sunmoon.h"

#include <cmath>
#include <cstring>

#include "engine/live.h"
#include "engine/orbit.h"
#include "engine/timebase.h"
#include "engine/units.h"

namespace veloran {

namespace {

// One Moon element set per calendar month, one anomalistic month apart from
// the end of 2003 through 2004 (a month is skipped between sets 9 and 10).
struct MoonSet {
    double epoch;                                                     // YYDDD.dddddddd
    double inclination, raan, eccentricity, argPerigee, meanAnomaly;  // radians
};

constexpr MoonSet kMoonSets[12] = {
    {3364.38944783191, 0.46979725607632167, 0.15027284859671178, 0.0564, 4.163854685763148,
     2.013223329541443},
    {4026.70760668824, 0.47167348502221557, 0.1407817481243666, 0.0449, 4.230016627047749,
     1.9593188355935982},
    {4054.06968611191, 0.47338390768917005, 0.132964418404684, 0.0477, 4.284479626356232,
     1.915429040893697},
    {4081.42401412577, 0.4751589075384482, 0.13017538225999706, 0.0549, 4.329453270521622,
     1.8697729729907773},
    {4108.72439981326, 0.4768256969741028, 0.1310864441295381, 0.0617, 4.3744827652230756,
     1.8118158245198015},
    {4135.96538613716, 0.4784942317390094, 0.13130984627379338, 0.0639, 4.428113242478357,
     1.7403131757240977},
    {4163.18706391512, 0.48005281076104034, 0.12764640017385728, 0.0601, 4.49189629999249,
     1.6644088065548646},
    {4190.44444974397, 0.4816061537953153, 0.11986921302697055, 0.0529, 4.573287984329994,
     1.5966463983461845},
    {4217.76939604396, 0.48310015563502245, 0.11102912036561928, 0.0468, 4.640917747515521,
     1.5442900114448588},
    {4272.52718311595, 0.48448769239035794, 0.10369350151948711, 0.0457, 4.729744534466521,
     1.464179398778319},
    {4299.84869153387, 0.4858612665116775, 0.10444050243934068, 0.0504, 4.779308394564657,
     1.4110376137135958},
    {4327.08962878098, 0.4871283755486253, 0.10301456844046132, 0.0638, 4.836823974734878,
     1.33952449294238},
};

double Reduce360(double x) {
    return x - 360.0 * std::floor(x / 360.0);
}

}  // namespace

void LoadSunKeps(KepRec* kep) {
    if (kep == nullptr) return;
    kep->catalogNumber = 0;
    kep->elementSet = 0;
    kep->epochRAAN = 0;
    kep->orbitalDecay = 0;
    kep->epochDay = GetEpochDay(90, 1, 1.0);  // 1990-01-01 00:00 UTC
    kep->inclination = 0.40911564864298283;   // obliquity of the ecliptic
    kep->eccentricity = 0.0167133;
    kep->epochArgPerigee = 4.935241345925586;
    kep->epochMeanAnomaly = 6.241655197628381;
    kep->epochMeanMotion = 0.002737778522;
    kep->OrbitNum = 1989;
    kep->checksum = 243;
}

void LoadMoonKeps(KepRec* kep, int32_t setNumber) {
    if (kep == nullptr) return;
    std::memset(kep, 0, sizeof *kep);
    const MoonSet& set = kMoonSets[(setNumber >= 1 && setNumber <= 11) ? setNumber - 1 : 11];
    kep->epochMeanMotion = 0.036600996;
    kep->orbitalDecay = 0;
    kep->OrbitNum = 0;
    kep->checksum = setNumber;
    const int32_t year = static_cast<int32_t>(std::trunc(set.epoch / 1000.0));
    const double day = set.epoch - 1000.0 * year;
    kep->EpochYear = year;
    kep->kepsEpochDay = day;
    kep->epochDay = GetEpochDay(year, 1, day);
    kep->inclination = set.inclination;
    kep->epochRAAN = set.raan;
    kep->eccentricity = set.eccentricity;
    kep->epochArgPerigee = set.argPerigee;
    kep->epochMeanAnomaly = set.meanAnomaly;
}

void sunpos(double jd, bool apparent, double* rightAscension, double* declination,
            double* radiusVector, double* eclipticLongitude) {
    const double t = (jd - 2415020.0) / 36525.0;
    const double t2 = t * t, t3 = t2 * t;
    const double L = 279.69668 + 36000.76892 * t + 0.0003025 * t2;
    const double M = Reduce360(358.47583 + 35999.04975 * t - 0.00015 * t2 - 3.3e-06 * t3);
    const double e = 0.01675104 - 4.18e-05 * t - 1.26e-07 * t2;
    const double E = SolKeplerD(M / kRadiansToDegrees, e);
    const double v = Reduce360(
        2.0 * std::atan(std::sqrt((1.0 + e) / (1.0 - e)) * std::tan(E / 2.0)) * kRadiansToDegrees);
    double theta = Reduce360(L) + v - M;
    double epsilon = 23.452294 - 0.0130125 * t - 1.64e-06 * t2 + 5.03e-07 * t3;
    if (apparent) {
        const double omega = Reduce360(259.18 - 1934.142 * t) / kRadiansToDegrees;
        theta = theta - 0.00569 - 0.00479 * std::sin(omega);
        epsilon = epsilon + 0.00256 * std::cos(omega);
    }
    const double thetaR = theta / kRadiansToDegrees, epsR = epsilon / kRadiansToDegrees;
    *eclipticLongitude = theta;
    *radiusVector = 1.0000002 * (1.0 - e * e) / (1.0 + e * std::cos(v / kRadiansToDegrees));
    *rightAscension = Reduce360(std::atan2(std::cos(epsR) * std::sin(thetaR), std::cos(thetaR)) *
                                kRadiansToDegrees);
    *declination = std::asin(std::sin(epsR) * std::sin(thetaR)) * kRadiansToDegrees;
}

void projillum(int16_t* table, int mapWidth, int mapHeight, double declinationDegs) {
    if (table == nullptr || mapHeight <= 0) return;
    const int H = mapHeight, W = mapWidth;
    for (int i = 0; i < H; ++i) table[i] = -1;

    // Rows count up from the southern edge; entry H - row - 1 belongs to map row `row`.
    auto store = [&](int row, int column) {
        const int entry = H - row - 1;
        if (entry >= 0 && entry < H) table[entry] = static_cast<int16_t>(column == 0 ? 1 : column);
    };

    const double dec = declinationDegs / kRadiansToDegrees;
    const double sinDec = std::sin(dec), cosDec = std::cos(dec);
    int xPrev = 0, yPrev = 0;
    double tau = -kPi / 2.0;
    for (int point = 0; point < 101; ++point, tau += 0.031415926535897934) {
        const double a = std::cos(tau), b = std::sin(tau) * sinDec;
        const double lambda = (a == 0.0 && b == 0.0) ? 0.0 : std::atan2(a, b) * kRadiansToDegrees;
        const double phi = std::asin(cosDec * std::sin(tau)) * kRadiansToDegrees;
        const int x = static_cast<int>(std::trunc(lambda * W / 360.0));
        const int y = static_cast<int>(std::trunc((H / -180.0) * (phi + 90.0) + H));
        if (point > 0) {
            if (y == yPrev) {
                store(y, x);
            } else {
                const int stepRow = y > yPrev ? 1 : -1;
                const double slope = static_cast<double>(x - xPrev) / (y - yPrev);
                for (int row = yPrev; row != y; row += stepRow)
                    store(row, static_cast<int>(std::floor(slope * (row - yPrev) + 0.5)) + xPrev);
            }
        }
        xPrev = x;
        yPrev = y;
    }

    // Around the pole that stays in daylight the terminator never crosses a
    // row: mark those rows as lit from the middle column.
    const int start = declinationDegs < 0 ? H - 1 : 0;
    const int step = declinationDegs < 0 ? -1 : 1;
    const int middle = H / 2;
    int entry = start;
    while (entry != middle && table[entry] == -1) entry += step;
    if (entry == middle) return;
    for (int i = entry; i != start - step; i -= step) table[i] = static_cast<int16_t>(W / 2);
}

void sunCalcTask(uint32_t timeBaseSecs, SatRec* sun, SatRec* moon, SiteRec* site) {
    const double t = EpochTime(timeBaseSecs);
    if (sun != nullptr)
        SatelliteCalculationsV(t, kSunMoonSearchSpan, sun, site, 0, timeBaseSecs, sun);
    if (moon != nullptr)
        SatelliteCalculationsV(t, kSunMoonSearchSpan, moon, site, 0, timeBaseSecs, sun);
}

}  // namespace veloran
