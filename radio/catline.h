// Private to the Yaesu drivers: the opcodes they share, their remembered
// state and a small helper that runs one conversation with the radio.
#pragma once

#include <cstdint>

#include "radio/drivers.h"

namespace veloran::yaesu {

// Opcodes common to the FT-736R, FT-847 and FT-817 command sets.
constexpr uint8_t kCatOn = 0x00;          // 00 00 00 00 00: accept computer control
constexpr uint8_t kCatOff = 0x80;         // back to the front panel
constexpr uint8_t kSetFrequency = 0x01;   // main VFO (current VFO on the FT-817)
constexpr uint8_t kSetMode = 0x07;        // P1 = operating mode
constexpr uint8_t kReadFrequency = 0x03;  // reply: 4 BCD bytes (10 Hz) and the mode
constexpr uint8_t kRepeaterShift = 0x09;  // P1 = one of the three below
constexpr uint8_t kShiftMinus = 0x09;
constexpr uint8_t kShiftPlus = 0x49;
constexpr uint8_t kShiftSimplex = 0x89;
constexpr uint8_t kToneMode = 0x0A;          // P1 = one of the four below
constexpr uint8_t kToneEncodeDecode = 0x2A;  // encoder and tone squelch
constexpr uint8_t kToneEncodeOnly = 0x4A;
constexpr uint8_t kToneOff = 0x8A;
constexpr uint8_t kToneFrequency = 0x0B;  // FT-847: P1 = tone code; FT-817: P1 P2 = BCD tone
constexpr uint8_t kSatModeOff = 0x8E;
constexpr uint8_t kRepeaterOffset = 0xF9;  // offset in the frequency format
constexpr uint8_t kReadRxStatus = 0xE7;    // reply: 1 status byte with the S-meter

// Operating-mode codes of the FT-736R, FT-847 and FT-817.
constexpr uint8_t kModeLSB = 0x00;
constexpr uint8_t kModeUSB = 0x01;
constexpr uint8_t kModeCW = 0x02;
constexpr uint8_t kModeAM = 0x04;
constexpr uint8_t kModeFM = 0x08;

struct State {
    LastSent ft736, ft847, ft817, ft100, vr5000;
    bool sSatMode;               // the FT-847 is in satellite mode
    uint32_t ft817UplinkOnVfoB;  // hertz last written to the FT-817's VFO B
};
extern State gState;

// One exchange sequence with the radio. `ok` turns false as soon as a command
// could not be written whole (the device has gone), so a driver can report
// failure instead of pretending the radio was tuned. From then on nothing is
// sent or waited for: a hung-up line reads as silence, and waiting out every
// reply time-out of a set-up would freeze the program for seconds.
struct CatLine {
    int fd;
    bool debug;
    bool ok = true;

    void sent(int count) {
        if (count != 5) ok = false;
    }
    void d1(uint8_t opcode, uint8_t p);
    void d4(uint8_t opcode, uint8_t p);
    void frequency(uint8_t opcode, uint32_t hertz);
    void block(const unsigned char* five);
    // Reads and discards whatever the radio has sent (no wait).
    void flush();
    // Reads up to `count` bytes (at most 32) within `ticks`; returns the count.
    int read(unsigned char* reply, int count, int ticks);
};

// Mode tables by commMode for the satellite VFOs (uplink and downlink).
uint8_t UplinkModeFor(int commMode);    // FM 2,10,11; LSB 3,4,5,13; CW 7,8,9,14; USB 17
uint8_t DownlinkModeFor(int commMode);  // FM 2,10,17; USB 3,4,5,11,13; CW 7,8,9,14
// Single-channel modes: AM for 15, USB for 16, FM otherwise.
uint8_t SingleChannelModeFor(int commMode);

// Four BCD bytes of a frequency reply, most significant first, in 10 Hz units, as hertz.
uint32_t BcdFrequency10Hz(const unsigned char* four);

inline uint32_t Difference(uint32_t a, uint32_t b) {
    return a > b ? a - b : b - a;
}

}  // namespace veloran::yaesu
