// Rotor controllers on the wire: the exact bytes each one is sent through the
// send path, its rounding, de-duplication and clamping, the azimuth
// translation, the EasyComm rate limit and a closed port.

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstring>
#include <string>

#include "rotor/protocols.h"
#include "rotor/rotor.h"
#include "serial/serial.h"
#include "tests/support/pty.h"

namespace veloran {
namespace {

using namespace std::string_literals;

// The nine fixed bytes of every PT packet, after the two frequency fields.
const std::string kPTFixed = "\xA9\x6D\x81\x4C\x4C\x01\x01\x01\x01"s;

struct WireCase {
    const char* name;
    int rotor;
    double azimuth, elevation;
    std::string bytes;
};

void PrintTo(const WireCase& c, std::ostream* os) {
    *os << c.name;
}

class RotorWire : public ::testing::TestWithParam<WireCase> {
  protected:
    void SetUp() override {
        ASSERT_NE(line.fd(), -1);
        ResetRotorSendState();
    }
    testing::PtyPeer line;
};

TEST_P(RotorWire, SendsExactlyTheseBytes) {
    const WireCase& c = GetParam();
    SendAzEl(c.rotor, line.fd(), c.azimuth, c.elevation, false);
    EXPECT_EQ(line.take(), c.bytes);
}

INSTANTIATE_TEST_SUITE_P(
    EveryController, RotorWire,
    ::testing::Values(WireCase{"GS232", 0, 120.4, 30.4, "W120 030\r"},
                      WireCase{"GS232HalvesAwayFromZero", 0, 120.5, 29.5, "W121 030\r"},
                      WireCase{"GS232AzimuthAboveRange", 0, 361.0, 45.0, "W360 045\r"},
                      WireCase{"GS232ElevationBelowHorizon", 0, 10.0, -3.0, "W010 000\r"},
                      WireCase{"GS232NegativeHalfIsMinusOne", 0, -0.5, 200.0, "W000 180\r"},
                      WireCase{"GS232TranslatedNorth", 1, 0.0, 10.0, "W180 010\r"},
                      WireCase{"GS232TranslatedWest", 1, 270.0, 10.0, "W360 010\r"},
                      WireCase{"GS232TranslatedPastWest", 1, 271.0, 10.0, "W001 010\r"},
                      WireCase{"GS232TranslatedFullCircle", 1, 360.0, 10.0, "W060 010\r"},
                      WireCase{"AutoTracker", 2, 7.0, 89.6, "A:007,E:090\r"},
                      WireCase{"AutoTrackerSecond", 3, 359.0, 0.0, "A:359,E:000\r"},
                      WireCase{"EasyCommOneDecimal", 4, 120.44, 30.06, "AZ120.4 EL30.1\r"},
                      WireCase{"EasyCommSecond", 5, 5.0, 0.25, "AZ5.0 EL0.2\r"},
                      WireCase{"EasyCommClampsUnrounded", 4, 361.3, -3.0, "AZ360.0 EL0.0\r"},
                      WireCase{"KLMElevationFirstThenDriveAndPosition", 6, 120.0, 30.0,
                               "PC030 120\rD\rP\r"},
                      WireCase{"SARtekNorthHeldAtTwo", 7, 0.0, 50.0, "P\x01"s},
                      WireCase{"SARtekSouth", 7, 180.0, 50.0, "P\x7F"s},
                      WireCase{"SARtekNorthWestHeldAt358", 7, 359.0, 0.0, "P\xFD"s},
                      WireCase{"SatELNoZeroFilling", 8, 5.0, 7.0, "P5 7\r"},
                      WireCase{"DCU1CarriesElevationThenAzimuthAndMoves", 9, 123.0, 45.0,
                               "AP1045 123;\rAM1;\r\0 123;\r"s},
                      WireCase{"AlfaSpid", 10, 120.0, 30.0, "W120 030\r"},
                      WireCase{"PTPacket", 11, 123.0, 45.0,
                               "$AZ123EL045UL0145.000000DL0432.000000"s + kPTFixed + "\x42#"s},
                      WireCase{"PTPacketFarCorner", 11, 359.0, 90.0,
                               "$AZ359EL090UL0145.000000DL0432.000000"s + kPTFixed + "\x45#"s},
                      WireCase{"IndexPastTheTableSendsNothing", 12, 120.0, 30.0, ""}),
    [](const ::testing::TestParamInfo<WireCase>& p) { return std::string(p.param.name); });

TEST(RotorTable, AzimuthOnlyControllersAreSARtekAndDCU1) {
    for (int index = -1; index <= 13; ++index) {
        EXPECT_EQ(rotorIsAzEl(index), index != 7 && index != 9) << "index " << index;
    }
    for (int index = 0; index < kRotorCount; ++index) EXPECT_NE(rotorName(index), nullptr);
    EXPECT_STREQ(rotorName(kRotorCount), "Hamlib");  // any Hamlib rotator, after the table
    EXPECT_EQ(rotorName(kRotorCount + 1), nullptr);
}

struct TranslationCase {
    int azimuth;
    int translated;
};

class Translate5500 : public ::testing::TestWithParam<TranslationCase> {};

TEST_P(Translate5500, MapsAzimuth) {
    EXPECT_EQ(translate5500Azimuth(GetParam().azimuth), GetParam().translated);
}

INSTANTIATE_TEST_SUITE_P(Azimuths, Translate5500,
                         ::testing::Values(TranslationCase{0, 180}, TranslationCase{270, 360},
                                           TranslationCase{271, 1},  // 0.67 rounded
                                           TranslationCase{360, 60}, TranslationCase{-1, 180},
                                           TranslationCase{90, 240}, TranslationCase{1, 181}));

class RotorSendPath : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_NE(line.fd(), -1);
        ResetRotorSendState();
    }
    testing::PtyPeer line;
};

