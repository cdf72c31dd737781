// The one-second tick's texts, virtual time, the window, zoom and quitting.

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

#include "data/kepsimport.h"
#include "data/settings.h"
#include "fakes.h"
#include "tests/support/element_sets.h"

namespace veloran {
namespace {

using testing::ControllerRig;
using testing::WriteText;

struct TickRig : ControllerRig {
    TickRig() {
        WriteText(paths.keplerFile, testing::ElementSets(3));
        clock.now = testing::Seconds(2026, 11, 21, 12, 0, 1);
    }
};

TEST(Tick, ClockLineBlinksAndTurnsRedUnderVirtualTime) {
    TickRig rig;
    rig.app->awakeFromNib();
    rig.app->mainTimerTasks();
    EXPECT_EQ(rig.ui.clockLine, "2026:11:21 12:00:01 UTC");
    EXPECT_FALSE(rig.ui.clockRed);
    rig.clock.now += 1;
    rig.app->mainTimerTasks();
    EXPECT_EQ(rig.ui.clockLine, "2026:11:21 12 00 02 UTC");

    rig.app->timeSlid(30);  // runs a tick at once
    EXPECT_EQ(rig.ui.clockLine, "2026:11:21 12 30 02 UTC");
    EXPECT_TRUE(rig.ui.clockRed);
    EXPECT_EQ(rig.app->timeBaseSecs(), rig.clock.now + 1800);
    rig.app->timeSlid(0);
    EXPECT_FALSE(rig.ui.clockRed);
}

TEST(Tick, StatusLinesInKilometresOrMiles) {
    TickRig rig;
    rig.app->awakeFromNib();
    rig.app->mainTimerTasks();
    auto sat = rig.sat(0);
    char range[64];
    std::snprintf(range, sizeof range, "Range: %0.1f km", sat->satRange);
    EXPECT_EQ(rig.ui.figures[3], range);
    EXPECT_EQ(rig.ui.versionLine.rfind("Path Loss: ", 0), 0u);
    EXPECT_NE(rig.ui.versionLine.find("dB  v1.0"), std::string::npos);  // no call sign set
    EXPECT_EQ(rig.ui.mapStatus.rfind("Next: ", 0), 0u);
    EXPECT_EQ(rig.ui.transponder, "Non-Inverting Transponder");
    EXPECT_FALSE(rig.ui.fullDopplerEnabled);
    EXPECT_EQ(rig.ui.flipLine, "Not Flipped");
    EXPECT_EQ(rig.ui.panelTitle, "Veloran: S0");
    EXPECT_EQ(rig.ui.framesDrawn, 1);

    rig.setSite([](SiteRec* s) {
        s->displayKM = 0;
        s->rotor_manual = 1;
    });
    rig.app->mainTimerTasks();
    sat = rig.sat(0);
    std::snprintf(range, sizeof range, "Range: %0.1f mi", sat->satRange * 0.6214);
    EXPECT_EQ(rig.ui.figures[3], range);
    EXPECT_EQ(rig.ui.figures[0].substr(rig.ui.figures[0].size() - 3), " mi");
    EXPECT_EQ(rig.ui.flipLine, "Manual");
}

// Element sets eight days old: too old for a satellite whose perigee lies
// below 400 km, young enough for one higher up. The names come from the
// side table the converter writes beside the element-set file.
TEST(Tick, MainSatelliteStatusCarriesItsNamesAndElementAge) {
    TickRig rig;
    testing::Elements low, high;
    low.catalog = 99001;
    low.meanMotion = 16.0;  // perigee near 270 km
    high.catalog = 99002;
    high.meanMotion = 14.0;                            // near 900 km
    low.epochDayOfYear = high.epochDayOfYear = 317.5;  // 2026-11-13 12:00, 8 days before
    WriteText(rig.paths.keplerFile,
              testing::ElementSetText("LOW", low) + testing::ElementSetText("HIGH", high));
    WriteText(SideTablePath(rig.paths.keplerFile), "LOW\t99001\tLOW ORBITER 1\n");
    rig.app->awakeFromNib();
    ASSERT_EQ(rig.ui.names.size(), 2u);
    EXPECT_EQ(rig.ui.names[0].longName, "LOW ORBITER 1");
    EXPECT_EQ(rig.ui.names[1].longName, "");
    EXPECT_EQ(rig.ui.names[1].catalog, 99002);

    const struct {
        int index;
        const char* name;
        double limit;
        bool stale;
    } cases[] = {{0, "LOW", 7.0, true}, {1, "HIGH", 14.0, false}};
    for (const auto& c : cases) {
        rig.app->chooseSatelliteAtStart(c.index);
        rig.app->mainTimerTasks();
        const MainSatelliteStatus& status = rig.ui.mainStatus;
        EXPECT_EQ(status.names.name, c.name);
        EXPECT_TRUE(status.hasElements);
        EXPECT_NEAR(status.ageDays, 8.0, 0.001) << c.name;
        EXPECT_EQ(status.limitDays, c.limit) << c.name;
        EXPECT_EQ(!status.warning.empty(), c.stale) << c.name;
    }
    EXPECT_EQ(rig.ui.mainStatus.names.catalog, 99002);

    rig.app->chooseSatelliteAtStart(rig.app->moonNum() - 1);
    rig.app->mainTimerTasks();
    EXPECT_EQ(rig.ui.mainStatus.names.name, "Moon");
    EXPECT_FALSE(rig.ui.mainStatus.hasElements);
}

TEST(Tick, AHiddenWindowTracksButShowsNothingAndQuittingThenSavesNothing) {
    TickRig rig;
    rig.app->awakeFromNib();
    EXPECT_FALSE(rig.app->windowShouldClose());
    EXPECT_FALSE(rig.ui.windowShown);
    rig.app->mainTimerTasks();
    EXPECT_EQ(rig.ui.clockLine, "");
    EXPECT_EQ(rig.ui.framesDrawn, 0);
    EXPECT_NE(rig.sat(0)->satRange, 0.0);  // still calculated
    rig.app->applicationWillTerminate();
    EXPECT_FALSE(rig.defaults.contains(prefkeys::kMap2DWidth));

    rig.app->openNewWindow();
    EXPECT_TRUE(rig.app->windowOpen());
    rig.app->controls().hasMapRect = true;
    rig.app->controls().mapRect[2] = 800;
    rig.app->controls().mapRect[3] = 400;
    rig.app->applicationWillTerminate();
    EXPECT_EQ(rig.defaults.integerForKey(prefkeys::kMap2DWidth), 1024);
    EXPECT_TRUE(rig.defaults.contains(prefkeys::kVisibleRect));
}

TEST(Tick, StoredMapWidthSetsTheZoomButtonsAndZoomKeepsThemRight) {
    for (auto [stored, in, out] :
         {std::tuple{8192, 0, 1}, std::tuple{2048, 1, 1}, std::tuple{3000, 1, 0}}) {
        TickRig rig;
        rig.defaults.setInteger(prefkeys::kMap2DWidth, stored);
        rig.app->awakeFromNib();
        EXPECT_EQ(rig.app->mapFrameWidth(), stored);
        EXPECT_EQ(rig.ui.zoomIn, in) << stored;
        EXPECT_EQ(rig.ui.zoomOut, out) << stored;
    }
    TickRig rig;
    rig.app->awakeFromNib();
    // The core's copy of the visible area scales with the map, so a quit
    // right after a zoom saves what the map then shows.
    ControlsModel& shown = rig.app->controls();
    shown.hasMapRect = true;
    const double rect[4] = {100, 50, 800, 400};
    std::copy(rect, rect + 4, shown.mapRect);
    rig.app->zoomedin();
    EXPECT_DOUBLE_EQ(shown.mapRect[2], 1600);
    EXPECT_DOUBLE_EQ(shown.mapRect[3], 800);
    rig.app->zoomedin();
    rig.app->zoomedin();
    EXPECT_EQ(rig.app->mapFrameWidth(), 8192);
    EXPECT_EQ(rig.ui.zoomIn, 0);
    rig.app->zoomedout();
    rig.app->zoomedout();
    rig.app->zoomedout();
    EXPECT_EQ(rig.app->mapFrameWidth(), 1024);
    EXPECT_EQ(rig.ui.zoomOut, 0);
    EXPECT_EQ(rig.ui.zoomIn, 1);
}

TEST(Tick, MenuItems) {
    TickRig rig;
    rig.app->awakeFromNib();
    EXPECT_FALSE(rig.app->validateMenuItem("radioDriverChanged", 9));
    EXPECT_TRUE(rig.app->validateMenuItem("radioDriverChanged", 7));
    EXPECT_FALSE(rig.app->validateMenuItem("openNewWindow", 0));
    rig.app->windowShouldClose();
    EXPECT_TRUE(rig.app->validateMenuItem("openNewWindow", 0));
}

TEST(Tick, SwitchesAreStoredUnderTheirKeys) {
    TickRig rig;
    rig.app->awakeFromNib();
    rig.app->displayTrackListChanged(false);
    rig.app->followSatChanged(true);
    EXPECT_FALSE(rig.defaults.boolForKey(prefkeys::kTrackListDisplayed));
    EXPECT_TRUE(rig.defaults.boolForKey(prefkeys::kFollowSat));
}

TEST(Tick, TurningARadioOnWithoutPortsBeepsAndLeavesItOff) {
    TickRig rig;
    rig.app->awakeFromNib();
    const int beeps = rig.ui.beeps;
    rig.app->openCloseRadio(true);
    EXPECT_EQ(rig.ui.beeps, beeps + 1);
    EXPECT_FALSE(rig.ui.radioChecked);
    EXPECT_FALSE(rig.defaults.boolForKey(prefkeys::kVfoEnabled));
}

}  // namespace
}  // namespace veloran
