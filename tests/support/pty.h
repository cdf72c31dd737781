// The pseudo-terminal every wire test stands between a driver and its
// device: the driver's side is opened as the program opens a serial port; on
// the other side a thread records every byte that arrives and answers as the
// device would, through a simulated device from sim/ or a reply function.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/eventfd.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <initializer_list>
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
        // A read that finds nothing returns at once; finding the line empty
        // is what proves every byte written before has been handled (the
        // kernel hands over bytes still in transit before it answers).
        ::fcntl(master_, F_SETFL, ::fcntl(master_, F_GETFL) | O_NONBLOCK);
        wake_ = ::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
        path_ = name;
        thread_ = std::thread([this] { run(); });
    }
    ~PtyPeer() {
        detach();
        running_ = false;
        if (thread_.joinable()) thread_.join();
        if (hold_ != -1) ::close(hold_);
        if (master_ != -1) ::close(master_);
        if (wake_ != -1) ::close(wake_);
    }
    PtyPeer(const PtyPeer&) = delete;
    PtyPeer& operator=(const PtyPeer&) = delete;

    const char* path() const { return path_.c_str(); }
    // The driver's descriptor, opened at 38400 bit/s on first use.
    int fd() const {
        if (fd_ == -1) fd_ = openSerialPort(path(), 9, 0, false);
        return fd_;
    }
    // The driver's descriptor if open, else -1 (never opens it).
    int openFd() const { return fd_; }
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
    // device's thread has found the line empty after this call began. Half a
    // minute at most, a bound only for a broken test.
    void settle() const {
        if (!thread_.joinable()) return;
        const uint64_t ticket = idle_.ask();
        const uint64_t one = 1;
        if (wake_ != -1) (void)!::write(wake_, &one, sizeof one);
        idle_.wait(ticket, std::chrono::seconds(30));
    }
    // Everything received since the last take, once the line has settled.
    // Fewer than `count` bytes are waited for a further two seconds, for a
    // writer on another thread (a test expecting nothing pays that once).
    std::string take(size_t count = 0) {
        settle();
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(2);
        while (size() < count && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            settle();
        }
        std::lock_guard<std::mutex> lock(mutex_);
        std::string out;
        out.swap(received_);
        return out;
    }
    // Bytes towards the driver that it did not ask for.
    void put(const std::string& bytes) { send(bytes.data(), bytes.size(), true); }

    std::atomic<bool> silent{false};  // the device hears but does not answer

  private:
    size_t size() {
        std::lock_guard<std::mutex> lock(mutex_);
        return received_.size();
    }
    void send(const void* bytes, size_t count, bool always = false) {
        if ((silent && !always) || count == 0) return;
        const char* at = static_cast<const char*>(bytes);
        for (int stalls = 0; count > 0 && stalls < 100;) {
            const ssize_t w = ::write(master_, at, count);
            if (w > 0) {
                at += w;
                count -= static_cast<size_t>(w);
            } else if (w < 0 && errno == EAGAIN) {
                ++stalls;  // the driver is not reading: give it a moment
                struct pollfd p = {master_, POLLOUT, 0};
                ::poll(&p, 1, 10);
            } else if (!(w < 0 && errno == EINTR)) {
                return;
            }
        }
    }
    void run() {
        std::string pending;
        std::vector<uint8_t> out;
        while (running_) {
            // The settle calls made before this read are answered by it
            // finding the line empty.
            const uint64_t asked = idle_.asked();
            struct pollfd p[2] = {{master_, POLLIN, 0}, {wake_, POLLIN, 0}};
            ::poll(p, wake_ != -1 ? 2 : 1, idle_.owed() ? 0 : 5);
            if (wake_ != -1 && (p[1].revents & POLLIN) != 0) {
                uint64_t count = 0;
                (void)!::read(wake_, &count, sizeof count);
            }
            char in[256];
            const ssize_t n = ::read(master_, in, sizeof in);
            if (n <= 0) {
                if (!(n < 0 && errno == EINTR)) idle_.seen(asked);
                continue;
            }
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
    }

    Answer answer_;
    std::atomic<sim::SimDevice*> device_{nullptr};
    int master_ = -1;
    int hold_ = -1;        // keeps the line up whoever opens or closes the driver's side
    int wake_ = -1;        // an eventfd that cuts the device thread's wait short
    mutable int fd_ = -1;  // opened on first use
    std::string path_;
    std::atomic<bool> running_{true};
    mutable sim::IdleTickets idle_;  // settle's handshake with the device thread
    std::thread thread_;
    std::mutex mutex_;
    std::string received_;
};

