// Yaesu CAT drivers on the wire: the exact bytes of every command sequence
// as a simulated radio on a pseudo-terminal receives them, and the replies a
// radio sends back (including none at all).

#include "radio/yaesu.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "radio/bcd.h"
#include "serial/serial.h"
#include "sim/radio_sim.h"
#include "tests/support/hex.h"
#include "tests/support/pty.h"

namespace veloran {
namespace {

using sim::RadioModel;
using sim::SimulatedRadio;
using testing::Bytes;
using testing::Eventually;
using testing::Hex;

// --- packing ---------------------------------------------------------------------

TEST(YaesuPacking, FrequencyFormatsAndTones) {
    unsigned char four[4];
    YaesuBCDPack(145900000, four);
    EXPECT_EQ(Hex({four, four + 4}), "14 59 00 00");
    YaesuBCDPack(435812345, four);  // 10 Hz units: the hertz digit is dropped
    EXPECT_EQ(Hex({four, four + 4}), "43 58 12 34");
    YaesuBCDPackReverse(435800000, four);
    EXPECT_EQ(Hex({four, four + 4}), "00 00 58 43");
    YaesuHexPack(145900000, four);  // 14590000 = 0x00DEA030
    EXPECT_EQ(Hex({four, four + 4}), "00 DE A0 30");
    EXPECT_EQ(YaesuBinaryUnPack(four), 14590000u);
    YaesuBCDPack(4294967295u, four);  // ten digits: only the leading eight are kept, no overflow
    EXPECT_EQ(Hex({four, four + 4}), "42 94 96 72");

    // The 50-tone EIA set: index 1 is 67.0 Hz, 50 is 254.1 Hz, anything else 67.0 Hz.
    EXPECT_EQ(tableToToneTenths(1), 670);
    EXPECT_EQ(tableToToneTenths(2), 693);
    EXPECT_EQ(tableToToneTenths(9), 885);
    EXPECT_EQ(tableToToneTenths(50), 2541);
    EXPECT_EQ(tableToToneTenths(51), 670);
    EXPECT_EQ(tableToToneTenths(0), 670);
    EXPECT_EQ(tableToToneTenths(-3), 670);
    unsigned char two[2];
    IcomToneBCD2(885, two);
    EXPECT_EQ(Hex({two, two + 2}), "08 85");
    IcomToneBCD2(1000, two);
    EXPECT_EQ(Hex({two, two + 2}), "10 00");

    // FT-847 CAT manual code chart: 88.5 Hz is 0E, 67.0 Hz 3F, 250.3 Hz 00;
    // 254.1 Hz, which the radio lacks, takes the nearest (250.3 Hz).
    EXPECT_EQ(FT847ToneCode(9), 0x0E);
    EXPECT_EQ(FT847ToneCode(1), 0x3F);
    EXPECT_EQ(FT847ToneCode(49), 0x00);
    EXPECT_EQ(FT847ToneCode(50), 0x00);
    EXPECT_EQ(FT847ToneCode(27), 0x06);  // 159.8 Hz -> 162.2 Hz
}

// --- the wire --------------------------------------------------------------------

// A simulated radio and the driver's end of the line at 9600 bit/s, no delay.
class YaesuWire {
  public:
    explicit YaesuWire(RadioModel model) : radio(model) {
        ResetYaesuDriverState();
        SetCommandDelay(0);
        EXPECT_TRUE(radio.open());
        fd = openSerialPort(radio.devicePath().c_str(), 5, 1, false);
        EXPECT_NE(fd, -1);
    }
    ~YaesuWire() { closeSerialPort(fd, false); }

    // What reached the radio since the last call, once it has handled all
    // the driver wrote (extra bytes show up as a failure).
    std::string take(size_t) {
        settle();
        const std::string got = Hex(radio.received(), 5);
        radio.clearReceived();
        return got;
    }

    // Until the simulator has read and answered everything the driver wrote.
    void settle() { radio.waitIdle(); }

