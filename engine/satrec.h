// The satellite record shared by every layer, its element part and its
// transponder modes; reset, two-line element decoding and the derived orbit
// constants.
#pragma once

#include <cstdint>

#include "engine/units.h"
#include "engine/vector3.h"

namespace veloran {

// Truth values in the shared records are four bytes wide, so that a record
// copied whole keeps its layout.
using Bool32 = int32_t;

constexpr int kMaxSatellites = 1024;
constexpr int kMaxModes = 128;
constexpr int kMaxPassSamples = 1200;
constexpr uint32_t kSecondsToAOSUnknown = 172800;  // two days: no AOS found

struct SiteRec;

struct KepRec {
    int32_t catalogNumber;    // catalogue number (line 2, columns 3-7)
    double kepsEpochDay;      // day of year with fraction as written (1.0 = 1 Jan 00:00 UTC)
    double epochDay;          // epoch as an epoch day
    int32_t EpochYear;        // two-digit epoch year
    int32_t elementSet;       // element set number
    double inclination;       // degrees as decoded, radians after loading
    double epochRAAN;         // right ascension of the node at epoch; degrees, then radians
    double eccentricity;      // dimensionless
    double epochArgPerigee;   // argument of perigee at epoch; degrees, then radians
    double epochMeanAnomaly;  // mean anomaly at epoch; degrees, then radians
    double epochMeanMotion;   // revolutions per day
    double orbitalDecay;      // first derivative of mean motion, magnitude only, rev/day^2
    int32_t OrbitNum;         // revolution number at epoch
    int32_t checksum;         // line 2 check digit, never verified
    double semiMajorAxis;     // km
    double referenceOrbit;    // revolution number at epoch plus the epoch's mean-anomaly fraction
    double decayDate;         // epoch day at which the orbit is expected to have decayed
    Bool32 everVisible;       // the orbit can rise at the site's latitude
    Bool32 geostationary;     // stationary object
    Bool32 isLEO;             // low orbit (mean motion above 10 rev/day)
};

struct ModeRec {
    char channel[64];         // the mode's name as shown
    int16_t commMode;         // operating-mode code
    double upFreq;            // uplink, MHz
    double downFreq;          // downlink, MHz
    double beaconFreq;        // beacon, MHz
    int32_t gTone;            // tone setting
    int32_t gCTone;           // tone-squelch setting
    double txVrtrDn;          // downlink transverter offset, MHz
    double txVrtrUp;          // uplink transverter offset, MHz
    double beamUpWidthDegs;   // uplink antenna beam width, degrees
    double beamDwnWidthDegs;  // downlink antenna beam width, degrees
    double RXOffset;          // user correction of the receive frequency
    double TXOffset;          // user correction of the transmit frequency
    double BEOffset;          // user correction of the beacon frequency
};

struct SatRec {
    int32_t db_index;                     // index of this record in the satellite array
    Bool32 satActivePass;                 // the next pass is one the user wants worked
    int32_t enabled;                      // 1 after reset
    Bool32 tracked;                       // on the track list
    char name[255];                       // from the element set's name line
    char speakName[255];                  // name as spoken
    double azimuthRads, azimuthDegs;      // azimuth from the site, north through east
    double elevationRads, elevationDegs;  // elevation above the site's horizon
    double satRange;                      // slant range from the site, km
    double subSatPtLatitudeRads,
        subSatPtLongitudeRads;  // sub-satellite point now; longitude west positive
    double oldSubSatPtLatitudeRads,
        oldSubSatPtLongitudeRads;  // ten minutes before the last live calculation
    double subSatPtLatitudeDegs, subSatPtLongitudeDegs;  // sub-satellite point, degrees
    double satOrbitRadius;                               // distance from the Earth's centre, km
    double satAltitude;                                  // height above 6378.16 km, km
    double satVelocity;        // range rate with its sign reversed, km/s (positive approaching)
    double satRAANPrecession;  // node regression rate, rad/day (subtracted)
    double perigeePrecession;  // perigee advance rate, rad/day
    double trueAnomaly;        // radians
    Bool32 AOS;                // in view
    Bool32 elevationRising;    // elevation increasing
    Bool32 altitudeAscending;  // height increasing
    double maxElevation;       // highest elevation of the current or next pass, degrees
    double surfaceDistance;    // great-circle distance site to sub-satellite point
    uint32_t secondsToAOS, AOSTime;        // next acquisition of signal: seconds until, time value
    uint32_t secondsToECL, ECLTime;        // next change of eclipse state
    uint32_t secondsToMAXE, MAXETime;      // maximum elevation of the pass
    uint32_t secondsToLOS, LOSTime;        // loss of signal
    uint32_t secondsToApogee, ApogeeTime;  // apogee while in view
    uint32_t secondsToPlanarCrossing, PlanarCrossingTime;  // site crossing the orbital plane
    double planarAngle;                 // angle between the site and the orbital plane
    double pathLoss;                    // free-space path loss, dB
    uint32_t passLength;                // seconds
    int16_t passElevCounter;            // valid entries in passElev and passMA
    uint8_t passElev[kMaxPassSamples];  // elevation every 12 s of the next pass, whole degrees
    uint8_t passMA[kMaxPassSamples];    // mean anomaly, 256ths of a revolution
    char trackHours[32];  // '1' for each local hour 0..23 in which the satellite may be worked
    double meanAnomaly;   // radians
    Bool32 hasBVals;      // attitude known
    double bLatDegs, bLonDegs;       // spacecraft attitude, degrees
    double squintAngleRads;          // antenna axis to site direction
    int32_t currentOrbit;            // revolution number now
    double currrentDownlink;         // downlink now, MHz
    double SatX, SatY, SatZ;         // Earth-centred position, km
    double SatVX, SatVY, SatVZ;      // Earth-centred velocity, km/s
    Bool32 eclipsed;                 // in the Earth's shadow
    int32_t startMA, endMA;          // operating schedule, mean anomaly range
    KepRec satKep;                   // elements and derived constants
    int16_t priority;                // selection priority, 5 after reset
    int16_t numberOfActiveChannels;  // valid entries in modes
    int32_t selectedModeIndex;       // mode in use
    ModeRec modes[kMaxModes];        // transponder and beacon modes
    Point3F squintSatPosition;       // 3D view: satellite position
    Point3F boreSiteEndPosition;     // 3D view: end of the antenna axis line
    Vector3F boreSiteDirection;      // 3D view: antenna axis direction
};

// Resets a record before it is filled. Null is ignored.
void InitSatRec(SatRec* rec);
// Decode line 1 or line 2 of a two-line set. The line must be exactly 69
// element characters plus one line-end character and start with its line
// number; anything else leaves the record untouched. The result is 1 when the
// line was taken, 0 otherwise (callers do not need it).
int DecodeLineOne(const char* line, SatRec* rec);
int DecodeLineTwo(const char* line, SatRec* rec);
// Semi-major axis, precession rates, decay date, reference orbit,
// geostationary and everVisible. Angles must already be in radians. The site
// supplies siteLatRads. Null records are ignored.
void CalcKepVals(SatRec* rec, const SiteRec* site);
// Node regression and perigee advance rates (radians per day) for a
// semi-major axis in km, eccentricity and inclination in radians.
void GetPrecession(double semiMajorAxis, double eccentricity, double inclination, double* nodeRate,
                   double* perigeeRate);

}  // namespace veloran
