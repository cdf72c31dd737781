// AOR receivers. From the AR8000/AR8200 RS-232 command lists: "RFnnnnnnnnnn"
// sets the VFO frequency in hertz (ten digits), "MDn" the mode (0 WFM,
// 1 NFM, 2 AM, 3 USB, 4 LSB, 5 CW), and "LM" answers "LMnnm": the signal
// level as two hexadecimal digits, then "%" when the squelch is closed or a
// blank when it is open. Every command ends in a carriage return.

#include "radio/aor.h"

#include <cstdio>
#include <cstdlib>

#include "radio/drivers.h"
#include "radio/textcommand.h"
#include "serial/serial.h"

namespace veloran {

namespace {

constexpr int kLevelReplyLength = 5;  // "LM", two hex digits, squelch mark
constexpr int kReplyTicks = 30;

LastSent gLast = {0, 0};

// The receive mode for the downlink of a transponder mode; null for UNKNOWN.
const char* ModeFor(int commMode) {
    switch (commMode) {
        case CommMode::REPEATER:  // FM repeaters and packet downlinks
        case CommMode::J_FM:
        case CommMode::SIMP_FM:
        case CommMode::B_FM:
        case CommMode::J_EXP:
            return "MD1\r";
        case CommMode::WIDE_FM:  // broadcast FM width
            return "MD0\r";
        case CommMode::SIMP_AM:
            return "MD2\r";
        case CommMode::JA_CW:  // CW downlinks and receive-only beacons
        case CommMode::B_CW:
        case CommMode::A_CW:
        case CommMode::T_CW:
        case CommMode::RECEIVE_ONLY:
            return "MD5\r";
        case CommMode::JA_SSB:  // every linear transponder is heard on the upper sideband
        case CommMode::B_SSB:
        case CommMode::A_SSB:
        case CommMode::JD_MIX:
        case CommMode::T_SSB:
        case CommMode::SIMP_SSB:
            return "MD3\r";
        default:
            return nullptr;
    }
}

}  // namespace

int SetAORVFO(int fd, double upMHz, double downMHz, int commMode, int gTone, int gCTone, bool force,
              bool debug) {
    (void)upMHz;
    (void)gTone;
    (void)gCTone;
    if (fd == -1) return 0;
    uint32_t down = 0;
    // The uplink takes no part in the "nothing changed" test of a receiver.
    if (!DriverCommonStart(&gLast, 0.0, downMHz, force, nullptr, &down)) return 1;
    const char* mode = ModeFor(commMode);
    if (mode == nullptr) return 1;  // UNKNOWN: leave the receiver alone
    TextCommandLine line{fd, debug};
    line.flush();
    if (force) line.send(mode);
    char command[24];
    std::snprintf(command, sizeof command, "RF%010u\r", down);
    line.send(command);
    return line.ok ? 1 : 0;
}

int SquelchedAOR(int fd, VFORec* vfo, bool debug) {
    if (fd == -1) return 0;
    TextCommandLine line{fd, debug};
    line.flush();
    line.send("LM\r");
    if (!line.ok) return 0;
    unsigned char reply[kLevelReplyLength + 1];
    const int got = readRadioResponse(fd, reply, kLevelReplyLength, kReplyTicks, debug);
    if (got < 4 || reply[0] != 'L' || reply[1] != 'M') {
        if (vfo != nullptr) vfo->signalStrength = 0;
        return 0;
    }
    const char digits[3] = {static_cast<char>(reply[2]), static_cast<char>(reply[3]), 0};
    char* end = nullptr;
    const long level = std::strtol(digits, &end, 16);
    if (vfo != nullptr) vfo->signalStrength = (end == digits + 2) ? static_cast<int32_t>(level) : 0;
    return got == kLevelReplyLength && reply[4] == '%' ? 1 : 0;
}

void ResetAORDriverState() {
    gLast = {0, 0};
}

}  // namespace veloran
