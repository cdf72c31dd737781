// The FT-817 driver: split operation over VFOs A and B, tones, squelch and
// dial read-back. Every command is answered with one byte.

#include "radio/bcd.h"
#include "radio/catline.h"
#include "radio/yaesu.h"

namespace veloran {

using namespace yaesu;

namespace {

// FT-817 extras.
constexpr uint8_t kSplitOn = 0x02;
constexpr uint8_t kSplitOff = 0x82;
constexpr uint8_t kToggleVfo = 0x81;   // A/B
constexpr uint8_t kReadEeprom = 0xBB;  // P1 P2 = address; reply: that byte and the next
constexpr uint8_t kEepromVfoHigh = 0x00;
constexpr uint8_t kEepromVfoLow = 0x55;  // bit 0 set while VFO B is current
constexpr int kFt817ReplyTicks = 60;
constexpr uint32_t kFt817UplinkStepHz = 1000;

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
    } else if (commMode == CommMode::RECEIVE_ONLY) {
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
    const uint32_t heard = BcdFrequency10Hz(reply);
    const uint32_t last = gState.ft817.down;
    if (heard == 0 || last == 0 || heard == last) return 0;
    if (changeHz) *changeHz = static_cast<int32_t>(static_cast<int64_t>(heard) - last);
    gState.ft817.down = heard;
    return 1;
}

}  // namespace veloran
