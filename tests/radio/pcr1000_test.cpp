// The PCR1000 receiver driver on a pseudo-terminal: exact commands, and the
// answers the receiver gives with its automatic reports off ("G000" after
// each command, "I1xx" squelch status, "I2xx" S-meter).

#include "radio/pcr1000.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <string>

#include "radio/tuning.h"
#include "serial/serial.h"
#include "tests/support/pty.h"

namespace veloran {
namespace {

struct Pcr1000 {
    Pcr1000()
        : peer([this](std::string* pending) {
              std::string reply;
              size_t end;
              while ((end = pending->find("\r\n")) != std::string::npos) {
                  const std::string command = pending->substr(0, end);
                  pending->erase(0, end + 2);
                  char text[16];
                  if (command == "I1?") {
                      std::snprintf(text, sizeof text, "I1%02X\r\n", squelch.load());
                  } else if (command == "I2?") {
                      std::snprintf(text, sizeof text, "I2%02X\r\n", level.load());
                  } else if (command == "H101") {
                      text[0] = 0;  // power on: no answer
                  } else {
                      std::snprintf(text, sizeof text, "G000\r\n");
                  }
                  reply += text;
              }
              return reply;
          }) {}
    std::atomic<int> squelch{0x04};  // 04 closed, 07 open
    std::atomic<int> level{0};
    testing::PtyPeer peer;
    testing::DeviceClock clock{&peer};  // a reply is never missed on a busy machine
};

class PCR1000 : public ::testing::Test {
  protected:
    void SetUp() override {
        ResetPCR1000DriverState();
        SetCommandDelay(0);
        fd = openSerialPort(radio.peer.path(), 5, 11, false);
        ASSERT_NE(fd, -1);
    }
    void TearDown() override { closeSerialPort(fd, false); }
    Pcr1000 radio;
    int fd = -1;
};

TEST_F(PCR1000, StartSwitchesOnAndStopsAutomaticReports) {
    StartPCR1000(fd, false);
    EXPECT_EQ(radio.peer.take(12), "H101\r\nG300\r\n");
}

struct TuneCase {
    int commMode;
    double down;
    const char* command;
};

TEST_F(PCR1000, FrequencyModeAndFilterInOneCommand) {
    // 10 digits of hertz, mode (05 FM, 06 wide FM, 02 AM, 03 CW, 01 USB), filter
    // (02 15 kHz, 04 230 kHz, 01 6 kHz, 00 3 kHz), then 00.
    const TuneCase table[] = {
        {2, 435.8, "K00435800000050200\r\n"},  {12, 88.5, "K00088500000060400\r\n"},
        {15, 118.1, "K00118100000020100\r\n"}, {7, 145.9001, "K00145900100030000\r\n"},
        {3, 145.95, "K00145950000010000\r\n"}, {-1, 137.62, "K00137620000030000\r\n"},
    };
    for (const TuneCase& c : table) {
        ASSERT_EQ(SetPCR1000VFO(fd, 0, c.down, c.commMode, 0, 0, true, false), 1);
        EXPECT_EQ(radio.peer.take(20), c.command) << c.commMode;
    }
    ASSERT_EQ(SetPCR1000VFO(fd, 0, 137.62, -1, 0, 0, false, false), 1);  // unchanged: nothing
    ASSERT_EQ(SetPCR1000VFO(fd, 0, 145.9, 0, 0, 0, true, false), 1);     // UNKNOWN: nothing
    EXPECT_EQ(radio.peer.take(1), "");
    EXPECT_EQ(SetVFO(11, fd, 0, 0, 145.8, 6, 0, 0, false, false), 1);  // through the radio table
    EXPECT_EQ(radio.peer.take(20), "K00145800000050200\r\n");
}

TEST_F(PCR1000, SquelchStatusAndSMeter) {
    VFORec vfo = {};
    radio.squelch = 0x07;
    radio.level = 0xA5;
    EXPECT_EQ(SquelchedPCR1000(fd, &vfo, false), 0);
    EXPECT_EQ(vfo.signalStrength, 0xA5);
    EXPECT_EQ(radio.peer.take(10), "I1?\r\nI2?\r\n");
    radio.squelch = 0x04;
    radio.level = 0x10;
    EXPECT_EQ(SquelchedPCR1000(fd, &vfo, false), 1);
    EXPECT_EQ(vfo.signalStrength, 0x10);
    radio.peer.silent = true;
    vfo.signalStrength = 7;
    EXPECT_EQ(SquelchedPCR1000(fd, &vfo, false), 1);  // no answer: squelched, reading kept
    EXPECT_EQ(vfo.signalStrength, 7);
}

}  // namespace
}  // namespace veloran
