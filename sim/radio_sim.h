// A simulated Yaesu CAT radio on a pseudo-terminal: FT-847, FT-817, FT-100D,
// FT-736R or VR-5000. It decodes the 5-byte command blocks as the radio
// would, keeps the radio's state, answers the read commands, records every
// byte it receives, and can be told to stay silent or be unplugged.
//
// Built from the radios' CAT documentation on its own: it shares no code with
// the drivers it is used to check.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "sim/sim_pty.h"

namespace veloran::sim {

enum class RadioModel { FT847, FT817, FT100D, FT736R, VR5000 };

// "ft847", "FT-847", "ft817", "ft100d", "ft736r", "vr5000" (any case, dashes optional).
bool ParseRadioModel(const std::string& name, RadioModel* model);
const char* RadioModelName(RadioModel model);

// One VFO: frequency in hertz (10 Hz resolution on the wire) and the radio's
// mode code as last commanded.
struct SimVfo {
    uint32_t hertz = 0;
    uint8_t mode = 0;
};

struct SimTone {
    uint8_t mode = 0x8A;  // the last tone-mode parameter (0x8A off)
    uint8_t code = 0;     // one-byte tone code (FT-847, FT-736R)
    int tenths = 0;       // BCD tone in tenths of hertz (FT-817)
};

struct RadioState {
    bool catOn = false;          // FT-847, FT-736R, VR-5000: computer control accepted
    bool satelliteMode = false;  // FT-847 satellite mode, FT-736R full duplex
    bool split = false;          // FT-817
    bool onVfoB = false;         // FT-817: VFO B current
    SimVfo main;                 // main VFO (FT-847, FT-736R, FT-100D, VR-5000)
    SimVfo satRx, satTx;         // satellite receive and transmit VFOs
    SimVfo vfoA, vfoB;           // FT-817
    uint8_t shift = 0x89;        // repeater shift parameter (0x89 simplex)
    uint32_t offsetHertz = 0;    // repeater offset
    SimTone tone, satRxTone, satTxTone;
    uint8_t rxStatus = 0;  // the reply to a receiver-status read
    int blocks = 0;        // command blocks decoded
};

class SimulatedRadio {
  public:
    explicit SimulatedRadio(RadioModel model);
    ~SimulatedRadio();
    SimulatedRadio(const SimulatedRadio&) = delete;
    SimulatedRadio& operator=(const SimulatedRadio&) = delete;

    // Creates the pseudo-terminal and starts answering. False with errno set
    // when no pseudo-terminal could be had.
    bool open();
    // The device path to give the program, e.g. "/dev/pts/7".
    const std::string& devicePath() const { return path_; }

    // A silent radio decodes and records but never answers.
    void setSilent(bool silent) { silent_ = silent; }
    void setRxStatus(uint8_t status);
    // The operator turns the dial: the receive frequency moves by `hertz`.
    void turnDial(int32_t hertz);

    RadioState state() const;
    std::vector<uint8_t> received() const;
    void clearReceived();
    // Waits up to `milliseconds` until at least `count` bytes have arrived.
    bool waitForBytes(size_t count, int milliseconds) const;
    // Returns once everything written so far has been read and answered
    // (half a minute at most, a bound only for a broken test).
    void waitIdle() const;

    // Pulls the plug: the device side of the line closes.
    void unplug();
    void close();

  private:
    void run();
    void handle(const std::array<uint8_t, 5>& block, std::vector<uint8_t>* reply);
    void handle847(const std::array<uint8_t, 5>& b, std::vector<uint8_t>* reply);
    void handle817(const std::array<uint8_t, 5>& b, std::vector<uint8_t>* reply);
    void handle100(const std::array<uint8_t, 5>& b, std::vector<uint8_t>* reply);
    void handle736(const std::array<uint8_t, 5>& b, std::vector<uint8_t>* reply);
    void handleVR5000(const std::array<uint8_t, 5>& b, std::vector<uint8_t>* reply);
    SimVfo* receiveVfo();

    RadioModel model_;
    int master_ = -1;
    int slave_ = -1;
    std::string path_;
    std::atomic<bool> silent_{false};
    std::atomic<bool> running_{false};
    std::thread thread_;
    mutable IdleTickets idle_;  // waitIdle's handshake with the serving thread
    mutable std::mutex mutex_;
    RadioState state_;
    std::vector<uint8_t> received_;
    std::vector<uint8_t> pending_;  // bytes of a block not yet complete
};

}  // namespace veloran::sim
