// The window's view builder against the SVG export of the same instant, and
// the screenshots of the map, the horizon and the track list that a person
// checks by eye (saved in the build folder's screenshots/).

#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QPixmap>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include "app/tracklist.h"
#include "app/viewbuilder.h"
#include "engine/observer.h"
#include "gui/horizonwidget.h"
#include "gui/mapwidget.h"
#include "gui/tracklistmodel.h"
#include "scene.h"
#include "tests/support/element_sets.h"
#include "views/svgwriter.h"

namespace veloran {
namespace {

using testing::FindSatellite;
using testing::LoadScene;
using testing::Scene;

SiteRec LondonSite() {
    // As veloran-cli --site 51.5,-0.13,20 makes it.
    SiteRec site;
    std::memset(&site, 0, sizeof site);
    site.siteLatDegs = 51.5;
    site.siteLongDegs = 0.13;
    site.siteAltitudeM = 20;
    SitePreCalc(&site);
    SiteCalculations(&site);
    return site;
}

std::string RunCommand(const std::string& command) {
    std::string out;
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return out;
    char buf[65536];
    size_t n = 0;
    while ((n = std::fread(buf, 1, sizeof buf, pipe)) > 0) out.append(buf, n);
    pclose(pipe);
    return out;
}

ViewFrame FrameOf(const Scene& scene, int mainIndex) {
    ViewFrame frame;
    frame.epoch = EpochTime(scene.now);
    frame.timeBaseSecs = scene.now;
    frame.sats = scene.sats.data();
    frame.totalSats = static_cast<int32_t>(scene.sats.size());
    frame.mainSatNum = mainIndex + 1;
    frame.site = &scene.site;
    frame.firstTick = true;
    frame.mapFrameWidth = 1024;
    return frame;
}

const char* kTime = "2026-11-21T12:00:00Z";
const char* kTracked = "AO-7,FO-29,SO-50,ISS";

std::string CliCommand(const char* view, const char* extra) {
    const std::string scratch = ::testing::TempDir();
    return std::string(VELORAN_CLI) + " " + view + " --site 51.5,-0.13,20 --time " + kTime +
           " --track " + kTracked + " --data-dir " + scratch + "/no-data --config-dir " + scratch +
           "/no-config " + extra + " 2>/dev/null";
}

void TrackOnly(Scene* scene, const std::string& names) {
    const std::string list = "," + names + ",";
    for (SatRec& s : scene->sats)
        s.tracked = list.find("," + std::string(s.name) + ",") != std::string::npos;
}

TEST(ViewBuilder, DrawsTheSameMapAndHorizonAsTheExport) {
    const uint32_t now = testing::Seconds(2026, 11, 21, 12, 0, 0);
    const SiteRec site = LondonSite();

    {
        // The map with FO-29 as the main satellite, its three companions grey.
        auto probe = LoadScene(site, now, -1, ::testing::TempDir());
        const int main = FindSatellite(*probe, "FO-29");
        ASSERT_GE(main, 0);
        auto scene = LoadScene(site, now, main, ::testing::TempDir());
        TrackOnly(scene.get(), kTracked);
        scene->site.displayTrackList = 1;
        ViewBuilder builder;
        ViewFrame frame = FrameOf(*scene, main);
        builder.drawViews(frame, {true, false}, now);
        // The second tick: the footprints now use the site the first one kept.
        frame.firstTick = false;
        const ViewLists lists = builder.drawViews(frame, {true, false}, now);
        ASSERT_TRUE(lists.map);
        EXPECT_FALSE(lists.horizon);
        const std::string ours = WriteSvg(*lists.map, [](const std::string&) { return ""; });
        const std::string theirs = RunCommand(CliCommand("map", "--sat FO-29 --maps /nonexistent"));
        ASSERT_FALSE(theirs.empty());
        EXPECT_EQ(ours, theirs);
        EXPECT_NE(ours.find("footprint"), std::string::npos);
    }
    {
        // The horizon of the same four, nothing chosen as main.
        auto scene = LoadScene(site, now, -1, ::testing::TempDir());
        TrackOnly(scene.get(), kTracked);
        ViewBuilder builder;
        const ViewLists lists = builder.drawViews(FrameOf(*scene, -1), {false, true}, now);
        ASSERT_TRUE(lists.horizon);
        EXPECT_FALSE(lists.map);
        const std::string ours = WriteSvg(*lists.horizon, nullptr);
        const std::string theirs = RunCommand(CliCommand("horizon", ""));
        ASSERT_FALSE(theirs.empty());
        EXPECT_EQ(ours, theirs);
    }
}

// What the builder keeps between ticks: the stored rectangle is scrolled to
// once, a zoom changes the next list's width, follow centres on the main
// satellite, and a tab not in front gets no list.
TEST(ViewBuilder, KeepsZoomAndScrollBetweenTicks) {
    const uint32_t now = testing::Seconds(2026, 11, 21, 12, 0, 0);
    auto scene = LoadScene(LondonSite(), now, 0, ::testing::TempDir());
    ViewBuilder builder;
    ViewFrame frame = FrameOf(*scene, 0);
    frame.mapFrameWidth = 4096;
    frame.hasStoredRect = true;
    const double stored[4] = {1500, 700, 800, 400};
    std::copy(stored, stored + 4, frame.rect);

    ViewLists lists = builder.drawViews(frame, {true, false}, now);
    ASSERT_TRUE(lists.map);
    EXPECT_EQ(lists.map->width, 4096);
    EXPECT_TRUE(lists.map->scrollToRect);
    EXPECT_EQ(lists.map->scrollRect.x, 1500);
    EXPECT_EQ(lists.map->scrollRect.height, 400);
    EXPECT_FALSE(lists.map->centreOnPoint);

    frame.firstTick = false;
    scene->site.followSat_enabled = 1;
    builder.zoomMap(2048);
    lists = builder.drawViews(frame, {false, true}, now);
    EXPECT_FALSE(lists.map);
    lists = builder.drawViews(frame, {true, false}, now);
    ASSERT_TRUE(lists.map);
    EXPECT_EQ(lists.map->width, 2048);
    EXPECT_FALSE(lists.map->scrollToRect);
    ASSERT_TRUE(lists.map->centreOnPoint);
    // The main satellite's point on a 2048-pixel map.
    const SatRec& sat = scene->sats[0];
    const PointF expected =
        LonLatRadsToPoint(sat.subSatPtLongitudeRads, sat.subSatPtLatitudeRads, 2048 / 360.0);
    EXPECT_EQ(lists.map->centre.x, expected.x);
    EXPECT_EQ(lists.map->centre.y, expected.y);
}

// A window-sized look at every widget, on the bundled satellites, saved as
// PNG for a person to judge.
TEST(ViewBuilder, Screenshots) {
    const QString dir = QStringLiteral(VELORAN_SCREENSHOT_DIR);
    QDir().mkpath(dir);
    const uint32_t now = testing::Seconds(2026, 11, 21, 12, 0, 0);
    auto probe = LoadScene(LondonSite(), now, -1, ::testing::TempDir());
    const int main = FindSatellite(*probe, "ISS");
    ASSERT_GE(main, 0);
    auto scene = LoadScene(LondonSite(), now, main, ::testing::TempDir());
    for (SatRec& s : scene->sats) s.tracked = 1;
    scene->site.displayTrackList = 1;
    scene->site.deadSpotState = 1;

    ViewBuilder builder;
    ViewFrame frame = FrameOf(*scene, main);
    builder.drawViews(frame, {true, true}, now);
    frame.firstTick = false;
    builder.setHorizonSize(kHorizonDefaultWidth, 240);
    const ViewLists lists = builder.drawViews(frame, {true, true}, now);

    MapWidget map;
    map.resize(1240, 560);
    map.show();
    map.setList(lists.map);
    QApplication::processEvents();
    EXPECT_TRUE(map.grab().save(dir + "/map.png"));

    map.setNightTheme(true);
    QApplication::processEvents();
    EXPECT_TRUE(map.grab().save(dir + "/map-night.png"));
    map.setNightTheme(false);

    // Zoomed twice and following the main satellite.
    builder.zoomMap(4096);
    map.zoomMap(4096, 4.0);
    scene->site.followSat_enabled = 1;
    map.setList(builder.drawViews(frame, {true, false}, now).map);
    QApplication::processEvents();
    EXPECT_TRUE(map.grab().save(dir + "/map-4096-follow.png"));

    HorizonWidget horizon;
    horizon.resize(1240, 260);
    horizon.show();
    horizon.setList(lists.horizon);
    QApplication::processEvents();
    EXPECT_TRUE(horizon.grab().save(dir + "/horizon.png"));
    horizon.setNightTheme(true);
    QApplication::processEvents();
    EXPECT_TRUE(horizon.grab().save(dir + "/horizon-night.png"));

    TrackListWidget table;
    table.resize(1240, 300);
    table.show();
    std::vector<SatelliteSlot> rows;
    std::vector<RowColour> colours;
    for (size_t i = 0; i < scene->sats.size(); ++i) {
        SatelliteSlot slot;
        slot.loadIt(scene->sats[i], 0, true, true);
        rows.push_back(slot);
        colours.push_back(RowColourFor(scene->sats[i], static_cast<int>(i) == main));
    }
    table.setRows(rows, colours);
    QApplication::processEvents();
    EXPECT_TRUE(table.grab().save(dir + "/tracklist.png"));
}

}  // namespace
}  // namespace veloran
