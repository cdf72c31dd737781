// What waiting for a clear channel costs the program: waitForRadio against a
// simulated gateway board that hears a carrier the whole time, for a
// two-second time-out. The CPU column is the waiting thread's own time; the
// board's thread is not counted. Also reports how often the board was asked.

#include <benchmark/benchmark.h>

#include "serial/gateway.h"
#include "serial/serial.h"
#include "sim/gateway_sim.h"
#include "sim/sim_pty.h"

namespace veloran {
namespace {

constexpr unsigned long kTwoSecondsInTicks = 120;

void BusyChannel(benchmark::State& state) {
    sim::GatewayBoard board;
    board.setCarrier(true);
    sim::PtyServer pty;
    if (!pty.open()) {
        state.SkipWithError("openpty failed");
        return;
    }
    pty.start(&board);
    SetCommandDelay(0.0f);
    const int fd = openSerialPort(pty.path().c_str(), 5, 0, false);
    for (auto _ : state) {
        unsigned long elapsed = 0;
        benchmark::DoNotOptimize(
            waitForRadio(fd, sim::GatewayBoard::kCarrierLine, kTwoSecondsInTicks, &elapsed, false));
    }
    state.counters["queries_per_wait"] =
        static_cast<double>(board.carrierReads()) / static_cast<double>(state.iterations());
    closeSerialPort(fd, false);
    pty.stop();
}

BENCHMARK(BusyChannel)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace
}  // namespace veloran

BENCHMARK_MAIN();
