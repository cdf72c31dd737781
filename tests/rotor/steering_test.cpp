// Steering: park, pre-positioning before a pass, flip over the top, offsets,
// hand steering with the elevation control, the rotor port switch and the
// rotor panel.

#include "rotor/steering.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "rotor/rotor.h"
#include "tests/rotor/pty_line.h"

namespace veloran {
namespace {

struct RecordingUi : RotorUi {
    int beeps = 0;
    std::vector<bool> checks;
    std::vector<int> elevationControls;
    std::string azimuthText, elevationText;
    std::vector<std::pair<std::string, bool>> stored;
    void beep() override { ++beeps; }
    void setRotorChecked(bool on) override { checks.push_back(on); }
    void setElevationControl(int value) override { elevationControls.push_back(value); }
    void setRotorPanel(const char* az, const char* el) override {
        azimuthText = az;
        elevationText = el;
    }
    void storeBool(const char* key, bool value) override { stored.emplace_back(key, value); }
};

class Steering : public ::testing::Test {
  protected:
    void SetUp() override {
        std::memset(&site, 0, sizeof site);
        site.rotorPortFileDescriptor = -1;
        sat = std::make_unique<SatRec>();
        std::memset(sat.get(), 0, sizeof(SatRec));
        ResetRotorSendState();
    }
    void connect() {
        ASSERT_NE(line.fd(), -1);
        site.rotorPortFileDescriptor = line.fd();
        site.rotor_enabled = 1;
    }
    void satelliteAt(double az, double el, bool inView) {
        sat->azimuthDegs = az;
        sat->elevationDegs = el;
        sat->AOS = inView ? 1 : 0;
    }
    SiteRec site;
    std::unique_ptr<SatRec> sat;
    testing::PtyLine line;
};

TEST_F(Steering, ParksBetweenPasses) {
    connect();
    site.park = 1;
    site.siteParkAz = 90.0;
    site.siteParkEl = 5.0;
    satelliteAt(250.0, -20.0, false);
    steerRotor(&site, sat.get(), false);
    EXPECT_EQ(site.rotor_az, 90.0);
    EXPECT_EQ(site.rotor_el, 5.0);
    EXPECT_EQ(line.take(), "W090 005\r");
}

TEST_F(Steering, OneMinuteWarningPrePointsAtTheRisingSatelliteOnTheHorizon) {
    connect();
    site.park = 1;
    site.siteAzOffset = 2.0;
    satelliteAt(123.4, -5.2, false);
    steerRotor(&site, sat.get(), true);
    EXPECT_DOUBLE_EQ(site.rotor_az, 125.4);
    EXPECT_DOUBLE_EQ(site.rotor_el, -5.2);
    EXPECT_EQ(line.take(), "W125 000\r") << "elevation held at the horizon by the send path";
}

TEST_F(Steering, WithoutParkingFollowsTheSatelliteBelowTheHorizon) {
    connect();
    satelliteAt(300.0, -30.0, false);
    steerRotor(&site, sat.get(), false);
    EXPECT_EQ(line.take(), "W300 000\r");
}

TEST_F(Steering, ParkingIsIgnoredDuringAPass) {
    connect();
    site.park = 1;
    satelliteAt(45.0, 30.0, true);
    steerRotor(&site, sat.get(), false);
    EXPECT_EQ(line.take(), "W045 030\r");
}

TEST_F(Steering, ManualModeLeavesTheRotorAlone) {
    connect();
    site.rotor_manual = 1;
    site.rotor_az = 11.0;
    satelliteAt(45.0, 30.0, true);
    EXPECT_EQ(steerRotor(&site, sat.get(), false), 0);
    EXPECT_EQ(site.rotor_az, 11.0);
    EXPECT_EQ(line.take(), "");
}

TEST_F(Steering, DisabledRotorStoresTheTargetOnly) {
    satelliteAt(45.0, 30.0, true);
    site.siteElOffset = -1.5;
    steerRotor(&site, sat.get(), false);
    EXPECT_EQ(site.rotor_az, 45.0);
    EXPECT_EQ(site.rotor_el, 28.5);
}

struct FlipCase {
    const char* name;
    double satAz, satEl;
    double azOffset, elOffset;
    int deadSpotState;
    int crossed;
    int rotor;
    double az, el;  // expected target
};

void PrintTo(const FlipCase& c, std::ostream* os) {
    *os << c.name;
}

class Flip : public Steering, public ::testing::WithParamInterface<FlipCase> {};

TEST_P(Flip, Target) {
    const FlipCase& c = GetParam();
    site.deadSpotState = c.deadSpotState;
    site.deadSpotCrossed = c.crossed;
    site.rotor = c.rotor;
    site.siteAzOffset = c.azOffset;
    site.siteElOffset = c.elOffset;
    satelliteAt(c.satAz, c.satEl, true);
    steerRotor(&site, sat.get(), false);
    EXPECT_DOUBLE_EQ(site.rotor_az, c.az);
    EXPECT_DOUBLE_EQ(site.rotor_el, c.el);
    const bool flipped = c.deadSpotState != 0 && c.crossed && c.rotor != 7 && c.rotor != 9;
    EXPECT_EQ(rotorFlipped(&site), flipped);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, Flip,
    ::testing::Values(FlipCase{"WestOfSouth", 200, 10, 0, 0, 1, 1, 0, 20, 170},
                      FlipCase{"East", 100, 40, 0, 0, 2, 1, 0, 280, 140},
                      FlipCase{"SouthExactly", 180, 0, 0, 0, 1, 1, 0, 360, 180},
                      FlipCase{"OffsetsAfterFlipping", 200, 10, 3, -2, 1, 1, 0, 23, 168},
                      FlipCase{"NotCrossed", 200, 10, 0, 0, 1, 0, 0, 200, 10},
                      FlipCase{"NoDeadSpot", 200, 10, 0, 0, 0, 1, 0, 200, 10},
                      FlipCase{"AzimuthOnlySARtekNeverFlips", 200, 10, 0, 0, 1, 1, 7, 200, 10},
                      FlipCase{"AzimuthOnlyDCU1NeverFlips", 200, 10, 0, 0, 2, 1, 9, 200, 10},
                      FlipCase{"SpidFlips", 350, 60, 0, 0, 2, 1, 10, 170, 120}),
    [](const ::testing::TestParamInfo<FlipCase>& p) { return std::string(p.param.name); });

TEST_F(Steering, FlippedTargetGoesOnTheWireOverTheTop) {
    connect();
    site.deadSpotState = 1;
    site.deadSpotCrossed = 1;
    satelliteAt(200.0, 10.0, true);
    steerRotor(&site, sat.get(), false);
    EXPECT_EQ(line.take(), "W020 170\r");
}

struct HandCase {
    int control;
    double elevation;
    bool refused;
};

class HandElevation : public Steering, public ::testing::WithParamInterface<HandCase> {};

TEST_P(HandElevation, ControlToElevation) {
    connect();
    site.siteAzOffset = 10.0;  // not applied by hand
    site.siteElOffset = 10.0;
    RecordingUi ui;
    moveRotorByHand(&site, true, 33, GetParam().control, sat.get(), false, &ui);
    EXPECT_EQ(site.rotor_manual, 1);
    EXPECT_EQ(site.rotor_az, 33.0);
    EXPECT_EQ(site.rotor_el, GetParam().elevation);
    EXPECT_EQ(ui.beeps, GetParam().refused ? 1 : 0);
    EXPECT_EQ(ui.elevationControls,
              GetParam().refused ? std::vector<int>{270} : std::vector<int>{});
    char expected[16];
    std::snprintf(expected, sizeof expected, "W033 %03d\r", static_cast<int>(GetParam().elevation));
    EXPECT_EQ(line.take(), expected);
    ASSERT_FALSE(ui.stored.empty());
    EXPECT_EQ(ui.stored.front(), std::make_pair(std::string("rotor_manual"), true));
}

INSTANTIATE_TEST_SUITE_P(Controls, HandElevation,
                         ::testing::Values(HandCase{270, 0, false}, HandCase{300, 30, false},
                                           HandCase{359, 89, false}, HandCase{0, 90, false},
                                           HandCase{45, 135, false}, HandCase{90, 180, false},
                                           HandCase{91, 0, true}, HandCase{180, 0, true},
                                           HandCase{269, 0, true}));

TEST_F(Steering, ManualOffSteersAtOnceWithOffsets) {
    connect();
    site.rotor_manual = 1;
    site.siteAzOffset = 1.0;
    satelliteAt(45.0, 30.0, true);
    RecordingUi ui;
    moveRotorByHand(&site, false, 300, 300, sat.get(), false, &ui);
    EXPECT_EQ(site.rotor_manual, 0);
    EXPECT_EQ(site.rotor_az, 46.0);
    EXPECT_EQ(line.take(), "W046 030\r");
    EXPECT_EQ(ui.stored, (std::vector<std::pair<std::string, bool>>{{"rotor_manual", false}}));
}

TEST_F(Steering, HandSteeringOfADisabledRotorSendsNothing) {
    RecordingUi ui;
    moveRotorByHand(&site, true, 10, 300, sat.get(), false, &ui);
    EXPECT_EQ(site.rotor_el, 30.0);
    EXPECT_EQ(line.take(), "");
}

class RotorPort : public Steering {
  protected:
    void SetUp() override {
        Steering::SetUp();
        std::memset(ports, 0, sizeof ports);
        site.rotorBaud = 5;
    }
    PortNameRecord ports[kMaxSerialPorts];
    RecordingUi ui;
};

TEST_F(RotorPort, NoPortBeepsAndUnticks) {
    site.rotorPort = 3;
    EXPECT_EQ(switchRotorPort(&site, true, ports, &ui), 0);
    EXPECT_EQ(ui.beeps, 1);
    EXPECT_EQ(ui.checks, std::vector<bool>{false});
    EXPECT_EQ(site.rotor_enabled, 0);
    EXPECT_EQ(site.rotorPortFileDescriptor, -1);
    EXPECT_EQ(ui.stored, (std::vector<std::pair<std::string, bool>>{{"rotor_enabled", false}}));
}

TEST_F(RotorPort, PortThatWillNotOpenBeepsAndUnticks) {
    std::snprintf(ports[0].bsdPath, sizeof ports[0].bsdPath, "/nonexistent/ttyUSB9");
    EXPECT_EQ(switchRotorPort(&site, true, ports, &ui), 0);
    EXPECT_EQ(ui.beeps, 1);
    EXPECT_EQ(ui.checks, std::vector<bool>{false});
    EXPECT_EQ(site.rotorPortFileDescriptor, -1);
}

TEST_F(RotorPort, OpeningStartsAndClosingStopsTheController) {
    ASSERT_FALSE(line.path().empty());
    std::snprintf(ports[0].bsdPath, sizeof ports[0].bsdPath, "%s", line.path().c_str());
    line.releasePort();
    site.rotor = 8;  // SatEL: "G" on start, "S" on stop
    ASSERT_EQ(switchRotorPort(&site, true, ports, &ui), 1);
    EXPECT_NE(site.rotorPortFileDescriptor, -1);
    EXPECT_EQ(site.rotor_enabled, 1);
    EXPECT_EQ(line.take(), "G\r");
    // Ticking it again reopens: stop on the old descriptor, start on the new.
    ASSERT_EQ(switchRotorPort(&site, true, ports, &ui), 1);
    EXPECT_EQ(line.take(), "S\rG\r");
    EXPECT_EQ(switchRotorPort(&site, false, ports, &ui), 0);
    EXPECT_EQ(line.take(), "S\r");
    EXPECT_EQ(site.rotorPortFileDescriptor, -1);
    EXPECT_EQ(site.rotor_enabled, 0);
    EXPECT_EQ(ui.beeps, 0);
    EXPECT_EQ(ui.stored.back(), std::make_pair(std::string("rotor_enabled"), false));
}

TEST_F(Steering, PanelTextsWithTwoDecimals) {
    site.rotor_az = 123.456;
    site.rotor_el = 7.0;
    RecordingUi ui;
    showRotorPanel(&site, &ui);
    EXPECT_EQ(ui.azimuthText, "Azimuth: 123.46");
    EXPECT_EQ(ui.elevationText, "Elevation: 7.00");
    if (std::setlocale(LC_ALL, "de_DE.UTF-8")) {
        showRotorPanel(&site, &ui);
        std::setlocale(LC_ALL, "C");
        EXPECT_EQ(ui.azimuthText, "Azimuth: 123.46");
    }
}

}  // namespace
}  // namespace veloran
