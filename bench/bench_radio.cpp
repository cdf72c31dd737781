// How long one tuning update holds the main thread, per Yaesu radio, at the
// program's default command delay of 3 ms, against the simulated radios on
// a pseudo-terminal. Forced: the full set-up a new satellite or mode sends.
// Unforced: the once-a-second Doppler step (downlink +100 Hz, uplink -30 Hz).

#include <benchmark/benchmark.h>

#include "radio/tuning.h"
#include "radio/yaesu.h"
#include "serial/serial.h"
#include "sim/radio_sim.h"

namespace {

using veloran::sim::RadioModel;

struct Radio {
    int index;
    RadioModel model;
};

constexpr Radio kRadios[] = {
    {0, RadioModel::FT736R}, {1, RadioModel::FT847},  {2, RadioModel::FT817},
    {3, RadioModel::FT100D}, {4, RadioModel::VR5000},
};

void Update(benchmark::State& state, bool force) {
    const Radio& radio = kRadios[state.range(0)];
    veloran::sim::SimulatedRadio sim(radio.model);
    if (!sim.open()) {
        state.SkipWithError("no pseudo-terminal");
        return;
    }
    veloran::ResetYaesuDriverState();
    veloran::SiteRec site{};
    site.radio = radio.index;
    site.vfo_enabled = 1;
    site.commandDelay = 3.0f;
    site.radioPortFileDescriptor =
        veloran::openSerialPort(sim.devicePath().c_str(), 5, radio.index, false);
    veloran::startRadioDriver(&site);
    const int fd = site.radioPortFileDescriptor;
    // An inverting SSB transponder: JA_SSB, 145.95 up, 435.85 down.
    veloran::SetVFO(radio.index, fd, 0, 145.95, 435.85, 3, 0, 0, true, false);
    double up = 145.95, down = 435.85;
    for (auto _ : state) {
        up -= 0.00003;
        down += 0.0001;
        if (!veloran::SetVFO(radio.index, fd, 0, up, down, 3, 0, 0, force, false)) {
            state.SkipWithError("the simulated radio did not take the update");
            break;
        }
    }
    state.SetLabel(veloran::sim::RadioModelName(radio.model));
    veloran::stopRadioDriver(&site);
    veloran::closeSerialPort(fd, false);
}

void ForcedUpdate(benchmark::State& state) {
    Update(state, true);
}
void UnforcedUpdate(benchmark::State& state) {
    Update(state, false);
}

BENCHMARK(ForcedUpdate)
    ->DenseRange(0, 4)
    ->Iterations(5)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(UnforcedUpdate)
    ->DenseRange(0, 4)
    ->Iterations(10)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
