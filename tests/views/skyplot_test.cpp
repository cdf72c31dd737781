// The polar sky plot: where directions land, the antenna over the top, and
// which items a scene draws.

#include "views/skyplot.h"

#include <gtest/gtest.h>

#include <string>

namespace veloran {
namespace {

int Count(const DisplayList& list, const std::string& cls) {
    int n = 0;
    for (const DisplayItem& item : list.items) n += item.cls == cls;
    return n;
}

TEST(SkyPlot, DirectionsLandOnTheDisc) {
    // A 400-pixel plot keeps 24 pixels round the disc, so the horizon has a
    // radius of 176 about (200, 200); north is up, east to the right.
    struct Row {
        double az, el;
        float x, y;
    };
    const Row rows[] = {
        {0, 90, 200, 200}, {0, 0, 200, 376},    {90, 0, 376, 200},   {180, 0, 200, 24},
        {270, 0, 24, 200}, {180, 45, 200, 112}, {90, -10, 376, 200}, {45, 90, 200, 200},
    };
    for (const Row& r : rows) {
        const PointF p = SkyPlotPoint(400.0f, {r.az, r.el});
        EXPECT_NEAR(p.x, r.x, 1e-3) << r.az << " " << r.el;
        EXPECT_NEAR(p.y, r.y, 1e-3) << r.az << " " << r.el;
    }
}

TEST(SkyPlot, AntennaOverTheTopLooksTheOtherWay) {
    // The steering's flip sends azimuth 200, elevation 10 as 20 / 170.
    struct Row {
        double az, el, skyAz, skyEl;
    };
    const Row rows[] = {
        {20, 170, 200, 10}, {200, 100, 20, 80}, {20, 80, 20, 80}, {350, 90, 350, 90}};
    for (const Row& r : rows) {
        const SkyDirection d = AntennaDirection({r.az, r.el});
        EXPECT_DOUBLE_EQ(d.azimuthDegs, r.skyAz);
        EXPECT_DOUBLE_EQ(d.elevationDegs, r.skyEl);
    }
}

TEST(SkyPlot, SceneDrawsWhatItKnows) {
    SkyPlotScene scene;
    scene.track = {{220, 0}, {150, 48}, {60, 0}};
    scene.aosText = "AOS 02:02:52";
    scene.hasSatellite = true;
    scene.satellite = {150, 48};
    scene.hasTarget = true;
    scene.target = {330, 132};
    DisplayList list;
    BuildSkyPlot(&scene, &list);
    EXPECT_EQ(list.width, 400.0f);
    EXPECT_EQ(Count(list, "track"), 1);
    EXPECT_EQ(Count(list, "aos"), 2) << "the dot and its time";
    EXPECT_EQ(Count(list, "max"), 1) << "no text given, the dot alone";
    EXPECT_EQ(Count(list, "target"), 1);
    EXPECT_EQ(Count(list, "rotor"), 0) << "the rotor reported nothing";
    EXPECT_EQ(Count(list, "satellite"), 1);
    for (const DisplayItem& item : list.items) {
        if (item.cls != "track") continue;
        const PointF start = SkyPlotPoint(400.0f, scene.track[0]);
        EXPECT_EQ(item.path.points[0].x, start.x);
        EXPECT_EQ(item.path.points[0].y, start.y);
    }

    scene.track.clear();
    scene.satellite.elevationDegs = -3;
    scene.hasRotor = true;
    BuildSkyPlot(&scene, &list);
    EXPECT_EQ(Count(list, "track") + Count(list, "aos") + Count(list, "satellite"), 0);
    EXPECT_EQ(Count(list, "rotor"), 1);
    EXPECT_GT(Count(list, "grid"), 0);
}

}  // namespace
}  // namespace veloran
