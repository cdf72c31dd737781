// A simulated gateway I/O board on a pseudo-terminal: two 8-line ports,
// commands of the form "CPA<8 directions>", "SETPA<n>", "RESPA<n>" and
// "RPA<n>", each ended by a carriage return. Port A line 0 keys the
// transmitter (active low: reset = transmitting), line 1 reads the
// receiver's carrier-operated relay, which a test raises and drops.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "sim/sim_pty.h"

namespace veloran::sim {

class GatewayBoard : public SimDevice {
  public:
    // Line 0 is the push-to-talk output, line 1 the carrier input.
    static constexpr int kPttLine = 0;
    static constexpr int kCarrierLine = 1;

    void receive(uint8_t byte, std::vector<uint8_t>* out) override;

    // The receiver hears a carrier (line 1 reads "1") or not ("0").
    void setCarrier(bool present);
    // The carrier drops by itself after this many more line-1 reads;
    // negative: never.
    void dropCarrierAfterReads(int reads);
    // The board stops answering reads (a cable pulled).
    void setSilent(bool silent) { silent_ = silent; }

    // The transmitter is keyed now (line 0 reset).
    bool keyed() const;
    // Every command received, without its carriage return, in order.
    std::vector<std::string> commands() const;
    // Reads of the carrier line so far.
    int carrierReads() const;
    // Whether the transmitter was keyed at any time while the carrier was
    // present (an announcement over someone's transmission).
    bool keyedOverCarrier() const;

  private:
    void execute(const std::string& command, std::vector<uint8_t>* out);

    mutable std::mutex mutex_;
    std::string line_;
    std::vector<std::string> commands_;
    uint8_t outputs_ = 0xFF;  // every line set: not transmitting
    bool carrier_ = false;
    int dropAfter_ = -1;
    int carrierReads_ = 0;
    bool keyedOverCarrier_ = false;
    std::atomic<bool> silent_{false};
};

// veloran-sim gateway [--carrier]: serves a board until interrupted.
int RunGatewaySimulator(int argc, char** argv);

}  // namespace veloran::sim
