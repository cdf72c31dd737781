// The simulated radios on their own: raw command blocks written to the
// pseudo-terminal, decoded state and replies checked against the radios'
// CAT documentation, without any of the drivers the simulator is there to check.

#include "sim/radio_sim.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace veloran::sim {
namespace {

// The program's end of the line, opened raw by hand.
class Line {
  public:
    explicit Line(const std::string& path) {
        fd_ = ::open(path.c_str(), O_RDWR | O_NOCTTY);
        EXPECT_NE(fd_, -1);
        struct termios t;
        ::tcgetattr(fd_, &t);
        ::cfmakeraw(&t);
        ::tcsetattr(fd_, TCSANOW, &t);
    }
    ~Line() { ::close(fd_); }
    void send(std::vector<uint8_t> bytes) {
        ASSERT_EQ(::write(fd_, bytes.data(), bytes.size()), (ssize_t)bytes.size());
    }
    // Up to `count` bytes within half a second.
    std::vector<uint8_t> receive(size_t count) {
        std::vector<uint8_t> out;
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(500);
        while (out.size() < count && std::chrono::steady_clock::now() < deadline) {
            struct pollfd p = {fd_, POLLIN, 0};
            if (::poll(&p, 1, 10) <= 0 || !(p.revents & POLLIN)) continue;
            uint8_t b[64];
            const ssize_t n = ::read(fd_, b, std::min(sizeof b, count - out.size()));
            if (n <= 0) break;
            out.insert(out.end(), b, b + n);
        }
        return out;
    }
    int fd() const { return fd_; }

