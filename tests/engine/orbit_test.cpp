// Propagation and observer geometry against physics that does not depend on
// this code: circular speeds, the horizon distance, the sidereal day, the
// directions of the compass.

#include "engine/orbit.h"

#include <gtest/gtest.h>

#include <cmath>

#include "engine/live.h"
#include "engine/observer.h"
#include "engine/sunmoon.h"
#include "engine/timebase.h"
#include "tests/support/element_sets.h"

namespace veloran {
namespace {

using testing::Elements;

TEST(Kepler, CircularOrbitTrueAnomalyIsTheMeanAnomaly) {
    for (double M = 0.05; M < kTwoPi; M += 0.37) EXPECT_NEAR(KeplerD(M, 0.0), M, 1e-12);
    EXPECT_EQ(KeplerD(kPi, 0.0), kPi);
    EXPECT_EQ(KeplerD(kPi, 0.7), kPi);
    EXPECT_NEAR(KeplerD(-0.5, 0.0), kTwoPi - 0.5, 1e-12)
        << "negative anomalies come back in [0, 2 pi)";
}

TEST(Kepler, EccentricOrbitSatisfiesKeplersEquation) {
    for (double e : {0.1, 0.5, 0.9}) {
        for (double M = 0.1; M < kTwoPi; M += 0.5) {
            const double nu = KeplerD(M, e);
            // Back from true to eccentric to mean anomaly, independently.
            const double E = 2.0 * std::atan(std::sqrt((1 - e) / (1 + e)) * std::tan(nu / 2));
            double back = E - e * std::sin(E);
            if (back < 0) back += kTwoPi;
            EXPECT_NEAR(back, M, 1e-5) << "e=" << e << " M=" << M;
        }
    }
    EXPECT_NEAR(SolKeplerD(1.0, 0.9) - 0.9 * std::sin(SolKeplerD(1.0, 0.9)), 1.0, 1e-5);
}

TEST(Kepler, GarbageDoesNotHang) {
    EXPECT_TRUE(std::isnan(KeplerD(std::nan(""), 0.1)));
    (void)SolKeplerD(std::nan(""), 0.1);
}

TEST(Propagation, CircularOrbitKeepsItsRadiusAndSpeed) {
    const SiteRec site = testing::MakeSite(0, 0, 0);
    Elements e;
    e.meanMotion = 15.0;
    e.inclination = 45.0;
    auto rec = testing::LoadRecord("LEO", e, &site);
    const KepRec& k = rec->satKep;
    for (double dt = 0.0; dt < 2.0; dt += 0.13) {
        double M = 0, nu = 0, r = 0, X, Y, Z, VX, VY, VZ;
        SolveKeplerD(k.epochDay + dt, &rec->satKep, &M, &nu, &r);
        GetSatPosition(k.epochDay, k.epochRAAN, k.epochArgPerigee, k.semiMajorAxis, k.inclination,
                       k.eccentricity, rec->satRAANPrecession, rec->perigeePrecession,
                       k.epochDay + dt, nu, &r, &X, &Y, &Z, &VX, &VY, &VZ);
        EXPECT_NEAR(std::sqrt(X * X + Y * Y + Z * Z), k.semiMajorAxis, 1e-6);
        EXPECT_NEAR(std::sqrt(VX * VX + VY * VY + VZ * VZ), std::sqrt(kEarthGM / k.semiMajorAxis),
                    1e-9);
        EXPECT_NEAR(X * VX + Y * VY + Z * VZ, 0.0, 1e-6)
            << "velocity is perpendicular to the radius";
        // The plane is inclined 45 degrees: |Z| never exceeds r sin 45.
        EXPECT_LE(std::fabs(Z), k.semiMajorAxis * std::sin(45.0 * kDegreesToRadians) + 1e-6);
    }
    EXPECT_NEAR(k.semiMajorAxis, 331.25 * std::pow(1440.0 / 15.0, 2.0 / 3.0), 1e-9)
        << "no decay, no change";
}

TEST(Propagation, DecayShrinksTheOrbit) {
    const SiteRec site = testing::MakeSite(0, 0, 0);
    Elements e;
    e.meanMotion = 15.5;
    e.decay = 0.001;
    auto rec = testing::LoadRecord("DECAY", e, &site);
    const double a0 = rec->satKep.semiMajorAxis;
    SolveKeplerD(rec->satKep.epochDay + 10.0, &rec->satKep, nullptr, nullptr, nullptr);
    // Mean motion 15.5 + 2 * 10 * 0.001 = 15.52 rev/day.
    EXPECT_NEAR(rec->satKep.semiMajorAxis, 331.25 * std::pow(1440.0 / 15.52, 2.0 / 3.0), 1e-9);
    EXPECT_LT(rec->satKep.semiMajorAxis, a0);
    SolveKeplerD(0.0, nullptr, nullptr, nullptr, nullptr);
}

TEST(Sidereal, TheEarthTurnsOnceASiderealDay) {
    double t0 = 0, theta0 = 0;
    GetSidereal(17000.3, &t0, &theta0);
    EXPECT_DOUBLE_EQ(t0, 17000.0);
    EXPECT_GE(theta0, 0.0);
    EXPECT_LT(theta0, 1.0);
    // The reference counts its centuries from epoch day 0.5 rather than from
    // 1900 January 0.5, which leaves it about half a minute of time from
    // Greenwich mean sidereal time at that midnight (epoch day 17000 = 2025-07-18).
    const double jd = 17000.0 + 2443873.5;
    EXPECT_NEAR(theta0 * 24.0, gmst(jd), 40.0 / 3600.0);
    // A site at longitude 0 comes back to the same inertial place after one sidereal day.
    double X1, Y1, Z1, X2, Y2, Z2, VX, VY, rot[3][3];
    GetSitePosition(0.5, 0.0, 0.0, t0, t0, theta0, &X1, &Y1, &Z1, &VX, &VY, rot);
    GetSitePosition(0.5, 0.0, 0.0, t0 + 1.0 / 1.0027379093, t0, theta0, &X2, &Y2, &Z2, &VX, &VY,
                    rot);
    EXPECT_NEAR(X1, X2, 1e-6);
    EXPECT_NEAR(Y1, Y2, 1e-6);
}

TEST(Site, EquatorAndPoleOnTheEllipsoid) {
    double X, Y, Z, VX, VY, rot[3][3];
    GetSitePosition(0.0, 0.0, 0.0, 0.0, 0.0, 0.0, &X, &Y, &Z, &VX, &VY, rot);
    EXPECT_NEAR(X, 6378.16, 1e-9);
    EXPECT_NEAR(Y, 0.0, 1e-9);
    EXPECT_NEAR(Z, 0.0, 1e-9);
    EXPECT_NEAR(VY, 0.4651, 1e-4) << "the equator moves at 465 m/s";
    // Same latitude and height, other longitude: the cache must not keep the
    // old longitude.
    GetSitePosition(0.0, kPi / 2.0, 0.0, 0.0, 0.0, 0.0, &X, &Y, &Z, &VX, &VY, rot);
    EXPECT_NEAR(X, 0.0, 1e-9);
    EXPECT_NEAR(Y, -6378.16, 1e-9) << "west-positive longitude";
    // The polar radius of the 1/298.25 ellipsoid is 6356.77 km.
    GetSitePosition(kPi / 2.0, 0.0, 0.0, 0.0, 0.0, 0.0, &X, &Y, &Z, &VX, &VY, rot);
    EXPECT_NEAR(Z, 6356.775, 0.01);
    GetSitePosition(kPi / 2.0, 0.0, 1.0, 0.0, 0.0, 0.0, &X, &Y, &Z, &VX, &VY, rot);
    EXPECT_NEAR(Z, 6357.775, 0.01) << "a new height must refresh the cache";
}

TEST(LookAngles, CompassDirections) {
    // A site on the equator at longitude 0, with the sidereal angle 0.
    double sx, sy, sz, vx, vy, rot[3][3];
    GetSitePosition(0.0, 0.0, 0.0, 0.0, 0.0, 0.0, &sx, &sy, &sz, &vx, &vy, rot);
    double az = 0, el = 0;
    GetNewBearings(rot, sx, sy, sz + 1000.0, sx, sy, sz, &az, &el);  // due north, on the horizon
    EXPECT_NEAR(az, 0.0, 1e-12);
    EXPECT_NEAR(el, 0.0, 1e-12);
    GetNewBearings(rot, sx, sy + 1000.0, sz, sx, sy, sz, &az, &el);  // due east
    EXPECT_NEAR(az, kPi / 2.0, 1e-12);
    GetNewBearings(rot, sx, sy, sz - 1000.0, sx, sy, sz, &az, &el);  // due south
    EXPECT_NEAR(az, kPi, 1e-12);
    GetNewBearings(rot, sx, sy - 1000.0, sz, sx, sy, sz, &az, &el);  // due west
    EXPECT_NEAR(az, 3.0 * kPi / 2.0, 1e-12);
    GetNewBearings(rot, sx + 500.0, sy, sz, sx, sy, sz, &az, &el);  // zenith
    EXPECT_NEAR(el, kPi / 2.0, 1e-12);
    GetNewBearings(rot, sx - 500.0, sy, sz, sx, sy, sz, &az, &el);  // nadir
    EXPECT_NEAR(el, -kPi / 2.0, 1e-12);
}

TEST(LookAngles, SphericalBearingsAgree) {
    const SiteRec site = testing::MakeSite(45.0, 75.0, 0.0);
    double az = 0, el = 0, range = 0;
    // A point 5 degrees north, same meridian, at 7000 km from the centre.
    GetBearings(&site, 50.0 * kDegreesToRadians, 75.0 * kDegreesToRadians, 7000.0, &az, &el,
                &range);
    EXPECT_NEAR(az, 0.0, 1e-6);
    // 5 degrees east of the site (west-positive longitude decreases) on the equator side.
    GetBearings(&site, 45.0 * kDegreesToRadians, 70.0 * kDegreesToRadians, 7000.0, &az, &el,
                &range);
    EXPECT_GT(az, 0.0);
    EXPECT_LT(az, kPi / 2.0 + 0.1);
    GetBearings(&site, 45.0 * kDegreesToRadians, 80.0 * kDegreesToRadians, 7000.0, &az, &el,
                &range);
    EXPECT_GT(az, 3.0 * kPi / 2.0 - 0.1) << "to the west";
    // Directly overhead: elevation 90 and range = r - site radius.
    GetBearings(&site, 45.0 * kDegreesToRadians, 75.0 * kDegreesToRadians, 7000.0, &az, &el,
                &range);
    EXPECT_NEAR(el, kPi / 2.0, 1e-6);
    EXPECT_NEAR(range, 7000.0 - site.siteAltitudeGEOC, 1e-6);
    EXPECT_NEAR(GetElevationD(&site, 45.0 * kDegreesToRadians, 75.0 * kDegreesToRadians, 7000.0),
                kPi / 2.0, 1e-6);
}

TEST(LookAngles, RangeRateSign) {
    double range = 0, rate = 0;
    GetRange(0, 0, 0, 0, 0, 1000, 0, 0, 7, 0, 0, &range, &rate);
    EXPECT_DOUBLE_EQ(range, 1000.0);
    EXPECT_DOUBLE_EQ(rate, 7.0) << "receding is positive";
    GetRange(0, 0, 0, 0, 0, 1000, 0, 0, -7, 0, 0, &range, &rate);
    EXPECT_DOUBLE_EQ(rate, -7.0);
}

TEST(SubSatellitePoint, WestPositiveLongitudes) {
    double lon = 0, lat = 0, h = 0;
    // With the sidereal angle 0, a satellite on the +y axis is over 90 degrees east.
    GetNewSubSatPoint(0.0, 7000.0, 0.0, 0.0, 0.0, 0.0, &lon, &lat, &h);
    EXPECT_NEAR(lon, 3.0 * kPi / 2.0, 1e-12);
    EXPECT_NEAR(lat, 0.0, 1e-12);
    EXPECT_NEAR(h, 7000.0 - 6378.16, 1e-9);
    GetNewSubSatPoint(0.0, -7000.0, 1.0, 0.0, 0.0, 0.0, &lon, &lat, &h);
    EXPECT_NEAR(lon, kPi / 2.0, 1e-12);
    EXPECT_GT(lat, 0.0);
}

TEST(SubSatellitePoint, SphericalAndVectorPointsAgree) {
    const SiteRec site = testing::MakeSite(0, 0, 0);
    Elements e;
    e.meanMotion = 14.3;
    e.inclination = 98.0;
    e.raan = 40;
    e.argPerigee = 10;
    e.meanAnomaly = 70;
    auto rec = testing::LoadRecord("POLAR", e, &site);
    const double t = rec->satKep.epochDay + 0.3;
    OneShot(rec.get(), t);
    double t0, theta0, X, Y, Z, VX, VY, VZ, r, lon, lat, h;
    GetSidereal(t, &t0, &theta0);
    const KepRec& k = rec->satKep;
    GetSatPosition(k.epochDay, k.epochRAAN, k.epochArgPerigee, k.semiMajorAxis, k.inclination,
                   k.eccentricity, rec->satRAANPrecession, rec->perigeePrecession, t,
                   rec->trueAnomaly, &r, &X, &Y, &Z, &VX, &VY, &VZ);
    GetNewSubSatPoint(X, Y, Z, t, t0, theta0, &lon, &lat, &h);
    // The spherical form uses its own sidereal constant; a few tenths of a
    // degree is agreement.
    EXPECT_NEAR(rec->subSatPtLatitudeRads, lat, 1e-6);
    EXPECT_NEAR(std::remainder(rec->subSatPtLongitudeRads - lon, kTwoPi), 0.0,
                0.5 * kDegreesToRadians);
    EXPECT_NEAR(rec->subSatPtLatitudeDegs, lat / kDegreesToRadians, 1e-6);
}

TEST(Eclipse, ShadowBehindTheEarthOnly) {
    const SiteRec site = testing::MakeSite(0, 0, 0);
    auto sun = testing::LoadSun(&site);
    sunCalcTask(testing::Seconds(2026, 6, 21, 12), sun.get(), nullptr, const_cast<SiteRec*>(&site));
    const double len =
        std::sqrt(sun->SatX * sun->SatX + sun->SatY * sun->SatY + sun->SatZ * sun->SatZ);
    const double ux = sun->SatX / len, uy = sun->SatY / len, uz = sun->SatZ / len;
    const double e = sun->satKep.eccentricity;
    const double r = 6378.16 + 500.0;
    EXPECT_TRUE(EclipsedAt(e, r, -ux * r, -uy * r, -uz * r, sun.get())) << "opposite the Sun";
    EXPECT_FALSE(EclipsedAt(e, r, ux * r, uy * r, uz * r, sun.get()))
        << "between the Earth and the Sun";
    // Sideways, beyond the Earth's radius from the shadow axis, it is lit.
    const double sx = -uy, sy = ux;  // perpendicular in the xy plane
    const double side = 1.0 / std::sqrt(sx * sx + sy * sy);
    EXPECT_FALSE(EclipsedAt(e, r, sx * side * r, sy * side * r, 0.0, sun.get()));
    // Far beyond the Moon's distance, the umbra has closed.
    const double far = 2.0e6;
    EXPECT_FALSE(EclipsedAt(e, far, -ux * far, -uy * far, -uz * far, sun.get()));
    SatRec sat = *sun;
    sat.SatX = -ux * r;
    sat.SatY = -uy * r;
    sat.SatZ = -uz * r;
    EXPECT_TRUE(Eclipsed(e, r, &sat, sun.get()));
}

TEST(Squint, AxisPointingAtTheSiteHasNoSquint) {
    SiteRec site = testing::MakeSite(0, 0, 0);
    SatRec rec{};
    rec.satOrbitRadius = 6378.16 * 2.0;
    rec.subSatPtLatitudeRads = 0;
    rec.subSatPtLongitudeRads = 0;
    // Attitude that leaves the nadir axis alone: x turn 0 (mean anomaly 0),
    // y turn bLon + pi - true anomaly = 0 (true anomaly pi), z turn 0.
    rec.meanAnomaly = 0;
    rec.trueAnomaly = kPi;
    rec.satKep.inclination = 1.0;
    Point3F satPoint{}, end{};
    Vector3F dir{};
    const float squint = CalcSquintAngle(&rec, &site.sitePosition, &satPoint, &end, &dir);
    EXPECT_NEAR(squint, 0.0f, 1e-3f) << "the site lies straight below";
    EXPECT_NEAR(
        std::sqrt(satPoint.x * satPoint.x + satPoint.y * satPoint.y + satPoint.z * satPoint.z),
        2.0f, 1e-5f);
    // Turn the attitude by 30 degrees of attitude longitude.
    rec.bLonDegs = 30.0;
    EXPECT_NEAR(CalcSquintAngle(&rec, &site.sitePosition, nullptr, nullptr, nullptr),
                30.0f * 0.0174533f, 1e-3f);
    const Vector3F a{1, 0, 0}, b{1, 1e-9f, 0};
    EXPECT_FLOAT_EQ(AngleBetweenVectors(&a, &a), 0.0f)
        << "clamped: never NaN from rounding above 1";
    EXPECT_NEAR(AngleBetweenVectors(&a, &b), 0.0f, 1e-4f);
    EXPECT_DOUBLE_EQ(CloseEnough(1.5, 1.25), 0.25);
    EXPECT_DOUBLE_EQ(CloseEnough(1.25, 1.5), 0.25);
}

TEST(Site, PrecalculationAndScenePoint) {
    SiteRec site = testing::MakeSite(43.7064, 79.2442, 200.0);
    EXPECT_NEAR(site.siteLatRads, 43.7064 * kDegreesToRadians, 1e-15);
    EXPECT_NEAR(site.SinSiteLat, std::sin(site.siteLatRads), 1e-15);
    // Radius at 43.7 degrees on the 1/298.25 ellipsoid, a (1 - f sin^2 lat), plus 200 m.
    EXPECT_NEAR(site.siteAltitudeGEOC, 6367.94 + 0.2, 0.05);
    const Point3F& p = site.sitePosition;
    EXPECT_NEAR(p.x * p.x + p.y * p.y + p.z * p.z, 1.0f, 1e-5f);
    EXPECT_NEAR(p.y, std::sin(site.siteLatRads), 1e-5) << "the scene's y axis is the pole";
    SitePreCalc(nullptr);
    SiteCalculations(nullptr);
}

}  // namespace
}  // namespace veloran
