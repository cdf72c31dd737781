// The radio panel's and the start-up's device wiring: the trim steppers
// and slider marking the trims for saving, the port list, the tuning
// switches under their keys.

#include <gtest/gtest.h>

#include <cstring>

#include "data/settings.h"
#include "fakes.h"

namespace veloran {
namespace {

using testing::ControllerRig;
using testing::WriteText;

class TwoPorts : public SerialPortList {
  public:
    int findPorts(PortNameRecord* ports, int maxPorts) override {
        if (maxPorts < 2) return 0;
        std::strcpy(ports[0].bsdPath, "/dev/ttyUSB0");
        std::strcpy(ports[0].userName, "usb-FTDI-0");
        std::strcpy(ports[1].bsdPath, "/dev/ttyUSB1");
        std::strcpy(ports[1].userName, "usb-FTDI-1");
        return 2;
    }
};

struct RadioRig : ControllerRig {
    RadioRig() {
        WriteText(paths.keplerFile, testing::ElementSets(2));
        app->awakeFromNib();
        auto rec = sat(0);
        rec->numberOfActiveChannels = 1;
        rec->selectedModeIndex = 0;
        rec->modes[0].upFreq = 145.9;
        rec->modes[0].downFreq = 435.8;
        app->WriteSatelliteRecord(0, *rec);
    }
};

TEST(RadioActions, LockedStepperMovesBothTrimsAndTheNextTickSavesThem) {
    RadioRig rig;
    rig.setSite([](SiteRec* s) { s->vfo_locked = 1; });
    rig.app->uplinkClicked(0.002);
    auto rec = rig.sat(0);
    EXPECT_DOUBLE_EQ(rec->modes[0].TXOffset, 0.002);
    EXPECT_DOUBLE_EQ(rec->modes[0].RXOffset, 0.002);  // non-inverting: the same way
    EXPECT_EQ(rig.ui.vfoPanel[2], "0.00200");
    EXPECT_FALSE(rig.defaults.contains(TweaksKey("S0")));
    rig.app->mainTimerTasks();
    EXPECT_TRUE(rig.defaults.contains(TweaksKey("S0")));

    rig.app->downlinkClicked(0.003);  // the downlink stepper stood at 0.002
    rec = rig.sat(0);
    EXPECT_DOUBLE_EQ(rec->modes[0].RXOffset, 0.003);
    EXPECT_DOUBLE_EQ(rec->modes[0].TXOffset, 0.003);
}

TEST(RadioActions, SliderMovesOnlyTheUplinkWhenUnlocked) {
    RadioRig rig;
    rig.app->vfoSliderMoved(0.5);  // half a slider unit: 5 kHz
    auto rec = rig.sat(0);
    EXPECT_DOUBLE_EQ(rec->modes[0].TXOffset, 0.005);
    EXPECT_EQ(rec->modes[0].RXOffset, 0.0);
}

TEST(RadioActions, TuningSwitchesAreStored) {
    RadioRig rig;
    rig.app->beaconChanged(true);
    rig.app->vfoLockChanged(true);
    rig.app->fullDopplerTuningChanged(true);
    EXPECT_TRUE(rig.defaults.boolForKey(prefkeys::kBeaconEnabled));
    EXPECT_TRUE(rig.defaults.boolForKey(prefkeys::kVfoLocked));
    EXPECT_TRUE(rig.defaults.boolForKey(prefkeys::kFullDopplerTuning));
    SiteRec site;
    rig.app->GetSiteRec(&site);
    EXPECT_EQ(site.listenForBeacon, 1);
}

TEST(RadioActions, StartUpListsThePortsFoundAndATypedOneJoinsThem) {
    ControllerRig rig;
    TwoPorts ports;
    // The rig's controller has no port list; make one that has.
    const Services s{.ui = &rig.ui,
                     .defaults = &rig.defaults,
                     .clock = &rig.clock,
                     .announcer = &rig.announcer,
                     .log = rig.log,
                     .ports = &ports};
    AppController app(s, rig.paths);
    rig.defaults.setBool(prefkeys::kDebug, true);
    app.awakeFromNib();
    EXPECT_EQ(rig.ui.portItems, (std::vector<std::string>{"usb-FTDI-0", "usb-FTDI-1"}));
    EXPECT_EQ(app.addTypedPort("/dev/pts/9"), 2);
    EXPECT_EQ(rig.ui.portItems.size(), 3u);
    EXPECT_NE(rig.logText().find("Running on OS 1049\n"), std::string::npos);
}

struct PathCase {
    const char* savedPath;  // "" for settings written before paths were saved
    int savedIndex;
    int index;             // where the radio's port is found
    const char* userName;  // the pop-up item of that port
};

class PortPaths : public ::testing::TestWithParam<PathCase> {};

// Ports are renumbered when adapters are plugged in another order: the path
// wins over the index, and a path that is not there is shown as missing
// rather than standing for whatever port now has its number.
TEST_P(PortPaths, SavedPathFindsItsPortOrShowsItMissing) {
    const PathCase& c = GetParam();
    ControllerRig rig;
    TwoPorts ports;
    const Services s{.ui = &rig.ui,
                     .defaults = &rig.defaults,
                     .clock = &rig.clock,
                     .announcer = &rig.announcer,
                     .log = rig.log,
                     .ports = &ports};
    AppController app(s, rig.paths);
    if (c.savedPath[0] != 0) rig.defaults.setString(prefkeys::kRadioPortPath, c.savedPath);
    rig.defaults.setInteger("radioport", c.savedIndex);
    app.awakeFromNib();
    SiteRec site;
    app.GetSiteRec(&site);
    ASSERT_EQ(site.radioPort, c.index);
    EXPECT_STREQ(app.portNames()[c.index].userName, c.userName);

    app.savePrefs();
    EXPECT_EQ(rig.defaults.integerForKey("radioport"), c.index);
    EXPECT_EQ(rig.defaults.stringForKey(prefkeys::kRadioPortPath),
              app.portNames()[c.index].bsdPath);
}

INSTANTIATE_TEST_SUITE_P(Settings, PortPaths,
                         ::testing::Values(PathCase{"/dev/ttyUSB1", 0, 1, "usb-FTDI-1"},
                                           PathCase{"", 1, 1, "usb-FTDI-1"},
                                           PathCase{"/dev/serial/by-id/usb-gone-if00", 1, 2,
                                                    "/dev/serial/by-id/usb-gone-if00 (missing)"}));

}  // namespace
}  // namespace veloran
