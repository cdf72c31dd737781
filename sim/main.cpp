// veloran-sim: a simulated device on a pseudo-terminal, for trying the
// program without hardware. Prints the device path to give the program, then
// runs until interrupted.

#include <strings.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>

#include "sim/gateway_sim.h"
#include "sim/icom_sim.h"
#include "sim/radio_sim.h"
#include "sim/rotor_sim_main.h"
#include "sim/ts2000_sim.h"

namespace {

volatile std::sig_atomic_t gStop = 0;
void onSignal(int) {
    gStop = 1;
}

int usage(FILE* out) {
    std::fprintf(out,
                 "usage: veloran-sim radio MODEL [--silent] [--verbose]\n"
                 "       veloran-sim radio ic910|ic821|ic706 [--address 0xNN] [--transmitting] "
                 "[--silent] [--garbage]\n"
                 "       veloran-sim radio ts2000 [--silent] [--garbage] [--packet]\n"
                 "       veloran-sim rotor PROTOCOL [--speed DEG_PER_S] [--az DEG] [--el DEG]\n"
                 "       veloran-sim gateway [--carrier]\n"
                 "  MODEL: ft847, ft817, ft100d, ft736r, vr5000\n"
                 "  PROTOCOL: gs232, autotracker, easycomm, klm, sartek, satel, dcu1, spid, pt\n"
                 "  --silent   decode and record, never answer (a radio that has gone quiet)\n"
                 "  --verbose  print every command block received on standard error\n");
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

}  // namespace

int main(int argc, char** argv) {
    if (argc >= 2 && (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0))
        return usage(stdout);
    if (argc >= 2 && std::strcmp(argv[1], "gateway") == 0)
        return veloran::sim::RunGatewaySimulator(argc - 2, argv + 2);
    if (argc >= 2 && std::strcmp(argv[1], "rotor") == 0)
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
    bool silent = false, verbose = false;
    for (int i = 3; i < argc; ++i) {
        if (std::strcmp(argv[i], "--silent") == 0)
            silent = true;
        else if (std::strcmp(argv[i], "--verbose") == 0)
            verbose = true;
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
    std::signal(SIGINT, onSignal);
    std::signal(SIGTERM, onSignal);
    std::printf("%s\n", radio.devicePath().c_str());
    std::fflush(stdout);
    std::fprintf(stderr, "veloran-sim: simulated %s on %s%s\n", veloran::sim::RadioModelName(model),
                 radio.devicePath().c_str(), silent ? " (silent)" : "");
    size_t shown = 0;
    while (!gStop) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        if (!verbose) continue;
        const std::vector<uint8_t> bytes = radio.received();
        for (; shown + 5 <= bytes.size(); shown += 5) {
            std::fprintf(stderr, "<- %02X %02X %02X %02X %02X\n", bytes[shown], bytes[shown + 1],
                         bytes[shown + 2], bytes[shown + 3], bytes[shown + 4]);
        }
    }
    printState(radio.state());
    radio.close();
    return 0;
}
