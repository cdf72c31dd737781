// Builds the 3D globe's scene: positions at the scene's epoch from each
// satellite's elements, drawn into buffers that keep their capacity from one
// tick to the next.
#include "views/globescene.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "engine/observer.h"
#include "engine/orbit.h"

namespace veloran {
namespace {

// The Moon at its true distance (60 Earth radii) would be a speck behind the
// camera's far plane; it is drawn in its true direction, nearer and larger.
constexpr float kMoonDrawDistance = 12.0f;
constexpr float kMoonDrawRadius = 0.6f;
constexpr int kRingSegments = 64;       // orbital planes
constexpr int kFootprintSegments = 40;  // coverage circles
constexpr int kTrackSteps = 120;        // ground and sky tracks, per orbit
constexpr int kConeSides = 16;          // spacecraft beam cone
constexpr double kGridStepDegs = 15.0;
constexpr double kDefaultBeamWidthDegs = 40.0;  // a mode that gives no beam width
constexpr float kSurfaceLift = 1.003f;          // lines on the ground stay above the sphere

struct Rgba {
    float r, g, b, a;
};
constexpr Rgba kGridColour{0.55f, 0.62f, 0.75f, 0.45f};
constexpr Rgba kMainColour{1.0f, 0.25f, 0.2f, 1.0f};
constexpr Rgba kOtherColour{1.0f, 0.85f, 0.3f, 1.0f};
constexpr Rgba kPlaneColour{0.3f, 0.8f, 1.0f, 0.7f};
constexpr Rgba kMainPlaneColour{0.45f, 1.0f, 0.55f, 0.9f};
constexpr Rgba kGroundTrackColour{1.0f, 1.0f, 0.4f, 0.9f};
constexpr Rgba kSkyTrackColour{1.0f, 0.45f, 1.0f, 1.0f};
constexpr Rgba kFootprintColour{1.0f, 1.0f, 1.0f, 0.6f};
constexpr Rgba kSiteColour{0.2f, 1.0f, 0.3f, 1.0f};
constexpr Rgba kAntennaColour{0.2f, 1.0f, 0.3f, 1.0f};
constexpr Rgba kDeadSpotColour{1.0f, 0.6f, 0.1f, 1.0f};
constexpr Rgba kFlippedColour{1.0f, 0.15f, 0.15f, 1.0f};
constexpr Rgba kBeamColour{1.0f, 0.55f, 0.1f, 0.9f};
constexpr Rgba kSquintColour{0.95f, 0.95f, 0.95f, 0.8f};
constexpr Rgba kCityColour{1.0f, 0.85f, 0.5f, 1.0f};

Point3F Scaled(const Point3F& p, float s) {
    return Point3F{p.x * s, p.y * s, p.z * s};
}

Point3F Along(const Point3F& from, const Vector3F& dir, float length) {
    return Point3F{from.x + dir.x * length, from.y + dir.y * length, from.z + dir.z * length};
}

Vector3F Cross(const Vector3F& a, const Vector3F& b) {
    return Vector3F{a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

Vector3F Unit(const Vector3F& v) {
    const float n = std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z);
    if (!(n > 0.0f)) return Vector3F{0.0f, 1.0f, 0.0f};
    return Vector3F{v.x / n, v.y / n, v.z / n};
}

bool Finite(const Point3F& p) {
    return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

void AddLine(GlobeScene* s, const Point3F& a, const Point3F& b, const Rgba& c) {
    if (!Finite(a) || !Finite(b)) return;
    s->lines.push_back({a.x, a.y, a.z, c.r, c.g, c.b, c.a});
    s->lines.push_back({b.x, b.y, b.z, c.r, c.g, c.b, c.a});
}

void AddPoint(std::vector<GlobeVertex>* v, const Point3F& p, const Rgba& c) {
    if (!Finite(p)) return;
    v->push_back({p.x, p.y, p.z, c.r, c.g, c.b, c.a});
}

void AddLabel(GlobeScene* s, const Point3F& at, const Rgba& c, const char* text) {
    if (!Finite(at)) return;
    GlobeLabel label{};
    label.at = at;
    label.r = c.r;
    label.g = c.g;
    label.b = c.b;
    std::snprintf(label.text, sizeof label.text, "%s", text);
    s->labels.push_back(label);
}

double SiderealAngle(double t) {
    return ReduceTwoPi((t * kSiderealPerSolarDay + kSiderealAtEpochDayZero) * kTwoPi);
}

// Propagates `scratch` (elements copied from `sat`) to epoch day t; false
// when the elements give no finite position.
bool Propagate(const SatRec* sat, SatRec* scratch, double t) {
    scratch->satKep = sat->satKep;
    scratch->satRAANPrecession = sat->satRAANPrecession;
    scratch->perigeePrecession = sat->perigeePrecession;
    scratch->hasBVals = sat->hasBVals;
    scratch->bLatDegs = sat->bLatDegs;
    scratch->bLonDegs = sat->bLonDegs;
    if (!(sat->satKep.semiMajorAxis > 0.0) || !(sat->satKep.eccentricity < 1.0)) return false;
    SolveKeplerD(t, &scratch->satKep, &scratch->meanAnomaly, &scratch->trueAnomaly,
                 &scratch->satOrbitRadius);
    GetSubSatPointD(scratch, t, &scratch->subSatPtLatitudeRads, &scratch->subSatPtLongitudeRads);
    return std::isfinite(scratch->satOrbitRadius) && std::isfinite(scratch->subSatPtLatitudeRads) &&
           std::isfinite(scratch->subSatPtLongitudeRads);
}

Point3F SatPoint(const SatRec* rec) {
    return GlobePoint(rec->subSatPtLatitudeRads, rec->subSatPtLongitudeRads,
                      rec->satOrbitRadius / kEarthRadiusKm);
}

void AddGrid(GlobeScene* s) {
    constexpr int kSteps = 36;
    for (double lon = 0.0; lon < 360.0; lon += kGridStepDegs) {
        const double l = lon * kDegreesToRadians;
        for (int i = 0; i < kSteps; ++i) {
            const double a = (-90.0 + 180.0 * i / kSteps) * kDegreesToRadians;
            const double b = (-90.0 + 180.0 * (i + 1) / kSteps) * kDegreesToRadians;
            AddLine(s, GlobePoint(a, l, kSurfaceLift), GlobePoint(b, l, kSurfaceLift), kGridColour);
        }
    }
    for (double lat = -75.0; lat <= 75.0; lat += kGridStepDegs) {
        const double a = lat * kDegreesToRadians;
        for (int i = 0; i < kSteps * 2; ++i) {
            const double l0 = kTwoPi * i / (kSteps * 2), l1 = kTwoPi * (i + 1) / (kSteps * 2);
            AddLine(s, GlobePoint(a, l0, kSurfaceLift), GlobePoint(a, l1, kSurfaceLift),
                    kGridColour);
        }
    }
}

// A small circle of angular radius `rho` about the unit vector `centre`, on
// the sphere of radius `radius`.
void AddCircle(GlobeScene* s, const Vector3F& centre, double rho, float radius, int segments,
               const Rgba& c) {
    const Vector3F helper =
        std::fabs(centre.y) < 0.9f ? Vector3F{0.0f, 1.0f, 0.0f} : Vector3F{1.0f, 0.0f, 0.0f};
    const Vector3F u = Unit(Cross(centre, helper));
    const Vector3F v = Cross(centre, u);
    const float cr = static_cast<float>(std::cos(rho)), sr = static_cast<float>(std::sin(rho));
    Point3F previous{};
    for (int i = 0; i <= segments; ++i) {
        const double a = kTwoPi * i / segments;
        const float ca = static_cast<float>(std::cos(a)), sa = static_cast<float>(std::sin(a));
        const Point3F p{radius * (centre.x * cr + (u.x * ca + v.x * sa) * sr),
                        radius * (centre.y * cr + (u.y * ca + v.y * sa) * sr),
                        radius * (centre.z * cr + (u.z * ca + v.z * sa) * sr)};
        if (i > 0) AddLine(s, previous, p, c);
        previous = p;
    }
}

void AddFootprint(GlobeScene* s, const SatRec* rec) {
    const double r = rec->satOrbitRadius / kEarthRadiusKm;
    if (!(r > 1.0)) return;
    const Point3F p = GlobePoint(rec->subSatPtLatitudeRads, rec->subSatPtLongitudeRads, 1.0);
    AddCircle(s, Vector3F{p.x, p.y, p.z}, std::acos(1.0 / r), kSurfaceLift, kFootprintSegments,
              kFootprintColour);
}

// The orbit's ellipse in the Earth-fixed frame of epoch day t: where the
// satellite would be at each true anomaly if the Earth stood still now.
void AddOrbitRing(GlobeScene* s, const SatRec* rec, double t, const Rgba& c) {
    const KepRec& k = rec->satKep;
    const double theta = SiderealAngle(t);
    Point3F previous{};
    for (int i = 0; i <= kRingSegments; ++i) {
        const double nu = kTwoPi * i / kRingSegments;
        double r = 0, x = 0, y = 0, z = 0, vx = 0, vy = 0, vz = 0;
        GetSatPosition(k.epochDay, k.epochRAAN, k.epochArgPerigee, k.semiMajorAxis, k.inclination,
                       k.eccentricity, rec->satRAANPrecession, rec->perigeePrecession, t, nu, &r,
                       &x, &y, &z, &vx, &vy, &vz);
        const double ct = std::cos(theta), st = std::sin(theta);
        const Vector3F v =
            GlobeFromEarthFixed((ct * x + st * y) / kEarthRadiusKm,
                                (-st * x + ct * y) / kEarthRadiusKm, z / kEarthRadiusKm);
        const Point3F p{v.x, v.y, v.z};
        if (i > 0) AddLine(s, previous, p, c);
        previous = p;
    }
}

// The next orbit of the main satellite: its ground track on the surface and,
// where it stands above the site's horizon, its sky track at its height.
void AddTracks(GlobeScene* s, const SatRec* sat, SatRec* scratch, double t, const Point3F& site,
               bool ground, bool sky) {
    const double meanMotion = sat->satKep.epochMeanMotion;
    const double span = meanMotion >= 1.0 ? 1.0 / meanMotion : 1.0;
    bool have = false;
    Point3F lastGround{}, lastSky{};
    bool lastUp = false;
    for (int i = 0; i <= kTrackSteps; ++i) {
        if (!Propagate(sat, scratch, t + span * i / kTrackSteps)) {
            have = false;
            continue;
        }
        const Point3F g =
            GlobePoint(scratch->subSatPtLatitudeRads, scratch->subSatPtLongitudeRads, kSurfaceLift);
        const Point3F p = SatPoint(scratch);
        const Vector3F toSat{p.x - site.x, p.y - site.y, p.z - site.z};
        const bool up = toSat.x * site.x + toSat.y * site.y + toSat.z * site.z > 0.0f;
        if (have && ground) AddLine(s, lastGround, g, kGroundTrackColour);
        if (have && sky && up && lastUp) AddLine(s, lastSky, p, kSkyTrackColour);
        lastGround = g;
        lastSky = p;
        lastUp = up;
        have = true;
    }
}

// The spacecraft's antenna axis, its beam as a cone and the line of the
// squint angle to the station.
void AddBeam(GlobeScene* s, SatRec* rec, const SiteRec* site) {
    Point3F sat{}, end{};
    Vector3F axis{};
    const float squint = CalcSquintAngle(rec, &site->sitePosition, &sat, &end, &axis);
    if (!std::isfinite(squint) || !Finite(sat) || !Finite(end)) return;
    s->hasBeam = true;
    s->squintRads = squint;
    AddLine(s, sat, end, kBeamColour);
    const ModeRec* mode = nullptr;
    if (rec->numberOfActiveChannels > 0 && rec->selectedModeIndex >= 0 &&
        rec->selectedModeIndex < kMaxModes)
        mode = &rec->modes[rec->selectedModeIndex];
    double width = mode != nullptr ? mode->beamDwnWidthDegs : 0.0;
    if (!(width > 0.0 && width < 180.0)) width = kDefaultBeamWidthDegs;
    const float length =
        std::sqrt((end.x - sat.x) * (end.x - sat.x) + (end.y - sat.y) * (end.y - sat.y) +
                  (end.z - sat.z) * (end.z - sat.z)) *
        0.6f;
    const float spread = length * static_cast<float>(std::tan(width * 0.5 * kDegreesToRadians));
    const Vector3F helper =
        std::fabs(axis.y) < 0.9f ? Vector3F{0.0f, 1.0f, 0.0f} : Vector3F{1.0f, 0.0f, 0.0f};
    const Vector3F u = Unit(Cross(axis, helper));
    const Vector3F v = Cross(axis, u);
    const Point3F base = Along(sat, axis, length);
    Point3F previous{};
    for (int i = 0; i <= kConeSides; ++i) {
        const double a = kTwoPi * i / kConeSides;
        const float ca = static_cast<float>(std::cos(a)) * spread,
                    sa = static_cast<float>(std::sin(a)) * spread;
        const Point3F rim{base.x + u.x * ca + v.x * sa, base.y + u.y * ca + v.y * sa,
                          base.z + u.z * ca + v.z * sa};
        if (i > 0) AddLine(s, previous, rim, kBeamColour);
        if (i % 4 == 0) AddLine(s, sat, rim, kBeamColour);
        previous = rim;
    }
    AddLine(s, sat, site->sitePosition, kSquintColour);
    char text[40];
    std::snprintf(text, sizeof text, "Squint %.1f\xC2\xB0", squint / kDegreesToRadians);
    AddLabel(s, Along(base, axis, 0.05f), kBeamColour, text);
}

// The station antenna's direction from the rotor's target, as a ray from
// the site. Elevations past 90 degrees (a flipped pass) look back over the top.
void AddAntennaRay(GlobeScene* s, const SiteRec* site) {
    const double lat = site->siteLatRads, lon = site->siteLongRads;
    const Vector3F up{static_cast<float>(std::cos(lat) * std::sin(lon)),
                      static_cast<float>(std::sin(lat)),
                      static_cast<float>(-std::cos(lat) * std::cos(lon))};
    const Vector3F north{static_cast<float>(-std::sin(lat) * std::sin(lon)),
                         static_cast<float>(std::cos(lat)),
                         static_cast<float>(std::sin(lat) * std::cos(lon))};
    const Vector3F east{static_cast<float>(-std::cos(lon)), 0.0f,
                        static_cast<float>(-std::sin(lon))};
    const double az = site->rotor_az * kDegreesToRadians, el = site->rotor_el * kDegreesToRadians;
    const float ce = static_cast<float>(std::cos(el)), se = static_cast<float>(std::sin(el));
    const float sa = static_cast<float>(std::sin(az)), ca = static_cast<float>(std::cos(az));
    const Vector3F dir{ce * sa * east.x + ce * ca * north.x + se * up.x,
                       ce * sa * east.y + ce * ca * north.y + se * up.y,
                       ce * sa * east.z + ce * ca * north.z + se * up.z};
    const Point3F from = Scaled(s->site, kSurfaceLift);
    const Point3F to = Along(from, dir, 1.5f);
    AddLine(s, from, to, kAntennaColour);
    AddLabel(s, to, kAntennaColour, "Antenna");
}

// The site's dead spot: the meridian from the site to the dead pole, red
// while the rotor works this pass flipped.
void AddDeadSpot(GlobeScene* s, const SiteRec* site, bool flipped) {
    if (!s->deadSpot.showDeadSpotCrossing) return;
    const double pole = s->deadSpot.southIsDead ? -kPi / 2.0 : kPi / 2.0;
    const Rgba& c = flipped ? kFlippedColour : kDeadSpotColour;
    constexpr int kSteps = 36;
    for (int i = 0; i < kSteps; ++i) {
        const double a = site->siteLatRads + (pole - site->siteLatRads) * i / kSteps;
        const double b = site->siteLatRads + (pole - site->siteLatRads) * (i + 1) / kSteps;
        AddLine(s, GlobePoint(a, site->siteLongRads, kSurfaceLift * 1.002f),
                GlobePoint(b, site->siteLongRads, kSurfaceLift * 1.002f), c);
    }
}

}  // namespace

void ApplyDeadSpotState(int32_t deadSpotState, GlobeDeadSpot* deadSpot) {
    switch (deadSpotState) {
        case 1:
            deadSpot->southIsDead = true;
            deadSpot->showDeadSpotCrossing = true;
            break;
        case 2:
            deadSpot->showDeadSpotCrossing = true;
            deadSpot->southIsDead = false;
            break;
        case 0:
            deadSpot->showDeadSpotCrossing = false;
            break;
        default:
            break;
    }
}

Point3F GlobePoint(double latRads, double lonWestRads, double radius) {
    const double c = std::cos(latRads);
    return Point3F{static_cast<float>(radius * c * std::sin(lonWestRads)),
                   static_cast<float>(radius * std::sin(latRads)),
                   static_cast<float>(-radius * c * std::cos(lonWestRads))};
}

Vector3F GlobeFromEarthFixed(double x, double y, double z) {
    return Vector3F{static_cast<float>(-y), static_cast<float>(z), static_cast<float>(-x)};
}

Vector3F OrbitalPlaneNormal(double inclination, double raan, double siderealAngle) {
    // The angular momentum points at right ascension raan - 90 degrees and
    // declination 90 degrees - inclination.
    const double si = std::sin(inclination);
    const double x = si * std::sin(raan), y = -si * std::cos(raan), z = std::cos(inclination);
    const double c = std::cos(siderealAngle), s = std::sin(siderealAngle);
    return GlobeFromEarthFixed(c * x + s * y, -s * x + c * y, z);
}

GlobeSceneBuilder::GlobeSceneBuilder() : scratch_(std::make_unique<SatRec>()) {
    std::memset(scratch_.get(), 0, sizeof(SatRec));
}

GlobeSceneBuilder::~GlobeSceneBuilder() = default;

void GlobeSceneBuilder::build(const GlobeInput* in, GlobeScene* s) {
    // Room for a busy scene the first time; later builds reuse it.
    if (s->lines.capacity() < 40000) {
        s->lines.reserve(40000);
        s->points.reserve(kMaxSatellites + 8);
        s->cityLights.reserve(2048);
        s->labels.reserve(kMaxSatellites + 16);
    }
    s->lines.clear();
    s->points.clear();
    s->cityLights.clear();
    s->labels.clear();
    s->hasMain = false;
    s->hasMoon = false;
    s->hasBeam = false;
    s->mainPoint = -1;
    s->satelliteCount = 0;
    s->options = in->options;
    s->epoch = in->epoch;
    if (in->site == nullptr || !std::isfinite(in->epoch)) return;
    const SiteRec* site = in->site;
    const GlobeOptions& o = in->options;
    const double t = in->epoch;
    SatRec* scratch = scratch_.get();

    ApplyDeadSpotState(site->deadSpotState, &deadSpot_);
    s->deadSpot = deadSpot_;
    s->site = GlobePoint(site->siteLatRads, site->siteLongRads, 1.0);

    const auto entry = [in](int32_t num) -> const SatRec* {
        return num >= 1 && num <= in->totalSats && in->sats != nullptr ? &in->sats[num - 1]
                                                                       : nullptr;
    };
    if (const SatRec* sun = entry(in->sunNum); sun != nullptr && Propagate(sun, scratch, t)) {
        const Point3F p =
            GlobePoint(scratch->subSatPtLatitudeRads, scratch->subSatPtLongitudeRads, 1.0);
        s->sunDirection = Vector3F{p.x, p.y, p.z};
    }
    if (const SatRec* moon = entry(in->moonNum); moon != nullptr && Propagate(moon, scratch, t)) {
        s->moon = GlobePoint(scratch->subSatPtLatitudeRads, scratch->subSatPtLongitudeRads,
                             kMoonDrawDistance);
        s->moonRadius = kMoonDrawRadius;
        s->hasMoon = true;
        if (o.labels)
            AddLabel(s, Along(s->moon, Vector3F{0, 1, 0}, 0.8f), kFootprintColour, "Moon");
    }

    if (o.latLongLines) AddGrid(s);
    if (o.cityLights && in->cityLights != nullptr)
        for (int32_t i = 0; i < in->cityLightCount; ++i)
            AddPoint(&s->cityLights, in->cityLights[i], kCityColour);

    AddPoint(&s->points, Scaled(s->site, kSurfaceLift), kSiteColour);
    if (o.labels) AddLabel(s, Scaled(s->site, 1.02f), kSiteColour, site->siteName);
    AddDeadSpot(s, site, in->flipped);
    AddAntennaRay(s, site);

    for (int32_t n = 1; n <= in->totalSats && in->sats != nullptr; ++n) {
        if (n == in->sunNum || n == in->moonNum) continue;
        const SatRec* sat = &in->sats[n - 1];
        const bool isMain = n == in->mainSatNum;
        if (!isMain && !(o.trackList && sat->tracked && sat->enabled)) continue;
        if (!Propagate(sat, scratch, t)) continue;
        const Point3F p = SatPoint(scratch);
        if (!Finite(p)) continue;
        if (isMain) {
            s->hasMain = true;
            s->mainSat = p;
            s->mainPoint = static_cast<int32_t>(s->points.size());
            // Where the satellite is a minute on gives the camera behind it
            // its direction of flight over the turning Earth.
            Propagate(sat, scratch, t + 1.0 / 1440.0);
            const Point3F q = SatPoint(scratch);
            s->mainVelocity = Unit(Vector3F{q.x - p.x, q.y - p.y, q.z - p.z});
            Propagate(sat, scratch, t);
        }
        AddPoint(&s->points, p, isMain ? kMainColour : kOtherColour);
        ++s->satelliteCount;
        if (o.labels) AddLabel(s, p, isMain ? kMainColour : kOtherColour, sat->name);
        if (o.groundCoverage) AddFootprint(s, scratch);
        if (o.orbitalPlane) AddOrbitRing(s, sat, t, isMain ? kMainPlaneColour : kPlaneColour);
        if (isMain && sat->hasBVals) {
            scratch->numberOfActiveChannels = sat->numberOfActiveChannels;
            scratch->selectedModeIndex = sat->selectedModeIndex;
            if (sat->selectedModeIndex >= 0 && sat->selectedModeIndex < kMaxModes)
                scratch->modes[sat->selectedModeIndex] = sat->modes[sat->selectedModeIndex];
            AddBeam(s, scratch, site);
        }
        if (isMain && (o.groundTrack || o.skyTrack))
            AddTracks(s, sat, scratch, t, s->site, o.groundTrack, o.skyTrack);
    }
}

}  // namespace veloran
