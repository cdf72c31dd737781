// Loading the satellite table: a full element-set file (1021 sets) with a
// modes file of 1000 blocks, as a busy station's files can be.

#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "app/appcontroller.h"
#include "app/silentui.h"
#include "data/elementfile.h"

namespace {

using namespace veloran;

std::string ElementFile(int sets) {
    std::string text = "BENCHMARK ELEMENTS FROM VELORAN\n";
    for (int i = 0; i < sets; ++i) {
        // Appended piece by piece: GCC 12 warns falsely (-Wrestrict) about "B" + string.
        text += 'B';
        text += std::to_string(i);
        text += '\n';
        text += "1 25544U 98067A   26320.50000000  .00012000  00000-0  10000-3 0  9995\n";
        text += "2 25544  51.6390 245.7770 0005800  42.2150 317.9220 15.50100000498305\n";
    }
    return text;
}

// Blocks for satellites B0 .. B(blocks-1), three modes each, written in
// reverse order so that lookups do not simply walk the file forwards.
std::string ModesText(int blocks) {
    std::string text;
    for (int i = blocks - 1; i >= 0; --i) {
        text += "Satellite:\tB";
        text += std::to_string(i);
        text += '\n';
        text += "Channel: \tSSB       \tCW        \tFM        \n";
        text += "Uplink:  \t145.950000\t145.920000\t145.850000\n";
        text += "Downlink:\t435.850000\t435.880000\t436.795000\n";
        text += "CMode:   \tJA_SSB    \tJA_CW     \tJ_FM      \n";
        text += "Beacon:  \t435.795000\t435.795000\t0.000000\n";
        text += "Tone:    \t0         \t0         \t1         \n";
        text += "CTone:   \t0         \t0         \t0         \n";
        text += "TxVrtrUp: \t0.000000\t0.000000\t0.000000\n";
        text += "TxVrtrDn: \t0.000000\t0.000000\t0.000000\n";
        text += "BeamUp:   \t0.00      \t0.00      \t0.00      \n";
        text += "BeamDwn:  \t0.00      \t0.00      \t0.00      \n";
        text += "TrackHours:\t111111111111111111111111\n";
        text += "SpeakName:\tBench ";
        text += std::to_string(i);
        text += '\n';
        text += "Enabled:\t1\nPriority:\t5\n\n";
    }
    return text;
}

void BM_LoadKepsAndModes(benchmark::State& state) {
    char pattern[] = "/tmp/veloran-bench-XXXXXX";
    const std::string dir = mkdtemp(pattern);
    const DataPaths paths = DataPaths::InFolders(dir, dir, dir);
    std::ofstream(paths.keplerFile) << ElementFile(kMaxElementSets);
    std::ofstream(paths.userModesFile) << ModesText(static_cast<int>(state.range(0)));

    SilentUserInterface ui;
    MemoryUserDefaults defaults;
    SystemClock clock;
    const Services services{.ui = &ui, .defaults = &defaults, .clock = &clock};
    auto app = std::make_unique<AppController>(services, paths);
    for (auto _ : state) {
        app->loadKepsAndModes();
        benchmark::DoNotOptimize(app->GetTotalSats());
    }
    state.counters["satellites"] = app->GetTotalSats();
    std::filesystem::remove_all(dir);
}
BENCHMARK(BM_LoadKepsAndModes)->Arg(1000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
