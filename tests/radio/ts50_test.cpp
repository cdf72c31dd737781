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

#include "radio/serial.h"
#include "radio/tuning.h"

namespace veloran {
namespace {

// The radio's end of the line: records what arrives and answers "IF;" with
// the information string for `frequency`.
class Kenwood {
  public:
    Kenwood() {
        EXPECT_EQ(openpty(&master_, &slave_, name_, nullptr, nullptr), 0);
        thread_ = std::thread([this] { run(); });
    }
    ~Kenwood() {
        running_ = false;
        thread_.join();
        close(master_);
        close(slave_);
    }
    const char* path() const { return name_; }
    std::string take(size_t count) {
        for (int i = 0; i < 1000 && size() < count; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        std::lock_guard<std::mutex> lock(mutex_);
        std::string out;
        out.swap(received_);
        return out;
    }
    std::atomic<unsigned long> frequency{0};
    std::atomic<bool> silent{false};

  private:
    size_t size() {
        std::lock_guard<std::mutex> lock(mutex_);
        return received_.size();
    }
    void run() {
        std::string pending;
        while (running_) {
            struct pollfd p = {master_, POLLIN, 0};
            if (poll(&p, 1, 5) <= 0 || !(p.revents & POLLIN)) continue;
            char buf[128];
            const ssize_t n = read(master_, buf, sizeof buf);
            if (n <= 0) continue;
            {
                std::lock_guard<std::mutex> lock(mutex_);
                received_.append(buf, static_cast<size_t>(n));
            }
            pending.append(buf, static_cast<size_t>(n));
            size_t at;
            while ((at = pending.find("IF;")) != std::string::npos) {
                pending.erase(0, at + 3);
                if (silent) continue;
                char reply[64];
                // IF, 11 digits of hertz, then 24 status characters and ';'.
                std::snprintf(reply, sizeof reply, "IF%011lu%024d;", frequency.load(), 0);
                write(master_, reply, 38);
            }
        }
    }
    int master_ = -1, slave_ = -1;
    char name_[256] = {0};
    std::atomic<bool> running_{true};
    std::thread thread_;
    std::mutex mutex_;
    std::string received_;
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
    radio.silent = true;
    EXPECT_EQ(DownLinkChangedTS50(fd, &change, false), 0);
}

TEST_F(TS50, ReachedThroughTheRadioTable) {
    EXPECT_EQ(SetVFO(15, fd, 0, 21.26, 29.41, 9, 0, 0, true, false), 1);
    EXPECT_EQ(radio.take(44), "FN1;MD3;FN0;MD3;FB00021260000;FA00029410000;");
}

}  // namespace
}  // namespace veloran
