// Entry of the rotor simulator for `veloran-sim rotor`.
#pragma once

namespace veloran::sim {

// argv holds the words after "rotor": PROTOCOL [--speed DEG_PER_S] [--az DEG]
// [--el DEG]. Prints the device path on the first line of standard output,
// then each command as it arrives, and runs until killed. 2 for a bad command
// line, 1 when no pseudo-terminal can be made.
int RunRotorSimulator(int argc, char** argv);

}  // namespace veloran::sim
