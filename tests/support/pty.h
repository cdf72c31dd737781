// The pseudo-terminal every wire test stands between a driver and its
// device: the driver's side is opened as the program opens a serial port; on
// the other side a thread records every byte that arrives and answers as the
// device would, through a simulated device from sim/ or a reply function.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "serial/serial.h"
#include "sim/sim_pty.h"

namespace veloran::testing {

class PtyPeer {
  public:
    // Sees the text received and not yet consumed, removes the requests it
    // understands and returns what the device sends back.
    using Answer = std::function<std::string(std::string* pending)>;

    explicit PtyPeer(Answer answer = nullptr) : answer_(std::move(answer)) {
        char name[256] = "";
        if (::openpty(&master_, &hold_, name, nullptr, nullptr) != 0) return;
        struct termios raw;
        ::tcgetattr(hold_, &raw);
        ::cfmakeraw(&raw);
        ::tcsetattr(hold_, TCSANOW, &raw);
        path_ = name;
        thread_ = std::thread([this] { run(); });
    }
    ~PtyPeer() {
        detach();
        running_ = false;
        if (thread_.joinable()) thread_.join();
        if (hold_ != -1) ::close(hold_);
        if (master_ != -1) ::close(master_);
    }
    PtyPeer(const PtyPeer&) = delete;
    PtyPeer& operator=(const PtyPeer&) = delete;

    const char* path() const { return path_.c_str(); }
    // The driver's descriptor, opened at 38400 bit/s on first use.
    int fd() const {
        if (fd_ == -1) fd_ = openSerialPort(path(), 9, 0, false);
        return fd_;
    }
    // Lets `device` answer from now on and opens the driver's side.
    ::testing::AssertionResult attach(sim::SimDevice* device) {
        device_ = device;
        if (fd() == -1) return ::testing::AssertionFailure() << "cannot open " << path_;
        return ::testing::AssertionSuccess();
    }
    // Closes the driver's side, as unplugging the adapter would.
    void detach() {
        if (fd_ != -1) closeSerialPort(fd_, false);
        fd_ = -1;
    }
    // Returns once everything written so far has been read and answered: the
    // kernel passes bytes on a moment later, so the line must stay quiet a while.
    void settle() const {
        int quiet = 0;
        for (int i = 0; i < 2000 && quiet < 25; ++i) {
            int waiting = 0;
            if (::ioctl(master_, FIONREAD, &waiting) != 0) return;
            quiet = waiting == 0 && !busy_ ? quiet + 1 : 0;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    // Everything received since the last take, once at least `count` bytes
    // are in (or two seconds have passed) and the line is quiet.
    std::string take(size_t count = 0) {
        for (int i = 0; i < 2000 && size() < count; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        settle();
        std::lock_guard<std::mutex> lock(mutex_);
        std::string out;
        out.swap(received_);
        return out;
    }
    // Bytes towards the driver that it did not ask for.
    void put(const std::string& bytes) { (void)!::write(master_, bytes.data(), bytes.size()); }

    std::atomic<bool> silent{false};  // the device hears but does not answer

  private:
    size_t size() {
        std::lock_guard<std::mutex> lock(mutex_);
        return received_.size();
    }
    void send(const void* bytes, size_t count) {
        if (!silent && count > 0) (void)!::write(master_, bytes, count);
    }
    void run() {
        std::string pending;
        std::vector<uint8_t> out;
        while (running_) {
            struct pollfd p = {master_, POLLIN, 0};
            if (::poll(&p, 1, 5) <= 0 || !(p.revents & POLLIN)) continue;
            busy_ = true;
            char in[256];
            const ssize_t n = ::read(master_, in, sizeof in);
            if (n > 0) {
                {
                    std::lock_guard<std::mutex> lock(mutex_);
                    received_.append(in, static_cast<size_t>(n));
                }
                // A simulated device answers byte by byte, so that it can
                // reply between two bytes as the CI-V bus echo does.
                for (ssize_t i = 0; device_ && i < n; ++i) {
                    out.clear();
                    device_.load()->receive(static_cast<uint8_t>(in[i]), &out);
                    send(out.data(), out.size());
                }
                if (answer_) {
                    pending.append(in, static_cast<size_t>(n));
                    const std::string reply = answer_(&pending);
                    send(reply.data(), reply.size());
                }
            }
            busy_ = false;
        }
    }

    Answer answer_;
    std::atomic<sim::SimDevice*> device_{nullptr};
    int master_ = -1;
    int hold_ = -1;        // keeps the line up whoever opens or closes the driver's side
    mutable int fd_ = -1;  // opened on first use
    std::string path_;
    std::atomic<bool> running_{true};
    std::atomic<bool> busy_{false};
    std::thread thread_;
    std::mutex mutex_;
    std::string received_;
};

// Polls `ready` for up to two seconds (a simulated device answers within
// milliseconds; the bound only keeps a broken test from hanging).
inline bool Eventually(const std::function<bool()>& ready) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while (!ready()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

// A serial clock that jumps 20 ms ahead whenever a read finds nothing (after
// a real pause of 0.2 ms, so a device that does answer still gets its turn):
// the half-second time-outs of a silent device pass in a few milliseconds.
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
