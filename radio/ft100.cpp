// The FT-100D driver: tuned on receive only, with dial read-back from the
// status block.

#include "radio/catline.h"
#include "radio/yaesu.h"

namespace veloran {

using namespace yaesu;

namespace {

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

// FT-100D mode for a commMode; false when the mode is not one to set.
bool mode100For(int commMode, uint8_t* mode) {
    switch (commMode) {
        case CommMode::SIMP_AM:
            *mode = k100ModeAM;
            return true;
        case CommMode::WIDE_FM:
            *mode = k100ModeWFM;
            return true;
        case CommMode::SIMP_SSB:
        case CommMode::JA_SSB:
        case CommMode::B_SSB:
        case CommMode::A_SSB:
        case CommMode::JD_MIX:
        case CommMode::T_SSB:
            *mode = k100ModeUSB;
            return true;
        case CommMode::REPEATER:
        case CommMode::SIMP_FM:
        case CommMode::J_FM:
        case CommMode::B_FM:
        case CommMode::J_EXP:
            *mode = k100ModeFM;
            return true;
        case CommMode::JA_CW:
        case CommMode::B_CW:
        case CommMode::A_CW:
        case CommMode::T_CW:
        case CommMode::RECEIVE_ONLY:
            *mode = k100ModeCW;
            return true;
        default:
            return false;
    }
}

}  // namespace

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

}  // namespace veloran
