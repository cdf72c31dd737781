// The VR-5000 receiver driver: mode and downlink only.

#include "radio/catline.h"
#include "radio/yaesu.h"

namespace veloran {

using namespace yaesu;

namespace {

constexpr uint8_t kVR5000ModeP2 = 0x21;  // P2 of the mode command
constexpr uint8_t kVR5000ModeAM = 0x04;
constexpr uint8_t kVR5000ModeUSB = 0x01;
constexpr uint8_t kVR5000ModeFM = 0x88;
constexpr uint8_t kVR5000ModeCW = 0x02;

bool modeVR5000For(int commMode, uint8_t* mode) {
    switch (commMode) {
        case CommMode::SIMP_AM:
            *mode = kVR5000ModeAM;
            return true;
        case CommMode::SIMP_SSB:
        case CommMode::JA_SSB:
        case CommMode::B_SSB:
        case CommMode::A_SSB:
        case CommMode::JD_MIX:
        case CommMode::T_SSB:
            *mode = kVR5000ModeUSB;
            return true;
        case CommMode::REPEATER:
        case CommMode::SIMP_FM:
        case CommMode::WIDE_FM:
        case CommMode::J_FM:
        case CommMode::B_FM:
        case CommMode::J_EXP:
            *mode = kVR5000ModeFM;
            return true;
        case CommMode::JA_CW:
        case CommMode::B_CW:
        case CommMode::A_CW:
        case CommMode::T_CW:
        case CommMode::RECEIVE_ONLY:
            *mode = kVR5000ModeCW;
            return true;
        default:
            return false;
    }
}

}  // namespace

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
