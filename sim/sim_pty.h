// A simulated serial device on the master side of a pseudo-terminal: the
// program under test opens the slave path as it would a USB serial adapter.
// Used by the radio simulators; shares nothing with the drivers they check.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace veloran::sim {

// Bytes from the program in, bytes back to it out. Called on the serving
// thread one byte at a time, so a device can answer between two bytes (the
// CI-V bus echo does).
class SimDevice {
  public:
    virtual ~SimDevice() = default;
    virtual void receive(uint8_t byte, std::vector<uint8_t>* out) = 0;
};

// How a waiting thread learns that a serving thread has handled everything
// the program sent before it asked: ask() hands out a ticket; the serving
// thread reads asked() before each read of its line and passes that to
// seen() when the read finds the line empty (the kernel hands over bytes
// still in transit before it says so); wait() returns once the ticket is seen.
class IdleTickets {
  public:
    uint64_t ask() { return ++asked_; }
    uint64_t asked() const { return asked_.load(); }
    // Whether a waiter is owed an answer: the serving thread then looks at
    // its line without waiting.
    bool owed() const { return asked_.load() > seen_.load(); }
    void seen(uint64_t ticket) {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (ticket <= seen_.load()) return;
            seen_ = ticket;
        }
        changed_.notify_all();
    }
    // False when `bound` passed first (a device that is broken or gone).
    bool wait(uint64_t ticket, std::chrono::milliseconds bound) {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, bound, [&] { return seen_.load() >= ticket; });
    }

  private:
    std::atomic<uint64_t> asked_{0};
    std::mutex mutex_;
    std::condition_variable changed_;
    std::atomic<uint64_t> seen_{0};
};

class PtyServer {
  public:
    PtyServer() = default;
    ~PtyServer();
    PtyServer(const PtyServer&) = delete;
    PtyServer& operator=(const PtyServer&) = delete;

    // Makes the pseudo-terminal (raw, no echo of its own). False on failure.
    bool open();
    // The path the program opens.
    const std::string& path() const { return path_; }
    // Serves `device` on a thread until stop() or destruction.
    void start(SimDevice* device);
    void stop();
    // Returns once everything the program has written so far has been read
    // and acted on, and the answers are on their way back: the serving thread
    // has found the line empty after the call began (at once when the server
    // is not running; half a minute at most, a bound for a broken device).
    void waitIdle() const;
    // Serves `device` on the calling thread, for ever.
    void serveForever(SimDevice* device);
    // Traces every byte in and out on standard error.
    void setTrace(bool on) { trace_ = on; }
    // The device stops answering: what the program sends is still read and
    // acted on, but nothing goes back.
    void setMute(bool on) { mute_ = on; }
    // Pulls the plug: stops serving and closes both sides, so the program
    // sees a hang-up.
    void hangUp();

  private:
    void serve(SimDevice* device);
    bool pump(SimDevice* device, int waitMilliseconds);
    void answer(const std::vector<uint8_t>& bytes);

    int master_ = -1;
    int slave_ = -1;  // held open so the master never sees a hang-up between the program's opens
    std::string path_;
    int wake_ = -1;  // an eventfd that cuts the serving thread's wait short
    std::thread thread_;
    std::atomic<bool> stopping_{false};
    mutable IdleTickets idle_;  // waitIdle's handshake with the serving thread
    std::atomic<bool> trace_{false};
    std::atomic<bool> mute_{false};  // between taking bytes off the line and answering them
};

}  // namespace veloran::sim
