// The Kenwood TS-2000 driver: start-up probe, satellite and split set-up,
// tones, VFOs, squelch and dial read-back.

#include "radio/kenwood.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "radio/drivers.h"
#include "radio/tuning.h"
#include "serial/serial.h"

namespace veloran {

namespace {

// Satellite-mode strings: off; on and controlling the downlink (VFO A side);
// on and controlling the uplink (VFO B side).
constexpr char kSatOff[] = "SA0100000;";
constexpr char kSatDownlink[] = "SA1010000;";
constexpr char kSatUplink[] = "SA1011000;";

constexpr char kModeLSB[] = "MD1;";
constexpr char kModeUSB[] = "MD2;";
constexpr char kModeCW[] = "MD3;";
constexpr char kModeFM[] = "MD4;";
constexpr char kModeAM[] = "MD5;";

// Fixed VFO A frequencies CheckSatMode writes before the real VFOs are set.
constexpr long long kSatCheckHfUplinkHz = 144111111;
constexpr long long kSatCheckOtherHz = 59111111;

// The pause between writing VFO B and VFO A, kept as the radio has always
// been driven.
constexpr double kVfoGapMicroseconds = 13000.0;

constexpr int kFrequencyDigits = 11;

struct KenwoodState {
    LastSent ts2000;
    TS2000StartFlags start;
};
KenwoodState gKenwood = {};

// Every command goes out after whatever the radio sent before is dropped.
void send(int fd, const char* text, bool debug) {
    flushRadioInput(fd, debug);
    sendRadioCommand(fd, text, static_cast<int>(std::strlen(text)), debug);
}

// Sends a query and reads its reply of `count` bytes into `reply`, which holds
// count + 1; returns the bytes that came.
int ask(int fd, const char* query, char* reply, int count, int ticks, bool debug) {
    send(fd, query, debug);
    return readRadioResponse(fd, reinterpret_cast<unsigned char*>(reply), count, ticks, debug);
}

void sendNumbered(int fd, const char* format, long long value, bool debug) {
    char command[32];
    std::snprintf(command, sizeof command, format, value);
    send(fd, command, debug);
}

// The operating modes of the FM-type transponder modes, first for the
// uplink side and second for the downlink side. J_EXP is USB up and FM down.
const char* firstFmTypeMode(int commMode) {
    if (commMode == CommMode::SIMP_AM) return kModeAM;
    if (commMode == CommMode::SIMP_SSB || commMode == CommMode::J_EXP) return kModeUSB;
    return kModeFM;
}

const char* secondFmTypeMode(int commMode) {
    if (commMode == CommMode::SIMP_AM) return kModeAM;
    if (commMode == CommMode::SIMP_SSB) return kModeUSB;
    return kModeFM;
}

bool isFmType(int commMode) {
    switch (commMode) {
        case CommMode::REPEATER:
        case CommMode::J_FM:
        case CommMode::SIMP_FM:
        case CommMode::B_FM:
        case CommMode::WIDE_FM:
        case CommMode::SIMP_AM:
        case CommMode::SIMP_SSB:
        case CommMode::J_EXP:
            return true;
        default:
            return false;
    }
}

double megahertz(uint32_t hertz) {
    return hertz / 1000000.0;
}

void setUpFmType(int fd, uint32_t up, uint32_t down, int commMode, int gTone, int gCTone,
                 bool debug) {
    if (Band(megahertz(up)) != Band(megahertz(down))) {
        send(fd, kSatUplink, debug);
        send(fd, firstFmTypeMode(commMode), debug);
        DoTone(fd, gTone, debug);
        send(fd, kSatDownlink, debug);
        send(fd, secondFmTypeMode(commMode), debug);
        DoCTone(fd, gCTone, debug);
        // Given hertz where every other caller gives MHz; kept as the radio
        // has always been driven.
        CheckSatMode(fd, static_cast<double>(up), static_cast<double>(down), debug);
        return;
    }
    // Both ends in one band: the main transceiver alone, receiving on VFO A
    // with the tone squelch and transmitting on VFO B with the repeater tone.
    send(fd, "SB0;", debug);  // sub receiver off
    send(fd, "RX0;", debug);
    send(fd, "TX0;", debug);
    send(fd, "DC00;", debug);  // transmit and controls on the main band
    DoCTone(fd, gCTone, debug);
    send(fd, "FR1;", debug);  // VFO B for the uplink's mode and tone
    send(fd, secondFmTypeMode(commMode), debug);
    DoTone(fd, gTone, debug);
    send(fd, "FR0;", debug);
    send(fd, secondFmTypeMode(commMode), debug);
    SetSplit(fd, true, debug);
}

void setUpSatellite(int fd, double upMHz, double downMHz, int commMode, bool debug) {
    switch (commMode) {
        case CommMode::JA_SSB:
        case CommMode::B_SSB:
        case CommMode::JA_CW:
        case CommMode::B_CW: {  // inverting: the sidebands swap over
            const bool cw = commMode == CommMode::JA_CW || commMode == CommMode::B_CW;
            send(fd, kSatDownlink, debug);
            send(fd, cw ? kModeCW : commMode == CommMode::JA_SSB ? kModeUSB : kModeLSB, debug);
            send(fd, kSatUplink, debug);
            send(fd, cw ? kModeCW : commMode == CommMode::JA_SSB ? kModeLSB : kModeUSB, debug);
            break;
        }
        case CommMode::A_SSB:
        case CommMode::A_CW:
        case CommMode::T_SSB:
        case CommMode::T_CW: {
            const char* mode =
                commMode == CommMode::A_SSB || commMode == CommMode::T_SSB ? kModeUSB : kModeCW;
            send(fd, kSatUplink, debug);
            send(fd, mode, debug);
            send(fd, kSatDownlink, debug);
            send(fd, mode, debug);
            break;
        }
        default:  // 11, JD_MIX: FM up, USB down
            send(fd, kSatUplink, debug);
            send(fd, kModeFM, debug);
            send(fd, kSatDownlink, debug);
            send(fd, kModeUSB, debug);
            break;
    }
    CheckSatMode(fd, upMHz, downMHz, debug);
}

}  // namespace

void Kenwood11Digits(long long value, char* text) {
    if (!text) return;
    std::snprintf(text, kFrequencyDigits + 1, "%011lld", value);
}

void StartTS2000(int fd, bool debug) {
    if (fd == -1) return;
    flushRadioInput(fd, debug);
    // A radio left in packet (terminal) mode answers a bare carriage return;
    // "TC 1;" takes it back to computer control.
    send(fd, "\r", debug);
    gKenwood.start.sPacketWasOn = flushRadioInput(fd, debug) > 0;
    if (gKenwood.start.sPacketWasOn) {
        send(fd, "TC 1;", debug);
        flushRadioInput(fd, debug);
    }
    char reply[8];
    const int cm = ask(fd, "CM;", reply, 4, 30, debug);
    gKenwood.start.sPacketClusterTune = cm >= 4 && reply[3] == '1';
    if (gKenwood.start.sPacketClusterTune) send(fd, "CM0;", debug);
    const int am = ask(fd, "AM;", reply, 4, 30, debug);
    gKenwood.start.sAutoModeOn = am >= 4 && reply[3] == '1';
    if (gKenwood.start.sAutoModeOn) send(fd, "AM0;", debug);
}

void KillTS2000(int, bool) {}

int SetTS2000VFO(int fd, double upMHz, double downMHz, int commMode, int gTone, int gCTone,
                 bool force, bool debug) {
    if (fd == -1) return 0;
    uint32_t up = 0;
    uint32_t down = 0;
    if (!DriverCommonStart(&gKenwood.ts2000, upMHz, downMHz, force, &up, &down)) return 1;
    flushRadioInput(fd, debug);
    if (force) {
        send(fd, kSatOff, debug);
        char reply[8];
        if (ask(fd, "FR;", reply, 4, 20, debug) < 4) return 0;
        if (reply[2] != '0') {
            send(fd, "FR0;", debug);
            flushRadioInput(fd, debug);
        }
        DoTone(fd, 0, debug);
        DoCTone(fd, 0, debug);
    }
    if (commMode == CommMode::UNKNOWN) return 1;
    if (commMode == CommMode::RECEIVE_ONLY) {
        if (force && down != 0) {
            send(fd, kSatDownlink, debug);
            send(fd, kModeCW, debug);
        }
        up = 0;  // receive only: VFO B keeps what it has
    } else if (force && commMode >= CommMode::REPEATER && commMode <= CommMode::J_EXP) {
        if (isFmType(commMode))
            setUpFmType(fd, up, down, commMode, gTone, gCTone, debug);
        else
            setUpSatellite(fd, megahertz(up), megahertz(down), commMode, debug);
    }
    Set_Kenwood_VFOS(fd, up, down, debug);
    flushRadioInput(fd, debug);
    return 1;
}

void Set_Kenwood_VFOS(int fd, uint32_t upHz, uint32_t downHz, bool debug) {
    if (fd == -1) return;
    flushRadioInput(fd, debug);
    if (upHz != 0) sendNumbered(fd, "FB%011lld;", upHz, debug);
    MicrosecondDelay(kVfoGapMicroseconds, 1);
    flushRadioInput(fd, debug);
    if (downHz != 0) sendNumbered(fd, "FA%011lld;", downHz, debug);
}

void CheckSatMode(int fd, double upMHz, double downMHz, bool debug) {
    if (fd == -1) return;
    if (Band(upMHz) == -1 || Band(downMHz) == -1) return;
    flushRadioInput(fd, debug);
    sendNumbered(fd, "FA%011lld;", Band(upMHz) == 1 ? kSatCheckHfUplinkHz : kSatCheckOtherHz,
                 debug);
    flushRadioInput(fd, debug);
}

void DoTone(int fd, int index, bool debug) {
    if (fd == -1) return;
    flushRadioInput(fd, debug);
    char reply[8];
    if (ask(fd, "TO;", reply, 4, 30, debug) < 4) return;
    if (index != 0) {
        if (reply[2] == '0') {
            sendNumbered(fd, "TN%02lld;", index, debug);
            flushRadioInput(fd, debug);
            send(fd, "TO1;", debug);
        }
    } else if (reply[2] == '1') {
        send(fd, "TO0;", debug);
    }
    flushRadioInput(fd, debug);
}

void DoCTone(int fd, int index, bool debug) {
    if (fd == -1) return;
    flushRadioInput(fd, debug);
    char reply[8];
    if (ask(fd, "CT;", reply, 4, 20, debug) < 4) return;
    if (index == 0 && reply[2] == '1') {
        send(fd, "CT0;", debug);
    } else if (index != 0 && reply[2] == '0') {
        sendNumbered(fd, "CN%02lld;", index, debug);
        flushRadioInput(fd, debug);
        send(fd, "CT1;", debug);
    }
    flushRadioInput(fd, debug);
}

void SetSplit(int fd, bool on, bool debug) {
    if (fd == -1) return;
    flushRadioInput(fd, debug);
    send(fd, "FR0;", debug);
    flushRadioInput(fd, debug);
    send(fd, on ? "FT1;" : "FT0;", debug);
    flushRadioInput(fd, debug);
}

int SquelchedTS2000(int fd, VFORec* vfo, bool debug) {
    if (fd == -1) return 1;
    char reply[16];
    // BY: busy, P1 the main receiver: '1' while a signal opens the squelch.
    const int by = ask(fd, "BY;", reply, 5, 10, debug);
    const bool closed = !(by >= 3 && reply[2] == '1');
    const int sm = ask(fd, "SM0;", reply, 8, 10, debug);
    if (sm >= 5 && vfo) {
        const char digits[3] = {reply[3], reply[4], '\0'};
        long level = 0;
        if (std::sscanf(digits, "%ld", &level) == 1)
            vfo->signalStrength = static_cast<int32_t>(level);
    }
    return closed ? 1 : 0;
}

int DownLinkChangedTS2000(int fd, int32_t* changeHz, bool debug) {
    if (fd == -1) return 0;
    flushRadioInput(fd, debug);
    char reply[40];
    if (ask(fd, "IF;", reply, 38, 30, debug) < 38) return 0;
    char digits[kFrequencyDigits + 1];
    std::memcpy(digits, reply + 2, kFrequencyDigits);
    digits[kFrequencyDigits] = '\0';
    long hertz = 0;
    if (std::sscanf(digits, "%ld", &hertz) != 1 || hertz <= 0) return 0;
    LastSent* last = &gKenwood.ts2000;
    if (last->down == 0 || static_cast<uint32_t>(hertz) == last->down) return 0;
    if (changeHz) *changeHz = static_cast<int32_t>(hertz - static_cast<long>(last->down));
    last->down = static_cast<uint32_t>(hertz);
    return 1;
}

TS2000StartFlags TS2000StartState() {
    return gKenwood.start;
}

void ResetKenwoodDriverState() {
    gKenwood = {};
}

}  // namespace veloran
