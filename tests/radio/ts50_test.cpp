// The TS-50 driver on a pseudo-terminal: the exact ASCII commands, and the
// "IF;" answer a Kenwood sends for the dial (frequency in hertz in
// characters 3 to 13 of 38).

#include "radio/ts50.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <mutex>
#include <string>
#include <thread>

#include "radio/tuning.h"
#include "serial/serial.h"
#include "tests/support/pty.h"

namespace veloran {
namespace {

// The radio's end of the line: answers "IF;" with the information string
// for `frequency`: IF, 11 digits of hertz, 24 status characters and ';'.
struct Kenwood {
    Kenwood()
        : peer([this](std::string* pending) {
              std::string reply;
              size_t at;
              while ((at = pending->find("IF;")) != std::string::npos) {
                  pending->erase(0, at + 3);
                  char text[64];
                  std::snprintf(text, sizeof text, "IF%011lu%024d;", frequency.load(), 0);
                  reply += text;
              }
              if (pending->size() > 2) pending->erase(0, pending->size() - 2);
              return reply;
          }) {}
    const char* path() const { return peer.path(); }
    std::string take(size_t count) { return peer.take(count); }
    std::atomic<unsigned long> frequency{0};
    testing::PtyPeer peer;
    testing::DeviceClock clock{&peer};  // a reply is never missed on a busy machine
};

class TS50 : public ::testing::Test {
  protected:
    void SetUp() override {
        ResetTS50DriverState();
        SetCommandDelay(0);
        fd = openSerialPort(radio.path(), 5, 15, false);
        ASSERT_NE(fd, -1);
    }
    void TearDown() override { closeSerialPort(fd, false); }
    Kenwood radio;
    int fd = -1;
};

TEST_F(TS50, ForcedTwoBandUpdateSetsBothVfoModesThenFrequencies) {
    StartTS50(fd, false);
    EXPECT_EQ(radio.take(4), "AI0;");
    // A_SSB on HF: uplink LSB on VFO B, downlink USB on VFO A, as the other radios set it.
    ASSERT_EQ(SetTS50VFO(fd, 21.26, 29.41, 5, 0, 0, true, false), 1);
    EXPECT_EQ(radio.take(44), "FN1;MD1;FN0;MD2;FB00021260000;FA00029410000;");
    ASSERT_EQ(SetTS50VFO(fd, 21.26, 29.41, 5, 0, 0, false, false), 1);  // unchanged: nothing
    ASSERT_EQ(SetTS50VFO(fd, 21.2601, 29.4102, 5, 0, 0, false, false), 1);
    EXPECT_EQ(radio.take(28), "FB00021260100;FA00029410200;");
}

TEST_F(TS50, SingleChannelAndReceiveOnlyTuneVfoAOnly) {
    ASSERT_EQ(SetTS50VFO(fd, 29.5, 29.6, 15, 0, 0, true, false), 1);
    EXPECT_EQ(radio.take(22), "FN0;MD5;FA00029600000;");
    ASSERT_EQ(SetTS50VFO(fd, 0, 29.4, -1, 0, 0, true, false), 1);
    EXPECT_EQ(radio.take(22), "FN0;MD3;FA00029400000;");
    ASSERT_EQ(SetTS50VFO(fd, 21.2, 29.4, 0, 0, 0, true, false), 1);  // UNKNOWN: nothing at all
    EXPECT_EQ(radio.take(1), "");
    EXPECT_EQ(SetTS50VFO(-1, 21.2, 29.4, 5, 0, 0, true, false), 0);
}

TEST_F(TS50, DialReadBackThroughInformationString) {
    int32_t change = 0;
    radio.frequency = 29410000;
    EXPECT_EQ(DownLinkChangedTS50(fd, &change, false), 0);  // nothing sent yet
    ASSERT_EQ(SetTS50VFO(fd, 0, 29.41, -1, 0, 0, false, false), 1);
    EXPECT_EQ(DownLinkChangedTS50(fd, &change, false), 0);  // where we left it
    radio.frequency = 29410730;
    EXPECT_EQ(DownLinkChangedTS50(fd, &change, false), 1);
    EXPECT_EQ(change, 730);
    radio.peer.silent = true;
    EXPECT_EQ(DownLinkChangedTS50(fd, &change, false), 0);
}

TEST_F(TS50, ReachedThroughTheRadioTable) {
    EXPECT_EQ(SetVFO(15, fd, 0, 21.26, 29.41, 9, 0, 0, true, false), 1);
    EXPECT_EQ(radio.take(44), "FN1;MD3;FN0;MD3;FB00021260000;FA00029410000;");
}

}  // namespace
}  // namespace veloran