    SimulatedRadio radio;
    int fd = -1;
    // Reply time-outs pass only while the radio is idle (its path is not
    // known yet, so any write marks it).
    testing::DeviceClock clock{
        std::vector<testing::DeviceClock::Device>{{"", -1, [this] { radio.waitIdle(); }}}};
};

struct WireCase {
    const char* name;
    RadioModel model;
    std::function<void(int fd)> setUp;  // earlier traffic, not compared
    std::function<int(int fd)> run;     // the call under test; its result
    const char* bytes;                  // exactly what the radio receives
    int result;
};

void PrintTo(const WireCase& c, std::ostream* os) {
    *os << c.name;
}

class YaesuBytes : public ::testing::TestWithParam<WireCase> {};

TEST_P(YaesuBytes, RadioReceivesExactly) {
    const WireCase& c = GetParam();
    YaesuWire wire(c.model);
    if (c.setUp) {
        c.setUp(wire.fd);
        wire.take(0);
    }
    EXPECT_EQ(c.run(wire.fd), c.result);
    const std::vector<uint8_t> expected = Bytes(c.bytes);
    EXPECT_EQ(wire.take(expected.size()), Hex(expected, 5));
}

int Void(void (*f)(int, bool), int fd) {
    f(fd, false);
    return 1;
}

// Forced and unforced updates; up, down in MHz.
std::function<int(int)> Update(int (*driver)(int, double, double, int, int, int, bool, bool),
                               double up, double down, int commMode, int tone, int ctone,
                               bool force) {
    return [=](int fd) { return driver(fd, up, down, commMode, tone, ctone, force, false); };
}

std::function<void(int)> Before(int (*driver)(int, double, double, int, int, int, bool, bool),
                                double up, double down, int commMode, bool force = true) {
    return [=](int fd) { driver(fd, up, down, commMode, 0, 0, force, false); };
}

const WireCase kWireCases[] = {
    // Command blocks.
    {"set frequency 435.8 MHz", RadioModel::FT847, nullptr,
     [](int fd) { return YaesuSetFrequency(fd, 0x01, 435800000, false); }, "43 58 00 00 01", 5},
    {"set frequency reversed", RadioModel::FT100D, nullptr,
     [](int fd) { return YaesuSetFrequencyRev(fd, 0x0A, 435800000, false); }, "00 00 58 43 0A", 5},
    {"parameter in P1", RadioModel::FT847, nullptr,
     [](int fd) { return YaesuCommand_d1(fd, 0x07, 0x08, false); }, "08 00 00 00 07", 5},
    {"parameter in P4", RadioModel::FT847, nullptr,
     [](int fd) { return YaesuCommand_d4(fd, 0x10, 0x01, false); }, "00 00 00 01 10", 5},

    // FT-847: CAT on, satellite mode off, simplex, tones off.
    {"847 start", RadioModel::FT847, nullptr, [](int fd) { return Void(Start847, fd); },
     "00 00 00 00 00|00 00 00 00 8E|89 00 00 00 09|8A 00 00 00 0A", 1},
    {"847 stop", RadioModel::FT847, nullptr, [](int fd) { return Void(Kill847, fd); },
     "00 00 00 00 80", 1},
    // JA_SSB forced: satellite mode, transmit LSB, receive USB, tones off on
    // both satellite VFOs, then receive 435.8 and transmit 145.9.
    {"847 JA_SSB forced", RadioModel::FT847, nullptr,
     Update(Set847VFO, 145.9, 435.8, 3, 0, 0, true),
     "00 00 00 00 4E|00 00 00 00 27|01 00 00 00 17|8A 00 00 00 2A|8A 00 00 00 1A|"
     "43 58 00 00 11|14 59 00 00 21",
     1},
    {"847 JA_SSB unforced", RadioModel::FT847, Before(Set847VFO, 145.9, 435.8, 3),
     Update(Set847VFO, 145.90012, 435.79921, 3, 0, 0, false), "43 57 99 21 11|14 59 00 12 21", 1},
    {"847 unchanged tick sends nothing", RadioModel::FT847, Before(Set847VFO, 145.9, 435.8, 3),
     Update(Set847VFO, 145.9, 435.8, 3, 0, 0, false), "", 1},
    {"847 unchanged but forced sends again", RadioModel::FT847, Before(Set847VFO, 145.9, 435.8, 3),
     Update(Set847VFO, 145.9, 435.8, 3, 0, 0, true),
     "00 00 00 00 4E|00 00 00 00 27|01 00 00 00 17|8A 00 00 00 2A|8A 00 00 00 1A|"
     "43 58 00 00 11|14 59 00 00 21",
     1},
    {"847 B_CW forced", RadioModel::FT847, nullptr, Update(Set847VFO, 435.1, 145.9, 8, 0, 0, true),
     "00 00 00 00 4E|02 00 00 00 27|02 00 00 00 17|8A 00 00 00 2A|8A 00 00 00 1A|"
     "14 59 00 00 11|43 51 00 00 21",
     1},
    {"847 J_FM forced with tone and squelch", RadioModel::FT847, nullptr,
     Update(Set847VFO, 145.85, 436.795, 2, 9, 12, true),
     "00 00 00 00 4E|08 00 00 00 27|08 00 00 00 17|0E 00 00 00 2B|4A 00 00 00 2A|3A 00 00 00 1B|"
     "2A 00 00 00 1A|43 67 95 00 11|14 58 50 00 21",
     1},
    // JD_MIX and J_EXP: both mode commands go to opcode 0x27.
    {"847 JD_MIX forced", RadioModel::FT847, nullptr,
     Update(Set847VFO, 145.9, 435.8, 11, 0, 0, true),
     "00 00 00 00 4E|01 00 00 00 27|08 00 00 00 27|8A 00 00 00 2A|8A 00 00 00 1A|"
     "43 58 00 00 11|14 59 00 00 21",
     1},
    {"847 J_EXP forced", RadioModel::FT847, nullptr,
     Update(Set847VFO, 145.9, 435.8, 17, 0, 0, true),
     "00 00 00 00 4E|08 00 00 00 27|01 00 00 00 27|8A 00 00 00 2A|8A 00 00 00 1A|"
     "43 58 00 00 11|14 59 00 00 21",
     1},
    // Repeater: FM, tone 88.5 Hz (encoder only), downlink, minus shift, 600 kHz offset.
    {"847 REPEATER forced with tone", RadioModel::FT847, nullptr,
     Update(Set847VFO, 145.2, 145.8, 1, 9, 0, true),
     "00 00 00 00 8E|08 00 00 00 07|0E 00 00 00 0B|4A 00 00 00 0A|14 58 00 00 01|09 00 00 00 09|"
     "00 06 00 00 F9",
     1},
    {"847 SIMP_AM forced, uplink above", RadioModel::FT847, nullptr,
     Update(Set847VFO, 29.5, 29.4, 15, 0, 0, true),
     "00 00 00 00 8E|04 00 00 00 07|8A 00 00 00 0A|02 94 00 00 01|49 00 00 00 09|00 01 00 00 F9",
     1},
    {"847 SIMP_SSB unforced", RadioModel::FT847, nullptr,
     Update(Set847VFO, 145.9, 145.9, 16, 0, 0, false),
     "14 59 00 00 01|49 00 00 00 09|00 00 00 00 F9", 1},
    {"847 receive only forced", RadioModel::FT847, nullptr,
     Update(Set847VFO, 0, 137.62, -1, 0, 0, true),
     "00 00 00 00 8E|89 00 00 00 09|02 00 00 00 07|13 76 20 00 01", 1},
    {"847 UNKNOWN sends nothing", RadioModel::FT847, nullptr,
     Update(Set847VFO, 145.9, 435.8, 0, 0, 0, true), "", 1},
    {"847 out-of-range mode sends nothing", RadioModel::FT847, nullptr,
     Update(Set847VFO, 145.9, 435.8, 18, 0, 0, true), "", 1},
    // Microwave frequencies reach the driver in tenths: 2400.05 MHz is 240005000 Hz.
    {"847 2400.05 MHz downlink", RadioModel::FT847, nullptr,
     Update(Set847VFO, 435.8, 2400.05, 5, 0, 0, false), "24 00 05 00 11|43 58 00 00 21", 1},
    {"847 tones off in main mode", RadioModel::FT847, nullptr,
     [](int fd) {
         CTCSS847(fd, 0, 0, false, false);
         return 1;
     },
     "8A 00 00 00 0A", 1},
    {"847 tone squelch in main mode", RadioModel::FT847, nullptr,
     [](int fd) {
         CTCSS847(fd, 9, 12, false, false);
         return 1;
     },
     "3A 00 00 00 0B|2A 00 00 00 0A", 1},

    // FT-817: every command is answered with one byte. VFO selection reads the
    // configuration byte at 0x0055 and toggles only when needed.
    {"817 start and stop only flush", RadioModel::FT817, nullptr,
     [](int fd) {
         Start817(fd, false);
         Kill817(fd, false);
         return 1;
     },
     "", 1},
    {"817 JA_SSB forced", RadioModel::FT817, nullptr,
     Update(SetFT817VFO, 435.8, 145.9, 3, 0, 0, true),
     "89 00 00 00 09|00 00 00 00 02|00 55 00 00 BB|01 00 00 00 81|00 00 00 00 07|8A 00 00 00 0A|"
     "00 55 00 00 BB|01 00 00 00 81|01 00 00 00 07|"
     "00 55 00 00 BB|01 00 00 00 81|43 58 00 00 01|00 55 00 00 BB|01 00 00 00 81|14 59 00 00 01",
     1},
    {"817 uplink moved 800 Hz: downlink only", RadioModel::FT817,
     Before(SetFT817VFO, 435.8, 145.9, 3), Update(SetFT817VFO, 435.8008, 145.9001, 3, 0, 0, false),
     "14 59 00 10 01", 1},
    {"817 uplink moved 1.2 kHz: both", RadioModel::FT817, Before(SetFT817VFO, 435.8, 145.9, 3),
     Update(SetFT817VFO, 435.8012, 145.9001, 3, 0, 0, false),
     "00 55 00 00 BB|01 00 00 00 81|43 58 01 20 01|00 55 00 00 BB|01 00 00 00 81|14 59 00 10 01",
     1},
    {"817 REPEATER forced, tone and squelch", RadioModel::FT817, nullptr,
     Update(SetFT817VFO, 145.2, 145.8, 1, 9, 12, true),
     "00 00 00 00 82|08 00 00 00 07|09 74 00 00 0B|2A 00 00 00 0A|14 58 00 00 01|00 06 00 00 F9|"
     "09 00 00 00 09",
     1},
    // A tone-squelch index alone only switches the encoder on.
    {"817 tone squelch alone is encoder only", RadioModel::FT817, nullptr,
     [](int fd) {
         CTCSS(fd, 0, 12, false);
         return 1;
     },
     "09 74 00 00 0B|4A 00 00 00 0A", 1},
    {"817 receive only forced", RadioModel::FT817, nullptr,
     Update(SetFT817VFO, 0, 137.1, -1, 0, 0, true),
     "00 00 00 00 82|89 00 00 00 09|02 00 00 00 07|13 71 00 00 01", 1},

    // FT-100D: mode then the downlink, bytes least significant first.
    {"100D JA_SSB forced", RadioModel::FT100D, nullptr,
     Update(Set100DVFO, 145.9, 435.8, 3, 0, 0, true), "01 00 00 00 0C|00 00 58 43 0A", 1},
    {"100D unforced", RadioModel::FT100D, nullptr,
     Update(Set100DVFO, 145.9, 435.81234, 3, 0, 0, false), "34 12 58 43 0A", 1},
    {"100D WIDE_FM", RadioModel::FT100D, nullptr, Update(Set100DVFO, 0, 88.5, 12, 0, 0, true),
     "07 00 00 00 0C|00 00 85 08 0A", 1},
    {"100D J_FM", RadioModel::FT100D, nullptr, Update(Set100DVFO, 145.85, 436.795, 2, 0, 0, true),
     "06 00 00 00 0C|00 95 67 43 0A", 1},
    {"100D receive only is CW", RadioModel::FT100D, nullptr,
     Update(Set100DVFO, 0, 145.825, -1, 0, 0, true), "02 00 00 00 0C|00 25 58 14 0A", 1},
    {"100D SIMP_AM", RadioModel::FT100D, nullptr, Update(Set100DVFO, 0, 29.4, 15, 0, 0, true),
     "04 00 00 00 0C|00 00 94 02 0A", 1},

    // VR-5000: mode with P2 0x21, frequency as a binary count of 10 Hz.
    {"VR-5000 start", RadioModel::VR5000, nullptr, [](int fd) { return Void(StartVR5000, fd); },
     "00 00 00 00 00", 1},
    {"VR-5000 stop", RadioModel::VR5000, nullptr, [](int fd) { return Void(KillVR5000, fd); },
     "00 00 00 00 80", 1},
    {"VR-5000 FM forced", RadioModel::VR5000, nullptr,
     Update(SetVR5000VFO, 0, 145.9, 6, 0, 0, true), "88 21 00 00 07|00 DE A0 30 01", 1},
    {"VR-5000 USB forced", RadioModel::VR5000, nullptr,
     Update(SetVR5000VFO, 145.9, 435.8, 3, 0, 0, true), "01 21 00 00 07|02 98 FA 60 01", 1},
    {"VR-5000 CW unforced", RadioModel::VR5000, nullptr,
     Update(SetVR5000VFO, 0, 145.9, 7, 0, 0, false), "00 DE A0 30 01", 1},

    // FT-736R: CAT on; CAT off is 80 in all five bytes; full duplex uses 1E/2E.
    {"736R start", RadioModel::FT736R, nullptr, [](int fd) { return Void(Start736R, fd); },
     "00 00 00 00 00", 1},
    {"736R stop", RadioModel::FT736R, nullptr, [](int fd) { return Void(Kill736R, fd); },
     "80 80 80 80 80", 1},
    {"736R JA_SSB forced", RadioModel::FT736R, nullptr,
     Update(Set736VFO, 145.9, 435.8, 3, 0, 0, true),
     "00 00 00 00 0E|01 00 00 00 17|00 00 00 00 27|8A 00 00 00 0A|43 58 00 00 1E|14 59 00 00 2E",
     1},
    {"736R J_FM unforced", RadioModel::FT736R, nullptr,
     Update(Set736VFO, 145.85, 436.795, 2, 0, 0, false), "43 67 95 00 1E|14 58 50 00 2E", 1},
    {"736R REPEATER forced with tone", RadioModel::FT736R, nullptr,
     Update(Set736VFO, 145.2, 145.8, 1, 9, 0, true),
     "00 00 00 00 8E|08 00 00 00 07|0E 00 00 00 FA|4A 00 00 00 0A|14 58 00 00 01|09 00 00 00 09|"
     "00 06 00 00 F9",
     1},
    {"736R receive only forced", RadioModel::FT736R, nullptr,
     Update(Set736VFO, 0, 145.825, -1, 0, 0, true),
     "00 00 00 00 8E|89 00 00 00 09|02 00 00 00 07|14 58 25 00 01", 1},
};

INSTANTIATE_TEST_SUITE_P(Drivers, YaesuBytes, ::testing::ValuesIn(kWireCases),
                         [](const ::testing::TestParamInfo<WireCase>& param) {
                             std::string name;
                             for (const char* p = param.param.name; *p; ++p) {
                                 name += std::isalnum(static_cast<unsigned char>(*p)) ? *p : '_';
                             }
                             return name;
                         });

// --- closed port -----------------------------------------------------------------

TEST(YaesuClosedPort, SetDriversFailAndPollsReportNothing) {
    ResetYaesuDriverState();
    for (auto driver : {Set736VFO, Set847VFO, SetFT817VFO, Set100DVFO, SetVR5000VFO}) {
        EXPECT_EQ(driver(-1, 145.9, 435.8, 3, 0, 0, true, false), 0);
    }
    VFORec vfo = {};
    EXPECT_EQ(Squelched847(-1, &vfo, false), 1);
    EXPECT_EQ(Squelched817(-1, &vfo, false), 1);
    EXPECT_EQ(Squelched736R(-1, &vfo, false), 1);
    int32_t change = 7;
    EXPECT_EQ(DownLinkChanged847(-1, &change, false), 0);
    EXPECT_EQ(DownLinkChanged817(-1, &change, false), 0);
    EXPECT_EQ(DownLinkChanged100(-1, &change, false), 0);
    EXPECT_EQ(change, 7);
}

// --- replies ----------------------------------------------------------------------

struct SquelchCase {
    const char* name;
    RadioModel model;
    int (*poll)(int, VFORec*, bool);
    bool silent;
    uint8_t status;
    int closed;
    int strength;
};

void PrintTo(const SquelchCase& c, std::ostream* os) {
    *os << c.name;
}

class YaesuSquelch : public ::testing::TestWithParam<SquelchCase> {};

TEST_P(YaesuSquelch, StatusByteGivesSquelchAndSMeter) {
    const SquelchCase& c = GetParam();
    YaesuWire wire(c.model);
    if (c.model != RadioModel::FT817) {
        if (c.model == RadioModel::FT847)
            Start847(wire.fd, false);
        else
            Start736R(wire.fd, false);
    }
    wire.radio.setRxStatus(c.status);
    wire.radio.setSilent(c.silent);
    VFORec vfo = {};
    vfo.signalStrength = -1;
    EXPECT_EQ(c.poll(wire.fd, &vfo, false), c.closed);
    EXPECT_EQ(vfo.signalStrength, c.strength);
}

const SquelchCase kSquelchCases[] = {
    // FT-847: low five bits, times 1.5 rounded; zero means squelched.
    {"847 open S10", RadioModel::FT847, Squelched847, false, 0x8A, 0, 15},
    {"847 open S1 rounds", RadioModel::FT847, Squelched847, false, 0x01, 0, 2},
    {"847 closed", RadioModel::FT847, Squelched847, false, 0x80, 1, 0},
    {"847 silent radio", RadioModel::FT847, Squelched847, true, 0x8A, 1, -1},
    // FT-817: low four bits raw; always reported open when it answers.
    {"817 S11", RadioModel::FT817, Squelched817, false, 0x1B, 0, 11},
    {"817 zero still open", RadioModel::FT817, Squelched817, false, 0x80, 0, 0},
    {"817 silent radio", RadioModel::FT817, Squelched817, true, 0x0B, 1, 0},
    {"736R open", RadioModel::FT736R, Squelched736R, false, 0x0C, 0, 12},
    {"736R closed", RadioModel::FT736R, Squelched736R, false, 0x00, 1, 0},
};

INSTANTIATE_TEST_SUITE_P(Replies, YaesuSquelch, ::testing::ValuesIn(kSquelchCases));

TEST(YaesuDial, Ft847FollowsTheSatelliteReceiveVfoWithA50HzDeadBand) {
    YaesuWire wire(RadioModel::FT847);
    Start847(wire.fd, false);
    int32_t change = 0;
    EXPECT_EQ(DownLinkChanged847(wire.fd, &change, false), 0);  // nothing sent yet
    ASSERT_EQ(Set847VFO(wire.fd, 145.9, 435.8, 3, 0, 0, true, false), 1);
    wire.take(20 + 5 + 35);
    EXPECT_EQ(DownLinkChanged847(wire.fd, &change, false), 0);  // radio where we left it
    EXPECT_EQ(wire.take(5), "00 00 00 00 13");                  // satellite receive VFO asked
    wire.radio.turnDial(40);                                    // 40 Hz is inside the dead band
    EXPECT_EQ(DownLinkChanged847(wire.fd, &change, false), 0);
    wire.radio.turnDial(1000);
    EXPECT_EQ(DownLinkChanged847(wire.fd, &change, false), 1);
    EXPECT_EQ(change, 1040);
    EXPECT_EQ(DownLinkChanged847(wire.fd, &change, false), 0);  // the new frequency is now ours
    wire.take(15);
    // Out of satellite mode the main VFO is read.
    ASSERT_EQ(Set847VFO(wire.fd, 145.2, 145.8, 1, 0, 0, true, false), 1);
    wire.take(30);
    DownLinkChanged847(wire.fd, &change, false);
    EXPECT_EQ(wire.take(5), "00 00 00 00 03");
}

TEST(YaesuDial, Ft847SilentRadioReportsNoChange) {
    YaesuWire wire(RadioModel::FT847);
    Start847(wire.fd, false);
    ASSERT_EQ(Set847VFO(wire.fd, 145.9, 435.8, 3, 0, 0, true, false), 1);
    wire.radio.setSilent(true);
    int32_t change = 99;
    EXPECT_EQ(DownLinkChanged847(wire.fd, &change, false), 0);
    EXPECT_EQ(change, 99);
}

TEST(YaesuDial, Ft817HasNoDeadBand) {
    YaesuWire wire(RadioModel::FT817);
    ASSERT_EQ(SetFT817VFO(wire.fd, 0, 145.9, -1, 0, 0, true, false), 1);
    int32_t change = 0;
    EXPECT_EQ(DownLinkChanged817(wire.fd, &change, false), 0);
    wire.radio.turnDial(10);
    EXPECT_EQ(DownLinkChanged817(wire.fd, &change, false), 1);
    EXPECT_EQ(change, 10);
}

TEST(YaesuDial, Ft100dReadsTheStatusBlock) {
    YaesuWire wire(RadioModel::FT100D);
    ASSERT_EQ(Set100DVFO(wire.fd, 0, 145.9, 6, 0, 0, true, false), 1);
    int32_t change = 0;
    EXPECT_EQ(DownLinkChanged100(wire.fd, &change, false), 0);
    wire.radio.turnDial(-2500);
    EXPECT_EQ(DownLinkChanged100(wire.fd, &change, false), 1);
    EXPECT_EQ(change, -2500);
    wire.take(0);
    DownLinkChanged100(wire.fd, &change, false);
    EXPECT_EQ(wire.take(5), "00 00 00 00 10");
}

TEST(YaesuFt817, SplitOffUnansweredFailsTheForcedSetUp) {
    YaesuWire wire(RadioModel::FT817);
    wire.radio.setSilent(true);
    EXPECT_EQ(SetFT817VFO(wire.fd, 145.2, 145.8, 1, 0, 0, true, false), 0);
    EXPECT_EQ(wire.take(5), "00 00 00 00 82");
}

TEST(YaesuFt817, VfoSelectionTogglesOnlyWhenNeeded) {
    YaesuWire wire(RadioModel::FT817);
    VFO_A(wire.fd, true, false);  // already on A: read only
    EXPECT_EQ(wire.take(5), "00 55 00 00 BB");
    VFO_A(wire.fd, false, false);
    EXPECT_EQ(wire.take(10), "00 55 00 00 BB | 01 00 00 00 81");
    EXPECT_TRUE(wire.radio.state().onVfoB);
    VFO_A(wire.fd, false, false);
    EXPECT_EQ(wire.take(5), "00 55 00 00 BB");
}

}  // namespace
}  // namespace veloran
