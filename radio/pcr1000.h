// Icom PCR1000 receiver driver: ASCII commands ending in CR LF. The receiver
// has no front panel, so everything is set from here: frequency, mode and IF
// filter go together in one "K0" command.
#pragma once

#include "radio/vforec.h"

namespace veloran {

// Switches the receiver on ("H101") and its automatic status reports off
// ("G300"), after which it answers every command with "G000" (or "G001").
void StartPCR1000(int fd, bool debug);
// Tunes the downlink: "K0" + 10 digits of hertz + mode + filter + "00".
int SetPCR1000VFO(int fd, double upMHz, double downMHz, int commMode, int gTone, int gCTone,
                  bool force, bool debug);
// "I1?" squelch status (bit 1 of the hex value set while a signal opens it)
// and "I2?" S-meter, 00 to FF, stored raw.
int SquelchedPCR1000(int fd, VFORec* vfo, bool debug);
void ResetPCR1000DriverState();

}  // namespace veloran
