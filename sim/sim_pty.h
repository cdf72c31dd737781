// A simulated serial device on the master side of a pseudo-terminal: the
// program under test opens the slave path as it would a USB serial adapter.
// Used by the radio simulators; shares nothing with the drivers they check.
#pragma once

#include <atomic>
#include <cstdint>
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
    // and acted on (or after a second, if the server is not running).
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

    int master_ = -1;
    int slave_ = -1;  // held open so the master never sees a hang-up between the program's opens
    std::string path_;
    std::thread thread_;
    std::atomic<bool> stopping_{false};
    std::atomic<bool> busy_{false};
    std::atomic<bool> trace_{false};
    std::atomic<bool> mute_{false};  // between taking bytes off the line and answering them
};

}  // namespace veloran::sim