  private:
    int fd_ = -1;
};

bool Settled(const SimulatedRadio& radio, int blocks) {
    for (int i = 0; i < 15000; ++i) {  // half a minute, a bound only for a broken test
        if (radio.state().blocks >= blocks) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return false;
}

TEST(RadioSim, ModelNames) {
    RadioModel m;
    ASSERT_TRUE(ParseRadioModel("ft847", &m));
    EXPECT_EQ(m, RadioModel::FT847);
    ASSERT_TRUE(ParseRadioModel("FT-817", &m));
    EXPECT_EQ(m, RadioModel::FT817);
    ASSERT_TRUE(ParseRadioModel("ft100d", &m));
    EXPECT_EQ(m, RadioModel::FT100D);
    ASSERT_TRUE(ParseRadioModel("FT-736R", &m));
    EXPECT_EQ(m, RadioModel::FT736R);
    ASSERT_TRUE(ParseRadioModel("vr-5000", &m));
    EXPECT_EQ(m, RadioModel::VR5000);
    EXPECT_FALSE(ParseRadioModel("ic910", &m));
    EXPECT_FALSE(ParseRadioModel("", &m));
}

TEST(RadioSim, Ft847ObeysOnlyAfterCatOnAndReportsTheSatelliteVfos) {
    SimulatedRadio radio(RadioModel::FT847);
    ASSERT_TRUE(radio.open());
    Line line(radio.devicePath());
    line.send({0x43, 0x58, 0x00, 0x00, 0x11});  // ignored: CAT is off
    line.send({0x00, 0x00, 0x00, 0x00, 0x00});  // CAT on
    line.send({0x00, 0x00, 0x00, 0x00, 0x4E});  // satellite mode
    line.send({0x43, 0x58, 0x12, 0x34, 0x11});  // sat RX 435.81234 MHz
    line.send({0x01, 0x00, 0x00, 0x00, 0x17});  // sat RX USB
    line.send({0x14, 0x59, 0x00, 0x00, 0x21});  // sat TX 145.9 MHz
    ASSERT_TRUE(Settled(radio, 6));
    const RadioState s = radio.state();
    EXPECT_TRUE(s.catOn);
    EXPECT_TRUE(s.satelliteMode);
    EXPECT_EQ(s.satRx.hertz, 435812340u);
    EXPECT_EQ(s.satRx.mode, 0x01);
    EXPECT_EQ(s.satTx.hertz, 145900000u);
    // Reading the sat RX VFO: four BCD bytes and the mode (the FT-847's
    // answer to 0x13, e.g. 43 21 00 00 01 for 432.1 MHz USB).
    line.send({0x00, 0x00, 0x00, 0x00, 0x13});
    EXPECT_EQ(line.receive(5), (std::vector<uint8_t>{0x43, 0x58, 0x12, 0x34, 0x01}));
    radio.setRxStatus(0x85);
    line.send({0x00, 0x00, 0x00, 0x00, 0xE7});
    EXPECT_EQ(line.receive(1), std::vector<uint8_t>{0x85});
    EXPECT_EQ(radio.received().size(), 40u);  // every byte recorded, ignored ones too
}

TEST(RadioSim, Ft817AcknowledgesAndReportsItsVfoInTheConfigurationByte) {
    SimulatedRadio radio(RadioModel::FT817);
    ASSERT_TRUE(radio.open());
    Line line(radio.devicePath());
    line.send({0x14, 0x59, 0x00, 0x00, 0x01});
    EXPECT_EQ(line.receive(1), std::vector<uint8_t>{0x00});
    line.send({0x00, 0x55, 0x00, 0x00, 0xBB});
    EXPECT_EQ(line.receive(2), (std::vector<uint8_t>{0x00, 0x00}));  // VFO A
    line.send({0x01, 0x00, 0x00, 0x00, 0x81});                       // A/B
    EXPECT_EQ(line.receive(1), std::vector<uint8_t>{0x00});
    line.send({0x00, 0x55, 0x00, 0x00, 0xBB});
    EXPECT_EQ(line.receive(2), (std::vector<uint8_t>{0x01, 0x00}));  // bit 0: VFO B
    line.send({0x43, 0x58, 0x00, 0x00, 0x01});
    line.receive(1);
    line.send({0x09, 0x74, 0x00, 0x00, 0x0B});  // tone 97.4 Hz
    line.receive(1);
    const RadioState s = radio.state();
    EXPECT_EQ(s.vfoA.hertz, 145900000u);
    EXPECT_EQ(s.vfoB.hertz, 435800000u);
    EXPECT_EQ(s.tone.tenths, 974);
}

TEST(RadioSim, Ft100dStatusCarriesEighthsOfTenHertz) {
    SimulatedRadio radio(RadioModel::FT100D);
    ASSERT_TRUE(radio.open());
    Line line(radio.devicePath());
    line.send({0x00, 0x00, 0x58, 0x43, 0x0A});  // 435.8 MHz, least significant first
    line.send({0x00, 0x00, 0x00, 0x00, 0x10});
    const std::vector<uint8_t> status = line.receive(16);
    ASSERT_EQ(status.size(), 16u);
    // 435800000 Hz / 1.25 = 348640000 = 0x14C7D300
    EXPECT_EQ(status[1], 0x14);
    EXPECT_EQ(status[2], 0xC7);
    EXPECT_EQ(status[3], 0xD3);
    EXPECT_EQ(status[4], 0x00);
}

TEST(RadioSim, Vr5000TakesBinaryTensOfHertzAfterCatOn) {
    SimulatedRadio radio(RadioModel::VR5000);
    ASSERT_TRUE(radio.open());
    Line line(radio.devicePath());
    line.send({0x00, 0x00, 0x00, 0x00, 0x00});
    // Split across two writes: the block is still put together.
    line.send({0x00, 0xDE});
    line.send({0xA0, 0x30, 0x01});
    ASSERT_TRUE(Settled(radio, 2));
    EXPECT_EQ(radio.state().main.hertz, 145900000u);
}

TEST(RadioSim, SilentRadioRecordsButNeverAnswersAndUnpluggingEndsTheLine) {
    SimulatedRadio radio(RadioModel::FT817);
    ASSERT_TRUE(radio.open());
    radio.setSilent(true);
    Line line(radio.devicePath());
    line.send({0x00, 0x00, 0x00, 0x00, 0xE7});
    EXPECT_TRUE(line.receive(1).empty());
    EXPECT_TRUE(radio.waitForBytes(5, 500));
    radio.unplug();
    uint8_t byte = 0;
    EXPECT_EQ(::write(line.fd(), &byte, 1), -1);  // the device side is gone
}

}  // namespace
}  // namespace veloran::sim
