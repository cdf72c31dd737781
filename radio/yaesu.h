// Yaesu CAT drivers: FT-736R, FT-847, FT-817, FT-100D and the VR-5000
// receiver. Every command is a 5-byte block, four parameter bytes P1..P4 and
// the opcode last. Each function takes the radio's descriptor first and the
// debug switch last; a descriptor of -1 sends nothing.
#pragma once

#include <cstdint>

#include "radio/vforec.h"

namespace veloran {

// --- Command blocks -------------------------------------------------------

// Clears a 5-byte command and its terminator (6 bytes).
void YaesuInitBuffer(unsigned char* buffer);
// Hertz as nine decimal digits; the first eight packed two to a byte, most
// significant first: 10 Hz units, the last digit dropped (145900000 -> 14 59 00 00).
void YaesuBCDPack(uint32_t hertz, unsigned char* out4);
// The same four bytes, last pair first (the FT-100D's order).
void YaesuBCDPackReverse(uint32_t hertz, unsigned char* out4);
// Hertz / 10 as a big-endian 32-bit number (the VR-5000's frequency format).
void YaesuHexPack(uint32_t hertz, unsigned char* out4);
// Four bytes as a big-endian 32-bit number.
uint32_t YaesuBinaryUnPack(const unsigned char* in4);

// Each returns the bytes the line took (5 when all went out).
int YaesuCommand_d1(int fd, uint8_t opcode, uint8_t p, bool debug);  // p 00 00 00 opcode
int YaesuCommand_d4(int fd, uint8_t opcode, uint8_t p, bool debug);  // 00 00 00 p opcode
int YaesuSetFrequency(int fd, uint8_t opcode, uint32_t hertz, bool debug);
int YaesuSetFrequencyRev(int fd, uint8_t opcode, uint32_t hertz, bool debug);

// --- CTCSS ------------------------------------------------------------------

// Tone index of the standard 50-tone EIA set (1 = 67.0 Hz ... 50 = 254.1 Hz)
// in tenths of hertz; every index outside 2..50 gives 670.
int tableToToneTenths(int index);
// The FT-847's one-byte code for tone index `index`: the radio knows 39 of
// the 50 tones; the others get the nearest one it has.
uint8_t FT847ToneCode(int index);

// --- FT-736R (radio 0) --------------------------------------------------------
void Start736R(int fd, bool debug);
void Kill736R(int fd, bool debug);
int Set736VFO(int fd, double upMHz, double downMHz, int commMode, int gTone, int gCTone, bool force,
              bool debug);
int Squelched736R(int fd, VFORec* vfo, bool debug);

// --- FT-847 (radio 1) --------------------------------------------------------
void Start847(int fd, bool debug);
void Kill847(int fd, bool debug);
int Set847VFO(int fd, double upMHz, double downMHz, int commMode, int gTone, int gCTone, bool force,
              bool debug);
int Squelched847(int fd, VFORec* vfo, bool debug);
int DownLinkChanged847(int fd, int32_t* changeHz, bool debug);
// Programs the repeater tone and tone squelch (indices, 0 = none); in
// satellite mode the tone goes to the transmit VFO and the squelch to the
// receive VFO.
void CTCSS847(int fd, int gTone, int gCTone, bool satMode, bool debug);

// --- FT-817 (radio 2) --------------------------------------------------------
void Start817(int fd, bool debug);
void Kill817(int fd, bool debug);
int SetFT817VFO(int fd, double upMHz, double downMHz, int commMode, int gTone, int gCTone,
                bool force, bool debug);
int Squelched817(int fd, VFORec* vfo, bool debug);
int DownLinkChanged817(int fd, int32_t* changeHz, bool debug);
// Tone programming of the FT-817 (indices, 0 = none).
void CTCSS(int fd, int gTone, int gCTone, bool debug);
// Makes VFO A (wantA) or VFO B current, toggling only when needed.
void VFO_A(int fd, bool wantA, bool debug);

// --- FT-100D (radio 3) -------------------------------------------------------
int Set100DVFO(int fd, double upMHz, double downMHz, int commMode, int gTone, int gCTone,
               bool force, bool debug);
int DownLinkChanged100(int fd, int32_t* changeHz, bool debug);

// --- VR-5000 (radio 4) -------------------------------------------------------
void StartVR5000(int fd, bool debug);
void KillVR5000(int fd, bool debug);
int SetVR5000VFO(int fd, double upMHz, double downMHz, int commMode, int gTone, int gCTone,
                 bool force, bool debug);

// 1 when the radio answers a receiver-status read (opcode E7) within half a
// second: FT-736R, FT-847 (after CAT on), FT-817.
int YaesuRadioAnswers(int fd, bool debug);
// 1 when the FT-100D sends its status block.
int FT100Answers(int fd, bool debug);

// Forgets what every Yaesu driver last sent and the FT-847's satellite-mode
// flag, as at program start (a new radio session, or a test).
void ResetYaesuDriverState();

}  // namespace veloran
