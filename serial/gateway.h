// The gateway board: a small I/O board on its own serial port that keys the
// transmitter (an output line of port A) and reads the carrier-operated relay
// of the receiver (an input line), in plain text commands ending in CR.
#pragma once

#include <atomic>

namespace veloran {

// Gateway board: key (on = 1) or unkey the transmitter on output line `line`
// of port A. Keying is active-low on the board. -1 does nothing.
void pushToTalk(int fd, int line, int on, bool debug);
// 1 once input line `line` has read "0" (carrier-operated relay quiet) twice a
// second apart, with the ticks waited in *elapsedTicks; 0 on time-out or when
// the board stops answering, or (0 within about two seconds) once *cancel
// turns true. A closed port (-1) returns 1 at once.
int waitForRadio(int fd, int line, unsigned long timeoutTicks, unsigned long* elapsedTicks,
                 bool debug, const std::atomic<bool>* cancel = nullptr);

}  // namespace veloran
