// A simulated Icom CI-V radio (IC-910, IC-821 or IC-706) as it looks from the
// computer's side of a CI-V interface: every byte sent comes back as the bus
// echo, frames addressed to the radio are acted on and answered with FB (done),
// FA (refused) or the data asked for.
#pragma once

#include <cstdint>
#include <mutex>
#include <vector>

#include "sim/sim_pty.h"

namespace veloran::sim {

enum class IcomModel { IC910, IC821, IC706 };

// Mode bytes as the radio reports them.
enum IcomSimMode : uint8_t {
    kSimLSB = 0,
    kSimUSB = 1,
    kSimAM = 2,
    kSimCW = 3,
    kSimFM = 5,
    kSimWFM = 6
};

struct IcomSimVfo {
    uint32_t hertz;
    uint8_t mode;
};

struct IcomSimBand {
    IcomSimVfo vfo[2];  // A, B
    int current;        // 0 = VFO A
};

struct IcomSimState {
    IcomSimBand main;
    IcomSimBand sub;   // unused on the IC-706
    bool subSelected;  // commands act on the sub band
    bool satelliteMode;
    bool subBandOn;  // IC-910 sub band display/receiver
    uint8_t duplex;  // 0x10 simplex, 0x11 minus, 0x12 plus
    bool split;
    uint32_t offsetHertz;  // duplex offset
    bool repeaterTone;
    bool toneSquelch;
    int toneTenths;  // last tone programmed, tenths of hertz
    bool transmitting;
    int bandExchanges;  // how often main and sub changed places
};

class IcomSimulator : public SimDevice {
  public:
    IcomSimulator(IcomModel model, uint8_t address);

    void receive(uint8_t byte, std::vector<uint8_t>* out) override;

    IcomSimState state() const;
    void setState(const IcomSimState& state);
    // The PTT is pressed: the transmit-state query answers 1.
    void setTransmitting(bool on);
    // The radio is off: the interface still echoes, nothing answers.
    void setSilent(bool on);
    // No interface on the line at all: not even the echo comes back.
    void setEcho(bool on);
    // Every reply is replaced by junk of the same length.
    void setGarbage(bool on);
    // Every reply loses its last half, as when the radio is switched off
    // mid-answer.
    void setShortReplies(bool on);

    // Every byte received, and every complete frame addressed to the radio.
    std::vector<uint8_t> received() const;
    std::vector<std::vector<uint8_t>> frames() const;
    void clearRecords();

  private:
    void handleFrame(const std::vector<uint8_t>& frame, std::vector<uint8_t>* reply);
    IcomSimBand& band();

    IcomModel model_;
    uint8_t address_;
    mutable std::mutex mutex_;
    IcomSimState state_;
    bool silent_ = false;
    bool echo_ = true;
    bool garbage_ = false;
    bool short_ = false;
    std::vector<uint8_t> partial_;
    std::vector<uint8_t> received_;
    std::vector<std::vector<uint8_t>> frames_;
};

// "ic910", "ic821" or "ic706" (also "IC-910" and the like); false otherwise.
bool IcomModelFromName(const char* name, IcomModel* model);
// The model's usual CI-V address: 0x60, 0x4C, 0x48.
uint8_t IcomDefaultAddress(IcomModel model);

// Runs a simulated radio on a new pseudo-terminal, prints its path and serves
// until killed. Options: --address 0xNN, --transmitting, --silent, --garbage.
// Returns non-zero only when it cannot start.
int RunIcomSimulator(const char* model, int argc, char** argv);

}  // namespace veloran::sim