TEST_F(RotorSendPath, OneCommandPerWholeDegree) {
    SendAzEl(0, line.fd(), 120.4, 30.4, false);
    SendAzEl(0, line.fd(), 120.2, 29.6, false);  // still 120/30
    EXPECT_EQ(line.take(), "W120 030\r");
    SendAzEl(0, line.fd(), 120.6, 29.6, false);
    EXPECT_EQ(line.take(), "W121 030\r");
}

TEST_F(RotorSendPath, RemembersThePairBeforeClamping) {
    // 361 and 362 both clamp to 360, but they are different targets: the
    // second is sent again, as the rounded pair changed.
    SendAzEl(0, line.fd(), 361.0, 10.0, false);
    SendAzEl(0, line.fd(), 362.0, 10.0, false);
    EXPECT_EQ(line.take(), "W360 010\rW360 010\r");
}

TEST_F(RotorSendPath, FirstParkAtNorthOnTheHorizonGoesOut) {
    SendAzEl(0, line.fd(), 0.0, 0.0, false);
    EXPECT_EQ(line.take(), "W000 000\r");
}

TEST_F(RotorSendPath, NotANumberSendsNothingAndKeepsTheLastPair) {
    SendAzEl(0, line.fd(), 10.0, 10.0, false);
    EXPECT_EQ(SendAzEl(0, line.fd(), std::nan(""), 10.0, false), 0);
    SendAzEl(0, line.fd(), 10.0, 10.0, false);
    EXPECT_EQ(line.take(), "W010 010\r");
}

TEST_F(RotorSendPath, ClosedPortIsSilentAndTheSamePositionIsNotResentOnceOpen) {
    EXPECT_EQ(SendAzEl(0, -1, 100.3, 20.2, false), -1);
    EXPECT_EQ(SendAzEl(0, line.fd(), 99.8, 19.9, false), 0);  // still 100/20
    EXPECT_EQ(line.take(), "");
    SendAzEl(0, line.fd(), 101.0, 20.0, false);
    EXPECT_EQ(line.take(), "W101 020\r");
}

TEST(RotorDrivers, EveryDriverReturnsMinusOneOnAClosedPort) {
    EXPECT_EQ(AzElGS232(-1, 1, 1, false), -1);
    EXPECT_EQ(AzElAutoTracker(-1, 1, 1, false), -1);
    EXPECT_EQ(AzElEasyComRotor(-1, 1, 1, false), -1);
    EXPECT_EQ(AzElKLM(-1, 1, 1, false), -1);
    EXPECT_EQ(AzElSARtek(-1, 1, 1, false), -1);
    EXPECT_EQ(AzElSatEL(-1, 1, 1, false), -1);
    EXPECT_EQ(AzElDCU1(-1, 1, 1, false), -1);
    EXPECT_EQ(AzElAlphaSpid(-1, 1, 1, false), -1);
    EXPECT_EQ(AzElPT(-1, 1, 1, false), -1);
}

TEST_F(RotorSendPath, DriverDiscardsWhatWasWaitingAndReportsTheReply) {
    line.put("stale status\r");
    // The stale line is read and dropped before the command, so the result is
    // the count of the reply that follows, which here is none.
    EXPECT_EQ(AzElGS232(line.fd(), 1, 2, false), 0);
    EXPECT_EQ(line.take(), "W001 002\r");
}

struct ControlCase {
    const char* name;
    int rotor;
    std::string start, stop;
};

