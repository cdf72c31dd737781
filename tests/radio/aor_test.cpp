// The AOR receiver driver on a pseudo-terminal: the exact commands, the
// "LM" answer an AR8000-class receiver sends, and what a receiver must not
// be sent.

#include "radio/aor.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>

#include "radio/drivers.h"
#include "radio/tuning.h"
#include "serial/serial.h"
#include "tests/support/pty.h"

namespace veloran {
namespace {

// The receiver's end: answers "LM\r" with the level in hex and the squelch mark.
struct Receiver {
    Receiver()
        : peer([this](std::string* pending) {
              std::string reply;
              size_t at;
              while ((at = pending->find("LM\r")) != std::string::npos) {
                  pending->erase(0, at + 3);
                  reply += answer;
              }
              if (pending->size() > 2) pending->erase(0, pending->size() - 2);
              return reply;
          }) {}
    std::string answer = "LM3A%";
    testing::PtyPeer peer;
    testing::DeviceClock clock{&peer};  // a reply is never missed on a busy machine
};

class AOR : public ::testing::Test {
  protected:
    void SetUp() override {
        ResetAORDriverState();
        SetCommandDelay(0);
        fd = openSerialPort(radio.peer.path(), 5, 16, false);
        ASSERT_NE(fd, -1);
    }
    void TearDown() override { closeSerialPort(fd, false); }
    Receiver radio;
    int fd = -1;
};

struct ModeCase {
    int commMode;
    const char* mode;
};

TEST_F(AOR, ForcedUpdateSetsTheReceiveModeThenTheDownlinkInHertz) {
    const ModeCase cases[] = {
        {2, "MD1\r"},   // FM repeater: narrow FM
        {12, "MD0\r"},  // wide FM
        {15, "MD2\r"},  // AM
        {5, "MD3\r"},   // inverting SSB transponder heard on USB
        {8, "MD5\r"},   // CW
        {-1, "MD5\r"},  // receive-only beacon
    };
    for (const ModeCase& c : cases) {
        ASSERT_EQ(SetAORVFO(fd, 145.9, 435.8, c.commMode, 0, 0, true, false), 1);
        EXPECT_EQ(radio.peer.take(17), std::string(c.mode) + "RF0435800000\r") << c.commMode;
    }
}

TEST_F(AOR, UnforcedUpdatesSendOnlyAChangedDownlink) {
    ASSERT_EQ(SetAORVFO(fd, 145.9, 435.8, 5, 0, 0, true, false), 1);
    radio.peer.take(17);
    ASSERT_EQ(SetAORVFO(fd, 145.9, 435.8, 5, 0, 0, false, false), 1);
    ASSERT_EQ(SetAORVFO(fd, 145.91, 435.8, 5, 0, 0, false, false), 1)
        << "the uplink means nothing here";
    ASSERT_EQ(SetAORVFO(fd, 145.9, 435.80123, 5, 0, 0, false, false), 1);
    EXPECT_EQ(radio.peer.take(13), "RF0435801230\r");
    ASSERT_EQ(SetAORVFO(fd, 145.9, 2400.05, 5, 0, 0, true, false), 1);
    EXPECT_EQ(radio.peer.take(17), "MD3\rRF0240005000\r")
        << "microwave downlinks go out through the IF";
    ASSERT_EQ(SetAORVFO(fd, 145.9, 436.0, 0, 0, 0, true, false), 1);
    EXPECT_EQ(radio.peer.take(1), "") << "UNKNOWN sends nothing";
    EXPECT_EQ(SetAORVFO(-1, 145.9, 436.0, 5, 0, 0, true, false), 0);
}

TEST_F(AOR, SquelchAndLevelFromTheReceiversAnswer) {
    VFORec vfo{};
    EXPECT_EQ(SquelchedAOR(fd, &vfo, false), 1);
    EXPECT_EQ(vfo.signalStrength, 0x3A);
    radio.answer = "LMC0 ";
    EXPECT_EQ(SquelchedAOR(fd, &vfo, false), 0) << "a blank after the level: squelch open";
    EXPECT_EQ(vfo.signalStrength, 0xC0);
    radio.answer = "?\r";
    EXPECT_EQ(SquelchedAOR(fd, &vfo, false), 0);
    EXPECT_EQ(vfo.signalStrength, 0);
    radio.peer.silent = true;
    EXPECT_EQ(SquelchedAOR(fd, &vfo, false), 0)
        << "silence: nothing hangs, the squelch counts as open";
    EXPECT_EQ(SquelchedAOR(-1, &vfo, false), 0);
}

TEST_F(AOR, TheRadioTableReachesTheReceiver) {
    const RadioDriver* row = RadioDriverFor(16);
    ASSERT_NE(row, nullptr);
    ASSERT_NE(row->setFrequencies, nullptr);
    ASSERT_EQ(row->setFrequencies(fd, 0, 145.9, 29.41, 5, 0, 0, true, false), 1);
    EXPECT_EQ(radio.peer.take(17), "MD3\rRF0029410000\r");
    EXPECT_DOUBLE_EQ(row->sMeterFactor, 3.125);
}

}  // namespace
}  // namespace veloran
