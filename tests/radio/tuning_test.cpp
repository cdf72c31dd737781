// The tuning controller: the frequency rules, the driver table, the user's
// trims, and whole tuning steps against a simulated FT-847 on a
// pseudo-terminal, including a radio unplugged mid-session and a synthetic
// pass followed to the hertz.

#include "radio/tuning.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "radio/portswitch.h"
#include "radio/yaesu.h"
#include "serial/gateway.h"
#include "serial/portlist.h"
#include "serial/serial.h"
#include "sim/radio_sim.h"
#include "tests/support/hex.h"
#include "tests/support/pty.h"

namespace veloran {
namespace {

using sim::RadioModel;
using sim::SimulatedRadio;
using testing::Eventually;
using testing::Hex;

constexpr double kMHzTolerance = 1e-9;  // 1 mHz: far below the radios' 1 Hz

struct RecordingUi : RadioUi {
    int beeps = 0;
    std::vector<bool> radioChecks, gatewayChecks;
    int sMeter = -1;
    std::map<std::string, bool> stored;
    void beep() override { ++beeps; }
    void setRadioChecked(bool on) override { radioChecks.push_back(on); }
    void setGatewayChecked(bool on) override { gatewayChecks.push_back(on); }
    void setSMeter(int level) override { sMeter = level; }
    void storeBool(const char* key, bool value) override { stored[key] = value; }
};

ModeRec MakeMode(int commMode, double up, double down) {
    ModeRec m;
    std::memset(&m, 0, sizeof m);
    m.commMode = static_cast<int16_t>(commMode);
    m.upFreq = up;
    m.downFreq = down;
    return m;
}

// --- frequencies -----------------------------------------------------------------

struct FrequencyCase {
    const char* name;
    int commMode;
    bool fullDoppler;
    bool beacon;
    double expectedUp;  // MHz, for upFreq 435.9, downFreq 145.95 and the shifts below
    double expectedDown;
    bool inverting;
};

void PrintTo(const FrequencyCase& c, std::ostream* os) {
    *os << c.name;
}

class CalculateFrequencies : public ::testing::TestWithParam<FrequencyCase> {};

// Trims TXOffset 0.001, RXOffset -0.002; shifts TX 0.010, RX 0.003, beacon 0.004.
TEST_P(CalculateFrequencies, AppliesShiftsTrimsAndTheTuningRule) {
    const FrequencyCase& c = GetParam();
    ModeRec mode = MakeMode(c.commMode, 435.9, 145.95);
    mode.beaconFreq = 145.81;
    mode.TXOffset = 0.001;
    mode.RXOffset = -0.002;
    mode.BEOffset = 0.0005;
    SiteRec site;
    std::memset(&site, 0, sizeof site);
    site.fullDopplerTuning = c.fullDoppler;
    site.listenForBeacon = c.beacon;
    VFORec vfo = {};
    vfo.dopplerTX = 0.010;
    vfo.dopplerRX = 0.003;
    vfo.dopplerBE = 0.004;
    calculateFrequencies(&vfo, &site, &mode);
    EXPECT_NEAR(vfo.up, c.expectedUp, kMHzTolerance);
    EXPECT_NEAR(vfo.down, c.expectedDown, kMHzTolerance);
    EXPECT_EQ(vfo.inverting != 0, c.inverting);
    EXPECT_EQ(vfo.uncorrected_up, 435.9);
    EXPECT_EQ(vfo.uncorrected_down, 145.95);
    EXPECT_EQ(vfo.uncorrected_beacon, 145.81);
    if (c.beacon) {
        EXPECT_EQ(vfo.up, 0.0);  // exactly zero, whatever the mode
    }
}

// U0 = 435.901, D0 = 145.948.
INSTANTIATE_TEST_SUITE_P(
    Rules, CalculateFrequencies,
    ::testing::Values(
        // Downlink-only tuning of JA: uplink fixed, downlink carries both shifts (0.003 - 0.010).
        FrequencyCase{"JA_SSB downlink only", 3, false, false, 435.901, 145.948 - 0.007, true},
        FrequencyCase{"JA_CW downlink only", 7, false, false, 435.901, 145.948 - 0.007, true},
        // B keeps the downlink fixed and moves the uplink instead.
        FrequencyCase{"B_SSB uplink only", 4, false, false, 435.901 - 0.010 + 0.003, 145.948, true},
        FrequencyCase{"B_CW uplink only", 8, false, false, 435.901 - 0.007, 145.948, true},
        FrequencyCase{"JA_SSB full Doppler", 3, true, false, 435.901 - 0.010, 145.948 + 0.003,
                      true},
        FrequencyCase{"B_SSB full Doppler", 4, true, false, 435.891, 145.951, true},
        // A non-inverting transponder is always tuned on both sides.
        FrequencyCase{"J_FM without full Doppler", 2, false, false, 435.891, 145.951, false},
        FrequencyCase{"A_SSB", 5, false, false, 435.891, 145.951, false},
        // Beacon: no uplink; beacon + trim + its own shift.
        FrequencyCase{"beacon", 3, false, true, 0.0, 145.81 + 0.0005 + 0.004, true},
        FrequencyCase{"beacon with full Doppler", 2, true, true, 0.0, 145.8145, false}));

TEST(CalculateFrequencies, TransvertersAreSubtractedAndTheBeaconUsesTheDownlinkOne) {
    ModeRec mode = MakeMode(9, 1268.1, 2400.2);  // AO-40 style L up, S down
    mode.beaconFreq = 2401.3;
    mode.txVrtrUp = 1124.0;  // 144 MHz IF for the uplink converter
    mode.txVrtrDn = 2256.0;  // 144 MHz IF for the downconverter
    SiteRec site;
    std::memset(&site, 0, sizeof site);
    VFORec vfo = {};
    calculateFrequencies(&vfo, &site, &mode);
    EXPECT_NEAR(vfo.up, 144.1, kMHzTolerance);
    EXPECT_NEAR(vfo.down, 144.2, kMHzTolerance);
    site.listenForBeacon = 1;
    calculateFrequencies(&vfo, &site, &mode);
    EXPECT_NEAR(vfo.down, 145.3, kMHzTolerance);
    calculateFrequencies(nullptr, &site, &mode);  // null records are ignored
    calculateFrequencies(&vfo, nullptr, &mode);
    calculateFrequencies(&vfo, &site, nullptr);
}

TEST(Band, EdgesAsTheIcomBandSwitchSeesThem) {
    EXPECT_EQ(Band(30.0), 1);
    EXPECT_EQ(Band(29.4), 1);
    EXPECT_EQ(Band(30.001), -1);
    EXPECT_EQ(Band(143.999), -1);
    EXPECT_EQ(Band(144.0), 2);
    EXPECT_EQ(Band(429.999), 2);
    EXPECT_EQ(Band(430.0), 3);
    EXPECT_EQ(Band(499.999), 3);
    EXPECT_EQ(Band(500.0), -1);  // no band, on purpose
    EXPECT_EQ(Band(500.001), 4);
    EXPECT_EQ(Band(2400.05), 4);
}

TEST(FormatFreq, FiveDecimalsAndAtLeastThreeIntegerDigits) {
    char text[32];
    formatFreq(145.9, text, sizeof text);
    EXPECT_STREQ(text, "145.90000");
    formatFreq(29.4, text, sizeof text);
    EXPECT_STREQ(text, "29.40000");
    formatFreq(2400.05, text, sizeof text);
    EXPECT_STREQ(text, "2400.05000");
    formatFreq(435.123456, text, 8);  // bounded
    EXPECT_STREQ(text, "435.123");
}

TEST(RadioTable, SeventeenRowsWithNamesAndTheYaesuDriversInPlace) {
    for (int i = 0; i < kRadioCount; ++i) {
        ASSERT_NE(RadioDriverFor(i), nullptr);
        EXPECT_NE(RadioDriverFor(i)->model, nullptr);
    }
    EXPECT_EQ(RadioDriverFor(-1), nullptr);
    EXPECT_STREQ(RadioDriverFor(17)->model, "Hamlib");  // any Hamlib rig, after the table
    EXPECT_EQ(RadioDriverFor(18), nullptr);
    EXPECT_STREQ(RadioDriverFor(1)->model, "FT-847");
    EXPECT_STREQ(RadioDriverFor(13)->model, "TS-790");
    for (int i = 0; i <= 4; ++i) EXPECT_NE(RadioDriverFor(i)->setFrequencies, nullptr) << i;
    // Factors of the S-meter indicator.
    EXPECT_EQ(RadioDriverFor(0)->sMeterFactor, 3.125);
    EXPECT_EQ(RadioDriverFor(11)->sMeterFactor, 1.0 / 2.54);
    EXPECT_EQ(RadioDriverFor(14)->sMeterFactor, 1.666);
    EXPECT_EQ(RadioDriverFor(16)->sMeterFactor, 3.125);
    // Dial read-backs of the Yaesus: FT-847, FT-817, FT-100D only.
    EXPECT_EQ(RadioDriverFor(0)->downlinkChanged, nullptr);
    EXPECT_NE(RadioDriverFor(1)->downlinkChanged, nullptr);
    EXPECT_NE(RadioDriverFor(2)->downlinkChanged, nullptr);
    EXPECT_NE(RadioDriverFor(3)->downlinkChanged, nullptr);
    EXPECT_EQ(RadioDriverFor(4)->downlinkChanged, nullptr);
}

TEST(RadioTable, DriverCommonStartTakesMicrowavesInTenthsAndSkipsRepeats) {
    EXPECT_EQ(RadioHertz(2400.05), 240005000u);
    EXPECT_EQ(RadioHertz(999.999999), 999999999u);
    EXPECT_EQ(RadioHertz(1000.0), 100000000u);
    EXPECT_EQ(RadioHertz(145.9000019), 145900001u);  // truncated toward zero
    EXPECT_EQ(RadioHertz(-1.0), 0u);
    EXPECT_EQ(RadioHertz(std::nan("")), 0u);
    LastSent last = {0, 0};
    uint32_t up, down;
    EXPECT_EQ(DriverCommonStart(&last, 145.9, 435.8, false, &up, &down), 1);
    EXPECT_EQ(DriverCommonStart(&last, 145.9, 435.8, false, &up, &down), 0);
    EXPECT_EQ(DriverCommonStart(&last, 145.9, 435.800001, false, &up, &down),
              1);  // 1 Hz is a change
    EXPECT_EQ(DriverCommonStart(&last, 145.9, 435.800001, true, &up, &down), 1);
}

TEST(SetVFO, RefusesUnconnectedRowsAndClosedPorts) {
    ResetYaesuDriverState();
    for (int radio : {-1, 13, 17, 99})
        EXPECT_EQ(SetVFO(radio, 3, 0, 145.9, 435.8, 3, 0, 0, true, false), 0);
    for (int radio = 0; radio <= 4; ++radio)
        EXPECT_EQ(SetVFO(radio, -1, 0, 145.9, 435.8, 3, 0, 0, true, false), 0);
}

// --- trims -----------------------------------------------------------------------

struct TrimCase {
    const char* name;
    bool inverting;
    bool locked;
    double expectedTX, expectedRX, expectedOtherStepper;
};

void PrintTo(const TrimCase& c, std::ostream* os) {
    *os << c.name;
}

class UplinkStepper : public ::testing::TestWithParam<TrimCase> {};

// The uplink stepper moves from 0.001 to 0.003; the downlink stepper shows 0.002.
TEST_P(UplinkStepper, MovesTheDownlinkWhenLocked) {
    const TrimCase& c = GetParam();
    ModeRec mode = MakeMode(c.inverting ? 3 : 2, 435.9, 145.9);
    mode.TXOffset = 0.001;
    mode.RXOffset = 0.002;
    double downStepper = 0.002;
    applyUplinkStepper(&mode, c.inverting, c.locked, 0.001, 0.003, &downStepper);
    EXPECT_NEAR(mode.TXOffset, c.expectedTX, kMHzTolerance);
    EXPECT_NEAR(mode.RXOffset, c.expectedRX, kMHzTolerance);
    EXPECT_NEAR(downStepper, c.expectedOtherStepper, kMHzTolerance);

    // The downlink stepper is the mirror image.
    ModeRec mirror = MakeMode(c.inverting ? 3 : 2, 435.9, 145.9);
    mirror.RXOffset = 0.001;
    mirror.TXOffset = 0.002;
    double upStepper = 0.002;
    applyDownlinkStepper(&mirror, c.inverting, c.locked, 0.001, 0.003, &upStepper);
    EXPECT_NEAR(mirror.RXOffset, c.expectedTX, kMHzTolerance);
    EXPECT_NEAR(mirror.TXOffset, c.expectedRX, kMHzTolerance);
    EXPECT_NEAR(upStepper, c.expectedOtherStepper, kMHzTolerance);
}

INSTANTIATE_TEST_SUITE_P(
    Lock, UplinkStepper,
    ::testing::Values(TrimCase{"unlocked", false, false, 0.003, 0.002, 0.002},
                      TrimCase{"locked normal", false, true, 0.003, 0.004, 0.004},
                      TrimCase{"locked inverting", true, true, 0.003, 0.000, 0.000},
                      TrimCase{"unlocked inverting", true, false, 0.003, 0.002, 0.002}));

TEST(Slider, HundredthsOfAMegahertzPerStep) {
    ModeRec mode = MakeMode(3, 435.9, 145.9);
    double previous = 10.0;
    applySliderMove(&mode, true, false, 10.5, &previous);  // unlocked: only the uplink trim
    EXPECT_NEAR(mode.TXOffset, 0.005, kMHzTolerance);
    EXPECT_NEAR(mode.RXOffset, 0.0, kMHzTolerance);
    EXPECT_EQ(previous, 10.5);
    applySliderMove(&mode, true, true, 10.0, &previous);  // locked inverting: opposite directions
    EXPECT_NEAR(mode.RXOffset, -0.005, kMHzTolerance);
    EXPECT_NEAR(mode.TXOffset, 0.010, kMHzTolerance);
    applySliderMove(&mode, false, true, 10.2, &previous);  // locked normal: together
    EXPECT_NEAR(mode.RXOffset, -0.003, kMHzTolerance);
    EXPECT_NEAR(mode.TXOffset, 0.012, kMHzTolerance);
}

TEST(CheckBoxes, CopiedIntoTheSiteAndTheUserDefaults) {
    SiteRec site;
    std::memset(&site, 0, sizeof site);
    RecordingUi ui;
    setFullDopplerTuning(&site, true, &ui);
    setListenForBeacon(&site, true, &ui);
    setVfoLocked(&site, true, &ui);
    EXPECT_EQ(site.fullDopplerTuning, 1);
    EXPECT_EQ(site.listenForBeacon, 1);
    EXPECT_EQ(site.vfo_locked, 1);
    EXPECT_EQ(ui.stored,
              (std::map<std::string, bool>{
                  {"full_doppler_tuning", true}, {"beacon_enabled", true}, {"vfo_locked", true}}));
    setListenForBeacon(&site, false, &ui);
    EXPECT_EQ(site.listenForBeacon, 0);
    EXPECT_FALSE(ui.stored["beacon_enabled"]);
}

// --- whole tuning steps on a simulated FT-847 ------------------------------------

class TuningWithRadio : public ::testing::Test {
  protected:
    void SetUp() override {
        ResetYaesuDriverState();
        SetCommandDelay(0);
        ASSERT_TRUE(radio.open());
        std::memset(&site, 0, sizeof site);
        std::memset(ports, 0, sizeof ports);
        site.radio = 1;
        site.radioBaud = 5;
        site.radioPortFileDescriptor = -1;
        site.gatewayPortFileDescriptor = -1;
        site.dial_tracking_enabled = 1;
        site.s_meter_enabled = 1;
        site.radioPort = addTypedPort(ports, radio.devicePath().c_str());
        sat = new SatRec();
        bp = new SatRec();
        sat->AOS = 1;
        sat->modes[0] = MakeMode(3, 145.95, 435.85);  // inverting SSB transponder, FO-29 style
        sat->numberOfActiveChannels = 1;
    }
    void TearDown() override {
        closeSerialPort(site.radioPortFileDescriptor, false);
        delete sat;
        delete bp;
    }
    // Opens the port through the radio switch and waits for the FT-847's
    // four start-up blocks, so that later comparisons see only their own traffic.
    void switchOn() {
        ASSERT_EQ(switchRadioPort(&site, true, ports, "0.1.0", &ui), 1);
        ASSERT_TRUE(Eventually([&] { return radio.state().blocks >= 4; }));
    }
    // Blocks received once the radio has handled all the driver wrote.
    size_t blocksAfter(size_t) {
        radio.waitIdle();
        return radio.received().size() / 5;
    }

