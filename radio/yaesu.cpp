// The FT-847 and FT-817 drivers: satellite set-up, Doppler updates, tones,
// squelch and dial read-back.

#include "radio/yaesu.h"

#include <cmath>

#include "radio/bcd.h"
#include "radio/serial.h"
#include "radio/yaesu_line.h"

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

// FT-817 extras.
constexpr uint8_t kSplitOn = 0x02;
constexpr uint8_t kSplitOff = 0x82;
constexpr uint8_t kToggleVfo = 0x81;   // A/B
constexpr uint8_t kReadEeprom = 0xBB;  // P1 P2 = address; reply: that byte and the next
constexpr uint8_t kEepromVfoHigh = 0x00;
constexpr uint8_t kEepromVfoLow = 0x55;  // bit 0 set while VFO B is current
constexpr int kFt817ReplyTicks = 60;
constexpr uint32_t kFt817UplinkStepHz = 1000;

constexpr int kFt847ReplyTicks = 30;
constexpr uint32_t kFt847DialDeadBandHz = 50;

// FT-847 satellite modes by commMode, in the order the set-up sends them.
uint8_t Ft847FirstMode(int commMode) {
    switch (commMode) {
        case 2:
        case 10:
        case 17:
            return kModeFM;
        case 3:
        case 4:
        case 5:
        case 13:
            return kModeLSB;
        case 7:
        case 8:
        case 9:
        case 14:
            return kModeCW;
        default:
            return kModeUSB;  // 11
    }
}

uint8_t Ft847SecondMode(int commMode) {
    switch (commMode) {
        case 2:
        case 10:
            return kModeFM;
        case 7:
        case 8:
        case 9:
        case 14:
            return kModeCW;
        default:
            return kModeUSB;  // 3, 4, 5, 13
    }
}

uint32_t bcdFrequency10Hz(const unsigned char* four) {
    uint32_t tens = 0;
    for (int i = 0; i < 4; ++i) tens = tens * 100 + static_cast<uint32_t>(UnpackBCD(four[i]));
    return tens * 10;
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

// Every FT-817 command is answered with one byte; a missing one is noted only
// where the driver depends on it.
int ack817(CatLine* line) {
    unsigned char reply[4];
    return line->read(reply, 1, kFt817ReplyTicks);
}

void selectVfo817(CatLine* line, bool wantA) {
    const unsigned char readVfo[5] = {kEepromVfoHigh, kEepromVfoLow, 0x00, 0x00, kReadEeprom};
    line->block(readVfo);
    unsigned char reply[4];
    const bool onB = line->read(reply, 2, kFt817ReplyTicks) > 0 && (reply[0] & 0x01) != 0;
    if (onB == !wantA) return;  // already on the wanted VFO
    line->d1(kToggleVfo, 1);
    ack817(line);
}

void programFt817Tones(CatLine* line, int gTone, int gCTone) {
    if (gTone == 0 && gCTone == 0) {
        line->d1(kToneMode, kToneOff);
        ack817(line);
        return;
    }
    unsigned char block[5] = {0, 0, 0, 0, kToneFrequency};
    IcomToneBCD2(tableToToneTenths(gCTone != 0 ? gCTone : gTone), block);
    line->block(block);
    ack817(line);
    // A tone-squelch index alone only switches the encoder on, as the
    // original program did.
    line->d1(kToneMode, gTone != 0 && gCTone != 0 ? kToneEncodeDecode : kToneEncodeOnly);
    ack817(line);
}

}  // namespace

// --- FT-847 -----------------------------------------------------------------

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
            if (commMode == 11)
                line.d1(kSatTxMode, kModeFM);
            else if (commMode == 17)
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
    } else if (commMode == kReceiveOnlyMode) {
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
    const uint32_t heard = bcdFrequency10Hz(reply);
    const uint32_t last = gState.ft847.down;
    // 50 Hz of dead band: the radio reports 10 Hz steps and we send hertz.
    if (heard == 0 || last == 0 || Difference(heard, last) <= kFt847DialDeadBandHz) return 0;
    if (changeHz) *changeHz = static_cast<int32_t>(static_cast<int64_t>(heard) - last);
    gState.ft847.down = heard;
    return 1;
}

// --- FT-817 -----------------------------------------------------------------

void Start817(int fd, bool debug) {
    if (fd == -1) return;
    CatLine{fd, debug}.flush();
}

