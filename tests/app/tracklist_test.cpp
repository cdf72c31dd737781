// The track list: rows, their order and colours, the table's actions, and
// the list saved and restored across starts.

#include "app/tracklist.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "data/settings.h"
#include "fakes.h"

namespace veloran {
namespace {

using testing::ControllerRig;
using testing::WriteText;

class FakeTable : public TrackListUi {
  public:
    std::vector<std::string> names;
    int beeps = 0, deselected = 0;
    bool checked = false;
    void reloadRows(const std::vector<SatelliteSlot>& rows) override {
        names.clear();
        for (const auto& r : rows) names.push_back(r.satelliteName);
    }
    void deselectAllRows() override { ++deselected; }
    void setTrackListChecked(bool on) override { checked = on; }
    void beep() override { ++beeps; }
};

struct TrackRig : ControllerRig {
    FakeTable table;
    SatelliteTableController list{app.get(), &defaults, &table};
    TrackRig() {
        WriteText(paths.keplerFile, testing::ElementSets(4));
        app->loadKepsAndModes();
    }
};

TEST(TrackList, AddingTracksASatelliteOnceAndSelectsItWhenTheListIsOff) {
    TrackRig rig;
    rig.list.awakeFromNib();
    rig.list.addSatellite(3);  // pop-up item 3: S2
    EXPECT_EQ(rig.table.names, (std::vector<std::string>{"S2"}));
    EXPECT_TRUE(rig.sat(2)->tracked);
    EXPECT_EQ(rig.app->mainSatNum(), 3);
    EXPECT_EQ(rig.table.deselected, 1);
    rig.list.addSatellite(3);
    EXPECT_EQ(rig.table.beeps, 1);
    EXPECT_EQ(rig.list.rows().size(), 1u);

    rig.list.toggleTrackList(true);
    EXPECT_TRUE(rig.defaults.boolForKey(prefkeys::kTrackListEnabled));
    rig.list.addSatellite(1);  // with the list on the main satellite stays
    EXPECT_EQ(rig.app->mainSatNum(), 3);
}

TEST(TrackList, DeletingNeedsASelectedRowAndLeavesTheMainSatellite) {
    TrackRig rig;
    rig.list.addSatellite(1);
    rig.list.addSatellite(2);
    rig.list.deleteRow(-1);
    EXPECT_EQ(rig.table.beeps, 1);
    rig.list.deleteRow(1);
    EXPECT_FALSE(rig.sat(1)->tracked);
    EXPECT_EQ(rig.table.names, (std::vector<std::string>{"S0"}));
    EXPECT_EQ(rig.app->mainSatNum(), 2);
    rig.list.doubleClick(5);
    EXPECT_EQ(rig.table.beeps, 2);
    rig.list.doubleClick(0);
    EXPECT_EQ(rig.app->mainSatNum(), 1);
}

TEST(TrackList, ClickOnTheCheckBoxDisablesAndOnTheRowSelects) {
    TrackRig rig;
    rig.list.addSatellite(2);
    rig.list.addSatellite(1);
    ASSERT_EQ(rig.sat(1)->enabled, 0);  // not in the modes file
    rig.list.singleClick(0, 1);         // the check box of S1 turned on
    EXPECT_EQ(rig.sat(1)->enabled, 1);
    EXPECT_EQ(rig.app->mainSatNum(), 1);
    rig.list.singleClick(0, 1);  // now the same value: a click on the row
    EXPECT_EQ(rig.app->mainSatNum(), 2);
}

TEST(TrackList, IsSavedAsNamesWithBlanksAndRestoredOnTheFirstRefresh) {
    TrackRig rig;
    rig.list.addSatellite(4);
    rig.list.addSatellite(2);
    rig.list.applicationWillTerminate();
    EXPECT_EQ(rig.defaults.stringForKey(prefkeys::kTrackListString), "S3 S1 ");

    TrackRig next;
    next.defaults.setString(prefkeys::kTrackListString, "S3 Gone S1 S3 ");
    next.app->setMainSatNum(1);
    next.list.updateTrackList();
    ASSERT_EQ(next.list.rows().size(), 2u);
    EXPECT_TRUE(next.sat(3)->tracked);
    EXPECT_TRUE(next.sat(1)->tracked);
    EXPECT_EQ(next.app->mainSatNum(), 1);
    next.list.updateTrackList();  // restored once only
    EXPECT_EQ(next.list.rows().size(), 2u);
}

TEST(TrackList, RowsReadAsAPassScheduleInViewFirstThenByNextAOS) {
    auto make = [](const char* name, bool inView, bool predicted, uint32_t toAOS, uint32_t toLOS) {
        SatelliteSlot s;
        s.satelliteName = name;
        s.inView = inView;
        s.passPredicted = predicted;
        s.secondsToAOS = toAOS;
        s.secondsToLOS = toLOS;
        return s;
    };
    std::vector<SatelliteSlot> rows = {
        make("late", false, true, 5000, 0),  make("none", false, false, 0, 0),
        make("setting", true, true, 0, 120), make("soon", false, true, 600, 0),
        make("up", true, true, 0, 500),      make("also-soon", false, true, 600, 0)};
    std::stable_sort(rows.begin(), rows.end(),
                     [](const auto& a, const auto& b) { return a.compare(b) < 0; });
    std::vector<std::string> order;
    for (const auto& r : rows) order.push_back(r.satelliteName);
    EXPECT_EQ(order,
              (std::vector<std::string>{"setting", "up", "also-soon", "soon", "late", "none"}));
}

TEST(TrackList, RowTextsFollowTheUnitsAndTheKeys) {
    auto rec = testing::NewSatRec();
    std::strcpy(rec->name, "AO-7");
    rec->satRange = 1000.0;
    rec->subSatPtLongitudeDegs = 79.5;  // west positive
    rec->subSatPtLatitudeDegs = -10.25;
    rec->passLength = 754;
    rec->priority = 3;
    rec->db_index = 7;
    SatelliteSlot slot;
    slot.loadIt(*rec, 0, true, false);
    EXPECT_EQ(slot.valueForKey("range"), "621.4 mi");
    EXPECT_EQ(slot.valueForKey("longitude"), "79.50 W");
    EXPECT_EQ(slot.valueForKey("latitude"), "10.25 S");
    EXPECT_EQ(slot.valueForKey("length"), "00:12:34");
    EXPECT_EQ(slot.valueForKey("pri"), "3");
    EXPECT_EQ(slot.valueForKey("index"), "7");
    EXPECT_EQ(slot.valueForKey("no such column"), "");
}

TEST(TrackList, RowColours) {
    auto rec = testing::NewSatRec();
    rec->satActivePass = 1;
    rec->enabled = 1;
    rec->secondsToAOS = 600;
    EXPECT_EQ(RowColourFor(*rec, false), RowColour::kBlack);
    EXPECT_EQ(RowColourFor(*rec, true), RowColour::kBlue);
    rec->secondsToAOS = 59;
    EXPECT_EQ(RowColourFor(*rec, true), RowColour::kGreen);
    rec->AOS = 1;
    EXPECT_EQ(RowColourFor(*rec, true), RowColour::kRed);
    rec->enabled = 0;
    EXPECT_EQ(RowColourFor(*rec, true), RowColour::kGrey);
}

}  // namespace
}  // namespace veloran
