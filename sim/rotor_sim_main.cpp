// `veloran-sim rotor ...`: a simulated rotor controller for trying the
// program, or a tracking setup, without a rotator.

#include "sim/rotor_sim_main.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include "sim/rotor_sim.h"
#include "sim/sim_line.h"

namespace veloran::sim {

namespace {

void usage() {
    std::fprintf(stderr,
                 "usage: veloran-sim rotor %s [--speed DEG_PER_S] [--az DEG] [--el DEG]\n%s",
                 RotorProtocolNames(), kLineOptionsHelp);
}

bool number(const char* text, double* out) {
    char* end = nullptr;
    const double v = std::strtod(text, &end);
    if (!text[0] || *end) return false;
    *out = v;
    return true;
}

}  // namespace

int RunRotorSimulator(int argc, char** argv) {
    LineOptions line;
    if (!TakeLineOptions(&argc, argv, &line)) return 2;
    RotorProtocol protocol;
    if (argc < 1 || !RotorProtocolFromName(argv[0], &protocol)) {
        usage();
        return 2;
    }
    double speed = 6.0;
    double az = 0.0;
    double el = 0.0;
    for (int i = 1; i < argc; ++i) {
        double* target = std::strcmp(argv[i], "--speed") == 0 ? &speed
                         : std::strcmp(argv[i], "--az") == 0  ? &az
                         : std::strcmp(argv[i], "--el") == 0  ? &el
                                                              : nullptr;
        if (!target || i + 1 >= argc || !number(argv[i + 1], target)) {
            usage();
            return 2;
        }
        ++i;
    }
    RotorSim sim;
    if (!OpenRotorSim(&sim, protocol, speed, az, el)) {
        std::fprintf(stderr, "veloran-sim: no pseudo-terminal available\n");
        return 1;
    }
    sim.trace = line.verbose;
    std::printf("%s\n", sim.slavePath);
    std::fflush(stdout);
    size_t shownCommands = 0;
    size_t shownControls = 0;
    bool atRest = true;
    StartRotorSimThread(&sim);
    RunLine(
        line,
        [&] {
            const RotorSimState s = RotorSimSnapshot(&sim);
            for (; shownCommands < s.commands.size(); ++shownCommands) {
                std::printf("command az %.1f el %.1f\n", s.commands[shownCommands].azimuth,
                            s.commands[shownCommands].elevation);
            }
            for (; shownControls < s.controls.size(); ++shownControls) {
                std::printf("other \"%s\"\n", s.controls[shownControls].c_str());
            }
            const bool still = s.currentAzimuth == s.commandedAzimuth &&
                               s.currentElevation == s.commandedElevation;
            if (still && !atRest)
                std::printf("reached az %.1f el %.1f\n", s.currentAzimuth, s.currentElevation);
            atRest = still;
            std::fflush(stdout);
        },
        [&] { sim.mute = true; }, [] {});
    StopRotorSimThread(&sim);
    CloseRotorSim(&sim);
    return 0;
}

}  // namespace veloran::sim
