// A pseudo-terminal standing between a rotor driver and the test: the driver
// gets the device side, opened as the program opens a serial port; the test
// reads the exact bytes on the other side and can answer like a controller.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "serial/serial.h"

namespace veloran::testing {

class PtyLine {
  public:
    PtyLine() {
        char name[128];
        if (::openpty(&master_, &hold_, name, nullptr, nullptr) != 0) return;
        struct termios t;
        ::tcgetattr(hold_, &t);
        ::cfmakeraw(&t);
        ::tcsetattr(hold_, TCSANOW, &t);
        path_ = name;
        fd_ = openSerialPort(name, 5, 0, false);
    }
    ~PtyLine() {
        stopAnswering();
        closeSerialPort(fd_, false);
        if (hold_ >= 0) ::close(hold_);
        if (master_ >= 0) ::close(master_);
    }
    PtyLine(const PtyLine&) = delete;
    PtyLine& operator=(const PtyLine&) = delete;

    int fd() const { return fd_; }
    const std::string& path() const { return path_; }
    // Lets go of the device side, for a test that opens the port itself (a
    // port is ours alone while it is open).
    void releasePort() {
        closeSerialPort(fd_, false);
        fd_ = -1;
    }

    // Everything the driver has written so far.
    std::string take() {
        std::string out;
        char buf[256];
        for (;;) {
            struct pollfd p = {master_, POLLIN, 0};
            if (::poll(&p, 1, 0) <= 0) break;
            const ssize_t n = ::read(master_, buf, sizeof buf);
            if (n <= 0) break;
            out.append(buf, static_cast<size_t>(n));
        }
        return out;
    }

    // Puts bytes on the line towards the driver.
    void put(const std::string& bytes) { (void)!::write(master_, bytes.data(), bytes.size()); }

    // In a thread: once a carriage return arrives, answers `reply` (nothing
    // when empty) and stops. Everything received is kept for heard().
    void answerAfterCarriageReturn(const std::string& reply) {
        answering_ = true;
        responder_ = std::thread([this, reply] {
            const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
            while (answering_ && std::chrono::steady_clock::now() < deadline) {
                struct pollfd p = {master_, POLLIN, 0};
                if (::poll(&p, 1, 5) <= 0) continue;
                char buf[256];
                const ssize_t n = ::read(master_, buf, sizeof buf);
                if (n <= 0) continue;
                heard_.append(buf, static_cast<size_t>(n));
                if (heard_.find('\r') != std::string::npos) {
                    if (!reply.empty()) put(reply);
                    break;
                }
            }
        });
    }
    void stopAnswering() {
        answering_ = false;
        if (responder_.joinable()) responder_.join();
    }
    // What the answering thread read; call after stopAnswering().
    const std::string& heard() const { return heard_; }

  private:
    int master_ = -1;
    int hold_ = -1;  // keeps the device side alive whoever else opens or closes it
    int fd_ = -1;
    std::string path_;
    std::thread responder_;
    std::atomic<bool> answering_{false};
    std::string heard_;
};

}  // namespace veloran::testing
