// The TS-2000 driver against a simulated TS-2000: the exact commands of every
// transponder-mode row, forced and unforced, the tone and receive-VFO checks,
// squelch, dial and start-up, and what the radio holds afterwards.

#include "radio/kenwood.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

#include "radio/drivers.h"
#include "radio/tuning.h"
#include "serial/serial.h"
#include "sim/ts2000_sim.h"
#include "tests/support/hex.h"
#include "tests/support/pty.h"

namespace veloran {
namespace {

using Commands = std::vector<std::string>;

class Ts2000 : public ::testing::Test {
  protected:
    void SetUp() override {
        ResetKenwoodDriverState();
        SetCommandDelay(0.0f);
        ASSERT_TRUE(line_.attach(&radio_));
    }
    int fd() const { return line_.fd(); }
    int set(int commMode, double up, double down, int gTone, int gCTone, bool force) {
        beginDeviceCall(fd());
        const int result = SetTS2000VFO(fd(), up, down, commMode, gTone, gCTone, force, false);
        line_.settle();
        return result;
    }
    void editRadio(void (*edit)(sim::Ts2000SimState*)) {
        sim::Ts2000SimState s = radio_.state();
        edit(&s);
        radio_.setState(s);
    }

    sim::Ts2000Simulator radio_;
    testing::PtyPeer line_;
    testing::DeviceClock clock_{&line_};  // a reply is never missed on a busy machine
};

// --- One row per transponder mode --------------------------------------------------

struct Ts2000Case {
    const char* name;
    int commMode;
    double up, down;  // MHz
    int gTone, gCTone;
    bool force;
    Commands commands;  // as the radio received them, without the ';'
};

class Ts2000Sequence : public Ts2000, public ::testing::WithParamInterface<Ts2000Case> {};

TEST_P(Ts2000Sequence, SendsExactlyTheseCommands) {
    const Ts2000Case& c = GetParam();
    EXPECT_EQ(set(c.commMode, c.up, c.down, c.gTone, c.gCTone, c.force), 1);
    EXPECT_EQ(radio_.commands(), c.commands);
}

// The simulated radio starts on VFO A, tones and tone squelch off. Every forced
// call begins with satellite mode off and the receive-VFO and tone checks.
#define FORCED_START "SA0100000", "FR", "TO", "CT"

INSTANTIATE_TEST_SUITE_P(
    Rows, Ts2000Sequence,
    ::testing::Values(
        Ts2000Case{"ja_ssb_usb_down_lsb_up",
                   3,
                   145.9,
                   435.8,
                   0,
                   0,
                   true,
                   {FORCED_START, "SA1010000", "MD2", "SA1011000", "MD1", "FA00059111111",
                    "FB00145900000", "FA00435800000"}},
        Ts2000Case{"b_ssb_lsb_down_usb_up",
                   4,
                   435.9,
                   145.9,
                   0,
                   0,
                   true,
                   {FORCED_START, "SA1010000", "MD1", "SA1011000", "MD2", "FA00059111111",
                    "FB00435900000", "FA00145900000"}},
        Ts2000Case{"b_cw",
                   8,
                   435.9,
                   145.9,
                   0,
                   0,
                   true,
                   {FORCED_START, "SA1010000", "MD3", "SA1011000", "MD3", "FA00059111111",
                    "FB00435900000", "FA00145900000"}},
        Ts2000Case{"a_ssb_same_mode_both_sides",
                   5,
                   145.9,
                   29.4,
                   0,
                   0,
                   true,
                   {FORCED_START, "SA1011000", "MD2", "SA1010000", "MD2", "FA00059111111",
                    "FB00145900000", "FA00029400000"}},
        Ts2000Case{"t_cw_hf_uplink_checks_with_144",
                   14,
                   21.2,
                   145.9,
                   0,
                   0,
                   true,
                   {FORCED_START, "SA1011000", "MD3", "SA1010000", "MD3", "FA00144111111",
                    "FB00021200000", "FA00145900000"}},
        Ts2000Case{"jd_mix_fm_up_usb_down",
                   11,
                   145.85,
                   435.25,
                   0,
                   0,
                   true,
                   {FORCED_START, "SA1011000", "MD4", "SA1010000", "MD2", "FA00059111111",
                    "FB00145850000", "FA00435250000"}},
        Ts2000Case{"cross_band_fm_repeater_checks_in_hertz",
                   2,
                   145.85,
                   436.795,
                   1,
                   0,
                   true,
                   {FORCED_START, "SA1011000", "MD4", "TO", "TN01", "TO1", "SA1010000", "MD4", "CT",
                    "FA00059111111", "FB00145850000", "FA00436795000"}},
        Ts2000Case{"j_exp_usb_first_fm_second",
                   17,
                   145.9,
                   435.8,
                   0,
                   0,
                   true,
                   {FORCED_START, "SA1011000", "MD2", "TO", "SA1010000", "MD4", "CT",
                    "FA00059111111", "FB00145900000", "FA00435800000"}},
        Ts2000Case{"same_band_repeater_splits_vfo_b",
                   1,
                   145.2,
                   145.8,
                   9,
                   0,
                   true,
                   {FORCED_START, "SB0", "RX0", "TX0", "DC00", "CT", "FR1", "MD4", "TO", "TN09",
                    "TO1", "FR0", "MD4", "FR0", "FT1", "FB00145200000", "FA00145800000"}},
        Ts2000Case{"same_band_am_with_tone_squelch",
                   15,
                   29.6,
                   29.6,
                   0,
                   9,
                   true,
                   {FORCED_START, "SB0", "RX0", "TX0", "DC00", "CT", "CN09", "CT1", "FR1", "MD5",
                    "TO", "FR0", "MD5", "FR0", "FT1", "FB00029600000", "FA00029600000"}},
        Ts2000Case{"receive_only_never_writes_vfo_b",
                   -1,
                   145.9,
                   435.8,
                   0,
                   0,
                   true,
                   {FORCED_START, "SA1010000", "MD3", "FA00435800000"}},
        Ts2000Case{"receive_only_unforced", -1, 145.9, 435.8, 0, 0, false, {"FA00435800000"}},
        Ts2000Case{"unknown_unforced_sends_nothing", 0, 145.9, 435.8, 0, 0, false, {}},
        Ts2000Case{"unknown_forced_stops_after_the_common_set_up",
                   0,
                   145.9,
                   435.8,
                   0,
                   0,
                   true,
                   {FORCED_START}},
        Ts2000Case{"two_band_unforced_only_the_vfos",
                   3,
                   145.9,
                   435.8,
                   0,
                   0,
                   false,
                   {"FB00145900000", "FA00435800000"}},
        Ts2000Case{"fm_unforced_only_the_vfos",
                   1,
                   145.2,
                   145.8,
                   9,
                   0,
                   false,
                   {"FB00145200000", "FA00145800000"}},
        Ts2000Case{"out_of_range_skips_the_mode_set_up",
                   18,
                   145.9,
                   435.8,
                   0,
                   0,
                   true,
                   {FORCED_START, "FB00145900000", "FA00435800000"}},
        Ts2000Case{"microwave_downlink_in_tenths",
                   4,
                   1268.5,
                   2400.05,
                   0,
                   0,
                   false,
                   {"FB00126850000", "FA00240005000"}}),
    [](const ::testing::TestParamInfo<Ts2000Case>& row) { return std::string(row.param.name); });

#undef FORCED_START

// --- Across calls, and against a radio in another state ------------------------------

TEST_F(Ts2000, RepeatedUnforcedCallSendsNothingAtAll) {
    EXPECT_EQ(set(3, 145.9, 435.8, 0, 0, false), 1);
    radio_.clearRecords();
    EXPECT_EQ(set(3, 145.9, 435.8, 0, 0, false), 1);
    EXPECT_TRUE(radio_.received().empty());
}

TEST_F(Ts2000, ReceiveVfoIsPutBackToAOnlyWhenTheRadioIsOnB) {
    editRadio([](sim::Ts2000SimState* s) { s->receiveVfo = 1; });
    EXPECT_EQ(set(0, 145.9, 435.8, 0, 0, true), 1);
    EXPECT_EQ(radio_.commands(), (Commands{"SA0100000", "FR", "FR0", "TO", "CT"}));
    EXPECT_EQ(radio_.state().receiveVfo, 0);
}

TEST_F(Ts2000, TonesAreToggledOnlyWhenTheRadioReportsTheOtherState) {
    editRadio([](sim::Ts2000SimState* s) {
        s->tone = true;
        s->toneSquelch = true;
    });
    EXPECT_EQ(set(3, 145.9, 435.8, 0, 0, true), 1);
    Commands first = radio_.commands();
    EXPECT_EQ(Commands(first.begin(), first.begin() + 6),
              (Commands{"SA0100000", "FR", "TO", "TO0", "CT", "CT0"}));
    EXPECT_FALSE(radio_.state().tone);
    EXPECT_FALSE(radio_.state().toneSquelch);
    radio_.clearRecords();
    EXPECT_EQ(set(3, 145.9, 435.8, 0, 0, true), 1);
    for (const std::string& c : radio_.commands()) {
        EXPECT_TRUE(c != "TO0" && c != "TO1" && c != "CT0" && c != "CT1" && c.rfind("TN", 0) != 0 &&
                    c.rfind("CN", 0) != 0)
            << c;
    }
}

TEST_F(Ts2000, ForcedUpdateFailsOnlyWhenTheReceiveVfoQueryIsUnanswered) {
    radio_.setSilent(true);
    EXPECT_EQ(set(3, 145.9, 435.8, 0, 0, true), 0);
    EXPECT_EQ(radio_.commands(), (Commands{"SA0100000", "FR"}));
    EXPECT_EQ(set(3, 145.91, 435.81, 0, 0, false), 1);  // unforced needs no answer
    radio_.setSilent(false);
    radio_.setGarbage(true);  // a reply of the right length, not "FR0;"
    radio_.clearRecords();
    EXPECT_EQ(set(3, 145.9, 435.8, 0, 0, true), 1);
    EXPECT_EQ(radio_.commands()[2], "FR0");
}

TEST_F(Ts2000, RepliesCutShortAreNoAnswer) {
    radio_.setShortReplies(true);
    EXPECT_EQ(set(3, 145.9, 435.8, 0, 0, true), 0);  // "FR" alone is no receive VFO
    EXPECT_EQ(set(3, 145.91, 435.81, 0, 0, false), 1);
    int32_t change = 0;
    editRadio([](sim::Ts2000SimState* s) { s->vfoA = 435820000; });
    EXPECT_EQ(DownLinkChangedTS2000(fd(), &change, false), 0);
    VFORec vfo = {};
    vfo.signalStrength = 77;
    editRadio([](sim::Ts2000SimState* s) { s->busy = true; });
    EXPECT_EQ(SquelchedTS2000(fd(), &vfo, false), 1);
    EXPECT_EQ(vfo.signalStrength, 77);
}

TEST(Ts2000Unplugged, FailingLineEndsTheUpdateWithoutHanging) {
    ResetKenwoodDriverState();
    SetCommandDelay(0.0f);
    SerialSystem unplugged = *RealSerialSystem();
    unplugged.writePort = [](int, const void*, size_t) -> ssize_t {
        errno = EIO;
        return -1;
    };
    unplugged.readPort = [](int, void*, size_t) -> ssize_t {
        errno = EIO;
        return -1;
    };
    SetSerialSystem(&unplugged);
    constexpr int kGoneFd = 42;  // never reaches the system: the seam answers
    EXPECT_EQ(SetTS2000VFO(kGoneFd, 145.9, 435.8, 3, 0, 0, true, false), 0);
    int32_t change = 0;
    EXPECT_EQ(DownLinkChangedTS2000(kGoneFd, &change, false), 0);
    VFORec vfo = {};
    EXPECT_EQ(SquelchedTS2000(kGoneFd, &vfo, false), 1);
    StartTS2000(kGoneFd, false);
    EXPECT_FALSE(TS2000StartState().sPacketWasOn);
    SetSerialSystem(nullptr);
}

TEST_F(Ts2000, InvertingSsbLeavesDownlinkOnAAndUplinkOnB) {
    EXPECT_EQ(set(3, 145.95, 435.85, 0, 0, true), 1);
    const sim::Ts2000SimState s = radio_.state();
    EXPECT_EQ(s.vfoA, 435850000u);
    EXPECT_EQ(s.vfoB, 145950000u);
    EXPECT_EQ(s.modeA, '2');  // USB
    EXPECT_EQ(s.modeB, '1');  // LSB
    EXPECT_EQ(s.satellite[0], '1');
    EXPECT_FALSE(s.tone);
    EXPECT_FALSE(s.toneSquelch);
}

TEST_F(Ts2000, FmRepeaterInOneBandIsASplitWithTheAccessTone) {
    EXPECT_EQ(set(1, 145.2, 145.8, 9, 0, true), 1);
    const sim::Ts2000SimState s = radio_.state();
    EXPECT_EQ(s.satellite[0], '0');
    EXPECT_EQ(s.vfoA, 145800000u);
    EXPECT_EQ(s.vfoB, 145200000u);
    EXPECT_EQ(s.modeA, '4');
    EXPECT_EQ(s.modeB, '4');
    EXPECT_EQ(s.receiveVfo, 0);
    EXPECT_EQ(s.transmitVfo, 1);
    EXPECT_TRUE(s.tone);
    EXPECT_EQ(s.toneNumber, 9);
    EXPECT_FALSE(s.toneSquelch);
}

TEST_F(Ts2000, SquelchFollowsTheBusyReply) {
    VFORec vfo = {};
    vfo.signalStrength = 77;
    editRadio([](sim::Ts2000SimState* s) { s->busy = true; });
    EXPECT_EQ(SquelchedTS2000(fd(), &vfo, false), 0);
    editRadio([](sim::Ts2000SimState* s) { s->busy = false; });
    EXPECT_EQ(SquelchedTS2000(fd(), &vfo, false), 1);
    EXPECT_NE(vfo.signalStrength, 77);  // a reading was stored
    EXPECT_EQ(radio_.commands(), (Commands{"BY", "SM0", "BY", "SM0"}));
    vfo.signalStrength = 77;
    radio_.setSilent(true);
    EXPECT_EQ(SquelchedTS2000(fd(), &vfo, false), 1);  // no answer counts as closed
    EXPECT_EQ(vfo.signalStrength, 77);
}

TEST_F(Ts2000, DialReadBackReportsTheMoveOnce) {
    int32_t change = 0;
    EXPECT_EQ(DownLinkChangedTS2000(fd(), &change, false), 0);  // nothing sent yet
    EXPECT_EQ(set(3, 145.9, 435.8, 0, 0, false), 1);
    EXPECT_EQ(DownLinkChangedTS2000(fd(), &change, false), 0);
    editRadio([](sim::Ts2000SimState* s) { s->vfoA = 435800500; });
    EXPECT_EQ(DownLinkChangedTS2000(fd(), &change, false), 1);
    EXPECT_EQ(change, 500);
    EXPECT_EQ(DownLinkChangedTS2000(fd(), &change, false), 0);
    editRadio([](sim::Ts2000SimState* s) { s->vfoA = 435700000; });
    radio_.setGarbage(true);
    EXPECT_EQ(DownLinkChangedTS2000(fd(), &change, false), 0);
}

TEST_F(Ts2000, StartTakesARadioOutOfPacketMode) {
    editRadio([](sim::Ts2000SimState* s) { s->packetMode = true; });
    // The probe's answer is looked for without waiting, so only the command
    // delay after the carriage return (three times the delay) lets it arrive;
    // a generous delay keeps a loaded test machine from missing it.
    SetCommandDelay(20.0f);
    StartTS2000(fd(), false);
    line_.settle();
    EXPECT_TRUE(TS2000StartState().sPacketWasOn);
    EXPECT_FALSE(radio_.state().packetMode);
    EXPECT_EQ(radio_.commands(), (Commands{"TC 1", "CM", "AM"}));
}

TEST_F(Ts2000, StartOnARadioInComputerControlOnlyAsks) {
    SetCommandDelay(3.0f);
    StartTS2000(fd(), false);
    line_.settle();
    EXPECT_FALSE(TS2000StartState().sPacketWasOn);
    EXPECT_FALSE(TS2000StartState().sPacketClusterTune);
    EXPECT_FALSE(TS2000StartState().sAutoModeOn);
    EXPECT_EQ(radio_.commands(), (Commands{"CM", "AM"}));
    EXPECT_EQ(radio_.received().front(), '\r');
}

TEST_F(Ts2000, RadioTableRowDrivesIt) {
    EXPECT_EQ(SetVFO(14, fd(), 0, 145.9, 435.8, 3, 0, 0, true, false), 1);
    line_.settle();
    EXPECT_EQ(radio_.state().vfoA, 435800000u);
    const RadioDriver* row = RadioDriverFor(14);
    ASSERT_NE(row, nullptr);
    EXPECT_NE(row->squelched, nullptr);
    EXPECT_NE(row->downlinkChanged, nullptr);
}

TEST(Ts2000ClosedPort, NothingIsSentAndTuningFails) {
    ResetKenwoodDriverState();
    EXPECT_EQ(SetTS2000VFO(-1, 145.9, 435.8, 3, 0, 0, true, false), 0);
    int32_t change = 0;
    EXPECT_EQ(DownLinkChangedTS2000(-1, &change, false), 0);
    char digits[12];
    Kenwood11Digits(145900000, digits);
    EXPECT_STREQ(digits, "00145900000");
}

}  // namespace
}  // namespace veloran
