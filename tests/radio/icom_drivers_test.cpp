// The Icom set-frequencies and dial drivers against a simulated IC-910,
// IC-821 and IC-706: the exact frames of every transponder-mode group,
// forced and unforced, and what the radio holds afterwards.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "radio/drivers.h"
#include "radio/icom.h"
#include "radio/tuning.h"
#include "sim/icom_sim.h"
#include "tests/support/hex.h"
#include "tests/support/pty.h"

namespace veloran {
namespace {

using testing::HexFrames;
using Frames = std::vector<std::string>;

constexpr uint8_t k910 = 0x60;
constexpr uint8_t k821 = 0x4C;
constexpr uint8_t k706 = 0x48;

struct SequenceCase {
    const char* name;
    sim::IcomModel model;
    uint8_t address;
    SetFrequenciesFn driver;
    int commMode;
    double up, down;  // MHz
    int gTone, gCTone;
    bool force;
    Frames frames;
};

class IcomSequence : public ::testing::TestWithParam<SequenceCase> {};

TEST_P(IcomSequence, SendsExactlyTheseFrames) {
    const SequenceCase& c = GetParam();
    ResetIcomDriverState();
    sim::IcomSimulator radio(c.model, c.address);
    testing::PtyPeer line;
    ASSERT_TRUE(line.attach(&radio));
    testing::DeviceClock clock{&line};
    EXPECT_EQ(
        c.driver(line.fd(), c.address, c.up, c.down, c.commMode, c.gTone, c.gCTone, c.force, false),
        1);
    line.settle();
    EXPECT_EQ(HexFrames(radio.frames()), c.frames);
}

// Sim start: IC-910 and IC-821 main band 145.000 MHz, sub band 435.000 MHz.
INSTANTIATE_TEST_SUITE_P(
    Groups, IcomSequence,
    ::testing::Values(
        SequenceCase{"ic910_forced_inverting_ssb_exchanges_bands",
                     sim::IcomModel::IC910,
                     k910,
                     Set910VFO,
                     3,
                     145.9,
                     435.8,
                     0,
                     0,
                     true,
                     {"FE FE 60 E0 03 FD",        // which band is on main?
                      "FE FE 60 E0 07 B0 FD",     // 2 m there: exchange
                      "FE FE 60 E0 1A 09 01 FD",  // sub band on
                      "FE FE 60 E0 1A 07 01 FD",  // satellite mode on
                      "FE FE 60 E0 07 D1 FD",     // sub band: the uplink
                      "FE FE 60 E0 06 00 FD",     // LSB
                      "FE FE 60 E0 16 42 00 FD",  // repeater tone off
                      "FE FE 60 E0 07 D0 FD",     // main band: the downlink
                      "FE FE 60 E0 06 01 FD",     // USB
                      "FE FE 60 E0 16 43 00 FD",  // tone squelch off
                      "FE FE 60 E0 07 D1 FD", "FE FE 60 E0 05 00 00 90 45 01 FD",
                      "FE FE 60 E0 07 D0 FD", "FE FE 60 E0 05 00 00 80 35 04 FD"}},
        SequenceCase{"ic910_unforced_two_band",
                     sim::IcomModel::IC910,
                     k910,
                     Set910VFO,
                     3,
                     145.9,
                     435.8,
                     0,
                     0,
                     false,
                     {"FE FE 60 E0 07 D1 FD", "FE FE 60 E0 05 00 00 90 45 01 FD",
                      "FE FE 60 E0 07 D0 FD", "FE FE 60 E0 05 00 00 80 35 04 FD"}},
        SequenceCase{
            "ic910_forced_jd_mix_fm_up_usb_down_with_tone_squelch",
            sim::IcomModel::IC910,
            k910,
            Set910VFO,
            11,
            435.3,
            145.9,
            0,
            9,
            true,
            {"FE FE 60 E0 03 FD", "FE FE 60 E0 1A 09 01 FD", "FE FE 60 E0 1A 07 01 FD",
             "FE FE 60 E0 07 D1 FD", "FE FE 60 E0 06 05 FD", "FE FE 60 E0 16 42 00 FD",
             "FE FE 60 E0 07 D0 FD", "FE FE 60 E0 06 01 FD",
             "FE FE 60 E0 1B 00 08 85 FD",  // 88.5 Hz
             "FE FE 60 E0 16 43 01 FD", "FE FE 60 E0 07 D1 FD", "FE FE 60 E0 05 00 00 30 35 04 FD",
             "FE FE 60 E0 07 D0 FD", "FE FE 60 E0 05 00 00 90 45 01 FD"}},
        SequenceCase{"ic910_forced_j_exp_usb_up_fm_down",
                     sim::IcomModel::IC910,
                     k910,
                     Set910VFO,
                     17,
                     435.8,
                     145.9,
                     0,
                     0,
                     true,
                     {"FE FE 60 E0 03 FD", "FE FE 60 E0 1A 09 01 FD", "FE FE 60 E0 1A 07 01 FD",
                      "FE FE 60 E0 07 D1 FD", "FE FE 60 E0 06 01 FD", "FE FE 60 E0 16 42 00 FD",
                      "FE FE 60 E0 07 D0 FD", "FE FE 60 E0 06 05 FD", "FE FE 60 E0 16 43 00 FD",
                      "FE FE 60 E0 07 D1 FD", "FE FE 60 E0 05 00 00 80 35 04 FD",
                      "FE FE 60 E0 07 D0 FD", "FE FE 60 E0 05 00 00 90 45 01 FD"}},
        SequenceCase{"ic910_forced_repeater_programs_tone_one_not_gtone",
                     sim::IcomModel::IC910,
                     k910,
                     Set910VFO,
                     1,
                     145.2,
                     145.8,
                     9,
                     0,
                     true,
                     {"FE FE 60 E0 03 FD", "FE FE 60 E0 1A 07 00 FD",  // satellite mode off
                      "FE FE 60 E0 07 D0 FD", "FE FE 60 E0 0F 00 FD", "FE FE 60 E0 07 00 FD",
                      "FE FE 60 E0 06 05 FD",        // FM
                      "FE FE 60 E0 1A 09 00 FD",     // sub band off
                      "FE FE 60 E0 1B 00 06 70 FD",  // table entry 1, 67.0 Hz
                      "FE FE 60 E0 16 42 01 FD", "FE FE 60 E0 16 43 00 FD",
                      "FE FE 60 E0 1C 00 FD",        // transmitting?
                      "FE FE 60 E0 0D 00 60 00 FD",  // 600 kHz offset
                      "FE FE 60 E0 07 00 FD", "FE FE 60 E0 05 00 00 80 45 01 FD",
                      "FE FE 60 E0 0F 11 FD"}},  // downlink above uplink: duplex minus
        SequenceCase{"ic910_unforced_simplex_fm",
                     sim::IcomModel::IC910,
                     k910,
                     Set910VFO,
                     6,
                     145.5,
                     145.5,
                     0,
                     0,
                     false,
                     {"FE FE 60 E0 1C 00 FD", "FE FE 60 E0 0D 00 00 00 FD", "FE FE 60 E0 07 00 FD",
                      "FE FE 60 E0 05 00 00 50 45 01 FD", "FE FE 60 E0 0F 12 FD"}},
        SequenceCase{
            "ic910_forced_receive_only",
            sim::IcomModel::IC910,
            k910,
            Set910VFO,
            -1,
            0.0,
            145.95,
            0,
            0,
            true,
            {"FE FE 60 E0 03 FD", "FE FE 60 E0 1A 09 01 FD", "FE FE 60 E0 1A 07 01 FD",
             "FE FE 60 E0 07 D0 FD", "FE FE 60 E0 06 03 FD", "FE FE 60 E0 05 00 00 95 45 01 FD"}},
        SequenceCase{"ic910_unforced_receive_only",
                     sim::IcomModel::IC910,
                     k910,
                     Set910VFO,
                     -1,
                     0.0,
                     145.95,
                     0,
                     0,
                     false,
                     {"FE FE 60 E0 05 00 00 95 45 01 FD"}},
        SequenceCase{"ic910_forced_unknown_only_checks_the_band",
                     sim::IcomModel::IC910,
                     k910,
                     Set910VFO,
                     0,
                     145.9,
                     145.9,
                     0,
                     0,
                     true,
                     {"FE FE 60 E0 03 FD"}},
        SequenceCase{"ic910_unforced_out_of_range",
                     sim::IcomModel::IC910,
                     k910,
                     Set910VFO,
                     18,
                     145.9,
                     435.8,
                     0,
                     0,
                     false,
                     {}},
        SequenceCase{"ic821_forced_mode_j_exchanges_and_sets_both_bands",
                     sim::IcomModel::IC821,
                     k821,
                     Set821HVFO,
                     3,
                     145.9,
                     435.8,
                     0,
                     0,
                     true,
                     {"FE FE 4C E0 07 B0 FD", "FE FE 4C E0 07 D0 FD", "FE FE 4C E0 07 00 FD",
                      "FE FE 4C E0 06 00 FD", "FE FE 4C E0 0F 10 FD", "FE FE 4C E0 07 D1 FD",
                      "FE FE 4C E0 07 00 FD", "FE FE 4C E0 06 01 FD", "FE FE 4C E0 0F 10 FD",
                      "FE FE 4C E0 07 D1 FD", "FE FE 4C E0 05 00 00 80 35 04 FD",
                      "FE FE 4C E0 07 D0 FD", "FE FE 4C E0 05 00 00 90 45 01 FD"}},
        SequenceCase{"ic821_unforced_two_band",
                     sim::IcomModel::IC821,
                     k821,
                     Set821HVFO,
                     10,
                     435.1,
                     145.9,
                     0,
                     0,
                     false,
                     {"FE FE 4C E0 07 D1 FD", "FE FE 4C E0 05 00 00 90 45 01 FD",
                      "FE FE 4C E0 07 D0 FD", "FE FE 4C E0 05 00 00 10 35 04 FD"}},
        SequenceCase{
            "ic821_forced_repeater_split_vfos",
            sim::IcomModel::IC821,
            k821,
            Set821HVFO,
            1,
            145.2,
            145.8,
            9,
            0,
            true,
            {"FE FE 4C E0 07 D0 FD", "FE FE 4C E0 07 00 FD", "FE FE 4C E0 06 05 FD",
             "FE FE 4C E0 0F 10 FD", "FE FE 4C E0 07 01 FD", "FE FE 4C E0 06 05 FD",
             "FE FE 4C E0 0F 10 FD", "FE FE 4C E0 07 01 FD", "FE FE 4C E0 05 00 00 20 45 01 FD",
             "FE FE 4C E0 07 00 FD", "FE FE 4C E0 05 00 00 80 45 01 FD", "FE FE 4C E0 0F 11 FD",
             "FE FE 4C E0 0F 01 FD"}},
        SequenceCase{
            "ic821_unforced_repeater_downlink_below_uplink",
            sim::IcomModel::IC821,
            k821,
            Set821HVFO,
            16,
            145.8,
            145.2,
            0,
            0,
            false,
            {"FE FE 4C E0 07 01 FD", "FE FE 4C E0 05 00 00 80 45 01 FD", "FE FE 4C E0 07 00 FD",
             "FE FE 4C E0 05 00 00 20 45 01 FD", "FE FE 4C E0 0F 12 FD", "FE FE 4C E0 0F 01 FD"}},
        SequenceCase{"ic821_forced_mode_a_sets_the_uplink_only",
                     sim::IcomModel::IC821,
                     k821,
                     Set821HVFO,
                     5,
                     145.9,
                     29.4,
                     0,
                     0,
                     true,
                     {"FE FE 4C E0 07 D0 FD", "FE FE 4C E0 07 00 FD", "FE FE 4C E0 06 01 FD",
                      "FE FE 4C E0 0F 10 FD", "FE FE 4C E0 05 00 00 90 45 01 FD"}},
        SequenceCase{"ic821_forced_mode_t_cw_without_simplex",
                     sim::IcomModel::IC821,
                     k821,
                     Set821HVFO,
                     14,
                     21.2,
                     145.9,
                     0,
                     0,
                     true,
                     {"FE FE 4C E0 07 D0 FD", "FE FE 4C E0 07 00 FD", "FE FE 4C E0 06 03 FD",
                      "FE FE 4C E0 05 00 00 90 45 01 FD"}},
        SequenceCase{"ic821_forced_receive_only_on_the_sub_band",
                     sim::IcomModel::IC821,
                     k821,
                     Set821HVFO,
                     -1,
                     0.0,
                     145.95,
                     0,
                     0,
                     true,
                     {"FE FE 4C E0 07 D1 FD", "FE FE 4C E0 07 00 FD", "FE FE 4C E0 06 03 FD",
                      "FE FE 4C E0 0F 10 FD", "FE FE 4C E0 05 00 00 95 45 01 FD"}},
        SequenceCase{"ic821_forced_unknown",
                     sim::IcomModel::IC821,
                     k821,
                     Set821HVFO,
                     0,
                     145.9,
                     145.9,
                     0,
                     0,
                     true,
                     {}},
        SequenceCase{"ic706_forced_wide_fm",
                     sim::IcomModel::IC706,
                     k706,
                     Set706VFO,
                     12,
                     0.0,
                     145.9,
                     0,
                     0,
                     true,
                     {"FE FE 48 E0 06 06 FD", "FE FE 48 E0 05 00 00 90 45 01 FD"}},
        SequenceCase{"ic706_forced_inverting_ssb_tunes_the_downlink_in_usb",
                     sim::IcomModel::IC706,
                     k706,
                     Set706VFO,
                     3,
                     145.9,
                     435.8,
                     0,
                     0,
                     true,
                     {"FE FE 48 E0 06 01 FD", "FE FE 48 E0 05 00 00 80 35 04 FD"}},
        SequenceCase{"ic706_unforced_cw",
                     sim::IcomModel::IC706,
                     k706,
                     Set706VFO,
                     8,
                     435.8,
                     145.9,
                     0,
                     0,
                     false,
                     {"FE FE 48 E0 05 00 00 90 45 01 FD"}},
        SequenceCase{"ic706_forced_unknown",
                     sim::IcomModel::IC706,
                     k706,
                     Set706VFO,
                     0,
                     145.9,
                     145.9,
                     0,
                     0,
                     true,
                     {}},
        SequenceCase{"ic706_forced_out_of_range",
                     sim::IcomModel::IC706,
                     k706,
                     Set706VFO,
                     -2,
                     145.9,
                     145.9,
                     0,
                     0,
                     true,
                     {}}),
    [](const ::testing::TestParamInfo<SequenceCase>& row) { return std::string(row.param.name); });

// --- Behaviour across calls and against a misbehaving radio ---------------------------

class Ic910 : public ::testing::Test {
  protected:
    void SetUp() override {
        ResetIcomDriverState();
        ASSERT_TRUE(line_.attach(&radio_));
    }
    int fd() const { return line_.fd(); }
    int set(int commMode, double up, double down, int gTone, int gCTone, bool force) {
        const int result = Set910VFO(fd(), k910, up, down, commMode, gTone, gCTone, force, false);
        line_.settle();
        return result;
    }