// Polls `ready` for up to half a minute (a simulated device answers within
// milliseconds; the bound only keeps a broken test from hanging).
inline bool Eventually(const std::function<bool()>& ready) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!ready()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

// A serial clock that only moves while the program waits on devices that
// have nothing more to say: before a pause, every listed device the program
// has written to since it last settled handles all it was sent; then the
// clock jumps at least 20 ms ahead. A reply time-out therefore passes only
// in silence however slowly a loaded machine runs the devices' threads, and
// a silent device's half-second time-outs pass in a few milliseconds. One at
// a time; it stands for the real clock until destroyed.
class DeviceClock {
  public:
    struct Device {
        std::string path;  // as the program opens it; or
        int fd;            // the descriptor already open on it (-1: none)
        std::function<void()> settle;
    };
    explicit DeviceClock(std::vector<Device> devices) {
        State& s = state();
        s.devices = std::move(devices);
        for (auto& owner : s.owners) owner = -1;
        for (size_t i = 0; i < s.devices.size(); ++i) {
            if (s.devices[i].fd >= 0 && s.devices[i].fd < kDescriptors)
                s.owners[s.devices[i].fd] = static_cast<int>(i);
        }
        s.dirty.assign(s.devices.size(), true);
        s.strangerWrote = true;
        // Never behind what an earlier clock showed, so saved tick counts
        // stay in the past.
        s.start = RealSerialSystem()->microseconds() + s.skipped;
        system_ = *RealSerialSystem();
        system_.openPort = [](const char* path, int flags) {
            const int fd = RealSerialSystem()->openPort(path, flags);
            State& s = state();
            std::lock_guard<std::mutex> lock(s.mutex);
            if (fd >= 0 && fd < kDescriptors) {
                s.owners[fd] = -1;
                for (size_t i = 0; i < s.devices.size(); ++i)
                    if (s.devices[i].path == path) s.owners[fd] = static_cast<int>(i);
            }
            return fd;
        };
        system_.writePort = [](int fd, const void* bytes, size_t count) {
            State& s = state();
            {
                std::lock_guard<std::mutex> lock(s.mutex);
                const int owner = fd >= 0 && fd < kDescriptors ? s.owners[fd] : -1;
                if (owner >= 0)
                    s.dirty[owner] = true;
                else
                    s.strangerWrote = true;
            }
            return RealSerialSystem()->writePort(fd, bytes, count);
        };
        system_.microseconds = [] { return state().start + (state().skipped += 1.0); };
        system_.idle = [](double microseconds) {
            State& s = state();
            std::vector<size_t> due;
            {
                std::lock_guard<std::mutex> lock(s.mutex);
                for (size_t i = 0; i < s.devices.size(); ++i) {
                    if (!s.strangerWrote && !s.dirty[i]) continue;
                    s.dirty[i] = false;
                    due.push_back(i);
                }
                s.strangerWrote = false;
            }
            for (size_t i : due) s.devices[i].settle();
            s.skipped += std::max(microseconds, 20000.0);
        };
        SetSerialSystem(&system_);
    }
    DeviceClock(std::initializer_list<const PtyPeer*> lines) : DeviceClock(devicesOf(lines)) {}
    ~DeviceClock() {
        SetSerialSystem(nullptr);
        state().devices.clear();
    }
    DeviceClock(const DeviceClock&) = delete;
    DeviceClock& operator=(const DeviceClock&) = delete;

  private:
    static constexpr int kDescriptors = 1024;
    // The list is set while no other thread uses the clock; the marks are
    // kept under the mutex, for a program that drives devices from two threads.
    struct State {
        std::mutex mutex;
        std::vector<Device> devices;
        int owners[kDescriptors];  // descriptor -> device, -1 for none
        std::vector<bool> dirty;   // written to since it last settled
        bool strangerWrote;        // a descriptor of no listed device was written to
        double start = 0.0;
        std::atomic<double> skipped{0.0};
    };
    static State& state() {
        static State value;
        return value;
    }
    static std::vector<Device> devicesOf(std::initializer_list<const PtyPeer*> lines) {
        std::vector<Device> out;
        for (const PtyPeer* line : lines)
            out.push_back({line->path(), line->openFd(), [line] { line->settle(); }});
        return out;
    }
    SerialSystem system_;
};

}  // namespace veloran::testing