void Kill817(int fd, bool debug) {
    if (fd == -1) return;
    CatLine{fd, debug}.flush();
}

void CTCSS(int fd, int gTone, int gCTone, bool debug) {
    if (fd == -1) return;
    CatLine line{fd, debug};
    programFt817Tones(&line, gTone, gCTone);
}

void VFO_A(int fd, bool wantA, bool debug) {
    if (fd == -1) return;
    CatLine line{fd, debug};
    selectVfo817(&line, wantA);
}

int SetFT817VFO(int fd, double upMHz, double downMHz, int commMode, int gTone, int gCTone,
                bool force, bool debug) {
    if (fd == -1) return 0;
    uint32_t up = 0, down = 0;
    if (!DriverCommonStart(&gState.ft817, upMHz, downMHz, force, &up, &down)) return 1;
    CatLine line{fd, debug};
    if (IsSingleChannelMode(commMode)) {
        if (force) {
            line.d1(kSplitOff, 0);
            if (ack817(&line) == 0) return 0;  // the radio does not answer
            line.d1(kSetMode, SingleChannelModeFor(commMode));
            ack817(&line);
            programFt817Tones(&line, gTone, gCTone);
        }
        line.frequency(kSetFrequency, down);
        ack817(&line);
        line.frequency(kRepeaterOffset, Difference(down, up));
        ack817(&line);
        line.d1(kRepeaterShift, up < down ? kShiftMinus : kShiftPlus);
        ack817(&line);
    } else if (IsTwoBandMode(commMode)) {
        // Split operation: VFO B transmits the uplink, VFO A receives the downlink.
        if (force) {
            line.d1(kRepeaterShift, kShiftSimplex);
            ack817(&line);
            line.d1(kSplitOn, 0);
            ack817(&line);
            selectVfo817(&line, false);
            line.d1(kSetMode, UplinkModeFor(commMode));
            ack817(&line);
            programFt817Tones(&line, gTone, gCTone);
            selectVfo817(&line, true);
            line.d1(kSetMode, DownlinkModeFor(commMode));
            ack817(&line);
        }
        // The uplink follows in steps of more than 1 kHz, so that the radio
        // does not flip VFOs on every small Doppler step; a forced set-up
        // always writes it.
        if (force || Difference(up, gState.ft817UplinkOnVfoB) > kFt817UplinkStepHz) {
            selectVfo817(&line, false);
            line.frequency(kSetFrequency, up);
            ack817(&line);
            selectVfo817(&line, true);
            gState.ft817UplinkOnVfoB = up;
        }
        line.frequency(kSetFrequency, down);
        ack817(&line);
    } else if (commMode == kReceiveOnlyMode) {
        if (force) {
            line.d1(kSplitOff, 0);
            ack817(&line);
            line.d1(kRepeaterShift, kShiftSimplex);
            ack817(&line);
            line.d1(kSetMode, kModeCW);
            ack817(&line);
        }
        line.frequency(kSetFrequency, down);
        ack817(&line);
    }
    line.flush();
    return line.ok ? 1 : 0;
}

int Squelched817(int fd, VFORec* vfo, bool debug) {
    if (vfo) vfo->signalStrength = 0;
    if (fd == -1) return 1;
    CatLine line{fd, debug};
    line.d1(kReadRxStatus, 0);
    unsigned char reply[4];
    if (line.read(reply, 1, kFt817ReplyTicks) < 1) return 1;
    if (vfo) vfo->signalStrength = reply[0] & 0x0F;
    // The FT-817's squelch bit is not trusted: reported open whenever it answers.
    return 0;
}

int DownLinkChanged817(int fd, int32_t* changeHz, bool debug) {
    if (fd == -1) return 0;
    CatLine line{fd, debug};
    line.flush();
    line.d1(kReadFrequency, 0);
    unsigned char reply[8];
    if (line.read(reply, 5, kFt817ReplyTicks) < 5) return 0;
    const uint32_t heard = bcdFrequency10Hz(reply);
    const uint32_t last = gState.ft817.down;
    if (heard == 0 || last == 0 || heard == last) return 0;
    if (changeHz) *changeHz = static_cast<int32_t>(static_cast<int64_t>(heard) - last);
    gState.ft817.down = heard;
    return 1;
}

}  // namespace veloran