    sim::IcomSimulator radio_{sim::IcomModel::IC910, k910};
    testing::PtyPeer line_;
    testing::DeviceClock clock_{&line_};  // a reply is never missed on a busy machine
};

TEST_F(Ic910, NothingChangedNothingSentUnlessForced) {
    EXPECT_EQ(set(3, 145.9, 435.8, 0, 0, false), 1);
    radio_.clearRecords();
    EXPECT_EQ(set(3, 145.9, 435.8, 0, 0, false), 1);
    EXPECT_TRUE(radio_.received().empty());
    EXPECT_EQ(set(3, 145.900001, 435.8, 0, 0, false), 1);  // 1 Hz is a change
    EXPECT_EQ(radio_.frames().size(), 4u);
}

TEST_F(Ic910, NeverRetunesWhileTransmitting) {
    EXPECT_EQ(set(1, 145.2, 145.8, 9, 0, true), 1);
    radio_.setTransmitting(true);
    radio_.clearRecords();
    EXPECT_EQ(set(1, 145.21, 145.81, 9, 0, false), 1);
    EXPECT_EQ(HexFrames(radio_.frames()), Frames{"FE FE 60 E0 1C 00 FD"});
    EXPECT_EQ(radio_.state().main.vfo[0].hertz, 145800000u);
    radio_.setTransmitting(false);
    EXPECT_EQ(set(1, 145.22, 145.82, 9, 0, false), 1);
    EXPECT_EQ(radio_.state().main.vfo[0].hertz, 145820000u);
}

TEST_F(Ic910, InvertingSsbLeavesDownlinkOnMainAndUplinkOnSub) {
    EXPECT_EQ(set(3, 145.95, 435.85, 0, 0, true), 1);
    const sim::IcomSimState s = radio_.state();
    EXPECT_EQ(s.bandExchanges, 1);
    EXPECT_TRUE(s.satelliteMode);
    EXPECT_TRUE(s.subBandOn);
    EXPECT_FALSE(s.subSelected);
    EXPECT_EQ(s.main.vfo[0].hertz, 435850000u);
    EXPECT_EQ(s.main.vfo[0].mode, sim::kSimUSB);
    EXPECT_EQ(s.sub.vfo[0].hertz, 145950000u);
    EXPECT_EQ(s.sub.vfo[0].mode, sim::kSimLSB);
    EXPECT_FALSE(s.repeaterTone);
    EXPECT_FALSE(s.toneSquelch);
}

TEST_F(Ic910, FmRepeaterLeavesMainBandOnTheOutputWithShiftAndTone) {
    EXPECT_EQ(set(1, 145.2, 145.8, 9, 0, true), 1);
    const sim::IcomSimState s = radio_.state();
    EXPECT_FALSE(s.satelliteMode);
    EXPECT_FALSE(s.subBandOn);
    EXPECT_EQ(s.main.vfo[0].hertz, 145800000u);
    EXPECT_EQ(s.main.vfo[0].mode, sim::kSimFM);
    EXPECT_EQ(s.duplex, 0x11);
    EXPECT_EQ(s.offsetHertz, 600000u);
    EXPECT_TRUE(s.repeaterTone);
    EXPECT_EQ(s.toneTenths, 670);  // always table entry 1 on the IC-910
    EXPECT_FALSE(s.toneSquelch);
}

TEST_F(Ic910, ForcedUpdateFailsWhenTheBandCannotBeSet) {
    radio_.setSilent(true);
    EXPECT_EQ(set(3, 145.9, 435.8, 0, 0, true), 0);  // no read-back, exchange unanswered
    radio_.setSilent(false);
    radio_.setGarbage(true);
    EXPECT_EQ(set(1, 145.2, 145.8, 0, 0, true), 0);
    // An unforced update needs no answer: the next forced one repeats the set-up.
    radio_.setGarbage(false);
    radio_.setSilent(true);
    EXPECT_EQ(set(3, 145.91, 435.81, 0, 0, false), 1);
}

TEST_F(Ic910, DialReadBackReportsTheMoveOnce) {
    int32_t change = 0;
    EXPECT_EQ(DownLinkChanged910(fd(), k910, &change, false), 0);  // nothing sent yet
    EXPECT_EQ(set(3, 145.9, 435.8, 0, 0, true), 1);
    EXPECT_EQ(DownLinkChanged910(fd(), k910, &change, false), 0);  // dial where we left it
    sim::IcomSimState s = radio_.state();
    s.main.vfo[0].hertz = 435798800;  // turned down 1.2 kHz
    radio_.setState(s);
    EXPECT_EQ(DownLinkChanged910(fd(), k910, &change, false), 1);
    EXPECT_EQ(change, -1200);
    EXPECT_EQ(DownLinkChanged910(fd(), k910, &change, false), 0);
    radio_.setGarbage(true);
    EXPECT_EQ(DownLinkChanged910(fd(), k910, &change, false), 0);
}

class Ic821 : public ::testing::Test {
  protected:
    void SetUp() override {
        ResetIcomDriverState();
        ASSERT_TRUE(line_.attach(&radio_));
    }
    int set(int commMode, double up, double down, bool force) {
        const int result = Set821HVFO(line_.fd(), k821, up, down, commMode, 0, 0, force, false);
        line_.settle();
        return result;
    }

