// World map builders: projection, coverage circles, ground track, dead-spot
// lines, night shading and Sun, drawing order and what a draw consumes.

#include "views/map2dview.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "engine/orbit.h"
#include "engine/timebase.h"
#include "tests/views/viewtestutil.h"

namespace veloran {
namespace {

using testing::CountOps;
using testing::ItemsOfClass;
using testing::MakeSat;
using testing::PlaceSat;
using testing::Utc;

constexpr double kDeg = 0.017453292519943295;

// A text measure that makes every label 40 pixels wide.
class FixedMeasure : public TextMeasure {
  public:
    double textWidth(const std::string&, double) const override { return 40.0; }
};

class MapTest : public ::testing::Test {
  protected:
    void SetUp() override {
        initWithFrame(&view, &measure);
        setMapWidth(&view, 1024, RectF{0, 0, 0, 0}, false);
        std::memset(&site, 0, sizeof site);
    }
    FixedMeasure measure;
    map_2D_view view;
    SiteRec site;
};

// --- Projection ----------------------------------------------------------

TEST(MapProjection, MeridiansEquatorAndPoles) {
    const double scale = 1024 / 360.0;
    // Greenwich on the equator is the middle of the map.
    PointF p = LonLatRadsToPoint(0.0, 0.0, scale);
    EXPECT_EQ(p.x, 512.0f);
    EXPECT_EQ(p.y, 256.0f);
    // 90 E is 90 degrees west-negative, or 270 west: three quarters across either way.
    EXPECT_EQ(LonLatRadsToPoint(-90.0 * kDeg, 0.0, scale).x, 768.0f);
    EXPECT_EQ(LonLatRadsToPoint(270.0 * kDeg, 0.0, scale).x, 768.0f);
    EXPECT_EQ(LonLatRadsToPoint(90.0 * kDeg, 0.0, scale).x, 256.0f);  // 90 W
    // 180 degrees is the left edge; a hair further west is the right edge.
    EXPECT_EQ(LonLatRadsToPoint(180.0 * kDeg, 0.0, scale).x, 0.0f);
    EXPECT_EQ(LonLatRadsToPoint(180.01 * kDeg, 0.0, scale).x, 1024.0f);
    // South Pole at the bottom, North Pole at the top: y grows northwards.
    EXPECT_EQ(LonLatRadsToPoint(0.0, -90.0 * kDeg, scale).y, 0.0f);
    EXPECT_EQ(LonLatRadsToPoint(0.0, 90.0 * kDeg, scale).y, 512.0f);
}

TEST(MapProjection, RoundsHalfAwayFromZero) {
    // One pixel per degree: 169.5 W lies 10.5 pixels from the left edge.
    EXPECT_EQ(LonLatRadsToPoint(169.5 * kDeg, 0.0, 1.0).x, 11.0f);
    EXPECT_EQ(LonLatRadsToPoint(0.0, -79.5 * kDeg, 1.0).y, 11.0f);
}

// --- Coverage circle -----------------------------------------------------

TEST_F(MapTest, CoverageCircleHasOnePointPerPixelOfHeight) {
    auto sat = MakeSat("ISS", 15.5, 51.6);
    PlaceSat(sat.get(), 10.0, 20.0, 420.0);
    Path path;
    constructCoverageCirclePath(&path, sat.get(), &view);
    EXPECT_EQ(static_cast<int>(path.points.size()), 512);
    EXPECT_EQ(CountOps(path, PathOp::Close), 0);  // never closed back to its start

    setMapWidth(&view, 4096, RectF{0, 0, 0, 0}, false);
    Path wide;
    constructCoverageCirclePath(&wide, sat.get(), &view);
    EXPECT_EQ(static_cast<int>(wide.points.size()), 2048);
}

TEST_F(MapTest, CoverageCircleRadiusIsTheGeometricHorizon) {
    // Horizon half-angle for a 420 km orbit: arccos(6378.16 / 6798.16) = 20.26 deg.
    auto sat = MakeSat("ISS", 15.5, 51.6);
    PlaceSat(sat.get(), 0.0, 0.0, 420.0);
    Path path;
    constructCoverageCirclePath(&path, sat.get(), &view);
    float top = 0, bottom = 1e9f, left = 1e9f, right = 0;
    for (const PathPoint& p : path.points) {
        top = std::fmax(top, p.y);
        bottom = std::fmin(bottom, p.y);
        left = std::fmin(left, p.x);
        right = std::fmax(right, p.x);
    }
    const double scale = 1024 / 360.0;
    EXPECT_NEAR(top, (90.0 + 20.26) * scale, 1.0);
    EXPECT_NEAR(bottom, (90.0 - 20.26) * scale, 1.0);
    EXPECT_NEAR(left, (180.0 - 20.26) * scale, 1.0);
    EXPECT_NEAR(right, (180.0 + 20.26) * scale, 1.0);
    // A site on a mountain sees a smaller circle: the site height enters.
    site.siteAltitudeM = 4000.0;
    drawGroundTrack(&view, 0.0, nullptr, &site, true);
    Path high;
    constructCoverageCirclePath(&high, sat.get(), &view);
    EXPECT_LT(high.points.front().y, path.points.front().y);
}

TEST_F(MapTest, CoverageCircleAcrossTheDateLineSplitsIntoArcs) {
    auto sat = MakeSat("AO-7", 12.5, 101.9);
    PlaceSat(sat.get(), 20.0, 178.0, 1450.0);
    Path path;
    constructCoverageCirclePath(&path, sat.get(), &view);
    bool nearLeft = false, nearRight = false;
    PointF previous{0, 0};
    for (const PathPoint& p : path.points) {
        nearLeft = nearLeft || p.x < 50;
        nearRight = nearRight || p.x > 974;
        // No line may run across the map: every segment stays short.
        if (p.op == PathOp::Line) {
            EXPECT_LE(std::fabs(p.x - previous.x), std::round(60 * 1024 / 360.0));
        }
        previous = {p.x, p.y};
    }
    EXPECT_TRUE(nearLeft);
    EXPECT_TRUE(nearRight);
    EXPECT_GE(CountOps(path, PathOp::Move), 2);  // the first point and the jump at the edge
}

TEST(MapHelpers, PointsWithinRangeIsASquare) {
    EXPECT_TRUE(pointsWithinRange({100, 100}, {160, 40}, 60));
    EXPECT_FALSE(pointsWithinRange({100, 100}, {161, 100}, 60));
    EXPECT_FALSE(pointsWithinRange({100, 100}, {100, 39}, 60));
}

// --- Satellites and labels -----------------------------------------------

TEST_F(MapTest, MainAndOtherSatellitesAndTheirLabels) {
    auto main = MakeSat("ISS", 15.5, 51.6);
    PlaceSat(main.get(), -30.0, 0.0, 420.0);  // southern half: name above the cross
    main->AOS = 1;
    auto other = MakeSat("AO-7", 12.5, 101.9);
    PlaceSat(other.get(), 40.0, -90.0, 1450.0);  // northern half: name below
    drawSatPath(&view, other.get(), false);
    drawSatPath(&view, main.get(), true);

    ASSERT_EQ(view.sat_labels.size(), 2u);
    const MDLabel& otherLabel = view.sat_labels[0];
    EXPECT_EQ(otherLabel.color, 0);
    EXPECT_EQ(otherLabel.name, "AO-7");
    const PointF o = LonLatRadsToPoint(90.0 * kDeg, 40.0 * kDeg, view.mScale);
    EXPECT_FLOAT_EQ(otherLabel.point.x, o.x - 20.0f);
    EXPECT_FLOAT_EQ(otherLabel.point.y, o.y - 25.0f);
    const MDLabel& mainLabel = view.sat_labels[1];
    EXPECT_EQ(mainLabel.color, 3);
    EXPECT_FLOAT_EQ(mainLabel.point.y, view.satPoint.y + 12.0f);
    EXPECT_TRUE(view.visible);
    EXPECT_EQ(view.secondary_sats.size(), 1u);

    DisplayList list;
    drawRect(&view, Utc(2026, 11, 21, 12, 0), &list);
    const auto mainCircle = ItemsOfClass(list, "footprint main");
    ASSERT_EQ(mainCircle.size(), 1u);
    EXPECT_FLOAT_EQ(mainCircle[0]->color.r, 1.0f);  // red while in view
    EXPECT_FLOAT_EQ(mainCircle[0]->color.b, 0.2f);
    const auto others = ItemsOfClass(list, "footprint");
    ASSERT_EQ(others.size(), 1u);
    EXPECT_FLOAT_EQ(others[0]->color.r, 0.6f);
    EXPECT_EQ(ItemsOfClass(list, "label").size(), 2u);
}

TEST_F(MapTest, MainSatelliteIsBlueOutOfView) {
    auto main = MakeSat("ISS", 15.5, 51.6);
    PlaceSat(main.get(), 0.0, 0.0, 420.0);
    main->AOS = 0;
    drawSatPath(&view, main.get(), true);
    DisplayList list;
    drawRect(&view, Utc(2026, 11, 21, 12, 0), &list);
    const auto circle = ItemsOfClass(list, "footprint main");
    ASSERT_EQ(circle.size(), 1u);
    EXPECT_FLOAT_EQ(circle[0]->color.r, 0.2f);
    EXPECT_FLOAT_EQ(circle[0]->color.b, 1.0f);
}

// --- Ground track --------------------------------------------------------

// Track steps: each point after the first is one line segment, and the
// step is (1/1440 day) / pixels-per-degree, starting three steps in.
int TrackSteps(const map_2D_view& view) {
    return CountOps(view.mainSatGroundTrackPath, PathOp::Line);
}

TEST_F(MapTest, GroundTrackSpansOneOrbit) {
    auto leo = MakeSat("LEO", 15.0, 51.6);
    const double epoch = leo->satKep.epochDay + 0.1;
    drawGroundTrack(&view, epoch, leo.get(), &site, true);
    // One orbit is 96 minutes; 1440 * scale steps a day.
    const double steps = 1440.0 * view.mScale / 15.0;
    EXPECT_NEAR(TrackSteps(view), steps - 3, 2);
}

TEST_F(MapTest, GeostationaryAndSlowSatellitesGetOneDay) {
    const double stepsPerDay = 1440.0 * view.mScale;
    auto geo = MakeSat("GEO", 1.0027, 0.05);
    drawGroundTrack(&view, geo->satKep.epochDay, geo.get(), &site, true);
    EXPECT_NEAR(TrackSteps(view), stepsPerDay / 1.0027 - 3, 2);

    view.mainSatGroundTrackPath.clear();
    auto slow = MakeSat("SLOW", 0.5, 10.0);
    drawGroundTrack(&view, slow->satKep.epochDay, slow.get(), &site, true);
    EXPECT_NEAR(TrackSteps(view), stepsPerDay - 3, 2);  // one day, not two

    view.mainSatGroundTrackPath.clear();
    auto dead = MakeSat("DEAD", 0.0, 10.0);  // no mean motion: still one day, no endless loop
    drawGroundTrack(&view, dead->satKep.epochDay, dead.get(), &site, true);
    EXPECT_LE(TrackSteps(view), stepsPerDay);
}

TEST_F(MapTest, GroundTrackFollowsThePropagatedOrbitAndLeavesTheRecordAlone) {
    auto leo = MakeSat("LEO", 15.0, 51.6, 40.0, 10.0);
    const double epoch = leo->satKep.epochDay + 0.25;
    leo->trueAnomaly = 1.2345;
    drawGroundTrack(&view, epoch, leo.get(), &site, true);
    EXPECT_DOUBLE_EQ(leo->trueAnomaly, 1.2345);
    // The point ten steps in is where the engine puts the satellite then.
    const double step = (1.0 / 1440.0) / view.mScale;
    auto probe = MakeSat("LEO", 15.0, 51.6, 40.0, 10.0);
    OneShot(probe.get(), epoch + 10 * step);
    const PointF expected =
        LonLatRadsToPoint(probe->subSatPtLongitudeRads, probe->subSatPtLatitudeRads, view.mScale);
    int seen = 0;
    bool found = false;
    const auto& pts = view.mainSatGroundTrackPath.points;
    for (size_t i = 0; i < pts.size(); ++i) {
        if (pts[i].op != PathOp::Line) continue;
        if (seen++ == 7) {  // steps 3, 4, ... : the eighth segment ends at step 10
            EXPECT_FLOAT_EQ(pts[i].x, expected.x);
            EXPECT_FLOAT_EQ(pts[i].y, expected.y);
            found = true;
            break;
        }
    }
    EXPECT_TRUE(found);
    // The track never draws a line across the map.
    for (size_t i = 1; i < pts.size(); ++i)
        if (pts[i].op == PathOp::Line) {
            EXPECT_LE(std::fabs(pts[i].x - pts[i - 1].x), std::round(30 * view.mScale));
        }
}

// --- Site and dead spot ----------------------------------------------------

TEST_F(MapTest, DeadSpotLinesReachTheEdges) {
    const double lat = 43.7 * kDeg, lonWest = 79.2 * kDeg;
    const PointF s = LonLatRadsToPoint(lonWest, lat, view.mScale);

    drawSiteCross(&view, lat, lonWest, 1, false);
    ASSERT_EQ(view.siteMarkerPath.points.size(), 6u);  // cross and one line
    EXPECT_TRUE(view.showDeadSpot);
    EXPECT_FLOAT_EQ(view.siteMarkerPath.points[4].y, s.y - 10.0f);
    EXPECT_FLOAT_EQ(view.siteMarkerPath.points[5].y, 0.0f);  // southern edge
    EXPECT_FLOAT_EQ(view.siteMarkerPath.points[5].x, s.x);

    view.siteMarkerPath.clear();
    drawSiteCross(&view, lat, lonWest, 2, false);
    ASSERT_EQ(view.siteMarkerPath.points.size(), 6u);
    EXPECT_FLOAT_EQ(view.siteMarkerPath.points[4].y, s.y + 10.0f);
    EXPECT_FLOAT_EQ(view.siteMarkerPath.points[5].y, 512.0f);  // northern edge

    view.siteMarkerPath.clear();
    drawSiteCross(&view, lat, lonWest, 0, true);
    EXPECT_EQ(view.siteMarkerPath.points.size(), 4u);
    EXPECT_FALSE(view.showDeadSpot);

    view.siteMarkerPath.clear();
    drawSiteCross(&view, lat, lonWest, 7, true);  // unknown state: the cross only
    EXPECT_EQ(view.siteMarkerPath.points.size(), 4u);
}

TEST_F(MapTest, SiteIsRedOnlyWhenWorkingFlippedOverTheDeadSpot) {
    auto colourFor = [this](int32_t state, bool flip) {
        drawSiteCross(&view, 0.5, 1.0, state, flip);
        DisplayList list;
        drawRect(&view, Utc(2026, 11, 21, 12, 0), &list);
        const auto mark = ItemsOfClass(list, "site");
        return mark.empty() ? Color{-1, -1, -1, -1} : mark[0]->color;
    };
    EXPECT_FLOAT_EQ(colourFor(1, true).r, 1.0f);
    EXPECT_FLOAT_EQ(colourFor(1, false).b, 1.0f);
    EXPECT_FLOAT_EQ(colourFor(0, true).b, 1.0f);
}

// --- Sun and night ---------------------------------------------------------

// The Sun's cross: the first point of its path is 5 pixels west of it.
PointF SunCross(const DisplayList& list) {
    const auto sun = ItemsOfClass(list, "sun");
    if (sun.empty()) return {-1, -1};
    return {sun[0]->path.points[0].x + 5.0f, sun[0]->path.points[0].y};
}

// Night pixels on one map row, and whether column `x` is dark.
int DarkPixels(const DisplayItem& night, float row) {
    int n = 0;
    const auto& pts = night.path.points;
    for (size_t i = 0; i + 1 < pts.size(); i += 2)
        if (pts[i].y == row) n += static_cast<int>(pts[i + 1].x - pts[i].x) + 1;
    return n;
}

TEST_F(MapTest, NightAtTheJuneSolstice) {
    // 2026 June solstice: 21 June 08:24 UTC (USNO); declination +23.44 deg.
    DisplayList list;
    drawRect(&view, Utc(2026, 6, 21, 12, 0), &list);
    const auto night = ItemsOfClass(list, "night");
    ASSERT_EQ(night.size(), 1u);
    const double scale = view.mScale;
    auto row = [scale](double lat) { return static_cast<float>(std::round((lat + 90.0) * scale)); };
    // Midnight sun in the Arctic, polar night in the Antarctic.
    for (double lat : {70.0, 80.0, 89.0}) EXPECT_EQ(DarkPixels(*night[0], row(lat)), 0) << lat;
    for (double lat : {-70.0, -80.0, -89.0})
        EXPECT_EQ(DarkPixels(*night[0], row(lat)), 1024) << lat;
    // Elsewhere the night's width is the hour angle of sunset:
    // cos H0 = -tan(lat) tan(dec), night = 360 - 2 H0 degrees. The terminator
    // is traced in 1.8-degree steps and joined by straight lines, which near
    // the polar circles costs up to 3 degrees of longitude.
    for (double lat : {-50.0, -20.0, 0.0, 30.0, 50.0, 60.0}) {
        const double h0 = std::acos(-std::tan(lat * kDeg) * std::tan(23.44 * kDeg)) / kDeg;
        const double tolerance = (std::fabs(lat) > 55.0 ? 3.0 : 1.5) * scale;
        EXPECT_NEAR(DarkPixels(*night[0], row(lat)), (360.0 - 2.0 * h0) * scale, tolerance) << lat;
    }
}

TEST_F(MapTest, NightIsCentredOppositeTheSun) {
    DisplayList list;
    drawRect(&view, Utc(2026, 3, 20, 18, 0), &list);
    const PointF sun = SunCross(list);
    const auto night = ItemsOfClass(list, "night");
    ASSERT_EQ(night.size(), 1u);
    // On the equator the night is one span (or two, wrapped) whose middle
    // lies half the map away from the Sun.
    const float equator = 256.0f;
    double sumX = 0;
    int n = 0;
    const auto& pts = night[0]->path.points;
    for (size_t i = 0; i + 1 < pts.size(); i += 2) {
        if (pts[i].y != equator) continue;
        for (float x = pts[i].x; x <= pts[i + 1].x; x += 1.0f) {
            // Unwrap around the anti-solar column.
            double d = x - (sun.x + 512.0f);
            while (d > 512) d -= 1024;
            while (d < -512) d += 1024;
            sumX += d;
            ++n;
        }
    }
    ASSERT_GT(n, 400);
    EXPECT_NEAR(sumX / n, 0.0, 2.0);
}

TEST_F(MapTest, SunAtRealTimeWhileSatellitesFollowVirtualTime) {
    // 21 June 2026 12:00 UTC: declination +23.44, equation of time -1.6 min,
    // so the Sun stands 0.4 deg east of Greenwich (Astronomical Almanac).
    const uint32_t real = Utc(2026, 6, 21, 12, 0);
    const uint32_t virtualTime = real + 6 * 3600;  // time slider six hours ahead
    auto sat = MakeSat("ISS", 15.5, 51.6, 100.0, 30.0);
    OneShot(sat.get(), EpochTime(virtualTime));
    sat->satAltitude = 420.0;
    drawSatPath(&view, sat.get(), true);
    drawGroundTrack(&view, EpochTime(virtualTime), sat.get(), &site, true);
    const PointF satPoint = view.satPoint;
    DisplayList list;
    drawRect(&view, real, &list);
    const PointF sun = SunCross(list);
    EXPECT_NEAR(sun.x, (180.0 + 0.4) * view.mScale, 1.0);
    EXPECT_NEAR(sun.y, (90.0 + 23.44) * view.mScale, 1.0);
    // The satellite stays where the virtual time put it.
    const auto marker = ItemsOfClass(list, "marker main");
    ASSERT_EQ(marker.size(), 1u);
    EXPECT_FLOAT_EQ(marker[0]->path.points[0].x + 5.0f, satPoint.x);
    // Drawn at the virtual time instead, the Sun would be a quarter map west.
    DisplayList later;
    drawRect(&view, virtualTime, &later);
    EXPECT_NEAR(SunCross(later).x, (180.0 + 0.4 - 90.0) * view.mScale, 1.5);
}

TEST(MapHelpers, SpansWrapAtTheRightEdge) {
    Path path;
    xSpan(&path, 7, 1000, 50, 1024);
    ASSERT_EQ(path.points.size(), 4u);
    EXPECT_FLOAT_EQ(path.points[0].x, 1000.0f);
    EXPECT_FLOAT_EQ(path.points[1].x, 1023.0f);
    EXPECT_FLOAT_EQ(path.points[2].x, 0.0f);
    EXPECT_FLOAT_EQ(path.points[3].x, 25.0f);  // 24 + 26 pixels = 50
    EXPECT_FLOAT_EQ(path.points[3].y, 7.0f);
    path.clear();
    xSpan(&path, 0, -10, 20, 1024);  // a start west of the edge wraps too
    ASSERT_EQ(path.points.size(), 4u);
    EXPECT_FLOAT_EQ(path.points[0].x, 1014.0f);
    EXPECT_FLOAT_EQ(path.points[3].x, 9.0f);
}

// --- Drawing order, consumption, zoom ----------------------------------------

TEST_F(MapTest, DrawOrderAndWhatADrawConsumes) {
    auto main = MakeSat("ISS", 15.5, 51.6);
    PlaceSat(main.get(), 0.0, 0.0, 420.0);
    auto other = MakeSat("AO-7", 12.5, 101.9);
    PlaceSat(other.get(), 30.0, 60.0, 1450.0);
    drawSatPath(&view, other.get(), false);
    drawSatPath(&view, main.get(), true);
    drawGroundTrack(&view, main->satKep.epochDay, main.get(), &site, true);
    drawSiteCross(&view, 0.7, 1.3, 1, false);
    DisplayList list;
    drawRect(&view, Utc(2026, 11, 21, 12, 0), &list);
    std::vector<std::string> order;
    for (const DisplayItem& item : list.items) order.push_back(item.cls);
    const std::vector<std::string> expected{"map",       "sun",    "night",          "grid",
                                            "footprint", "marker", "footprint main", "marker main",
                                            "track",     "site",   "label",          "label"};
    EXPECT_EQ(order, expected);
    const auto grid = ItemsOfClass(list, "grid");
    EXPECT_EQ(grid[0]->path.points.size(), (7u + 13u) * 2u);
    EXPECT_FLOAT_EQ(grid[0]->lineWidth, 0.3f);

    // A redisplay without a tick shows only the map, Sun, night and grid.
    DisplayList again;
    drawRect(&view, Utc(2026, 11, 21, 12, 0), &again);
    order.clear();
    for (const DisplayItem& item : again.items) order.push_back(item.cls);
    EXPECT_EQ(order, (std::vector<std::string>{"map", "sun", "night", "grid"}));
}

TEST_F(MapTest, ScrollAndFollow) {
    setMapWidth(&view, 2048, RectF{100, 50, 800, 400}, true);
    setFollowSat(&view, true);
    auto main = MakeSat("ISS", 15.5, 51.6);
    PlaceSat(main.get(), 10.0, 10.0, 420.0);
    drawSatPath(&view, main.get(), true);
    DisplayList list;
    drawRect(&view, Utc(2026, 11, 21, 12, 0), &list);
    EXPECT_TRUE(list.scrollToRect);
    EXPECT_FLOAT_EQ(list.scrollRect.width, 800.0f);
    EXPECT_TRUE(list.centreOnPoint);
    EXPECT_FLOAT_EQ(list.centre.x, view.satPoint.x);
    DisplayList next;
    drawRect(&view, Utc(2026, 11, 21, 12, 0), &next);
    EXPECT_FALSE(next.scrollToRect);  // scrolled once only
}

TEST_F(MapTest, ImagesForTheFourZoomWidthsOnly) {
    EXPECT_EQ(view.mapImage, "map_1024.jpg");
    setMapWidth(&view, 8192, RectF{0, 0, 0, 0}, false);
    EXPECT_EQ(view.mapImage, "map_8192.jpg");
    EXPECT_DOUBLE_EQ(view.mScale, 8192 / 360.0);

    setMapWidth(&view, 3000, RectF{0, 0, 0, 0}, false);
    EXPECT_TRUE(view.mapImage.empty());
    auto main = MakeSat("ISS", 15.5, 51.6);
    PlaceSat(main.get(), 0.0, 0.0, 420.0);
    drawSatPath(&view, main.get(), true);
    DisplayList list;
    drawRect(&view, Utc(2026, 11, 21, 12, 0), &list);
    EXPECT_TRUE(list.items.empty());       // no image: nothing is drawn
    EXPECT_TRUE(view.sat_labels.empty());  // and the tick's paths do not pile up
    EXPECT_TRUE(view.mainSatPath.empty());

    setMapWidth(&view, 2048, RectF{0, 0, 0, 0}, false);  // a valid width brings the map back
    drawRect(&view, Utc(2026, 11, 21, 12, 0), &list);
    EXPECT_FALSE(list.items.empty());
}

TEST_F(MapTest, BadInputDrawsNothingAndNeverHangs) {
    auto sat = MakeSat("BAD", 15.5, 51.6);
    PlaceSat(sat.get(), 0.0, 0.0, 420.0);
    sat->subSatPtLatitudeRads = std::nan("");
    drawSatPath(&view, sat.get(), true);
    drawSatPath(&view, nullptr, false);
    EXPECT_TRUE(view.mainSatPath.empty());
    EXPECT_TRUE(view.sat_labels.empty());

    // Below the site's height: the circle shrinks to the point, no NaN.
    PlaceSat(sat.get(), 0.0, 0.0, -50.0);
    Path path;
    constructCoverageCirclePath(&path, sat.get(), &view);
    for (const PathPoint& p : path.points) ASSERT_TRUE(std::isfinite(p.x) && std::isfinite(p.y));

    // Negative and zero widths would make the ground-track step run backwards or stand still.
    for (int32_t width : {0, -1024, 1 << 30}) {
        setMapWidth(&view, width, RectF{0, 0, 0, 0}, false);
        drawSatPath(&view, sat.get(), true);
        drawGroundTrack(&view, sat->satKep.epochDay, sat.get(), &site, true);
        drawSiteCross(&view, 0.1, 0.1, 1, false);
        DisplayList list;
        drawRect(&view, Utc(2026, 11, 21, 12, 0), &list);
        EXPECT_TRUE(list.items.empty());
        EXPECT_TRUE(view.mainSatGroundTrackPath.empty());
    }
}

TEST(MapLabels, NewLabelsAreNotDrawn) {
    MDLabel label;
    EXPECT_EQ(label.color, 33);
    DisplayList list;
    list.addLabel(label, 14.0f, "label");
    EXPECT_TRUE(list.items.empty());
}

}  // namespace
}  // namespace veloran
