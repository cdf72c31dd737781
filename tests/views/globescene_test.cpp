// The globe's scene against known geometry: the site on the sphere, a
// geostationary satellite, orbital-plane normals, and the dead-spot flags
// kept between frames.
#include "views/globescene.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "data/settings.h"
#include "data/userdefaults.h"
#include "engine/observer.h"
#include "tests/support/element_sets.h"
#include "tests/views/viewtestutil.h"
#include "views/globeoptions.h"

namespace veloran {
namespace {

constexpr double kDeg = kDegreesToRadians;
// Greenwich mean sidereal angle at 2026-11-16 12:00 UTC (JD 2461361.0), from
// Meeus, Astronomical Algorithms, eq. 12.4: 235.575 degrees.
constexpr double kGmstAtTestEpochDegs = 235.575;

void ExpectNear(const Point3F& p, float x, float y, float z, float tolerance) {
    EXPECT_NEAR(p.x, x, tolerance);
    EXPECT_NEAR(p.y, y, tolerance);
    EXPECT_NEAR(p.z, z, tolerance);
}

TEST(GlobeScene, SiteSitsWhereItsLatitudeAndLongitudeSay) {
    // Expected points from the frame's axes: +y the North Pole, -z the
    // Greenwich meridian, +x 90 degrees west.
    struct Case {
        double lat, lonWest;
        float x, y, z;
    } cases[] = {
        {0.0, 0.0, 0.0f, 0.0f, -1.0f},
        {45.0, 90.0, 0.70711f, 0.70711f, 0.0f},
        {-30.0, 270.0, -0.86603f, -0.5f, 0.0f},
        {90.0, 123.0, 0.0f, 1.0f, 0.0f},
        {43.7064, 79.2442, 0.71019f, 0.69096f, -0.13491f},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.lat);
        SiteRec site = testing::MakeSite(c.lat, c.lonWest, 0.0);
        SiteCalculations(&site);
        GlobeInput in;
        in.epoch = 10000.0;
        in.site = &site;
        GlobeScene scene;
        GlobeSceneBuilder().build(&in, &scene);
        ExpectNear(scene.site, c.x, c.y, c.z, 2e-4f);
        // The engine's own site point for the squint agrees with the scene.
        ExpectNear(site.sitePosition, c.x, c.y, c.z, 2e-4f);
    }
}

TEST(GlobeScene, GeostationarySatelliteStaysOverItsLongitudeOnTheEquator) {
    // Right ascension = node + perigee + anomaly = sidereal angle + 75:
    // the satellite stands over 75 degrees east. A real geostationary orbit
    // keeps a few hundredths of a degree of inclination; the engine's
    // spherical sub-satellite point reads the side of the node from the
    // latitude's sign, which an inclination of exactly zero does not give.
    auto geo = testing::MakeSat("GEO", 1.00273791, 0.05, 0.0, kGmstAtTestEpochDegs + 75.0, 0.0);
    SiteRec site = testing::MakeSite(0.0, 0.0, 0.0);
    SiteCalculations(&site);
    const double radius = 42164.0 / 6378.16;  // geostationary radius, Earth radii
    GlobeInput in;
    in.sats = geo.get();
    in.totalSats = 1;
    in.mainSatNum = 1;
    in.site = &site;
    GlobeSceneBuilder builder;
    GlobeScene scene;
    for (double hours : {0.0, 1.0, 7.0}) {
        SCOPED_TRACE(hours);
        in.epoch = geo->satKep.epochDay + hours / 24.0;
        builder.build(&in, &scene);
        ASSERT_TRUE(scene.hasMain);
        const float r = static_cast<float>(radius);
        ExpectNear(scene.mainSat, r * static_cast<float>(-std::sin(75.0 * kDeg)), 0.0f,
                   r * static_cast<float>(-std::cos(75.0 * kDeg)), 0.03f);
    }
}

TEST(GlobeScene, OrbitalPlaneNormalFollowsInclinationAndNode) {
    const double theta = kGmstAtTestEpochDegs * kDeg;
    struct Case {
        double inclination, nodeFromSidereal;  // degrees
        float x, y, z;
    } cases[] = {
        {0.0, 37.0, 0.0f, 1.0f, 0.0f},              // equatorial: the axis
        {90.0, 0.0, 1.0f, 0.0f, 0.0f},              // plane through Greenwich: normal to 90 W
        {60.0, 90.0, 0.0f, 0.5f, -0.86603f},        // normal over Greenwich at 30 N
        {180.0, 12.0, 0.0f, -1.0f, 0.0f},           // retrograde equatorial
        {98.0, 180.0, -0.99027f, -0.13917f, 0.0f},  // sun-synchronous, node over 180
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.inclination);
        const Vector3F n =
            OrbitalPlaneNormal(c.inclination * kDeg, theta + c.nodeFromSidereal * kDeg, theta);
        ExpectNear(Point3F{n.x, n.y, n.z}, c.x, c.y, c.z, 1e-4f);
    }
}

