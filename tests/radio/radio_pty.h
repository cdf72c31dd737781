// Test plumbing for the radio wire tests: a simulated radio served on a
// pseudo-terminal, the driver's side opened as the program opens a serial
// port, and hex rendering of frames for comparison.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "serial/serial.h"
#include "sim/sim_pty.h"

namespace veloran::testing {

inline std::string Hex(const unsigned char* bytes, size_t count) {
    std::string text;
    char pair[4];
    for (size_t i = 0; i < count; ++i) {
        std::snprintf(pair, sizeof pair, i ? " %02X" : "%02X", bytes[i]);
        text += pair;
    }
    return text;
}

inline std::string Hex(const std::vector<uint8_t>& bytes) {
    return Hex(bytes.data(), bytes.size());
}

inline std::vector<std::string> HexFrames(const std::vector<std::vector<uint8_t>>& frames) {
    std::vector<std::string> text;
    for (const auto& f : frames) text.push_back(Hex(f));
    return text;
}

// A simulated device behind a pseudo-terminal, and the descriptor the driver
// uses. The device is served on its own thread from Attach() until the end
// of the test.
class SimulatedLine {
  public:
    ~SimulatedLine() { Detach(); }

    // Starts serving `device` and opens the line as the program would.
    ::testing::AssertionResult Attach(sim::SimDevice* device) {
        if (!pty_.open()) return ::testing::AssertionFailure() << "openpty failed";
        pty_.start(device);
        fd_ = openSerialPort(pty_.path().c_str(), 9, 0, false);
        if (fd_ == -1) return ::testing::AssertionFailure() << "cannot open " << pty_.path();
        return ::testing::AssertionSuccess();
    }

    void Detach() {
        if (fd_ != -1) closeSerialPort(fd_, false);
        fd_ = -1;
        pty_.stop();
    }

    int fd() const { return fd_; }
    // Waits until the device has taken in and acted on all that was sent.
    void Settle() const { pty_.waitIdle(); }

  private:
    sim::PtyServer pty_;
    int fd_ = -1;
};

// A clock that jumps ahead 20 ms whenever a read finds nothing (after a real
// pause of 0.2 ms, so a device that does answer still gets its turn), so the
// half-second time-outs of a silent radio pass in a few milliseconds. The
// system calls are the real ones.
class SkippingClock {
  public:
    SkippingClock() {
        system_ = *RealSerialSystem();
        system_.microseconds = [] { return RealSerialSystem()->microseconds() + skipped(); };
        system_.idle = [](double) {
            RealSerialSystem()->idle(200.0);
            skipped() += 20000.0;
        };
        skipped() = 0;
        SetSerialSystem(&system_);
    }
    ~SkippingClock() { SetSerialSystem(nullptr); }

  private:
    static double& skipped() {
        static double value = 0;
        return value;
    }
    SerialSystem system_;
};

}  // namespace veloran::testing
