// A simulated Kenwood TS-2000 on its computer port: ASCII commands ending in
// ';', a query answered with the reply of the radio's length, a set answered
// with nothing, anything it does not know answered with "?;".
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "sim/sim_pty.h"

namespace veloran::sim {

struct Ts2000SimState {
    uint64_t vfoA;  // FA, hertz
    uint64_t vfoB;  // FB, hertz
    char modeA;     // MD of VFO A, '1' LSB ... '5' AM
    char modeB;
    int receiveVfo;          // FR: 0 A, 1 B
    int transmitVfo;         // FT
    std::string satellite;   // SA's seven digits
    bool tone;               // TO
    int toneNumber;          // TN
    bool toneSquelch;        // CT
    int toneSquelchNumber;   // CN
    bool packetClusterTune;  // CM
    bool autoMode;           // AM
    bool packetMode;         // answers a bare CR until "TC 1;"
    int subReceiver;         // SB
    int controls;            // DC, as its two digits
    bool busy;               // squelch open (BY)
    int sMeter;              // SM0, 0..30
};

class Ts2000Simulator : public SimDevice {
  public:
    Ts2000Simulator();

    void receive(uint8_t byte, std::vector<uint8_t>* out) override;

    Ts2000SimState state() const;
    void setState(const Ts2000SimState& state);
    // Nothing is answered.
    void setSilent(bool on);
    // Every reply is replaced by junk of the same length.
    void setGarbage(bool on);
    // Every reply loses its last half.
    void setShortReplies(bool on);

    // Every byte received, and every command (without its ';').
    std::vector<uint8_t> received() const;
    std::vector<std::string> commands() const;
    void clearRecords();

  private:
    std::string handle(const std::string& command);
    char* modeTarget();

    mutable std::mutex mutex_;
    Ts2000SimState state_;
    bool silent_ = false;
    bool garbage_ = false;
    bool short_ = false;
    std::string partial_;
    std::vector<uint8_t> received_;
    std::vector<std::string> commands_;
};

// Runs a simulated TS-2000 on a new pseudo-terminal, prints its path and
// serves until killed. Options: --silent, --garbage, --packet.
int RunTs2000Simulator(int argc, char** argv);

}  // namespace veloran::sim
