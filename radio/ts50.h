// Kenwood TS-50 driver: ASCII commands ending in ';'. VFO A receives the
// downlink, VFO B holds the uplink; the radio has no satellite mode, so
// working split is left to the operator's front panel.
#pragma once

#include <cstdint>

namespace veloran {

// Turns the radio's automatic frequency reports off, so that only answers to
// our own questions arrive.
void StartTS50(int fd, bool debug);
void KillTS50(int fd, bool debug);
int SetTS50VFO(int fd, double upMHz, double downMHz, int commMode, int gTone, int gCTone,
               bool force, bool debug);
// Reads VFO A with "IF;": 1 and the change in hertz when the dial moved.
int DownLinkChangedTS50(int fd, int32_t* changeHz, bool debug);
// Forgets what was last sent, as at program start.
void ResetTS50DriverState();

}  // namespace veloran
