// Orbit propagation: a Keplerian ellipse with secular drift only. The mean
// motion grows linearly with the first derivative from the element set, the
// node and perigee drift at constant rates, and nothing else perturbs it.
#pragma once

#include "engine/satrec.h"
#include "engine/units.h"

namespace veloran {

constexpr double kEarthGM = 398600.0;  // km^3/s^2
constexpr double kSiderealPerSolarDay = 1.0027379093;
constexpr double kSiderealAtEpochDayZero = 0.27518504;     // revolutions
constexpr double kKeplerTolerance = 4.84813681109536e-06;  // one arc-second, radians

// An angle reduced into [0, 2 pi): whole turns taken off by truncation,
// one more for negative angles.
double ReduceTwoPi(double angle);

// Reference day t0 = floor(D) and the sidereal fraction theta0 (revolutions)
// at t0. The sidereal angle at time t is ((t - t0) * 1.0027379093 + theta0) * 2 pi.
void GetSidereal(double D, double* t0, double* theta0);

// Propagates the elements to epoch day t: mean anomaly (radians), true
// anomaly (radians) and orbit radius (km). Overwrites kep->semiMajorAxis with
// the decayed value. A null KepRec does nothing.
void SolveKeplerD(double t, KepRec* kep, double* meanAnomaly, double* trueAnomaly, double* radius);

// Kepler's equation by Newton's iteration from E = M, to one arc-second:
// the eccentric anomaly (radians) from mean anomaly M (radians) and
// eccentricity e < 1. A NaN stops after a bounded number of steps.
double SolKeplerD(double M, double e);
// True anomaly (radians, [0, 2 pi)) from mean anomaly M and eccentricity e < 1.
double KeplerD(double M, double e);

// Earth-centred position (km) and velocity (km/s) at epoch day t for true
// anomaly nu. The node regresses and the perigee advances from the epoch.
void GetSatPosition(double epochDay, double RAAN, double argPerigee, double semiMajorAxis,
                    double inclination, double eccentricity, double nodeRate, double perigeeRate,
                    double t, double nu, double* r, double* X, double* Y, double* Z, double* VX,
                    double* VY, double* VZ);

// Sub-satellite point by spherical trigonometry from the record's elements at
// epoch day t: latitude and west-positive longitude in [0, 2 pi), radians.
void GetSubSatPointD(SatRec* rec, double t, double* latitude, double* longitude);

// Propagates the record to t and stores the spherical sub-satellite point in
// radians and degrees. Null is ignored.
void OneShot(SatRec* rec, double t);

}  // namespace veloran
