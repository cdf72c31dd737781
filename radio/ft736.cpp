// The FT-736R driver: full-duplex satellite operation, tone encoder and squelch.

#include "radio/catline.h"
#include "radio/yaesu.h"

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

void program736Tone(CatLine* line, int gTone) {
    if (gTone == 0) {
        line->d1(kToneMode, kToneOff);
        return;
    }
    line->d1(k736ToneFrequency, FT847ToneCode(gTone));
    line->d1(kToneMode, kToneEncodeOnly);
}

}  // namespace

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
    } else if (commMode == CommMode::RECEIVE_ONLY) {
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

}  // namespace veloran
