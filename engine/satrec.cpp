// Satellite record reset, two-line element decoding and derived orbit constants.

#include "engine/satrec.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "engine/orbit.h"
#include "engine/siterec.h"
#include "engine/timebase.h"

namespace veloran {

namespace {

// Element lines are 69 characters and exactly one line-end character.
constexpr size_t kElementLineLength = 70;

// Copies columns first..first+width-1 (counted from 1) into a scratch buffer
// of that width, as the fixed-column element format wants.
void Field(const char* line, int first, int width, char* out) {
    std::memcpy(out, line + first - 1, static_cast<size_t>(width));
    out[width] = '\0';
}

int IntField(const char* line, int first, int width) {
    char buf[16];
    Field(line, first, width, buf);
    return std::atoi(buf);
}

double DoubleField(const char* line, int first, int width) {
    char buf[16];
    Field(line, first, width, buf);
    return std::atof(buf);
}

bool LineIs(const char* line, int number) {
    if (line == nullptr || std::strlen(line) != kElementLineLength) return false;
    int first = 0;
    return std::sscanf(line, "%d", &first) == 1 && first == number;
}

}  // namespace

void InitSatRec(SatRec* rec) {
    if (rec == nullptr) return;
    rec->db_index = 0;
    rec->satActivePass = 1;
    rec->enabled = 1;
    rec->tracked = 0;
    rec->name[0] = '\0';
    rec->speakName[0] = '\0';
    rec->elevationRads = -kPi / 2.0;  // below every horizon until computed
    rec->maxElevation = 0;
    rec->satOrbitRadius = 0;
    rec->satVelocity = 0;
    rec->squintAngleRads = 0;
    rec->bLatDegs = 0;
    rec->bLonDegs = 0;
    rec->hasBVals = 0;
    rec->AOS = 0;
    rec->elevationRising = 0;
    rec->altitudeAscending = 1;
    rec->secondsToAOS = kSecondsToAOSUnknown;
    rec->passElevCounter = 0;
    std::memset(rec->passElev, 0, sizeof rec->passElev);
    std::memset(rec->passMA, 0, sizeof rec->passMA);
    rec->priority = 5;
    rec->numberOfActiveChannels = 0;

    KepRec* k = &rec->satKep;
    k->catalogNumber = 0;
    k->elementSet = 0;
    k->OrbitNum = 0;
    k->checksum = 0;
    k->kepsEpochDay = 0;
    k->epochDay = 0;
    k->inclination = 0;
    k->epochRAAN = 0;
    k->eccentricity = 0;
    k->epochArgPerigee = 0;
    k->epochMeanAnomaly = 0;
    k->epochMeanMotion = 0;
    k->orbitalDecay = 0;
    k->semiMajorAxis = 0;
    k->referenceOrbit = 0;
    k->decayDate = 0;
    k->everVisible = 0;
    k->geostationary = 0;
    k->isLEO = 0;
}

int DecodeLineOne(const char* line, SatRec* rec) {
    if (rec == nullptr || !LineIs(line, 1)) return 0;
    KepRec* k = &rec->satKep;
    k->catalogNumber = IntField(line, 3, 5);
    k->EpochYear = IntField(line, 19, 2);
    k->kepsEpochDay = DoubleField(line, 21, 12);
    k->epochDay = GetEpochDay(k->EpochYear, 1, k->kepsEpochDay);
    // Column 34 holds the sign and is not read: the decay is always a magnitude.
    k->orbitalDecay = DoubleField(line, 35, 9);
    k->elementSet = IntField(line, 66, 3);
    return 1;
}

int DecodeLineTwo(const char* line, SatRec* rec) {
    if (rec == nullptr || !LineIs(line, 2)) return 0;
    KepRec* k = &rec->satKep;
    k->catalogNumber = IntField(line, 3, 5);
    k->inclination = DoubleField(line, 9, 8);
    k->epochRAAN = DoubleField(line, 18, 8);
    k->eccentricity = DoubleField(line, 27, 7) / 10000000.0;  // implied leading decimal point
    k->epochArgPerigee = DoubleField(line, 35, 8);
    k->epochMeanAnomaly = DoubleField(line, 44, 8);
    k->epochMeanMotion = DoubleField(line, 53, 11);
    k->OrbitNum = IntField(line, 64, 5);
    k->checksum = IntField(line, 69, 1);
    return 1;
}

void GetPrecession(double semiMajorAxis, double eccentricity, double inclination, double* nodeRate,
                   double* perigeeRate) {
    const double oneMinusE2 = 1.0 - eccentricity * eccentricity;
    const double ratio = std::pow(kEarthRadiusKm / semiMajorAxis, 3.5);
    const double cosI = std::cos(inclination);
    // The two (1 - e^2) factors cancel: the node rate has no eccentricity
    // term, on purpose, and is positive; the propagator subtracts it.
    if (nodeRate != nullptr)
        *nodeRate = oneMinusE2 * (9.95 * ratio * cosI / oneMinusE2) * kDegreesToRadians;
    if (perigeeRate != nullptr)
        *perigeeRate = 4.97 * ratio * (5.0 * cosI * cosI - 1.0) / (oneMinusE2 * oneMinusE2) *
                       kDegreesToRadians;
}

void CalcKepVals(SatRec* rec, const SiteRec* site) {
    if (rec == nullptr) return;
    KepRec* k = &rec->satKep;
    const double n = k->epochMeanMotion;
    k->semiMajorAxis = 331.25 * std::exp((2.0 * std::log(1440.0 / n)) / 3.0);
    GetPrecession(k->semiMajorAxis, k->eccentricity, k->inclination, &rec->satRAANPrecession,
                  &rec->perigeePrecession);
    k->decayDate = k->epochDay + (16.666666 - n) / (10.0 * std::fabs(k->orbitalDecay));
    k->referenceOrbit = k->OrbitNum + k->epochMeanAnomaly / kTwoPi;
    k->geostationary = std::fabs(n) < 0.0002;

    // The inclination is already in radians and is multiplied by the degree
    // factor once more, so in effect only the coverage angle from apogee
    // decides. Kept so.
    double j = k->inclination;
    if (j >= 90.0) j = 180.0 - j;
    const double siteLat = site != nullptr ? site->siteLatRads : 0.0;
    const double coverage =
        std::acos(kEarthRadiusKm / (k->semiMajorAxis * (1.0 + k->eccentricity)));
    k->everVisible = j * kDegreesToRadians + coverage > std::fabs(siteLat);
}

}  // namespace veloran