class RotorControl : public ::testing::TestWithParam<ControlCase> {};

TEST_P(RotorControl, StartAndStopBytes) {
    testing::PtyPeer line;
    ASSERT_NE(line.fd(), -1);
    startRotorDriver(GetParam().rotor, line.fd(), false);
    EXPECT_EQ(line.take(), GetParam().start);
    stopRotorDriver(GetParam().rotor, line.fd(), false);
    EXPECT_EQ(line.take(), GetParam().stop);
    startRotorDriver(GetParam().rotor, -1, false);  // closed: nothing, no crash
    stopRotorDriver(GetParam().rotor, -1, false);
}

INSTANTIATE_TEST_SUITE_P(
    Controllers, RotorControl,
    ::testing::Values(ControlCase{"SatEL", 8, "G\r", "S\r"},
                      ControlCase{"AutoTracker", 2, "\r", ""},
                      ControlCase{"AutoTrackerSecond", 3, "\r", ""},
                      ControlCase{"GS232", 0, "", ""}, ControlCase{"EasyComm", 4, "", ""},
                      ControlCase{"DCU1", 9, "", ""}, ControlCase{"OutOfTable", 40, "", ""}),
    [](const ::testing::TestParamInfo<ControlCase>& p) { return std::string(p.param.name); });

// A clock the test moves by hand, behind the serial layer's seam.
double gFakeMicroseconds = 0.0;
double fakeMicroseconds() {
    return gFakeMicroseconds;
}

class EasyCommRateLimit : public RotorSendPath {
  protected:
    void SetUp() override {
        RotorSendPath::SetUp();
        fake = *RealSerialSystem();
        fake.microseconds = fakeMicroseconds;
        gFakeMicroseconds = 1000.0 * 1e6;
        SetSerialSystem(&fake);
    }
    void TearDown() override { SetSerialSystem(nullptr); }
    void at(double secondsAfterStart) { gFakeMicroseconds = (1000.0 + secondsAfterStart) * 1e6; }
    SerialSystem fake;
};

TEST_F(EasyCommRateLimit, SecondChangeWithinThreeSecondsIsDroppedNotQueued) {
    at(0.0);
    SendAzEl(4, line.fd(), 10.0, 10.0, false);
    at(1.0);
    SendAzEl(4, line.fd(), 11.0, 10.0, false);  // dropped
    at(3.0);
    SendAzEl(4, line.fd(), 12.0, 10.0, false);  // exactly 180 ticks: still dropped
    EXPECT_EQ(line.take(), "AZ10.0 EL10.0\r");
    at(3.1);
    SendAzEl(4, line.fd(), 12.0, 10.0, false);  // same pair as the dropped one: not sent later
    EXPECT_EQ(line.take(), "");
    SendAzEl(4, line.fd(), 13.0, 10.0, false);
    EXPECT_EQ(line.take(), "AZ13.0 EL10.0\r");
}

// A decimal comma in the user's locale must never reach the wire.
class CommaLocale : public RotorSendPath {
  protected:
    void SetUp() override {
        RotorSendPath::SetUp();
        if (!std::setlocale(LC_ALL, "de_DE.UTF-8"))
            GTEST_SKIP() << "de_DE.UTF-8 locale not installed";
    }
    void TearDown() override { std::setlocale(LC_ALL, "C"); }
};

TEST_F(CommaLocale, EasyCommAndPTUseADecimalPoint) {
    SendAzEl(4, line.fd(), 120.44, 30.06, false);
    EXPECT_EQ(line.take(), "AZ120.4 EL30.1\r");
    unsigned char packet[kPTPacketLength + 1];
    ASSERT_EQ(BuildPTPacket(packet, sizeof packet, 1, 2), kPTPacketLength);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(packet), 37),
              "$AZ001EL002UL0145.000000DL0432.000000");
}

TEST(PTPacket, ChecksumCoversEveryByteButTheDollar) {
    unsigned char packet[kPTPacketLength + 1];
    ASSERT_EQ(BuildPTPacket(packet, sizeof packet, 200, 60), kPTPacketLength);
    unsigned char sum = 0;
    for (int i = 0; i < kPTPacketLength - 2; ++i) sum ^= packet[i];
    // Including the "$" (0x24) would change the byte by exactly 0x24.
    EXPECT_EQ(packet[46] ^ '$', sum);
    EXPECT_EQ(packet[47], '#');
    EXPECT_EQ(packet[48], 0);
    EXPECT_EQ(BuildPTPacket(packet, kPTPacketLength, 200, 60), 0) << "no room for the terminator";
}

}  // namespace
}  // namespace veloran
