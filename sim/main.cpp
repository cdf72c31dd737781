// veloran-sim: a simulated device on a pseudo-terminal, for trying the
// program without hardware. Prints the device path to give the program, then
// runs until interrupted.

#include <strings.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "sim/gateway_sim.h"
#include "sim/icom_sim.h"
#include "sim/radio_sim.h"
#include "sim/rotor_sim_main.h"
#include "sim/sim_line.h"
#include "sim/ts2000_sim.h"

namespace {

int usage(FILE* out) {
    std::fprintf(out,
                 "usage: veloran-sim radio MODEL [--silent]\n"
                 "       veloran-sim radio ic910|ic821|ic706 [--address 0xNN] [--transmitting] "
                 "[--silent] [--garbage]\n"
                 "       veloran-sim radio ts2000 [--silent] [--garbage] [--packet]\n"
                 "       veloran-sim rotor PROTOCOL [--speed DEG_PER_S] [--az DEG] [--el DEG]\n"
                 "       veloran-sim gateway [--carrier]\n"
                 "  MODEL: ft847, ft817, ft100d, ft736r, vr5000\n"
                 "  PROTOCOL: gs232, autotracker, easycomm, klm, sartek, satel, dcu1, spid, pt\n"
                 "  --silent           decode and record, never answer (a radio that has gone "
                 "quiet)\n"
                 "Every simulator also takes:\n%s",
                 veloran::sim::kLineOptionsHelp);
    return out == stdout ? 0 : 2;
}

void printState(const veloran::sim::RadioState& s) {
    std::fprintf(
        stderr,
        "state: cat %s, satellite %s, split %s, main %u Hz mode %02X, sat rx %u Hz mode %02X, "
        "sat tx %u Hz mode %02X, vfo A %u Hz, vfo B %u Hz, %d blocks\n",
        s.catOn ? "on" : "off", s.satelliteMode ? "on" : "off", s.split ? "on" : "off",
        s.main.hertz, s.main.mode, s.satRx.hertz, s.satRx.mode, s.satTx.hertz, s.satTx.mode,
        s.vfoA.hertz, s.vfoB.hertz, s.blocks);
}

// The Yaesu-protocol radios: five-byte command blocks, most never answered.
int RunYaesuSimulator(veloran::sim::RadioModel model, int argc, char** argv) {
    veloran::sim::LineOptions line;
    if (!veloran::sim::TakeLineOptions(&argc, argv, &line)) return 2;
    bool silent = false;
    for (int i = 0; i < argc; ++i) {
        if (std::strcmp(argv[i], "--silent") == 0)
            silent = true;
        else
            return usage(stderr);
    }
    veloran::sim::SimulatedRadio radio(model);
    if (!radio.open()) {
        std::fprintf(stderr, "veloran-sim: cannot create a pseudo-terminal: %s\n",
                     std::strerror(errno));
        return 1;
    }
    radio.setSilent(silent);
    std::printf("%s\n", radio.devicePath().c_str());
    std::fflush(stdout);
    std::fprintf(stderr, "veloran-sim: simulated %s on %s%s\n", veloran::sim::RadioModelName(model),
                 radio.devicePath().c_str(), silent ? " (silent)" : "");
    size_t shown = 0;
    veloran::sim::RunLine(
        line,
        [&] {
            if (!line.verbose) return;
            const std::vector<uint8_t> bytes = radio.received();
            if (bytes.size() > shown)
                veloran::sim::TraceBytes("<-", bytes.data() + shown, bytes.size() - shown);
            shown = bytes.size();
        },
        [&] { radio.setSilent(true); }, [&] { radio.unplug(); });
    printState(radio.state());
    radio.close();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    // --help anywhere, on any subcommand, is the usage and nothing else.
    if (argc < 2 || veloran::sim::WantsHelp(argc - 1, argv + 1))
        return usage(argc < 2 ? stderr : stdout);
    if (std::strcmp(argv[1], "gateway") == 0)
        return veloran::sim::RunGatewaySimulator(argc - 2, argv + 2);
    if (std::strcmp(argv[1], "rotor") == 0)
        return veloran::sim::RunRotorSimulator(argc - 2, argv + 2);
    if (argc < 3 || std::strcmp(argv[1], "radio") != 0) return usage(stderr);
    veloran::sim::IcomModel icom;
    if (veloran::sim::IcomModelFromName(argv[2], &icom))
        return veloran::sim::RunIcomSimulator(argv[2], argc - 3, argv + 3);
    if (strcasecmp(argv[2], "ts2000") == 0 || strcasecmp(argv[2], "ts-2000") == 0)
        return veloran::sim::RunTs2000Simulator(argc - 3, argv + 3);
    veloran::sim::RadioModel model;
    if (!veloran::sim::ParseRadioModel(argv[2], &model)) {
        std::fprintf(stderr, "veloran-sim: unknown radio '%s'\n", argv[2]);
        return usage(stderr);
    }
    return RunYaesuSimulator(model, argc - 3, argv + 3);
}
