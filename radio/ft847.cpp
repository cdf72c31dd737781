// The FT-847 driver: satellite mode set-up, Doppler updates on the
// satellite VFOs, tones, squelch and dial read-back.

#include <cmath>

#include "radio/bcd.h"
#include "radio/catline.h"
#include "radio/yaesu.h"

namespace veloran {

using namespace yaesu;

namespace {

// FT-847 satellite mode: opcodes ending in 1x address the receive VFO and 2x
// the transmit VFO.
constexpr uint8_t kSatModeOn = 0x4E;
constexpr uint8_t kSatRxFrequency = 0x11;
constexpr uint8_t kSatTxFrequency = 0x21;
constexpr uint8_t kSatRxReadFrequency = 0x13;
constexpr uint8_t kSatRxMode = 0x17;  // mode of the satellite receive VFO
constexpr uint8_t kSatTxMode = 0x27;  // mode of the satellite transmit VFO
constexpr uint8_t kSatRxToneMode = 0x1A;
constexpr uint8_t kSatRxToneFrequency = 0x1B;
constexpr uint8_t kSatTxToneMode = 0x2A;
constexpr uint8_t kSatTxToneFrequency = 0x2B;

constexpr int kFt847ReplyTicks = 30;
constexpr uint32_t kFt847DialDeadBandHz = 50;

// FT-847 satellite modes by commMode, in the order the set-up sends them.
uint8_t Ft847FirstMode(int commMode) {
    switch (commMode) {
        case CommMode::J_FM:
        case CommMode::B_FM:
        case CommMode::J_EXP:
            return kModeFM;
        case CommMode::JA_SSB:
        case CommMode::B_SSB:
        case CommMode::A_SSB:
        case CommMode::T_SSB:
            return kModeLSB;
        case CommMode::JA_CW:
        case CommMode::B_CW:
        case CommMode::A_CW:
        case CommMode::T_CW:
            return kModeCW;
        default:
            return kModeUSB;  // 11
    }
}

uint8_t Ft847SecondMode(int commMode) {
    switch (commMode) {
        case CommMode::J_FM:
        case CommMode::B_FM:
            return kModeFM;
        case CommMode::JA_CW:
        case CommMode::B_CW:
        case CommMode::A_CW:
        case CommMode::T_CW:
            return kModeCW;
        default:
            return kModeUSB;  // 3, 4, 5, 13
    }
}

void programFt847Tones(CatLine* line, int gTone, int gCTone, bool satMode) {
    if (!satMode) {
        if (gTone == 0 && gCTone == 0) {
            line->d1(kToneMode, kToneOff);
            line->flush();
            return;
        }
        line->d1(kToneFrequency, FT847ToneCode(gCTone != 0 ? gCTone : gTone));
        line->flush();
        line->d1(kToneMode, gTone != 0 && gCTone != 0 ? kToneEncodeDecode : kToneEncodeOnly);
        line->flush();
        return;
    }
    // Satellite mode: the access tone rides on the uplink, the tone squelch
    // belongs to the downlink.
    if (gTone != 0) {
        line->d1(kSatTxToneFrequency, FT847ToneCode(gTone));
        line->flush();
        line->d1(kSatTxToneMode, kToneEncodeOnly);
    } else {
        line->d1(kSatTxToneMode, kToneOff);
    }
    line->flush();
    if (gCTone != 0) {
        line->d1(kSatRxToneFrequency, FT847ToneCode(gCTone));
        line->flush();
        line->d1(kSatRxToneMode, kToneEncodeDecode);
    } else {
        line->d1(kSatRxToneMode, kToneOff);
    }
    line->flush();
}

}  // namespace

void CTCSS847(int fd, int gTone, int gCTone, bool satMode, bool debug) {
    if (fd == -1) return;
    CatLine line{fd, debug};
    programFt847Tones(&line, gTone, gCTone, satMode);
}

void Start847(int fd, bool debug) {
    if (fd == -1) return;
    CatLine line{fd, debug};
    line.flush();
    line.d1(kCatOn, 0);
    line.flush();
    line.d1(kSatModeOff, 0);
    line.flush();
    line.d1(kRepeaterShift, kShiftSimplex);
    line.flush();
    programFt847Tones(&line, 0, 0, gState.sSatMode);
}

void Kill847(int fd, bool debug) {
    if (fd == -1) return;
    CatLine line{fd, debug};
    line.d1(kCatOff, 0);
    unsigned char reply[4];
    line.read(reply, 1, kFt847ReplyTicks);
}

int Set847VFO(int fd, double upMHz, double downMHz, int commMode, int gTone, int gCTone, bool force,
              bool debug) {
    if (fd == -1) return 0;
    uint32_t up = 0, down = 0;
    if (!DriverCommonStart(&gState.ft847, upMHz, downMHz, force, &up, &down)) return 1;
    CatLine line{fd, debug};
    if (IsSingleChannelMode(commMode)) {
        if (force) {
            line.d1(kSatModeOff, 0);
            line.flush();
            line.d1(kSetMode, SingleChannelModeFor(commMode));
            line.flush();
            gState.sSatMode = false;
            programFt847Tones(&line, gTone, gCTone, false);
        }
        line.frequency(kSetFrequency, down);
        line.flush();
        line.d1(kRepeaterShift, up < down ? kShiftMinus : kShiftPlus);
        line.flush();
        line.frequency(kRepeaterOffset, Difference(down, up));
        line.flush();
    } else if (IsTwoBandMode(commMode)) {
        if (force) {
            line.d1(kSatModeOn, 0);
            line.flush();
            gState.sSatMode = true;
            // The first mode command goes to the transmit VFO, the second to
            // the receive VFO; JD_MIX and J_EXP send both to the transmit VFO,
            // as the original program did, so only the second one sticks.
            line.d1(kSatTxMode, Ft847FirstMode(commMode));
            line.flush();
            if (commMode == CommMode::JD_MIX)
                line.d1(kSatTxMode, kModeFM);
            else if (commMode == CommMode::J_EXP)
                line.d1(kSatTxMode, kModeUSB);
            else
                line.d1(kSatRxMode, Ft847SecondMode(commMode));
            line.flush();
            programFt847Tones(&line, gTone, gCTone, true);
        }
        line.frequency(kSatRxFrequency, down);
        line.flush();
        line.frequency(kSatTxFrequency, up);
        line.flush();
    } else if (commMode == CommMode::RECEIVE_ONLY) {
        if (force) {
            line.d1(kSatModeOff, 0);
            line.flush();
            gState.sSatMode = false;
            line.d1(kRepeaterShift, kShiftSimplex);
            line.flush();
            line.d1(kSetMode, kModeCW);
            line.flush();
        }
        line.frequency(kSetFrequency, down);
        line.flush();
    } else {
        line.flush();
    }
    return line.ok ? 1 : 0;
}

int Squelched847(int fd, VFORec* vfo, bool debug) {
    if (fd == -1) return 1;
    CatLine line{fd, debug};
    line.flush();
    line.d1(kReadRxStatus, 0);
    unsigned char reply[4];
    if (line.read(reply, 1, kFt847ReplyTicks) < 1) return 1;
    const int level = reply[0] & 0x1F;
    if (vfo) vfo->signalStrength = static_cast<int32_t>(std::lround(level * 1.5));
    return level == 0 ? 1 : 0;
}

int DownLinkChanged847(int fd, int32_t* changeHz, bool debug) {
    if (fd == -1) return 0;
    CatLine line{fd, debug};
    line.flush();
    line.d1(gState.sSatMode ? kSatRxReadFrequency : kReadFrequency, 0);
    unsigned char reply[8];
    if (line.read(reply, 5, kFt847ReplyTicks) < 5) return 0;
    const uint32_t heard = BcdFrequency10Hz(reply);
    const uint32_t last = gState.ft847.down;
    // 50 Hz of dead band: the radio reports 10 Hz steps and we send hertz.
    if (heard == 0 || last == 0 || Difference(heard, last) <= kFt847DialDeadBandHz) return 0;
    if (changeHz) *changeHz = static_cast<int32_t>(static_cast<int64_t>(heard) - last);
    gState.ft847.down = heard;
    return 1;
}

}  // namespace veloran
