// Automatic selection across three satellites on the track list: the
// earliest AOS wins whatever its priority; between two with the same AOS the
// lower priority number wins; a satellite switched off in the list no
// longer counts.

#include <gtest/gtest.h>

#include "app/tracklist.h"
#include "data/settings.h"
#include "station.h"

namespace veloran {
namespace {

using testing::Station;

TEST(AutomaticSelection, EarliestAOSThenPriorityAcrossThreeSatellites) {
    const uint32_t start = testing::Seconds(2026, 11, 21, 0);
    testing::Elements first = testing::Leo(245.0, 317.0);
    testing::Elements second = testing::Leo(150.0, 40.0);
    uint32_t aos1 = 0, los1 = 0, aos2 = 0, los2 = 0;
    ASSERT_TRUE(testing::FindPass(first, start, 0.0, 90.0, &aos1, &los1));
    ASSERT_TRUE(testing::FindPass(second, start, 0.0, 90.0, &aos2, &los2));
    ASSERT_NE(aos1, aos2);
    if (aos2 < aos1) std::swap(first, second);
    // ALPHA rises first with the worst priority; BRAVO and CHARLIE share
    // an orbit, so their AOS is the same.
    Station station(testing::ElementSetText("ALPHA", first) +
                        testing::ElementSetText("BRAVO", second) +
                        testing::ElementSetText("CHARLIE", second),
                    testing::ModeBlock("ALPHA", "", 9) + testing::ModeBlock("BRAVO", "", 6) +
                        testing::ModeBlock("CHARLIE", "", 2));
    station.defaults.setString(prefkeys::kTrackListString, "ALPHA BRAVO CHARLIE ");
    station.defaults.setBool(prefkeys::kTrackListEnabled, true);
    TrackListUi table;
    SatelliteTableController list(station.app.get(), &station.defaults, &table);

    station.clock.now = start;
    station.app->awakeFromNib();
    list.awakeFromNib();
    ASSERT_TRUE(station.app->trackListInUse());
    list.updateTrackList();
    ASSERT_EQ(list.rows().size(), 3u);
    // A few ticks, so that the rotation has calculated every satellite.
    for (int i = 0; i < 6; ++i) {
        station.tickAt(start + i);
        list.updateTrackList();
    }
    EXPECT_EQ(station.app->mainSatNum(), 1);
    EXPECT_EQ(list.rows()[0].satelliteName, "ALPHA");  // the soonest pass on top

    // ALPHA's check box off: the tie between BRAVO and CHARLIE goes to the
    // better priority.
    int alphaRow = 0;
    for (int r = 0; r < 3; ++r)
        if (list.rows()[r].satelliteName == "ALPHA") alphaRow = r;
    list.singleClick(alphaRow, 0);
    for (int i = 6; i < 10; ++i) station.tickAt(start + i);
    EXPECT_EQ(station.app->mainSatNum(), 3);
    EXPECT_EQ(station.sat(1)->AOSTime, station.sat(2)->AOSTime);
}

}  // namespace
}  // namespace veloran
