// Kenwood TS-2000 driver: ASCII commands ending in ';'. VFO A carries the
// downlink and VFO B the uplink; a forced update first puts the radio in the
// satellite or split set-up the transponder mode needs, with its tones. Every
// function takes the descriptor first and the debug switch last; -1 sends
// nothing.
#pragma once

#include <cstdint>

#include "radio/vforec.h"

namespace veloran {

// Probes the radio: leaves packet (terminal) mode, packet-cluster tuning and
// automatic mode selection off if it finds them on.
void StartTS2000(int fd, bool debug);
// Nothing to undo.
void KillTS2000(int fd, bool debug);

// Uplink and downlink in MHz; gTone and gCTone are tone indices (0 = none).
// 1 on success; 0 when the port is closed or the radio does not answer the
// receive-VFO query of a forced update.
int SetTS2000VFO(int fd, double upMHz, double downMHz, int commMode, int gTone, int gCTone,
                 bool force, bool debug);
// 1 when the squelch is closed; the raw S-meter goes to vfo->signalStrength.
int SquelchedTS2000(int fd, VFORec* vfo, bool debug);
// 1 and the change in hertz when the receive frequency on the radio moved
// away from the downlink last sent.
int DownLinkChangedTS2000(int fd, int32_t* changeHz, bool debug);

// Repeater tone: index 0 switches it off, any other switches it on with that
// tone number. Only a state the radio reports as different is changed.
void DoTone(int fd, int index, bool debug);
// Tone squelch, the same way.
void DoCTone(int fd, int index, bool debug);
// Receive on VFO A, transmit on VFO B (on) or VFO A (off).
void SetSplit(int fd, bool on, bool debug);
// Writes a fixed frequency to VFO A when both frequencies lie in a band; the
// arguments are MHz (one caller gives hertz, which is kept).
void CheckSatMode(int fd, double upMHz, double downMHz, bool debug);
// VFO B := uplink, VFO A := downlink (hertz); a zero frequency is not written.
void Set_Kenwood_VFOS(int fd, uint32_t upHz, uint32_t downHz, bool debug);
// "%011d" of `value` into `text` (12 bytes).
void Kenwood11Digits(long long value, char* text);

// What StartTS2000 found.
struct TS2000StartFlags {
    bool sPacketWasOn;        // the radio answered the carriage-return probe
    bool sPacketClusterTune;  // packet-cluster tuning was on
    bool sAutoModeOn;         // automatic mode selection was on
};
TS2000StartFlags TS2000StartState();

// Forgets what the driver last sent and what the start found.
void ResetKenwoodDriverState();

}  // namespace veloran