    SimulatedRadio radio{RadioModel::FT847};
    // Reply time-outs pass only while the radio is idle.
    testing::DeviceClock clock{
        std::vector<testing::DeviceClock::Device>{{"", -1, [this] { radio.waitIdle(); }}}};
    SiteRec site;
    PortNameRecord ports[kMaxSerialPorts];
    SatRec* sat = nullptr;
    SatRec* bp = nullptr;
    VFORec vfo = {};
    RecordingUi ui;
};

TEST_F(TuningWithRadio, SwitchingOnOpensStartsAndStoresTheSetting) {
    switchOn();
    EXPECT_EQ(site.vfo_enabled, 1);
    EXPECT_NE(site.radioPortFileDescriptor, -1);
    EXPECT_EQ(ui.beeps, 0);
    EXPECT_TRUE(ui.stored["vfo_enabled"]);
    EXPECT_EQ(Hex(radio.received()).substr(0, 14), "00 00 00 00 00");  // CAT on first

    ASSERT_EQ(switchRadioPort(&site, false, ports, "0.1.0", &ui), 0);
    EXPECT_EQ(site.vfo_enabled, 0);
    EXPECT_EQ(site.radioPortFileDescriptor, -1);
    EXPECT_FALSE(ui.stored["vfo_enabled"]);
    EXPECT_TRUE(
        Eventually([&] { return !radio.state().catOn; }));  // the stop driver switched CAT off
}

TEST_F(TuningWithRadio, NoPortOrAnUnopenablePortBeepsAndLeavesTheBoxOff) {
    site.radioPort = 7;  // nothing there
    EXPECT_EQ(switchRadioPort(&site, true, ports, "0.1.0", &ui), 0);
    EXPECT_EQ(ui.beeps, 1);
    EXPECT_EQ(ui.radioChecks, std::vector<bool>{false});
    EXPECT_EQ(site.vfo_enabled, 0);
    EXPECT_EQ(site.radioPortFileDescriptor, -1);

    site.radioPort = addTypedPort(ports, "/dev/veloran-unplugged");
    EXPECT_EQ(switchRadioPort(&site, true, ports, "0.1.0", &ui), 0);
    EXPECT_EQ(ui.beeps, 2);
    EXPECT_EQ(site.radioPortFileDescriptor, -1);
    EXPECT_FALSE(ui.stored["vfo_enabled"]);
}

TEST_F(TuningWithRadio, IndexThirteenSwitchesTheRadioOffAtTheFirstTuning) {
    switchOn();
    site.radio = 13;
    radio.clearReceived();
    EXPECT_EQ(updateVFO(&vfo, &site, sat, bp, true, &ui), 0);
    EXPECT_EQ(ui.beeps, 1);
    EXPECT_EQ(ui.radioChecks, std::vector<bool>{false});
    EXPECT_EQ(site.vfo_enabled, 0);
    EXPECT_EQ(updateVFO(&vfo, &site, sat, bp, true, &ui), 1);  // off now: nothing more happens
    EXPECT_EQ(ui.beeps, 1);
    EXPECT_EQ(blocksAfter(0), 0u);
}

TEST_F(TuningWithRadio, TwoIdenticalTicksSendOneCommandAndForcingSendsAgain) {
    switchOn();
    radio.clearReceived();
    ASSERT_EQ(updateVFO(&vfo, &site, sat, bp, false, &ui), 1);
    ASSERT_EQ(updateVFO(&vfo, &site, sat, bp, false, &ui), 1);
    EXPECT_EQ(blocksAfter(10), 2u);  // one update: receive and transmit frequency
    radio.clearReceived();
    ASSERT_EQ(updateVFO(&vfo, &site, sat, bp, true, &ui), 1);
    EXPECT_EQ(blocksAfter(35), 7u);  // the whole satellite set-up again
}

TEST_F(TuningWithRadio, BetweenPassesTheBetweenPassesModeIsForced) {
    switchOn();
    sat->AOS = 0;
    bp->enabled = 1;
    bp->modes[0] = MakeMode(6, 0, 0);  // SIMP_FM: the radio goes back to plain FM
    bp->modes[0].gTone = 9;
    radio.clearReceived();
    ASSERT_EQ(updateVFO(&vfo, &site, sat, bp, false, &ui), 1);
    blocksAfter(5);
    EXPECT_EQ(Hex(radio.received(), 5).substr(0, 31), "00 00 00 00 8E | 08 00 00 00 07");
    EXPECT_TRUE(
        Eventually([&] { return radio.state().main.hertz == 435850000u; }));  // our downlink
    EXPECT_FALSE(radio.state().satelliteMode);
}

TEST_F(TuningWithRadio, DialIsFollowedWithinFiftyKilohertz) {
    switchOn();
    site.vfo_locked = 1;
    ModeRec* mode = SelectedMode(sat);
    ASSERT_EQ(updateVFO(&vfo, &site, sat, bp, true, &ui), 1);
    ASSERT_TRUE(Eventually([&] { return radio.state().satRx.hertz == 435850000u; }));

    radio.turnDial(60000);  // a band or memory change: no trim moves
    EXPECT_EQ(checkTuningDial(&vfo, &site, mode), 0);
    EXPECT_EQ(mode->RXOffset, 0.0);
    EXPECT_EQ(mode->TXOffset, 0.0);

    radio.turnDial(1000);  // 1 kHz, locked, inverting: receive up, transmit down
    EXPECT_EQ(checkTuningDial(&vfo, &site, mode), 1);
    EXPECT_NEAR(mode->RXOffset, 0.001, kMHzTolerance);
    EXPECT_NEAR(mode->TXOffset, -0.001, kMHzTolerance);

    site.listenForBeacon = 1;  // on the beacon the beacon trim follows
    radio.turnDial(-500);
    EXPECT_EQ(checkTuningDial(&vfo, &site, mode), 1);
    EXPECT_NEAR(mode->BEOffset, -0.0005, kMHzTolerance);
    EXPECT_NEAR(mode->RXOffset, 0.001, kMHzTolerance);

    site.dial_tracking_enabled = 0;
    radio.turnDial(700);
    EXPECT_EQ(checkTuningDial(&vfo, &site, mode), 0);
}

TEST_F(TuningWithRadio, SquelchAndSMeter) {
    switchOn();
    radio.setRxStatus(0x0A);  // S-meter 10 on the FT-847 scale: 15 after x1.5
    checkSquelch(&vfo, &site, &ui);
    EXPECT_EQ(vfo.squelched, 0);
    EXPECT_EQ(vfo.signalStrength, 15);
    EXPECT_EQ(ui.sMeter, 46);  // 15 x 3.125, truncated
    radio.setRxStatus(0x80);
    checkSquelch(&vfo, &site, &ui);
    EXPECT_EQ(vfo.squelched, 1);
    EXPECT_EQ(ui.sMeter, 0);
    site.s_meter_enabled = 0;
    ui.sMeter = -1;
    checkSquelch(&vfo, &site, &ui);
    EXPECT_EQ(ui.sMeter, -1);
}

TEST_F(TuningWithRadio, UnpluggedMidSessionFailsCleanlyAndSwitchesTheRadioOff) {
    switchOn();
    ASSERT_EQ(updateVFO(&vfo, &site, sat, bp, true, &ui), 1);
    radio.unplug();
    // Polls on the dead line return at once with nothing.
    checkSquelch(&vfo, &site, &ui);
    EXPECT_EQ(vfo.squelched, 1);
    EXPECT_EQ(checkTuningDial(&vfo, &site, SelectedMode(sat)), 0);
    vfo.dopplerRX = 0.001;
    EXPECT_EQ(updateVFO(&vfo, &site, sat, bp, false, &ui), 0);
    EXPECT_EQ(ui.beeps, 1);
    EXPECT_EQ(ui.radioChecks, std::vector<bool>{false});
    EXPECT_EQ(site.vfo_enabled, 0);
}

TEST(TuningUnplugged, Ft817FailsOnADeadLineToo) {
    ResetYaesuDriverState();
    SetCommandDelay(0);
    SimulatedRadio radio(RadioModel::FT817);
    ASSERT_TRUE(radio.open());
    const int fd = openSerialPort(radio.devicePath().c_str(), 5, 2, false);
    ASSERT_NE(fd, -1);
    ASSERT_EQ(SetFT817VFO(fd, 435.8, 145.9, 3, 0, 0, true, false), 1);
    radio.unplug();
    EXPECT_EQ(SetFT817VFO(fd, 435.81, 145.91, 3, 0, 0, false, false), 0);
    closeSerialPort(fd, false);
}

// A synthetic pass: the range rate runs from +7 km/s (approaching) through 0
// to -7 km/s. With full Doppler tuning the simulated radio's satellite VFOs
// must hold the corrected frequencies to the hertz, less the 10 Hz resolution
// of the CAT frequency format (the 1 Hz digit is dropped, never rounded).
TEST_F(TuningWithRadio, SyntheticPassIsFollowedToTheHertz) {
    constexpr double kSpeedOfLight = 299792.5;  // km/s, as the Doppler shift is computed
    switchOn();
    site.fullDopplerTuning = 1;
    const ModeRec& mode = sat->modes[0];
    for (int step = 0; step <= 10; ++step) {
        const double v = 7.0 * std::cos(M_PI * step / 10.0);
        vfo.dopplerTX = mode.upFreq * v / kSpeedOfLight;
        vfo.dopplerRX = mode.downFreq * v / kSpeedOfLight;
        ASSERT_EQ(updateVFO(&vfo, &site, sat, bp, step == 0, &ui), 1) << step;
        // What the satellite hears must be upFreq: transmit below it while approaching.
        const double upHz = (mode.upFreq - mode.upFreq * v / kSpeedOfLight) * 1e6;
        const double downHz = (mode.downFreq + mode.downFreq * v / kSpeedOfLight) * 1e6;
        ASSERT_TRUE(Eventually([&] {
            const sim::RadioState s = radio.state();
            return std::fabs(s.satTx.hertz - upHz) < 10.0 &&
                   std::fabs(s.satRx.hertz - downHz) < 10.0;
        })) << "step "
            << step;
        const sim::RadioState s = radio.state();
        EXPECT_LE(s.satTx.hertz, upHz) << step;
        EXPECT_GT(s.satTx.hertz, upHz - 10.0) << step;
        EXPECT_LE(s.satRx.hertz, downHz) << step;
        EXPECT_GT(s.satRx.hertz, downHz - 10.0) << step;
        EXPECT_EQ(s.satTx.hertz % 10, 0u);
    }
    const sim::RadioState s = radio.state();
    EXPECT_TRUE(s.satelliteMode);
    EXPECT_EQ(s.satTx.mode, 0x00);  // LSB up
    EXPECT_EQ(s.satRx.mode, 0x01);  // USB down: inverting
    EXPECT_EQ(ui.beeps, 0);
}

TEST_F(TuningWithRadio, WithoutFullDopplerTheInvertingUplinkStaysPut) {
    switchOn();
    vfo.dopplerTX = 145.95 * 5.0 / 299792.5;
    vfo.dopplerRX = 435.85 * 5.0 / 299792.5;
    ASSERT_EQ(updateVFO(&vfo, &site, sat, bp, true, &ui), 1);
    // JA: uplink fixed at 145.95; the downlink takes dopplerRX - dopplerTX.
    const double downHz = (435.85 - vfo.dopplerTX + vfo.dopplerRX) * 1e6;
    ASSERT_TRUE(Eventually([&] { return radio.state().satTx.hertz == 145950000u; }));
    EXPECT_TRUE(Eventually([&] { return std::fabs(radio.state().satRx.hertz - downHz) < 10.0; }));
}

// --- port discovery -------------------------------------------------------------

TEST(SerialPortList, StableOrderByIdFirstAndBoundedAtSixtyFour) {
    namespace fs = std::filesystem;
    const fs::path root = fs::temp_directory_path() / ("veloran-ports-" + std::to_string(getpid()));
    fs::remove_all(root);
    fs::create_directories(root / "serial" / "by-id");
    for (const char* name : {"ttyUSB1", "ttyUSB0", "ttyS0", "ttyACM0", "console", "ttyS1"}) {
        FILE* f = std::fopen((root / name).c_str(), "w");
        ASSERT_NE(f, nullptr);
        std::fclose(f);
    }
    fs::create_symlink("../../ttyUSB0", root / "serial" / "by-id" / "usb-FTDI_FT232R-if00-port0");
    DevSerialPortList list(root.c_str());
    PortNameRecord ports[kMaxSerialPorts];
    ASSERT_EQ(countSerialPorts(&list, ports, false), 5);
    EXPECT_STREQ(ports[0].userName, "usb-FTDI_FT232R-if00-port0");
    EXPECT_STREQ(ports[1].userName, "ttyUSB1");  // ttyUSB0 is already listed by its id
    EXPECT_STREQ(ports[2].userName, "ttyACM0");
    EXPECT_STREQ(ports[3].userName, "ttyS0");
    EXPECT_STREQ(ports[4].userName, "ttyS1");
    EXPECT_EQ(std::string(ports[2].bsdPath), (root / "ttyACM0").string());
    EXPECT_EQ(ports[5].bsdPath[0], 0);

    // A typed path joins the list; typing it again finds it.
    EXPECT_EQ(addTypedPort(ports, "/dev/pts/9"), 5);
    EXPECT_EQ(addTypedPort(ports, "/dev/pts/9"), 5);
    EXPECT_EQ(addTypedPort(ports, ""), -1);

    for (int i = 2; i < 80; ++i) {
        FILE* f = std::fopen((root / ("ttyS" + std::to_string(i))).c_str(), "w");
        std::fclose(f);
    }
    EXPECT_EQ(countSerialPorts(&list, ports, false), kMaxSerialPorts);
    EXPECT_EQ(addTypedPort(ports, "/dev/pts/9"), -1);  // full
    fs::remove_all(root);
}

TEST(GatewayPort, OpensAndClosesLikeTheRadio) {
    SimulatedRadio board(RadioModel::FT817);  // any pseudo-terminal will do
    ASSERT_TRUE(board.open());
    SiteRec site;
    std::memset(&site, 0, sizeof site);
    site.gatewayPortFileDescriptor = -1;
    site.gatewayBaud = 5;
    PortNameRecord ports[kMaxSerialPorts];
    std::memset(ports, 0, sizeof ports);
    site.gatewayPort = addTypedPort(ports, board.devicePath().c_str());
    RecordingUi ui;
    EXPECT_EQ(switchGatewayPort(&site, true, ports, &ui), 1);
    EXPECT_EQ(site.gateway_enabled, 1);
    EXPECT_NE(site.gatewayPortFileDescriptor, -1);
    EXPECT_TRUE(ui.stored["gateway_enabled"]);
    EXPECT_EQ(switchGatewayPort(&site, false, ports, &ui), 0);
    EXPECT_EQ(site.gatewayPortFileDescriptor, -1);
    EXPECT_FALSE(ui.stored["gateway_enabled"]);
    site.gatewayPort = 40;
    EXPECT_EQ(switchGatewayPort(&site, true, ports, &ui), 0);
    EXPECT_EQ(ui.beeps, 1);
    EXPECT_EQ(ui.gatewayChecks, std::vector<bool>{false});
}

}  // namespace
}  // namespace veloran
