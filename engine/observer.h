// Observer geometry: the site on the oblate Earth, look angles, range and
// range rate, the sub-satellite point, eclipse and antenna squint.
#pragma once

#include "engine/satrec.h"
#include "engine/siterec.h"
#include "engine/vector3.h"

namespace veloran {

// Radians, sines and cosines and the geocentric radius of the site from the
// degrees and metres the user entered. Null does nothing.
void SitePreCalc(SiteRec* site);

// The site as a point on the unit sphere of the 3D scene. Null does nothing.
void SiteCalculations(SiteRec* site);

// The ellipsoid terms of a site for one latitude (radians) and height (km):
// the geocentric latitude's sine and cosine and the two radii the site's
// position is built from.
struct SiteEllipsoid {
    double latitude, height;
    double sinLat, cosLat, G1, G2;
};
void GetSiteEllipsoid(double latitude, double height, SiteEllipsoid* out);

// GetSitePosition from terms the caller holds: no shared state, so any number
// of threads may call it at once.
void GetSitePositionFrom(const SiteEllipsoid* terms, double longitude, double t, double t0,
                         double theta0, double* X, double* Y, double* Z, double* VX, double* VY,
                         double rotation[3][3]);

// Site position (km) and velocity (km/s; z velocity is 0) at epoch day t and
// the topocentric rotation whose rows are south, east and up. The longitude is
// west positive. The ellipsoid terms are cached for the last latitude and
// height (one process-wide cache; the longitude enters every call).
void GetSitePosition(double latitude, double longitude, double height, double t, double t0,
                     double theta0, double* X, double* Y, double* Z, double* VX, double* VY,
                     double rotation[3][3]);

// South, east and up components (km) of the satellite as seen from the site.
void GetTopocentric(const double rotation[3][3], double satX, double satY, double satZ,
                    double siteX, double siteY, double siteZ, double* south, double* east,
                    double* up);

// Azimuth (north through east, [0, 2 pi)) and elevation, radians.
void GetNewBearings(const double rotation[3][3], double satX, double satY, double satZ,
                    double siteX, double siteY, double siteZ, double* azimuth, double* elevation);

// Range (km) and range rate (km/s, positive while the distance grows).
void GetRange(double siteX, double siteY, double siteZ, double siteVX, double siteVY, double satX,
              double satY, double satZ, double satVX, double satVY, double satVZ, double* range,
              double* rangeRate);

// Sub-satellite longitude (west positive, [0, 2 pi)), geocentric latitude
// (radians) and height above 6378.16 km.
void GetNewSubSatPoint(double X, double Y, double Z, double t, double t0, double theta0,
                       double* longitude, double* latitude, double* height);

// Spherical look angles of a point above (latitude, west-positive longitude)
// at radius r km: azimuth, elevation (radians) and range (km).
void GetBearings(const SiteRec* site, double latitude, double longitude, double r, double* azimuth,
                 double* elevation, double* range);
double GetElevationD(const SiteRec* site, double latitude, double longitude, double r);

// True when a satellite at radius r (km) and position (x, y, z) is in the
// Earth's shadow, the Sun being the pseudo-satellite `sun` with eccentricity
// sunEccentricity.
Bool32 EclipsedAt(double sunEccentricity, double r, double x, double y, double z,
                  const SatRec* sun);
// The same for the satellite's stored position (SatX, SatY, SatZ).
Bool32 Eclipsed(double sunEccentricity, double r, const SatRec* sat, const SatRec* sun);

// Angle (radians) between two vectors; the cosine is clamped at +1 only.
float AngleBetweenVectors(const Vector3F* a, const Vector3F* b);

// Squint angle between the spacecraft antenna axis (from bLatDegs/bLonDegs)
// and the direction to the site, and the 3D view's satellite point, axis end
// point and axis direction (units of Earth radii).
float CalcSquintAngle(const SatRec* rec, const Point3F* sitePoint, Point3F* satPosition,
                      Point3F* boreSiteEnd, Vector3F* boreSiteDirection);

// |a - b|; the caller compares it with its own tolerance.
double CloseEnough(double a, double b);

}  // namespace veloran
