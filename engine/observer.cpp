// Observer geometry: site on the oblate Earth, topocentric look angles, range
// rate, sub-satellite point, eclipse and antenna squint.

#include "engine/observer.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "engine/orbit.h"

namespace veloran {

namespace {

constexpr double kOneMinusFlattening = 0.9966471081307627;  // f = 1/298.25
constexpr double kEccentricitySquared = 0.006694541854587637;
constexpr double kLatitudeFactor = 1.0000112420102683;
constexpr double kEarthRotationRate = 7.292115854937194e-05;  // rad/s
constexpr double kSunDistanceKm = 149598845.0;
constexpr double kSunLessEarthRadiusKm = 689121.84;
constexpr double kEarthRadiusSquared = 40680924.985599995;

// One process-wide cache of the ellipsoid terms for the last latitude and
// height. The longitude enters every call, so it is not part of the key.
// NaN never compares equal, so the first call fills it.
SiteEllipsoid gSiteCache{
    std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::quiet_NaN(), 0, 0, 0, 0};

// A point at `radius` (Earth radii) over (latitude, west-positive longitude)
// in the 3D scene: (0, 0, radius) turned by -latitude about x, then by
// pi - longitude about y.
Matrix4x4F SurfaceRotation(double latitude, double longitude) {
    const Matrix4x4F rx = MatrixRotateX(static_cast<float>(-latitude));
    const Matrix4x4F ry = MatrixRotateY(static_cast<float>(kPi - longitude));
    return MatrixMultiply(&rx, &ry);
}

}  // namespace

void SitePreCalc(SiteRec* site) {
    if (site == nullptr) return;
    site->siteLatRads = site->siteLatDegs * kDegreesToRadians;
    site->siteLongRads = site->siteLongDegs * kDegreesToRadians;
    site->SinSiteLat = std::sin(site->siteLatRads);
    site->CosSiteLat = std::cos(site->siteLatRads);
    site->sinSiteLong = std::sin(site->siteLongRads);
    site->cosSiteLong = std::cos(site->siteLongRads);
    site->siteAltitudeGEOC =
        kEarthRadiusKm *
            (0.9983235540653814 + 0.0016764459346186086 * std::cos(2.0 * site->siteLatRads)) +
        site->siteAltitudeM / 1000.0;
}

void SiteCalculations(SiteRec* site) {
    if (site == nullptr) return;
    const Matrix4x4F m = SurfaceRotation(site->siteLatRads, site->siteLongRads);
    const Point3F up{0.0f, 0.0f, 1.0f};
    site->sitePosition = TransformPoint(&up, &m);
}

void GetSiteEllipsoid(double latitude, double height, SiteEllipsoid* out) {
    const double geocentric = std::atan(std::tan(latitude) * kLatitudeFactor);
    out->cosLat = std::cos(geocentric);
    out->sinLat = std::sin(geocentric);
    const double N =
        kEarthRadiusKm / std::sqrt(1.0 - kEccentricitySquared * out->sinLat * out->sinLat);
    out->G1 = N + height;
    out->G2 = N * kOneMinusFlattening * kOneMinusFlattening + height;
    out->latitude = latitude;
    out->height = height;
}

void GetSitePositionFrom(const SiteEllipsoid* c, double longitude, double t, double t0,
                         double theta0, double* X, double* Y, double* Z, double* VX, double* VY,
                         double rotation[3][3]) {
    const double theta = ((t - t0) * kSiderealPerSolarDay + theta0) * kTwoPi - longitude;
    const double cT = std::cos(theta), sT = std::sin(theta);
    *X = cT * c->cosLat * c->G1;
    *Y = sT * c->cosLat * c->G1;
    *Z = c->sinLat * c->G2;
    *VX = -kEarthRotationRate * *Y;
    *VY = kEarthRotationRate * *X;
    rotation[0][0] = cT * c->sinLat;
    rotation[0][1] = sT * c->sinLat;
    rotation[0][2] = -c->cosLat;
    rotation[1][0] = -sT;
    rotation[1][1] = cT;
    rotation[1][2] = 0.0;
    rotation[2][0] = cT * c->cosLat;
    rotation[2][1] = sT * c->cosLat;
    rotation[2][2] = c->sinLat;
}

void GetSitePosition(double latitude, double longitude, double height, double t, double t0,
                     double theta0, double* X, double* Y, double* Z, double* VX, double* VY,
                     double rotation[3][3]) {
    if (latitude != gSiteCache.latitude || height != gSiteCache.height)
        GetSiteEllipsoid(latitude, height, &gSiteCache);
    GetSitePositionFrom(&gSiteCache, longitude, t, t0, theta0, X, Y, Z, VX, VY, rotation);
}

void GetTopocentric(const double rotation[3][3], double satX, double satY, double satZ,
                    double siteX, double siteY, double siteZ, double* south, double* east,
                    double* up) {
    const double dx = satX - siteX, dy = satY - siteY, dz = satZ - siteZ;
    *south = rotation[0][0] * dx + rotation[0][1] * dy + rotation[0][2] * dz;
    *east = rotation[1][0] * dx + rotation[1][1] * dy + rotation[1][2] * dz;
    *up = rotation[2][0] * dx + rotation[2][1] * dy + rotation[2][2] * dz;
}

void GetNewBearings(const double rotation[3][3], double satX, double satY, double satZ,
                    double siteX, double siteY, double siteZ, double* azimuth, double* elevation) {
    double s = 0, e = 0, u = 0;
    GetTopocentric(rotation, satX, satY, satZ, siteX, siteY, siteZ, &s, &e, &u);
    *elevation = std::atan(u / std::sqrt(s * s + e * e));
    double az = kPi - std::atan2(e, s);
    if (az < 0.0) az += kPi;
    *azimuth = az;
}

void GetRange(double siteX, double siteY, double siteZ, double siteVX, double siteVY, double satX,
              double satY, double satZ, double satVX, double satVY, double satVZ, double* range,
              double* rangeRate) {
    const double dx = satX - siteX, dy = satY - siteY, dz = satZ - siteZ;
    const double r = std::sqrt(dx * dx + dy * dy + dz * dz);
    *range = r;
    *rangeRate = (dx * (satVX - siteVX) + dy * (satVY - siteVY) + dz * satVZ) / r;
}

void GetNewSubSatPoint(double X, double Y, double Z, double t, double t0, double theta0,
                       double* longitude, double* latitude, double* height) {
    const double theta = ((t - t0) * kSiderealPerSolarDay + theta0) * kTwoPi;
    *longitude = ReduceTwoPi(theta - std::atan2(Y, X));
    *latitude = std::atan(Z / std::sqrt(X * X + Y * Y));
    *height = std::sqrt(X * X + Y * Y + Z * Z) - kEarthRadiusKm;
}

void GetBearings(const SiteRec* site, double latitude, double longitude, double r, double* azimuth,
                 double* elevation, double* range) {
    const double cosBeta = std::clamp(
        std::cos(latitude) * site->CosSiteLat * std::cos(site->siteLongRads - longitude) +
            std::sin(latitude) * site->SinSiteLat,
        -1.0, 1.0);
    const double beta = std::acos(cosBeta);
    const double sinBeta = std::sin(beta);
    double az = std::acos(
        std::clamp((std::sin(latitude) - site->SinSiteLat * cosBeta) / (site->CosSiteLat * sinBeta),
                   -1.0, 1.0));
    double difference = site->siteLongRads - longitude;
    difference = ReduceTwoPi(difference + kPi) - kPi;
    if (difference < 0.0) az = kTwoPi - az;
    const double G = site->siteAltitudeGEOC;
    if (azimuth != nullptr) *azimuth = az;
    if (elevation != nullptr) *elevation = std::atan((r * cosBeta - G) / (r * sinBeta));
    if (range != nullptr) *range = std::sqrt(r * r + G * G - 2.0 * r * G * cosBeta);
}

double GetElevationD(const SiteRec* site, double latitude, double longitude, double r) {
    double elevation = 0;
    GetBearings(site, latitude, longitude, r, nullptr, &elevation, nullptr);
    return elevation;
}

Bool32 EclipsedAt(double sunEccentricity, double r, double x, double y, double z,
                  const SatRec* sun) {
    const double e = sunEccentricity;
    const double sunDistance =
        kSunDistanceKm * (1.0 - e * e) / (1.0 + e * std::cos(sun->trueAnomaly));
    const double s = kSunLessEarthRadiusKm / sunDistance;  // sine of the shadow cone's half angle
    const double c = std::sqrt(1.0 - s * s);
    const double offset = s * r / kEarthRadiusKm;
    const double sunLength =
        std::sqrt(sun->SatX * sun->SatX + sun->SatY * sun->SatY + sun->SatZ * sun->SatZ);
    const double k = c * (x * sun->SatX + y * sun->SatY + z * sun->SatZ) / (r * sunLength) + offset;
    return k < 0.0 && k < c * (-std::sqrt(r * r - kEarthRadiusSquared) / r) + offset;
}

Bool32 Eclipsed(double sunEccentricity, double r, const SatRec* sat, const SatRec* sun) {
    return EclipsedAt(sunEccentricity, r, sat->SatX, sat->SatY, sat->SatZ, sun);
}

float AngleBetweenVectors(const Vector3F* a, const Vector3F* b) {
    const float lengths = std::sqrt(Dot(a, a)) * std::sqrt(Dot(b, b));
    float cosine = Dot(a, b) / lengths;
    if (cosine > 1.0f) cosine = 1.0f;  // rounding can push it over; below -1 is left alone
    return std::acos(cosine);
}

float CalcSquintAngle(const SatRec* rec, const Point3F* sitePoint, Point3F* satPosition,
                      Point3F* boreSiteEnd, Vector3F* boreSiteDirection) {
    const float radius = static_cast<float>(rec->satOrbitRadius / kEarthRadiusKm);
    const Matrix4x4F ground =
        SurfaceRotation(rec->subSatPtLatitudeRads, rec->subSatPtLongitudeRads);
    const Point3F above{0.0f, 0.0f, radius};
    const Point3F sat = TransformPoint(&above, &ground);

    const Vector3F down{0.0f, 0.0f, -radius};
    Vector3F nadir = TransformVector(&down, &ground);
    nadir = Normalize(&nadir);

    // The attitude turns the nadir direction about the satellite's own point.
    const double inclination = rec->satKep.inclination;
    const float xAngle =
        static_cast<float>(-inclination * (rec->meanAnomaly / 360.0 * kDegreesToRadians));
    const float yAngle =
        static_cast<float>(rec->bLonDegs * kDegreesToRadians + (kPi - rec->trueAnomaly));
    const float zAngle = static_cast<float>(rec->bLatDegs * kDegreesToRadians);
    const Matrix4x4F attitude = MatrixRotateAboutPoint(&sat, xAngle, yAngle, zAngle);
    Vector3F axis = TransformVector(&nadir, &attitude);
    axis = Normalize(&axis);

    Vector3F toSite = PointDifference(sitePoint, &sat);
    toSite = Normalize(&toSite);

    if (satPosition != nullptr) *satPosition = sat;
    if (boreSiteEnd != nullptr)
        *boreSiteEnd =
            Point3F{sat.x + axis.x * radius, sat.y + axis.y * radius, sat.z + axis.z * radius};
    if (boreSiteDirection != nullptr) *boreSiteDirection = axis;
    return AngleBetweenVectors(&toSite, &axis);
}

double CloseEnough(double a, double b) {
    return std::fabs(a - b);
}

}  // namespace veloran