    sim::IcomSimulator radio_{sim::IcomModel::IC821, k821};
    testing::PtyPeer line_;
    testing::DeviceClock clock_{&line_};  // a reply is never missed on a busy machine
};

TEST_F(Ic821, ExchangesTheBandsOnceForModeJAndBackForModeB) {
    EXPECT_EQ(set(3, 145.9, 435.8, true), 1);
    EXPECT_EQ(set(3, 145.9, 435.8, true), 1);
    EXPECT_EQ(radio_.state().bandExchanges, 1);
    // Mode J: 2 m on the main band, which transmits; 70 cm on the sub band.
    sim::IcomSimState s = radio_.state();
    EXPECT_EQ(s.main.vfo[0].hertz, 145900000u);
    EXPECT_EQ(s.main.vfo[0].mode, sim::kSimLSB);
    EXPECT_EQ(s.sub.vfo[0].hertz, 435800000u);
    EXPECT_EQ(s.sub.vfo[0].mode, sim::kSimUSB);
    EXPECT_EQ(set(4, 435.9, 145.95, true), 1);  // mode B
    EXPECT_EQ(radio_.state().bandExchanges, 2);
}

TEST_F(Ic821, FmRepeaterSplitsVfoBUplinkFromVfoADownlink) {
    EXPECT_EQ(set(1, 145.2, 145.8, true), 1);
    const sim::IcomSimState s = radio_.state();
    EXPECT_EQ(s.main.vfo[0].hertz, 145800000u);
    EXPECT_EQ(s.main.vfo[1].hertz, 145200000u);
    EXPECT_EQ(s.main.vfo[0].mode, sim::kSimFM);
    EXPECT_EQ(s.main.vfo[1].mode, sim::kSimFM);
    EXPECT_EQ(s.main.current, 0);
    EXPECT_TRUE(s.split);
}

TEST(IcomRadioTable, RowsReachTheirDrivers) {
    ResetIcomDriverState();
    for (int radio : {5, 6, 7, 8, 9, 10, 12}) {
        const RadioDriver* row = RadioDriverFor(radio);
        ASSERT_NE(row, nullptr);
        EXPECT_NE(row->setFrequencies, nullptr) << radio;
    }
    sim::IcomSimulator ic706(sim::IcomModel::IC706, k706);
    testing::PtyPeer line;
    ASSERT_TRUE(line.attach(&ic706));
    testing::DeviceClock clock{&line};
    EXPECT_EQ(SetVFO(12, line.fd(), k706, 145.9, 435.8, 12, 0, 0, true, false), 1);
    line.settle();
    EXPECT_EQ(ic706.state().main.vfo[0].hertz, 435800000u);
    EXPECT_EQ(ic706.state().main.vfo[0].mode, sim::kSimWFM);
    EXPECT_STREQ(RadioDriverFor(7)->model, "IC-910");
    EXPECT_STREQ(RadioDriverFor(14)->model, "TS-2000");
    EXPECT_EQ(SetVFO(13, line.fd(), k706, 145.9, 435.8, 12, 0, 0, true, false), 0);
}

}  // namespace
}  // namespace veloran
