// The Kenwood TS-50: modes per VFO ("FN0;"/"FN1;" select VFO A/B, "MD1;" to
// "MD5;" LSB, USB, CW, FM, AM), frequencies "FA%011d;"/"FB%011d;" in hertz,
// and the "IF;" status for the dial.

#include "radio/ts50.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "radio/drivers.h"
#include "radio/textcommand.h"
#include "serial/serial.h"

namespace veloran {

namespace {

constexpr int kInformationLength = 38;  // "IF" + 35 characters + ';'
constexpr int kReplyTicks = 30;

LastSent gLast = {0, 0};

struct Line : TextCommandLine {
    void frequency(const char* vfo, uint32_t hertz) {
        char command[24];
        std::snprintf(command, sizeof command, "%s%011u;", vfo, hertz);
        send(command);
    }
};

// "MD1;" LSB, "MD2;" USB, "MD3;" CW, "MD4;" FM, "MD5;" AM.
const char* uplinkMode(int commMode) {
    switch (commMode) {
        case CommMode::J_FM:
        case CommMode::B_FM:
        case CommMode::JD_MIX:
            return "MD4;";
        case CommMode::JA_SSB:
        case CommMode::B_SSB:
        case CommMode::A_SSB:
        case CommMode::T_SSB:
            return "MD1;";
        case CommMode::JA_CW:
        case CommMode::B_CW:
        case CommMode::A_CW:
        case CommMode::T_CW:
            return "MD3;";
        default:
            return "MD2;";  // 17
    }
}

const char* downlinkMode(int commMode) {
    switch (commMode) {
        case CommMode::REPEATER:
        case CommMode::J_FM:
        case CommMode::SIMP_FM:
        case CommMode::B_FM:
        case CommMode::WIDE_FM:
        case CommMode::J_EXP:
            return "MD4;";
        case CommMode::JA_CW:
        case CommMode::B_CW:
        case CommMode::A_CW:
        case CommMode::T_CW:
        case CommMode::RECEIVE_ONLY:
            return "MD3;";
        case CommMode::SIMP_AM:
            return "MD5;";
        default:
            return "MD2;";  // 3, 4, 5, 11, 13, 16
    }
}

}  // namespace

void StartTS50(int fd, bool debug) {
    if (fd == -1) return;
    Line line{{fd, debug}};
    line.flush();
    line.send("AI0;");
}

void KillTS50(int fd, bool debug) {
    if (fd == -1) return;
    TextCommandLine{fd, debug}.flush();
}

int SetTS50VFO(int fd, double upMHz, double downMHz, int commMode, int gTone, int gCTone,
               bool force, bool debug) {
    (void)gTone;
    (void)gCTone;  // no tone board is assumed
    if (fd == -1) return 0;
    uint32_t up = 0, down = 0;
    if (!DriverCommonStart(&gLast, upMHz, downMHz, force, &up, &down)) return 1;
    const bool twoBand = IsTwoBandMode(commMode);
    if (!twoBand && !IsSingleChannelMode(commMode) && commMode != CommMode::RECEIVE_ONLY)
        return 1;  // UNKNOWN
    Line line{{fd, debug}};
    line.flush();
    if (force) {
        if (twoBand) {
            line.send("FN1;");
            line.send(uplinkMode(commMode));
        }
        line.send("FN0;");
        line.send(downlinkMode(commMode));
    }
    if (twoBand && up != 0) line.frequency("FB", up);
    line.frequency("FA", down);
    line.flush();
    return line.ok ? 1 : 0;
}

int DownLinkChangedTS50(int fd, int32_t* changeHz, bool debug) {
    if (fd == -1) return 0;
    Line line{{fd, debug}};
    line.flush();
    line.send("IF;");
    if (!line.ok) return 0;
    unsigned char reply[kInformationLength + 1];
    if (readRadioResponse(fd, reply, kInformationLength, kReplyTicks, debug) < kInformationLength)
        return 0;
    if (reply[0] != 'I' || reply[1] != 'F') return 0;
    char digits[12];
    std::memcpy(digits, reply + 2, 11);
    digits[11] = 0;
    char* end = nullptr;
    const unsigned long heard = std::strtoul(digits, &end, 10);
    if (end != digits + 11 || heard == 0 || heard > 0xFFFFFFFFul) return 0;
    if (gLast.down == 0 || heard == gLast.down) return 0;
    if (changeHz) *changeHz = static_cast<int32_t>(static_cast<int64_t>(heard) - gLast.down);
    gLast.down = static_cast<uint32_t>(heard);
    return 1;
}

void ResetTS50DriverState() {
    gLast = {0, 0};
}

}  // namespace veloran
