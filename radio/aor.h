// AOR scanning receivers (AR8000 class): ASCII commands ending in a carriage
// return. A receiver has no uplink: only the downlink is tuned.
#pragma once

#include <cstdint>

#include "radio/vforec.h"

namespace veloran {

// Tunes the receiver to the downlink ("RF" in hertz) and, when forced, sets
// the receive mode ("MD"). The uplink, tones and satellite set-up have no
// place on a receiver and are ignored. 1 on success (also when nothing
// changed), 0 when the port is closed or the line has gone.
int SetAORVFO(int fd, double upMHz, double downMHz, int commMode, int gTone, int gCTone, bool force,
              bool debug);
// Reads the S-meter with "LM": 1 when the receiver says its squelch is
// closed. The raw level (0-255) goes into vfo->signalStrength; a missing or
// garbled answer counts as an open squelch with level 0.
int SquelchedAOR(int fd, VFORec* vfo, bool debug);
// Forgets what was last sent, as at program start.
void ResetAORDriverState();

}  // namespace veloran
