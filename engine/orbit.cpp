// Orbit propagation: mean motion with linear decay, Kepler's equation, the
// perifocal-to-equatorial rotation with secular node and perigee drift.

#include "engine/orbit.h"

#include <algorithm>
#include <cmath>

namespace veloran {

namespace {

// A garbled element set can hand the solver a NaN; it must not hang the tick.
constexpr int kKeplerIterationLimit = 1000;

}  // namespace

double ReduceTwoPi(double angle) {
    double turns = std::trunc(angle / kTwoPi);
    if (angle < 0.0) turns -= 1.0;
    double reduced = angle - turns * kTwoPi;
    if (reduced >= kTwoPi) reduced -= kTwoPi;
    return reduced;
}

void GetSidereal(double D, double* t0, double* theta0) {
    const double day = std::floor(D);
    const double T = (day - 0.5) / 36525.0;
    const double g = (6.6460656 + 2400.051262 * T + 2.581e-05 * T * T) / 24.0;
    *t0 = day;
    *theta0 = g - std::floor(g);
}

double SolKeplerD(double M, double e) {
    double E = M;
    for (int i = 0; i < kKeplerIterationLimit; ++i) {
        const double delta = (E - e * std::sin(E) - M) / (1.0 - e * std::cos(E));
        E -= delta;
        if (std::fabs(delta) < kKeplerTolerance) break;
    }
    return E;
}

double KeplerD(double M, double e) {
    const double E = SolKeplerD(M, e);
    if (std::fabs(E - kPi) < kKeplerTolerance) return kPi;
    double nu = 2.0 * std::atan(std::sqrt((1.0 + e) / (1.0 - e)) * std::tan(E / 2.0));
    if (nu < 0.0) nu += kTwoPi;
    return nu;
}

void SolveKeplerD(double t, KepRec* kep, double* meanAnomaly, double* trueAnomaly, double* radius) {
    if (kep == nullptr) return;
    const double dt = t - kep->epochDay;
    const double decay = dt * kep->orbitalDecay;
    const double n = kep->epochMeanMotion;
    kep->semiMajorAxis = 331.25 * std::exp(2.0 * std::log(1440.0 / (n + 2.0 * decay)) / 3.0);
    const double orbits = (n + decay) * dt + kep->referenceOrbit;
    const double M = (orbits - std::trunc(orbits)) * kTwoPi;
    const double e = kep->eccentricity;
    const double nu = KeplerD(M, e);
    if (meanAnomaly != nullptr) *meanAnomaly = M;
    if (trueAnomaly != nullptr) *trueAnomaly = nu;
    if (radius != nullptr) *radius = kep->semiMajorAxis * (1.0 - e * e) / (1.0 + e * std::cos(nu));
}

void GetSatPosition(double epochDay, double RAAN, double argPerigee, double semiMajorAxis,
                    double inclination, double eccentricity, double nodeRate, double perigeeRate,
                    double t, double nu, double* r, double* X, double* Y, double* Z, double* VX,
                    double* VY, double* VZ) {
    const double e = eccentricity;
    const double p = semiMajorAxis * (1.0 - e * e);
    const double cosNu = std::cos(nu), sinNu = std::sin(nu);
    const double radius = p / (1.0 + e * cosNu);
    const double dt = t - epochDay;
    const double node = RAAN - dt * nodeRate;
    const double perigee = argPerigee + dt * perigeeRate;

    const double cO = std::cos(node), sO = std::sin(node);
    const double cw = std::cos(perigee), sw = std::sin(perigee);
    const double ci = std::cos(inclination), si = std::sin(inclination);
    const double Px = cO * cw - ci * sO * sw, Py = sO * cw + ci * cO * sw, Pz = sw * si;
    const double Qx = -cO * sw - ci * sO * cw, Qy = -sO * sw + ci * cO * cw, Qz = cw * si;

    *r = radius;
    *X = radius * (cosNu * Px + sinNu * Qx);
    *Y = radius * (cosNu * Py + sinNu * Qy);
    *Z = radius * (cosNu * Pz + sinNu * Qz);
    const double speed = std::sqrt(kEarthGM / p);
    *VX = speed * (-sinNu * Px + (e + cosNu) * Qx);
    *VY = speed * (-sinNu * Py + (e + cosNu) * Qy);
    *VZ = speed * (-sinNu * Pz + (e + cosNu) * Qz);
}

void GetSubSatPointD(SatRec* rec, double t, double* latitude, double* longitude) {
    const KepRec* k = &rec->satKep;
    const double dt = t - k->epochDay;
    const double node = k->epochRAAN - dt * rec->satRAANPrecession;
    const double perigee = k->epochArgPerigee + dt * rec->perigeePrecession;
    const double u = perigee + rec->trueAnomaly;
    const double i = k->inclination;
    const double lat = std::asin(std::sin(i) * std::sin(u));
    double delta = std::acos(std::clamp(std::cos(u) / std::cos(lat), -1.0, 1.0));
    if (!((i > kPi / 2.0 && lat < 0.0) || (i < kPi / 2.0 && lat > 0.0))) delta = -delta;
    const double lon = (t * kSiderealPerSolarDay + kSiderealAtEpochDayZero) * kTwoPi - node - delta;
    *latitude = lat;
    *longitude = ReduceTwoPi(lon);
}

void OneShot(SatRec* rec, double t) {
    if (rec == nullptr) return;
    SolveKeplerD(t, &rec->satKep, &rec->meanAnomaly, &rec->trueAnomaly, &rec->satOrbitRadius);
    GetSubSatPointD(rec, t, &rec->subSatPtLatitudeRads, &rec->subSatPtLongitudeRads);
    rec->subSatPtLatitudeDegs = rec->subSatPtLatitudeRads / kDegreesToRadians;
    rec->subSatPtLongitudeDegs = rec->subSatPtLongitudeRads / kDegreesToRadians;
}

}  // namespace veloran
