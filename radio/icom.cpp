// The Icom set-frequencies and dial drivers: IC-910, IC-820/821/970 and the
// IC-706 family, with the satellite set-up each forced update sends.

#include "radio/icom.h"

#include "radio/drivers.h"
#include "radio/tuning.h"
#include "serial/serial.h"

namespace veloran {

namespace {

constexpr int8_t kNoMode = -1;

// How the IC-821 family's forced update sets the operating modes.
enum class Setup821 : uint8_t {
    None,
    MainThenVfoB,   // single channel: main band VFO A, then VFO B, each + simplex
    MainAndSub,     // main band, then sub band, each + simplex
    MainOnly,       // main band + simplex
    MainNoSimplex,  // main band, no simplex command
    SubOnly,        // sub band + simplex
};

// Where the IC-821 family's frequencies go on every update.
enum class Tuning821 : uint8_t {
    None,
    SplitVfos,      // uplink on VFO B, downlink on VFO A, duplex and split
    SubDownMainUp,  // downlink on the sub band, uplink on the main band
    UplinkHere,     // the uplink on whatever band is current
    DownlinkHere,   // the downlink on whatever band is current
};

// Per-model operating modes for one transponder mode (commMode). The IC-910
// and IC-821 columns are deliberately not mirror images: JD_MIX transmits FM
// and receives USB, J_EXP transmits USB and receives FM.
struct CivModeRow {
    int8_t ic910Single;  // single-channel modes on the main band
    int8_t ic910Up;      // two-band modes: sub band (uplink)
    int8_t ic910Down;    // two-band modes: main band (downlink)
    int8_t ic821Main;
    int8_t ic821Sub;  // also the VFO B mode of a single-channel mode
    Setup821 ic821Setup;
    Tuning821 ic821Tuning;
    int8_t ic706;
};

constexpr int8_t L = kCivModeLSB, U = kCivModeUSB, A = kCivModeAM, C = kCivModeCW, F = kCivModeFM,
                 W = kCivModeWFM, N = kNoMode;

// Indexed by commMode + 1 (receive-only -1 first).
constexpr CivModeRow kCivModes[19] = {
    // IC-910 single, up, down; IC-821 main, sub, set-up, tuning; IC-706
    {N, N, N, N, C, Setup821::SubOnly, Tuning821::DownlinkHere, C},        // -1 receive only
    {N, N, N, N, N, Setup821::None, Tuning821::None, N},                   // 0 UNKNOWN
    {F, N, N, F, F, Setup821::MainThenVfoB, Tuning821::SplitVfos, F},      // 1 REPEATER
    {N, F, F, F, F, Setup821::MainAndSub, Tuning821::SubDownMainUp, F},    // 2 J_FM
    {N, L, U, L, U, Setup821::MainAndSub, Tuning821::SubDownMainUp, U},    // 3 JA_SSB
    {N, L, U, L, U, Setup821::MainAndSub, Tuning821::SubDownMainUp, U},    // 4 B_SSB
    {N, L, U, U, N, Setup821::MainOnly, Tuning821::UplinkHere, U},         // 5 A_SSB
    {F, N, N, F, F, Setup821::MainThenVfoB, Tuning821::SplitVfos, F},      // 6 SIMP_FM
    {N, C, C, C, C, Setup821::MainAndSub, Tuning821::SubDownMainUp, C},    // 7 JA_CW
    {N, C, C, C, C, Setup821::MainAndSub, Tuning821::SubDownMainUp, C},    // 8 B_CW
    {N, C, C, C, N, Setup821::MainOnly, Tuning821::UplinkHere, C},         // 9 A_CW
    {N, F, F, F, F, Setup821::MainAndSub, Tuning821::SubDownMainUp, F},    // 10 B_FM
    {N, F, U, F, U, Setup821::MainAndSub, Tuning821::SubDownMainUp, U},    // 11 JD_MIX
    {F, N, N, F, F, Setup821::MainThenVfoB, Tuning821::SplitVfos, W},      // 12 WIDE_FM
    {N, L, U, U, N, Setup821::MainNoSimplex, Tuning821::DownlinkHere, U},  // 13 T_SSB
    {N, C, C, C, N, Setup821::MainNoSimplex, Tuning821::DownlinkHere, C},  // 14 T_CW
    {A, N, N, A, A, Setup821::MainThenVfoB, Tuning821::SplitVfos, A},      // 15 SIMP_AM
    {U, N, N, U, U, Setup821::MainThenVfoB, Tuning821::SplitVfos, U},      // 16 SIMP_SSB
    {N, U, F, U, F, Setup821::MainAndSub, Tuning821::SubDownMainUp, F},    // 17 J_EXP
};

const CivModeRow* rowFor(int commMode) {
    if (commMode < CommMode::RECEIVE_ONLY || commMode > CommMode::J_EXP) return nullptr;
    return &kCivModes[commMode + 1];
}

struct IcomState {
    LastSent ic910;
    LastSent ic821;  // shared by the IC-820, IC-821 and IC-970
    LastSent ic706;
    bool s_modeJ;  // the IC-821's main and sub bands are exchanged
};
IcomState gIcom = {};

// The IC-821 needs its bands exchanged for mode J: uplink on 2 m, downlink
// on 70 cm.
constexpr uint32_t kModeJDownlinkAboveHz = 400000000;
constexpr uint32_t kModeJUplinkBelowHz = 200000000;

double megahertz(uint32_t hertz) {
    return hertz / 1000000.0;
}

// A frame with its acknowledgement read and not looked at.
void sendAndAck(int fd, const unsigned char* frame, int length, bool debug) {
    SendIcomRadioCommand(fd, frame, length, debug);
    unsigned char reply[kCivAckLength + 1];
    readRadioResponse(fd, reply, kCivAckLength, kCivReplyTicks, debug);
}

void sendSub(int fd, uint8_t address, uint8_t command, uint8_t sub, bool debug) {
    unsigned char frame[kCivMaxFrame];
    sendAndAck(fd, frame, IcomCommandSubNoData(address, frame, command, sub), debug);
}

void sendSwitch(int fd, uint8_t address, uint8_t command, uint8_t sub, bool on, bool debug) {
    const unsigned char data = on ? kCivOn : kCivOff;
    unsigned char frame[kCivMaxFrame];
    sendAndAck(fd, frame, IcomCommandSubAndData(address, frame, command, sub, &data, 1), debug);
}

// 1 when the IC-910 says it is transmitting. Radios that answer the query
// differently, or not at all, never hold the update back.
bool transmitting910(int fd, uint8_t address, bool debug) {
    unsigned char frame[kCivMaxFrame];
    SendIcomRadioCommand(fd, frame,
                         IcomCommandSubNoData(address, frame, kCivTransmitState, kCivTransmitting),
                         debug);
    unsigned char reply[kCivTransmitStateReplyLength + 1];
    if (!ReadAndCheckIcomFlag(fd, address, reply, kCivTransmitState, kCivTransmitStateReplyLength,
                              kCivReplyTicks, debug)) {
        return false;
    }
    return reply[6] == kCivOn;
}

int set910SingleChannel(int fd, uint8_t a, const CivModeRow& row, uint32_t up, uint32_t down,
                        int gTone, int gCTone, bool force, bool debug) {
    if (force) {
        Set910SatMode(fd, a, false, debug);
        if (!SetIcomBandVFO(fd, a, kCivMainBand, debug)) return 0;
        sendSub(fd, a, kCivSplitDuplex, kCivSplitOff, debug);
        SetIcomBandVFO(fd, a, kCivVfoA, debug);
        SetIcomMode(fd, a, static_cast<uint8_t>(row.ic910Single), debug);
        Set910SubBand(fd, a, false, debug);
        Set910Tone(fd, a, gTone != 0 && gCTone == 0, debug);
        Set910CTone(fd, a, gCTone, debug);
    }
    // Retuning while the operator transmits would pull the transmitter off
    // the repeater's input mid-over.
    if (transmitting910(fd, a, debug)) return 1;
    unsigned char offset[3];
    IcomBCD3((up > down ? up - down : down - up) / 100, offset);
    unsigned char frame[kCivMaxFrame];
    sendAndAck(fd, frame, IcomCommandNoSubData(a, frame, kCivDuplexOffset, offset, 3), debug);
    SetIcomBandVFO(fd, a, kCivVfoA, debug);
    SetIcomFrequency(fd, a, down, debug);
    sendSub(fd, a, kCivSplitDuplex, down > up ? kCivDuplexMinus : kCivDuplexPlus, debug);
    return 1;
}

int set910TwoBand(int fd, uint8_t a, const CivModeRow& row, uint32_t up, uint32_t down, int gTone,
                  int gCTone, bool force, bool debug) {
    if (force) {
        Set910SubBand(fd, a, true, debug);
        Set910SatMode(fd, a, true, debug);
        if (!SetIcomBandVFO(fd, a, kCivSubBand, debug)) return 0;
        SetIcomMode(fd, a, static_cast<uint8_t>(row.ic910Up), debug);
        Set910Tone(fd, a, gTone != 0 && gCTone == 0, debug);
        SetIcomBandVFO(fd, a, kCivMainBand, debug);
        SetIcomMode(fd, a, static_cast<uint8_t>(row.ic910Down), debug);
        Set910CTone(fd, a, gCTone, debug);
    }
    SetIcomBandVFO(fd, a, kCivSubBand, debug);
    SetIcomFrequency(fd, a, up, debug);
    SetIcomBandVFO(fd, a, kCivMainBand, debug);
    SetIcomFrequency(fd, a, down, debug);
    return 1;
}

// One "set" of the IC-821 family: band, VFO A, mode, and optionally simplex.
void set821Band(int fd, uint8_t a, uint8_t band, int8_t mode, bool simplex, bool debug) {
    SetIcomBandVFO(fd, a, band, debug);
    SetIcomBandVFO(fd, a, kCivVfoA, debug);
    SetIcomMode(fd, a, static_cast<uint8_t>(mode), debug);
    if (simplex) IcomCommand(fd, a, kCivSplitDuplex, kCivSimplex, nullptr, false, debug);
}

void setup821(int fd, uint8_t a, const CivModeRow& row, bool debug) {
    switch (row.ic821Setup) {
        case Setup821::MainThenVfoB:
            set821Band(fd, a, kCivMainBand, row.ic821Main, true, debug);
            SetIcomBandVFO(fd, a, kCivVfoB, debug);
            SetIcomMode(fd, a, static_cast<uint8_t>(row.ic821Sub), debug);
            IcomCommand(fd, a, kCivSplitDuplex, kCivSimplex, nullptr, false, debug);
            break;
        case Setup821::MainAndSub:
            set821Band(fd, a, kCivMainBand, row.ic821Main, true, debug);
            set821Band(fd, a, kCivSubBand, row.ic821Sub, true, debug);
            break;
        case Setup821::MainOnly:
            set821Band(fd, a, kCivMainBand, row.ic821Main, true, debug);
            break;
        case Setup821::MainNoSimplex:
            set821Band(fd, a, kCivMainBand, row.ic821Main, false, debug);
            break;
        case Setup821::SubOnly:
            set821Band(fd, a, kCivSubBand, row.ic821Sub, true, debug);
            break;
        case Setup821::None:
            break;
    }
}

void tune821(int fd, uint8_t a, const CivModeRow& row, uint32_t up, uint32_t down, bool debug) {
    switch (row.ic821Tuning) {
        case Tuning821::SplitVfos:
            SetIcomBandVFO(fd, a, kCivVfoB, debug);
            SetIcomFrequency(fd, a, up, debug);
            // The two ways back to VFO A differ only in whether the
            // acknowledgement is waited for; kept as the radio was first
            // driven.
            if (down <= up)
                SetIcomBandVFO(fd, a, kCivVfoA, debug);
            else
                IcomCommand(fd, a, kCivSelect, kCivVfoA, nullptr, false, debug);
            SetIcomFrequency(fd, a, down, debug);
            IcomCommand(fd, a, kCivSplitDuplex, down <= up ? kCivDuplexPlus : kCivDuplexMinus,
                        nullptr, false, debug);
            IcomCommand(fd, a, kCivSplitDuplex, kCivSplitOn, nullptr, false, debug);
            break;
        case Tuning821::SubDownMainUp:
            SetIcomBandVFO(fd, a, kCivSubBand, debug);
            SetIcomFrequency(fd, a, down, debug);
            SetIcomBandVFO(fd, a, kCivMainBand, debug);
            SetIcomFrequency(fd, a, up, debug);
            break;
        case Tuning821::UplinkHere:
            SetIcomFrequency(fd, a, up, debug);
            break;
        case Tuning821::DownlinkHere:
            SetIcomFrequency(fd, a, down, debug);
            break;
        case Tuning821::None:
            break;
    }
}

int downLinkChanged(LastSent* last, int fd, uint8_t address, int32_t* changeHz, bool debug) {
    const uint32_t onRadio = GetIcomRadioDownLinkCycles(fd, address, debug);
    if (onRadio == 0 || last->down == 0 || onRadio == last->down) return 0;
    if (changeHz) *changeHz = static_cast<int32_t>(static_cast<int64_t>(onRadio) - last->down);
    last->down = onRadio;
    return 1;
}

}  // namespace

void Set910SatMode(int fd, uint8_t address, bool on, bool debug) {
    if (fd == -1) return;
    sendSwitch(fd, address, kCivSettings, kCivSatelliteMode, on, debug);
}

void Set910SubBand(int fd, uint8_t address, bool on, bool debug) {
    if (fd == -1) return;
    sendSwitch(fd, address, kCivSettings, kCivSubBandOnOff, on, debug);
}

void Set910Tone(int fd, uint8_t address, bool on, bool debug) {
    if (fd == -1) return;
    // The repeater tone is always programmed from table entry 1; the tone the
    // mode asks for reaches the radio only through the tone squelch.
    if (on) SendTone(fd, address, 1, debug);
    sendSwitch(fd, address, kCivFunction, kCivRepeaterTone, on, debug);
}

void Set910CTone(int fd, uint8_t address, int toneIndex, bool debug) {
    if (fd == -1) return;
    if (toneIndex != 0) SendTone(fd, address, toneIndex, debug);
    sendSwitch(fd, address, kCivFunction, kCivToneSquelch, toneIndex != 0, debug);
}

int Set910VFO(int fd, int address, double upMHz, double downMHz, int commMode, int gTone,
              int gCTone, bool force, bool debug) {
    if (fd == -1) return 0;
    uint32_t up = 0;
    uint32_t down = 0;
    if (!DriverCommonStart(&gIcom.ic910, upMHz, downMHz, force, &up, &down)) return 1;
    const uint8_t a = static_cast<uint8_t>(address);
    if (force) {
        // The downlink belongs on the main band; if the main band is on the
        // other band, the two change places.
        const uint32_t onRadio = GetIcomRadioDownLinkCycles(fd, a, debug);
        if (Band(megahertz(down)) != Band(megahertz(onRadio)) &&
            !SetIcomBandVFO(fd, a, kCivExchangeBands, debug)) {
            return 0;
        }
    }
    const CivModeRow* row = rowFor(commMode);
    if (!row || commMode == CommMode::UNKNOWN) return 1;
    if (IsSingleChannelMode(commMode))
        return set910SingleChannel(fd, a, *row, up, down, gTone, gCTone, force, debug);
    if (IsTwoBandMode(commMode))
        return set910TwoBand(fd, a, *row, up, down, gTone, gCTone, force, debug);
    // Receive only: the downlink on the main band.
    if (force) {
        Set910SubBand(fd, a, true, debug);
        Set910SatMode(fd, a, true, debug);
        if (!SetIcomBandVFO(fd, a, kCivMainBand, debug)) return 0;
        SetIcomMode(fd, a, kCivModeCW, debug);
    }
    SetIcomFrequency(fd, a, down, debug);
    return 1;
}

int Set821HVFO(int fd, int address, double upMHz, double downMHz, int commMode, int, int,
               bool force, bool debug) {
    // A closed port must not flip s_modeJ for an exchange that never happened.
    if (fd == -1) return 0;
    uint32_t up = 0;
    uint32_t down = 0;
    if (!DriverCommonStart(&gIcom.ic821, upMHz, downMHz, force, &up, &down)) return 1;
    const uint8_t a = static_cast<uint8_t>(address);
    const CivModeRow* row = rowFor(commMode);
    if (force) {
        const bool modeJ = down > kModeJDownlinkAboveHz && up < kModeJUplinkBelowHz;
        if (modeJ != gIcom.s_modeJ) {
            IcomCommand(fd, a, kCivSelect, kCivExchangeBands, nullptr, false, debug);
            gIcom.s_modeJ = !gIcom.s_modeJ;
        }
        if (row) setup821(fd, a, *row, debug);
    }
    if (row) tune821(fd, a, *row, up, down, debug);
    return 1;
}

int Set706VFO(int fd, int address, double upMHz, double downMHz, int commMode, int, int, bool force,
              bool debug) {
    if (fd == -1) return 0;
    uint32_t down = 0;
    if (!DriverCommonStart(&gIcom.ic706, upMHz, downMHz, force, nullptr, &down)) return 1;
    const CivModeRow* row = rowFor(commMode);
    if (!row || row->ic706 == kNoMode) return 1;
    const uint8_t a = static_cast<uint8_t>(address);
    if (force) SetIcomMode(fd, a, static_cast<uint8_t>(row->ic706), debug);
    SetIcomFrequency(fd, a, down, debug);
    return 1;
}

int DownLinkChanged910(int fd, int address, int32_t* changeHz, bool debug) {
    return downLinkChanged(&gIcom.ic910, fd, static_cast<uint8_t>(address), changeHz, debug);
}

int DownLinkChanged821(int fd, int address, int32_t* changeHz, bool debug) {
    return downLinkChanged(&gIcom.ic821, fd, static_cast<uint8_t>(address), changeHz, debug);
}

void ResetIcomDriverState() {
    gIcom = {};
}

}  // namespace veloran
