// A simulated antenna rotor controller on a pseudo-terminal: it reads what a
// program sends to the device path it offers, understands the command set of
// each supported controller, turns a commanded azimuth and elevation into a
// current position that moves at a set speed, answers the position query and
// keeps every byte it received and sent. It shares nothing with the rotor
// drivers it is used to check.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "sim/sim_pty.h"

namespace veloran::sim {

enum class RotorProtocol {
    kGS232,        // "Waaa eee<CR>", "C2<CR>" -> "+0aaa+0eee<CR><LF>"
    kAutoTracker,  // "A:aaa,E:eee<CR>"
    kEasyComm,     // "AZa.a ELe.e<CR>"
    kKLM,          // "PCeee aaa<CR>", then "D<CR>" and "P<CR>"
    kSARtek,       // "P" and one byte, 0..255 for 0..360 degrees; azimuth only
    kSatEL,        // "Paaa eee<CR>", "G<CR>" go, "S<CR>" stop
    kDCU1,         // "AP1nnn;" loads a bearing, "AM1;" moves, ";" stops; azimuth only
    kSpid,         // GS-232 emulation: as kGS232
    kPT,           // 48-byte "$AZaaaELeee...<xor>#" packets
};

// "gs232", "autotracker", "easycomm", "klm", "sartek", "satel", "dcu1",
// "spid", "pt". False for anything else.
bool RotorProtocolFromName(const std::string& name, RotorProtocol* out);
// The names above joined with "|", for usage lines.
const char* RotorProtocolNames();

// One position command as the controller understood it.
struct RotorCommand {
    double azimuth;    // degrees
    double elevation;  // degrees (unchanged for an azimuth-only controller)
    double atSeconds;  // the simulator's clock when it arrived
};

// A copy of the simulator's state at one moment.
struct RotorSimState {
    double commandedAzimuth, commandedElevation;  // degrees
    double currentAzimuth, currentElevation;      // degrees, moving toward the commanded pair
    std::string received;                         // every byte from the program, in order
    std::string sent;                             // every byte of the replies
    std::vector<RotorCommand> commands;           // position commands, in order
    std::vector<std::string> controls;            // every other command word, in order
    int badPackets;                               // PT packets with a wrong XOR byte or frame
};

struct RotorSim {
    RotorProtocol protocol = RotorProtocol::kGS232;
    double degreesPerSecond = 6.0;  // speed of both axes
    // Seconds on the simulator's clock; a test may install a virtual clock.
    std::function<double()> clock;

    int master = -1;            // our side of the pseudo-terminal
    int slave = -1;             // held open so the device never hangs up between users
    char slavePath[128] = {0};  // the device path a program opens

    std::mutex mutex;  // guards everything below against the serving thread
    double commandedAzimuth = 0.0, commandedElevation = 0.0;
    double currentAzimuth = 0.0, currentElevation = 0.0;
    double lastMoveSeconds = 0.0;
    double dcu1Bearing = 0.0;  // loaded by "AP1", driven to by "AM1"
    std::string received, sent, pending;
    std::vector<RotorCommand> commands;
    std::vector<std::string> controls;
    int badPackets = 0;

    std::thread worker;
    std::atomic<bool> running{false};
    IdleTickets idle;                // WaitForRotorSimIdle's handshake with the serving thread
    std::atomic<bool> mute{false};   // read and act, answer nothing
    std::atomic<bool> trace{false};  // every byte in and out on standard error
};

// Creates the pseudo-terminal and puts the rotor at rest at (azimuth,
// elevation). False, with nothing open, when no pseudo-terminal is available.
bool OpenRotorSim(RotorSim* sim, RotorProtocol protocol, double degreesPerSecond,
                  double azimuth = 0.0, double elevation = 0.0);
// Stops the serving thread and closes both sides.
void CloseRotorSim(RotorSim* sim);

// Waits up to waitMs for bytes, then reads, understands and answers all that
// came. Returns the byte count read (0 on time-out), -1 when the simulator is
// not open.
int ServeRotorSim(RotorSim* sim, int waitMs);
// Serves in a thread of its own until CloseRotorSim or StopRotorSimThread.
void StartRotorSimThread(RotorSim* sim);
void StopRotorSimThread(RotorSim* sim);

// The state now, the current position brought up to the clock first.
RotorSimState RotorSimSnapshot(RotorSim* sim);
// Returns once everything the program has written so far has been read and
// answered (serving itself when no thread runs); half a minute at most, a
// bound only for a broken test.
void WaitForRotorSimIdle(RotorSim* sim);
// Waits (serving itself when no thread runs) until at least `count` bytes
// have been received; false after timeoutMs.
bool WaitForRotorSimBytes(RotorSim* sim, size_t count, int timeoutMs);

}  // namespace veloran::sim
