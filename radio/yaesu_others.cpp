// The FT-736R, FT-100D and VR-5000 drivers.

#include <cstring>

#include "radio/serial.h"
#include "radio/yaesu.h"
#include "radio/yaesu_line.h"

namespace veloran {

using namespace yaesu;

namespace {

// FT-736R: full duplex ("satellite") operation has its own receive and
// transmit VFOs, addressed by the 1x and 2x opcodes.
constexpr uint8_t k736FullDuplexOn = 0x0E;
constexpr uint8_t k736FullDuplexOff = 0x8E;
constexpr uint8_t k736SatRxFrequency = 0x1E;
constexpr uint8_t k736SatTxFrequency = 0x2E;
constexpr uint8_t k736SatRxMode = 0x17;
constexpr uint8_t k736SatTxMode = 0x27;
constexpr uint8_t k736ToneFrequency = 0xFA;  // P1 = the tone code, same codes as the FT-847
constexpr uint8_t k736CatOff = 0x80;         // the FT-736R wants 80 in all five bytes
constexpr int k736ReplyTicks = 30;

// FT-100D.
constexpr uint8_t k100SetFrequency = 0x0A;  // 4 BCD bytes, least significant pair first
constexpr uint8_t k100SetMode = 0x0C;
constexpr uint8_t k100ModeUSB = 0x01;
constexpr uint8_t k100ModeCW = 0x02;
constexpr uint8_t k100ModeAM = 0x04;
constexpr uint8_t k100ModeFM = 0x06;
constexpr uint8_t k100ModeWFM = 0x07;
constexpr uint8_t k100ReadStatus = 0x10;  // P4 0: 16-byte status of the current VFO
constexpr int k100StatusLength = 16;
constexpr int k100ReplyTicks = 30;
constexpr uint32_t k100DialDeadBandHz = 50;

// VR-5000.
constexpr uint8_t kVR5000ModeP2 = 0x21;  // P2 of the mode command
constexpr uint8_t kVR5000ModeAM = 0x04;
constexpr uint8_t kVR5000ModeUSB = 0x01;
constexpr uint8_t kVR5000ModeFM = 0x88;
constexpr uint8_t kVR5000ModeCW = 0x02;

void program736Tone(CatLine* line, int gTone) {
    if (gTone == 0) {
        line->d1(kToneMode, kToneOff);
        return;
    }
    line->d1(k736ToneFrequency, FT847ToneCode(gTone));
    line->d1(kToneMode, kToneEncodeOnly);
}

// FT-100D mode for a commMode; false when the mode is not one to set.
bool mode100For(int commMode, uint8_t* mode) {
    switch (commMode) {
        case 15:
            *mode = k100ModeAM;
            return true;
        case 12:
            *mode = k100ModeWFM;
            return true;
        case 16:
        case 3:
        case 4:
        case 5:
        case 11:
        case 13:
            *mode = k100ModeUSB;
            return true;
        case 1:
        case 6:
        case 2:
        case 10:
        case 17:
            *mode = k100ModeFM;
            return true;
        case 7:
        case 8:
        case 9:
        case 14:
        case -1:
            *mode = k100ModeCW;
            return true;
        default:
            return false;
    }
}

bool modeVR5000For(int commMode, uint8_t* mode) {
    switch (commMode) {
        case 15:
            *mode = kVR5000ModeAM;
            return true;
        case 16:
        case 3:
        case 4:
        case 5:
        case 11:
        case 13:
            *mode = kVR5000ModeUSB;
            return true;
        case 1:
        case 6:
        case 12:
        case 2:
        case 10:
        case 17:
            *mode = kVR5000ModeFM;
            return true;
        case 7:
        case 8:
        case 9:
        case 14:
        case -1:
            *mode = kVR5000ModeCW;
            return true;
        default:
            return false;
    }
}

}  // namespace

// --- FT-736R ----------------------------------------------------------------

void Start736R(int fd, bool debug) {
    if (fd == -1) return;
    CatLine line{fd, debug};
    line.flush();
    line.d1(kCatOn, 0);
}

void Kill736R(int fd, bool debug) {
    if (fd == -1) return;
    const unsigned char off[5] = {k736CatOff, k736CatOff, k736CatOff, k736CatOff, k736CatOff};
    CatLine{fd, debug}.block(off);
}

int Set736VFO(int fd, double upMHz, double downMHz, int commMode, int gTone, int gCTone, bool force,
              bool debug) {
    (void)gCTone;  // the FT-736R has a tone encoder only
    if (fd == -1) return 0;
    uint32_t up = 0, down = 0;
    if (!DriverCommonStart(&gState.ft736, upMHz, downMHz, force, &up, &down)) return 1;
    CatLine line{fd, debug};
    if (IsSingleChannelMode(commMode)) {
        if (force) {
            line.d1(k736FullDuplexOff, 0);
            line.d1(kSetMode, SingleChannelModeFor(commMode));
            program736Tone(&line, gTone);
        }
        line.frequency(kSetFrequency, down);
        line.d1(kRepeaterShift, up < down ? kShiftMinus : kShiftPlus);
        line.frequency(kRepeaterOffset, Difference(down, up));
    } else if (IsTwoBandMode(commMode)) {
        if (force) {
            line.d1(k736FullDuplexOn, 0);
            line.d1(k736SatRxMode, DownlinkModeFor(commMode));
            line.d1(k736SatTxMode, UplinkModeFor(commMode));
            program736Tone(&line, gTone);
        }
        line.frequency(k736SatRxFrequency, down);
        line.frequency(k736SatTxFrequency, up);
    } else if (commMode == kReceiveOnlyMode) {
        if (force) {
            line.d1(k736FullDuplexOff, 0);
            line.d1(kRepeaterShift, kShiftSimplex);
            line.d1(kSetMode, kModeCW);
        }
        line.frequency(kSetFrequency, down);
    }
    line.flush();
    return line.ok ? 1 : 0;
}

int Squelched736R(int fd, VFORec* vfo, bool debug) {
    if (fd == -1) return 1;
    CatLine line{fd, debug};
    line.flush();
    line.d1(kReadRxStatus, 0);
    unsigned char reply[4];
    if (line.read(reply, 1, k736ReplyTicks) < 1) return 1;
    const int level = reply[0] & 0x1F;
    if (vfo) vfo->signalStrength = level;
    return level == 0 ? 1 : 0;
}

int YaesuRadioAnswers(int fd, bool debug) {
    if (fd == -1) return 0;
    CatLine line{fd, debug};
    line.flush();
    line.d1(kReadRxStatus, 0);
    unsigned char reply[4];
    return line.read(reply, 1, k736ReplyTicks) == 1 ? 1 : 0;
}

// --- FT-100D ----------------------------------------------------------------

int Set100DVFO(int fd, double upMHz, double downMHz, int commMode, int gTone, int gCTone,
               bool force, bool debug) {
    (void)gTone;
    (void)gCTone;
    if (fd == -1) return 0;
    uint32_t up = 0, down = 0;
    if (!DriverCommonStart(&gState.ft100, upMHz, downMHz, force, &up, &down)) return 1;
    uint8_t mode = 0;
    if (!mode100For(commMode, &mode)) return 1;  // UNKNOWN: nothing is sent
    CatLine line{fd, debug};
    if (force) line.d1(k100SetMode, mode);
    // Receive only: the FT-100D follows the downlink.
    if (line.ok) line.sent(YaesuSetFrequencyRev(fd, k100SetFrequency, down, debug));
    return line.ok ? 1 : 0;
}

int DownLinkChanged100(int fd, int32_t* changeHz, bool debug) {
    if (fd == -1) return 0;
    CatLine line{fd, debug};
    line.flush();
    line.d4(k100ReadStatus, 0);
    unsigned char reply[k100StatusLength + 1];
    if (line.read(reply, k100StatusLength, k100ReplyTicks) < k100StatusLength) return 0;
    // Bytes 1-4: the frequency as a big-endian count of 1.25 Hz synthesizer steps.
    const uint32_t steps = YaesuBinaryUnPack(reply + 1);
    const uint32_t heard = static_cast<uint32_t>((static_cast<uint64_t>(steps) * 5) / 4);
    const uint32_t last = gState.ft100.down;
    if (heard == 0 || last == 0 || Difference(heard, last) <= k100DialDeadBandHz) return 0;
    if (changeHz) *changeHz = static_cast<int32_t>(static_cast<int64_t>(heard) - last);
    gState.ft100.down = heard;
    return 1;
}

int FT100Answers(int fd, bool debug) {
    if (fd == -1) return 0;
    CatLine line{fd, debug};
    line.flush();
    line.d4(k100ReadStatus, 0);
    unsigned char reply[k100StatusLength + 1];
    return line.read(reply, k100StatusLength, k100ReplyTicks) == k100StatusLength ? 1 : 0;
}

// --- VR-5000 ----------------------------------------------------------------

void StartVR5000(int fd, bool debug) {
    if (fd == -1) return;
    CatLine line{fd, debug};
    line.flush();
    line.d1(kCatOn, 0);
}

void KillVR5000(int fd, bool debug) {
    if (fd == -1) return;
    CatLine line{fd, debug};
    line.d1(kCatOff, 0);
    line.flush();
}

int SetVR5000VFO(int fd, double upMHz, double downMHz, int commMode, int gTone, int gCTone,
                 bool force, bool debug) {
    (void)gTone;
    (void)gCTone;
    if (fd == -1) return 0;
    uint32_t up = 0, down = 0;
    if (!DriverCommonStart(&gState.vr5000, upMHz, downMHz, force, &up, &down)) return 1;
    uint8_t mode = 0;
    if (!modeVR5000For(commMode, &mode)) return 1;  // UNKNOWN: nothing is sent
    CatLine line{fd, debug};
    if (force) {
        const unsigned char setMode[5] = {mode, kVR5000ModeP2, 0x00, 0x00, kSetMode};
        line.block(setMode);
    }
    unsigned char setFrequency[5] = {0, 0, 0, 0, kSetFrequency};
    YaesuHexPack(down, setFrequency);
    line.block(setFrequency);
    line.flush();
    return line.ok ? 1 : 0;
}

}  // namespace veloran
