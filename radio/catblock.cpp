// The Yaesu CAT command blocks every model shares: block builders, frequency
// packing, the CTCSS tables, the conversation helper and the status probe.

#include <cstdio>
#include <cstring>

#include "radio/bcd.h"
#include "radio/catline.h"
#include "radio/yaesu.h"
#include "serial/serial.h"

namespace veloran {

namespace yaesu {

State gState = {};

void CatLine::d1(uint8_t opcode, uint8_t p) {
    if (ok) sent(YaesuCommand_d1(fd, opcode, p, debug));
}
void CatLine::d4(uint8_t opcode, uint8_t p) {
    if (ok) sent(YaesuCommand_d4(fd, opcode, p, debug));
}
void CatLine::frequency(uint8_t opcode, uint32_t hertz) {
    if (ok) sent(YaesuSetFrequency(fd, opcode, hertz, debug));
}
void CatLine::block(const unsigned char* five) {
    if (ok) sent(sendRadioCommand(fd, five, 5, debug));
}

void CatLine::flush() {
    if (ok) flushRadioInput(fd, debug);
}

int CatLine::read(unsigned char* reply, int count, int ticks) {
    if (!ok) {
        reply[0] = 0;
        return 0;
    }
    if (count > 32) count = 32;
    return readRadioResponse(fd, reply, count, ticks, debug);
}

uint8_t UplinkModeFor(int commMode) {
    switch (commMode) {
        case CommMode::J_FM:
        case CommMode::B_FM:
        case CommMode::JD_MIX:
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
            return kModeUSB;  // 17, J_EXP
    }
}

uint8_t DownlinkModeFor(int commMode) {
    switch (commMode) {
        case CommMode::J_FM:
        case CommMode::B_FM:
        case CommMode::J_EXP:
            return kModeFM;
        case CommMode::JA_CW:
        case CommMode::B_CW:
        case CommMode::A_CW:
        case CommMode::T_CW:
            return kModeCW;
        default:
            return kModeUSB;  // 3, 4, 5, 11, 13
    }
}

uint8_t SingleChannelModeFor(int commMode) {
    if (commMode == CommMode::SIMP_AM) return kModeAM;
    if (commMode == CommMode::SIMP_SSB) return kModeUSB;
    return kModeFM;
}

uint32_t BcdFrequency10Hz(const unsigned char* four) {
    uint32_t tens = 0;
    for (int i = 0; i < 4; ++i) tens = tens * 100 + static_cast<uint32_t>(UnpackBCD(four[i]));
    return tens * 10;
}

}  // namespace yaesu

namespace {

// The standard 50-tone EIA CTCSS set in ascending order, tenths of hertz.
constexpr int kCtcssTenths[50] = {
    670,  693,  719,  744,  770,  797,  825,  854,  885,  915,  948,  974,  1000,
    1035, 1072, 1109, 1148, 1188, 1230, 1273, 1318, 1365, 1413, 1462, 1514, 1567,
    1598, 1622, 1655, 1679, 1713, 1738, 1773, 1799, 1835, 1862, 1899, 1928, 1966,
    1995, 2035, 2065, 2107, 2181, 2257, 2291, 2336, 2418, 2503, 2541,
};

// The FT-847 CAT manual's CTCSS code chart: the 39 tones the radio can
// generate and the one-byte code P1 that selects each.
struct Ft847Tone {
    int tenths;
    uint8_t code;
};
constexpr Ft847Tone kFt847Tones[] = {
    {670, 0x3F},  {693, 0x39},  {719, 0x1F},  {744, 0x3E},  {770, 0x0F},  {797, 0x3D},
    {825, 0x1E},  {854, 0x3C},  {885, 0x0E},  {915, 0x3B},  {948, 0x1D},  {974, 0x3A},
    {1000, 0x0D}, {1035, 0x1C}, {1072, 0x0C}, {1109, 0x1B}, {1148, 0x0B}, {1188, 0x1A},
    {1230, 0x0A}, {1273, 0x19}, {1318, 0x09}, {1365, 0x18}, {1413, 0x08}, {1462, 0x17},
    {1514, 0x07}, {1567, 0x16}, {1622, 0x06}, {1679, 0x15}, {1738, 0x05}, {1799, 0x14},
    {1862, 0x04}, {1928, 0x13}, {2035, 0x03}, {2107, 0x12}, {2181, 0x02}, {2257, 0x11},
    {2336, 0x01}, {2418, 0x10}, {2503, 0x00},
};

// The FT-736R, FT-847 and FT-817 answer the status read within half a second.
constexpr int kStatusReplyTicks = 30;

// "%09d" of the hertz, first eight digits: 10 Hz units, the 1 Hz digit
// dropped. A value past 999999999 Hz keeps only its leading digits.
void nineDigits(uint32_t hertz, char* digits) {
    char text[16];
    std::snprintf(text, sizeof text, "%09u", hertz);
    std::memcpy(digits, text, 8);
}

int sendBlock(int fd, const unsigned char* p4, uint8_t opcode, bool debug) {
    unsigned char block[6];
    YaesuInitBuffer(block);
    std::memcpy(block, p4, 4);
    block[4] = opcode;
    return sendRadioCommand(fd, block, 5, debug);
}

}  // namespace

void YaesuInitBuffer(unsigned char* buffer) {
    if (buffer) std::memset(buffer, 0, 6);
}

void YaesuBCDPack(uint32_t hertz, unsigned char* out4) {
    if (!out4) return;
    char d[8];
    nineDigits(hertz, d);
    for (int i = 0; i < 4; ++i)
        out4[i] = static_cast<unsigned char>(((d[2 * i] - '0') << 4) | (d[2 * i + 1] - '0'));
}

void YaesuBCDPackReverse(uint32_t hertz, unsigned char* out4) {
    if (!out4) return;
    unsigned char forward[4];
    YaesuBCDPack(hertz, forward);
    for (int i = 0; i < 4; ++i) out4[i] = forward[3 - i];
}

void YaesuHexPack(uint32_t hertz, unsigned char* out4) {
    if (!out4) return;
    const uint32_t tens = hertz / 10;
    out4[0] = static_cast<unsigned char>(tens >> 24);
    out4[1] = static_cast<unsigned char>(tens >> 16);
    out4[2] = static_cast<unsigned char>(tens >> 8);
    out4[3] = static_cast<unsigned char>(tens);
}

uint32_t YaesuBinaryUnPack(const unsigned char* in4) {
    if (!in4) return 0;
    return (uint32_t{in4[0]} << 24) | (uint32_t{in4[1]} << 16) | (uint32_t{in4[2]} << 8) |
           uint32_t{in4[3]};
}

int YaesuCommand_d1(int fd, uint8_t opcode, uint8_t p, bool debug) {
    const unsigned char p4[4] = {p, 0, 0, 0};
    return sendBlock(fd, p4, opcode, debug);
}

int YaesuCommand_d4(int fd, uint8_t opcode, uint8_t p, bool debug) {
    const unsigned char p4[4] = {0, 0, 0, p};
    return sendBlock(fd, p4, opcode, debug);
}

int YaesuSetFrequency(int fd, uint8_t opcode, uint32_t hertz, bool debug) {
    unsigned char p4[4];
    YaesuBCDPack(hertz, p4);
    return sendBlock(fd, p4, opcode, debug);
}

int YaesuSetFrequencyRev(int fd, uint8_t opcode, uint32_t hertz, bool debug) {
    unsigned char p4[4];
    YaesuBCDPackReverse(hertz, p4);
    return sendBlock(fd, p4, opcode, debug);
}

int tableToToneTenths(int index) {
    if (index < 2 || index > 50) return 670;
    return kCtcssTenths[index - 1];
}

uint8_t FT847ToneCode(int index) {
    const int tenths = tableToToneTenths(index);
    const Ft847Tone* best = &kFt847Tones[0];
    for (const Ft847Tone& t : kFt847Tones) {
        const int d = t.tenths > tenths ? t.tenths - tenths : tenths - t.tenths;
        const int bestD = best->tenths > tenths ? best->tenths - tenths : tenths - best->tenths;
        if (d < bestD) best = &t;
    }
    return best->code;
}

int YaesuRadioAnswers(int fd, bool debug) {
    if (fd == -1) return 0;
    yaesu::CatLine line{fd, debug};
    line.flush();
    line.d1(yaesu::kReadRxStatus, 0);
    unsigned char reply[4];
    return line.read(reply, 1, kStatusReplyTicks) == 1 ? 1 : 0;
}

void ResetYaesuDriverState() {
    yaesu::gState = {};
}

}  // namespace veloran
