// The Icom PCR1000 receiver.

#include "radio/pcr1000.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "radio/drivers.h"
#include "radio/textcommand.h"
#include "serial/serial.h"

namespace veloran {

namespace {

constexpr int kReplyTicks = 30;
constexpr int kReplyLength = 4;  // "G000", "I107", "I2A5": the CR LF (and the stray
                                 // repeated last character some firmware adds) are flushed

// Mode and IF filter codes of the "K0" command.
// (00 is LSB; every satellite mode here receives the upper sideband.)
constexpr int kModeUSB = 1, kModeAM = 2, kModeCW = 3, kModeFM = 5, kModeWFM = 6;
constexpr int kFilter3k = 0, kFilter6k = 1, kFilter15k = 2, kFilter230k = 4;

LastSent gLast = {0, 0};

struct Line : TextCommandLine {
    // The first four characters of the answer; false when fewer came.
    bool answer(char* text) {
        if (!ok) return false;
        unsigned char reply[kReplyLength + 1];
        if (readRadioResponse(fd, reply, kReplyLength, kReplyTicks, debug) < kReplyLength)
            return false;
        std::memcpy(text, reply, kReplyLength);
        text[kReplyLength] = 0;
        return true;
    }
};

// Mode and filter for the downlink of a commMode; false for UNKNOWN.
bool modeFor(int commMode, int* mode, int* filter) {
    switch (commMode) {
        case CommMode::REPEATER:
        case CommMode::J_FM:
        case CommMode::SIMP_FM:
        case CommMode::B_FM:
        case CommMode::J_EXP:
            *mode = kModeFM;
            *filter = kFilter15k;
            return true;
        case CommMode::WIDE_FM:
            *mode = kModeWFM;
            *filter = kFilter230k;
            return true;
        case CommMode::SIMP_AM:
            *mode = kModeAM;
            *filter = kFilter6k;
            return true;
        case CommMode::JA_CW:
        case CommMode::B_CW:
        case CommMode::A_CW:
        case CommMode::T_CW:
        case CommMode::RECEIVE_ONLY:
            *mode = kModeCW;
            *filter = kFilter3k;
            return true;
        case CommMode::JA_SSB:
        case CommMode::B_SSB:
        case CommMode::A_SSB:
        case CommMode::JD_MIX:
        case CommMode::T_SSB:
        case CommMode::SIMP_SSB:
            *mode = kModeUSB;
            *filter = kFilter3k;
            return true;
        default:
            return false;
    }
}

int hexValue(const char* two) {
    char digits[3] = {two[0], two[1], 0};
    char* end = nullptr;
    const long v = std::strtol(digits, &end, 16);
    return end == digits + 2 ? static_cast<int>(v) : -1;
}

}  // namespace

void StartPCR1000(int fd, bool debug) {
    if (fd == -1) return;
    Line line{{fd, debug}};
    char answer[kReplyLength + 1];
    line.flush();
    line.send("H101\r\n");
    line.answer(answer);
    line.flush();
    line.send("G300\r\n");
    line.answer(answer);
    line.flush();
}

int SetPCR1000VFO(int fd, double upMHz, double downMHz, int commMode, int gTone, int gCTone,
                  bool force, bool debug) {
    (void)gTone;
    (void)gCTone;
    if (fd == -1) return 0;
    uint32_t up = 0, down = 0;
    if (!DriverCommonStart(&gLast, upMHz, downMHz, force, &up, &down)) return 1;
    int mode = 0, filter = 0;
    if (!modeFor(commMode, &mode, &filter)) return 1;  // UNKNOWN: nothing is sent
    Line line{{fd, debug}};
    char command[32];
    std::snprintf(command, sizeof command, "K0%010u%02d%02d00\r\n", down, mode, filter);
    line.flush();
    line.send(command);
    char answer[kReplyLength + 1];
    line.answer(answer);  // "G001" (refused, e.g. out of range) changes nothing here
    return line.ok ? 1 : 0;
}

int SquelchedPCR1000(int fd, VFORec* vfo, bool debug) {
    if (fd == -1) return 1;
    Line line{{fd, debug}};
    char answer[kReplyLength + 1];
    line.flush();
    line.send("I1?\r\n");
    if (!line.answer(answer) || std::strncmp(answer, "I1", 2) != 0) return 1;
    const int status = hexValue(answer + 2);
    const int closed = (status < 0 || (status & 0x02) == 0) ? 1 : 0;
    line.flush();
    line.send("I2?\r\n");
    if (line.answer(answer) && std::strncmp(answer, "I2", 2) == 0) {
        const int level = hexValue(answer + 2);
        if (level >= 0 && vfo) vfo->signalStrength = level;
    }
    return closed;
}

void ResetPCR1000DriverState() {
    gLast = {0, 0};
}

}  // namespace veloran
