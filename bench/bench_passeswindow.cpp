// How soon the Passes window shows its first rows on the bundled element
// sets: the time from constructing and showing the window until its model
// holds a row, with the core thread up and idle (no timers), on the
// offscreen platform. The operator opens the window to see the next pass;
// the first rows should be there within 100 ms. The whole search's end is
// reported beside it.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QThread>
#include <algorithm>
#include <atomic>
#include <memory>
#include <vector>

#include "app/appcontroller.h"
#include "gui/corethread.h"
#include "gui/passeswindow.h"
#include "platform/numericlocale.h"

namespace veloran {
namespace {

constexpr qint64 kGiveUpMs = 60000;

// Runs the event loop until `done` holds or the limit passes; false then.
template <class Done>
bool Pump(const Done& done, QElapsedTimer* since) {
    while (!done()) {
        if (since->elapsed() > kGiveUpMs) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
    }
    return true;
}

// One station on the bundled files, shared by every case: starting it
// (loading the files) is not what is measured.
struct Station {
    QTemporaryDir folders;
    std::unique_ptr<CoreThread> core;

    explicit Station(const StationOptions& options) {
        const std::string base = folders.path().toStdString();
        const DataPaths paths =
            DataPaths::InFolders(VELORAN_RESOURCE_DIR, base + "/data", base + "/config");
        std::string error;
        SeedDataFiles(paths, &error);
        core = std::make_unique<CoreThread>(options, paths);
        core->start(false, false);
        // Until the core has loaded the files and answers.
        auto ready = std::make_shared<std::atomic<bool>>(false);
        core->post([ready](CoreSide&) { ready->store(true); });
        QElapsedTimer since;
        since.start();
        Pump([&] { return ready->load(); }, &since);
    }
    ~Station() { core->stop(5000); }
};

// scope: 0 the track list (AO-7, FO-29, SO-50, ISS), 1 every satellite.
void BM_PassesWindowFirstRows(benchmark::State& state) {
    StationOptions options;
    options.hasTrack = true;
    options.track = {"AO-7", "FO-29", "SO-50", "ISS"};
    Station station(options);
    CoreThread* core = station.core.get();
    const int scope = static_cast<int>(state.range(0));
    std::vector<double> first, whole;
    for (auto _ : state) {
        QElapsedTimer since;
        since.start();
        PassesWindow window([core](CoreAction a) { core->post(std::move(a)); });
        if (scope != 0) window.findChild<QComboBox*>("passesScope")->setCurrentIndex(scope);
        window.show();
        if (!Pump([&] { return window.model()->rowCount() > 0; }, &since)) {
            state.SkipWithError("no rows within a minute");
            break;
        }
        first.push_back(static_cast<double>(since.nsecsElapsed()) / 1e6);
        Pump([&] { return !window.searching(); }, &since);
        whole.push_back(static_cast<double>(since.nsecsElapsed()) / 1e6);
    }
    if (first.empty()) return;
    // The first opening in the process pays for what the main window would
    // already have loaded (fonts, style); it is reported on its own.
    state.counters["first_rows_ms_first_opening"] = first.front();
    std::sort(first.begin(), first.end());
    std::sort(whole.begin(), whole.end());
    state.counters["first_rows_ms_median"] = first[first.size() / 2];
    state.counters["first_rows_ms_worst"] = first.back();
    state.counters["all_rows_ms_median"] = whole[whole.size() / 2];
}
BENCHMARK(BM_PassesWindowFirstRows)->Arg(0)->Arg(1)->Iterations(20)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace veloran

int main(int argc, char** argv) {
    // No display needed: the window is laid out and painted offscreen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    veloran::UseCNumericLocale();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