TEST(GlobeScene, OrbitRingPassesThroughTheSatellite) {
    // The ring comes from the orbit's vectors, the satellite from its
    // sub-satellite point: two routes that must meet.
    auto sat = testing::MakeSat("LEO", 14.3, 97.5, 40.0, 123.0, 0.01);
    SiteRec site = testing::MakeSite(45.0, 75.0, 0.0);
    SiteCalculations(&site);
    GlobeInput in;
    in.sats = sat.get();
    in.totalSats = 1;
    in.mainSatNum = 1;
    in.site = &site;
    in.epoch = sat->satKep.epochDay + 0.3;
    in.options.latLongLines = false;
    in.options.groundCoverage = false;
    in.options.groundTrack = false;
    in.options.skyTrack = false;
    GlobeScene scene;
    GlobeSceneBuilder().build(&in, &scene);
    ASSERT_TRUE(scene.hasMain);
    float nearest = 1e9f;
    for (const GlobeVertex& v : scene.lines) {
        const float dx = v.x - scene.mainSat.x, dy = v.y - scene.mainSat.y,
                    dz = v.z - scene.mainSat.z;
        nearest = std::min(nearest, std::sqrt(dx * dx + dy * dy + dz * dz));
    }
    EXPECT_LT(nearest, 0.04f);  // half a ring segment at 1.1 Earth radii is 0.036
}

TEST(GlobeScene, DeadSpotFlagsKeepTheirValuesForUnknownStates) {
    struct Step {
        int state;
        bool south, show;
    } steps[] = {{1, true, true},    {7, true, true}, {2, false, true}, {0, false, false},
                 {-1, false, false}, {1, true, true}, {0, true, false}};
    GlobeDeadSpot d;
    for (const Step& s : steps) {
        SCOPED_TRACE(s.state);
        ApplyDeadSpotState(s.state, &d);
        EXPECT_EQ(d.southIsDead, s.south);
        EXPECT_EQ(d.showDeadSpotCrossing, s.show);
    }
}

TEST(GlobeOptions, RoundTripThroughTheSettings) {
    GlobeOptions a;
    a.cameraPOV = 2;
    a.resolution = kGlobeWireFrame;
    a.cameraDistance = 7.5;
    a.nightLight = 35;
    a.trackList = a.labels = a.skyTrack = a.orbitalPlane = false;
    GlobeOptions b;  // every switch on
    b.cameraPOV = 3;
    b.resolution = 0;
    b.cameraDistance = 1.5;
    b.nightLight = 100;
    for (const GlobeOptions& want : {a, b}) {
        SCOPED_TRACE(want.cameraPOV);
        SiteRec site{};
        SetSiteDefaults(&site);
        ViewPrefs view;
        StoreGlobeOptions(&want, &site, &view);
        MemoryUserDefaults defaults;
        SavePrefs(site, view, &defaults);
        SiteRec readSite{};
        SetSiteDefaults(&readSite);
        ViewPrefs readView;
        ReadPrefs(defaults, &readSite, &readView);
        const GlobeOptions got = GlobeOptionsFromSettings(&readSite, &readView);
        EXPECT_EQ(got.cameraPOV, want.cameraPOV);
        EXPECT_EQ(got.resolution, want.resolution);
        EXPECT_DOUBLE_EQ(got.cameraDistance, want.cameraDistance);
        EXPECT_EQ(got.nightLight, want.nightLight);
        const bool gotFlags[] = {got.trackList,    got.groundCoverage, got.labels,
                                 got.latLongLines, got.skyTrack,       got.groundTrack,
                                 got.orbitalPlane, got.cityLights};
        const bool wantFlags[] = {want.trackList,    want.groundCoverage, want.labels,
                                  want.latLongLines, want.skyTrack,       want.groundTrack,
                                  want.orbitalPlane, want.cityLights};
        for (int i = 0; i < 8; ++i) EXPECT_EQ(gotFlags[i], wantFlags[i]) << i;
    }
}

TEST(GlobeOptions, AFirstStartShowsEverything) {
    SiteRec site;
    SetSiteDefaults(&site);
    const ViewPrefs view;
    const GlobeOptions got = GlobeOptionsFromSettings(&site, &view);
    const GlobeOptions want;
    EXPECT_EQ(got.cameraPOV, want.cameraPOV);
    EXPECT_EQ(got.resolution, want.resolution);
    EXPECT_DOUBLE_EQ(got.cameraDistance, want.cameraDistance);
    EXPECT_EQ(got.nightLight, want.nightLight);
    const bool flags[] = {got.trackList, got.groundCoverage, got.labels,       got.latLongLines,
                          got.skyTrack,  got.groundTrack,    got.orbitalPlane, got.cityLights};
    for (int i = 0; i < 8; ++i) EXPECT_TRUE(flags[i]) << i;
}

TEST(GlobeOptions, HandEditedValuesComeBackUsable) {
    SiteRec site{};
    ViewPrefs view;
    site.cameraPOV = 9;
    site.maxRezTex = -4;
    site.cameraDistance = 0.0;  // never stored
    site.nightLight = 400;
    GlobeOptions o = GlobeOptionsFromSettings(&site, &view);
    EXPECT_EQ(o.cameraPOV, 3);
    EXPECT_EQ(o.resolution, 0);
    EXPECT_DOUBLE_EQ(o.cameraDistance, GlobeOptions{}.cameraDistance);
    EXPECT_EQ(o.nightLight, 100);
    site.cameraDistance = 1e6;
    EXPECT_DOUBLE_EQ(GlobeOptionsFromSettings(&site, &view).cameraDistance, kGlobeMaxDistance);
}

}  // namespace
}  // namespace veloran
