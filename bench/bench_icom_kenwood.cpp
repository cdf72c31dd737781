// How long one Doppler update takes on the wire, forced (full satellite
// set-up) and unforced (retuning only), for each CI-V radio and the TS-2000,
// against the simulated radios at the default command delay of 3 ms.

#include <benchmark/benchmark.h>

#include "radio/drivers.h"
#include "radio/icom.h"
#include "radio/kenwood.h"
#include "serial/serial.h"
#include "sim/icom_sim.h"
#include "sim/sim_pty.h"
#include "sim/ts2000_sim.h"

namespace veloran {
namespace {

constexpr float kDefaultCommandDelay = 3.0f;

struct Radio {
    int index;  // radio table row
    int address;
};

// An inverting SSB transponder (mode J): the longest set-up of every driver.
void Update(benchmark::State& state, sim::SimDevice* device, Radio radio, bool force) {
    ResetIcomDriverState();
    ResetKenwoodDriverState();
    SetCommandDelay(kDefaultCommandDelay);
    sim::PtyServer pty;
    if (!pty.open()) {
        state.SkipWithError("openpty failed");
        return;
    }
    pty.start(device);
    const int fd = openSerialPort(pty.path().c_str(), 9, radio.index, false);
    const RadioDriver* driver = RadioDriverFor(radio.index);
    double downlink = 435.85;
    driver->setFrequencies(fd, radio.address, 145.95, downlink, 3, 0, 0, true, false);
    for (auto _ : state) {
        if (!force) downlink += 0.000010;  // the Doppler moved 10 Hz
        benchmark::DoNotOptimize(
            driver->setFrequencies(fd, radio.address, 145.95, downlink, 3, 0, 0, force, false));
    }
    closeSerialPort(fd, false);
    pty.stop();
    SetCommandDelay(0.0f);
}

void IcomUpdate(benchmark::State& state, sim::IcomModel model, Radio radio, bool force) {
    sim::IcomSimulator device(model, static_cast<uint8_t>(radio.address));
    Update(state, &device, radio, force);
}

void Ts2000Update(benchmark::State& state, bool force) {
    sim::Ts2000Simulator device;
    Update(state, &device, Radio{14, 0}, force);
}

BENCHMARK_CAPTURE(IcomUpdate, IC910_forced, sim::IcomModel::IC910, Radio{7, 0x60}, true)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(8);
BENCHMARK_CAPTURE(IcomUpdate, IC910_unforced, sim::IcomModel::IC910, Radio{7, 0x60}, false)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(20);
BENCHMARK_CAPTURE(IcomUpdate, IC821_forced, sim::IcomModel::IC821, Radio{6, 0x4C}, true)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(8);
BENCHMARK_CAPTURE(IcomUpdate, IC821_unforced, sim::IcomModel::IC821, Radio{6, 0x4C}, false)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(20);
BENCHMARK_CAPTURE(IcomUpdate, IC706_forced, sim::IcomModel::IC706, Radio{9, 0x48}, true)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(8);
BENCHMARK_CAPTURE(IcomUpdate, IC706_unforced, sim::IcomModel::IC706, Radio{9, 0x48}, false)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(20);
BENCHMARK_CAPTURE(Ts2000Update, TS2000_forced, true)->Unit(benchmark::kMillisecond)->Iterations(8);
BENCHMARK_CAPTURE(Ts2000Update, TS2000_unforced, false)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(20);

}  // namespace
}  // namespace veloran

BENCHMARK_MAIN();
