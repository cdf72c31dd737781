// One main-timer tick of the controller, as a station runs it once a
// second: the main satellite in a pass (live values, visibility, Doppler
// tuning, steering of a simulated GS-232 rotator, all status texts) plus one
// other satellite in rotation. Command delay 0. The radio is none, a
// simulated FT-847, or a simulated IC-910, whose CI-V bus is paced by the
// driver itself at 2 ms a byte and 8 ms a frame whatever the command delay.

#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "app/appcontroller.h"
#include "app/silentui.h"
#include "sim/icom_sim.h"
#include "sim/radio_sim.h"
#include "sim/rotor_sim.h"
#include "sim/sim_pty.h"

namespace {

using namespace veloran;

constexpr const char* kElements =
    "B0\n"
    "1 25544U 98067A   26320.50000000  .00012000  00000-0  10000-3 0  9995\n"
    "2 25544  51.6390 245.7770 0005800  42.2150 317.9220 15.50100000498305\n"
    "B1\n"
    "1 25545U 98067A   26320.50000000  .00012000  00000-0  10000-3 0  9996\n"
    "2 25545  51.6390 145.7770 0005800  42.2150 117.9220 15.50100000498305\n";

constexpr const char* kModes =
    "Satellite:\tB0\nChannel: \tSSB\nUplink:  \t145.950000\nDownlink:\t435.850000\nCMode:   "
    "\tJA_SSB\n"
    "Beacon:  \t435.795000\nTone:    \t0\nCTone:   \t0\nTxVrtrUp: \t0.000000\nTxVrtrDn: "
    "\t0.000000\n"
    "BeamUp:   \t0.00\nBeamDwn:  \t0.00\nTrackHours:\t111111111111111111111111\nSpeakName:\tBench\n"
    "Enabled:\t1\nPriority:\t5\n\n";

class SteppingClock : public Clock {
  public:
    uint32_t now = 0;
    uint32_t dateTimeUTC() const override { return now; }
    uint32_t dateTime() const override { return now; }
};

void BM_MainTimerTask(benchmark::State& state) {
    char pattern[] = "/tmp/veloran-bench-XXXXXX";
    const std::string dir = mkdtemp(pattern);
    const DataPaths paths = DataPaths::InFolders(dir, dir, dir);
    std::ofstream(paths.keplerFile) << kElements;
    std::ofstream(paths.userModesFile) << kModes;

    const int which = static_cast<int>(state.range(0));
    sim::IcomSimulator radio(sim::IcomModel::IC910, 0x60);
    sim::SimulatedRadio ft847(sim::RadioModel::FT847);
    sim::PtyServer radioLine;
    sim::RotorSim rotor;
    if (!radioLine.open() || !ft847.open() ||
        !sim::OpenRotorSim(&rotor, sim::RotorProtocol::kGS232, 6.0)) {
        state.SkipWithError("no pseudo-terminal");
        return;
    }
    radioLine.start(&radio);
    sim::StartRotorSimThread(&rotor);

    SilentUserInterface ui;
    MemoryUserDefaults defaults;
    SteppingClock clock;
    clock.now = 3878107200u;  // 2026-11-21 12:00 UTC
    AnnouncementQueue discarded;
    const Services services{
        .ui = &ui, .defaults = &defaults, .clock = &clock, .announcer = &discarded};
    auto app = std::make_unique<AppController>(services, paths);
    app->awakeFromNib();
    SiteRec site;
    app->GetSiteRec(&site);
    site.radio = which == 2 ? 7 : 1;
    site.icomAddress = 0x60;
    site.radioPort =
        app->addTypedPort(which == 2 ? radioLine.path().c_str() : ft847.devicePath().c_str());
    site.radioBaud = 9;
    site.rotor = 0;
    site.rotorPort = app->addTypedPort(rotor.slavePath);
    site.rotorBaud = 5;
    site.commandDelay = 0;
    app->SetSiteRec(&site);
    if (which != 0) app->openCloseRadio(true);
    app->openCloseRotor(true);
    app->MarkSatelliteTracked(0, true);
    app->MarkSatelliteTracked(1, true);
    app->mainTimerTasks();
    // Into B0's next pass, a minute after AOS.
    SatRec b0;
    app->GetSatelliteRecordByIndex(0, &b0);
    clock.now = b0.AOSTime + 60;
    app->mainTimerTasks();

    for (auto _ : state) {
        ++clock.now;
        app->mainTimerTasks();
    }
    app->GetSatelliteRecordByIndex(0, &b0);
    state.counters["in_view"] = b0.AOS;
    sim::CloseRotorSim(&rotor);
    radioLine.stop();
    std::filesystem::remove_all(dir);
}
// Argument: 0 no radio, 1 FT-847, 2 IC-910.
BENCHMARK(BM_MainTimerTask)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond)->Iterations(300);

}  // namespace

BENCHMARK_MAIN();
