// What every simulator takes besides its own options: --verbose (a trace of
// the traffic on standard error), --silent-after N and --vanish-after N (the
// device stops answering, or hangs up and the simulator exits, N seconds
// after it starts), for trying a program's handling of a radio switched off
// or a cable pulled.
#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>

namespace veloran::sim {

struct LineOptions {
    bool verbose = false;
    double silentAfter = -1;  // seconds; negative: never
    double vanishAfter = -1;
};

// The common options' lines of a usage text.
extern const char* const kLineOptionsHelp;

// Takes the common options out of argv (argv and *argc are compacted to what
// is left). False, with a message on standard error, when a number is bad.
bool TakeLineOptions(int* argc, char** argv, LineOptions* out);

// True when argv holds --help or -h.
bool WantsHelp(int argc, char** argv);

// Prints "<- FE FE 60 E0 03 FD" (or "->") on standard error.
void TraceBytes(const char* direction, const uint8_t* bytes, size_t count);

// Runs until SIGINT or SIGTERM, or until the device has vanished: every 50 ms
// calls `poll` (for a simulator's own reports), then `silence` once when the
// silent time has come and `vanish` once when the vanishing time has come,
// after which it returns. Says each on standard error.
void RunLine(const LineOptions& options, const std::function<void()>& poll,
             const std::function<void()>& silence, const std::function<void()>& vanish);

}  // namespace veloran::sim
