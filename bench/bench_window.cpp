// The window as the operator meets it: how long the GUI thread's event loop
// is held up while the core tunes an IC-910 that never answers (the driver
// waits out its time-outs on the core thread), and how much CPU the window
// and its core use when nothing is connected. Run with the real clock; each
// case watches the window for several seconds.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <pty.h>
#include <sys/resource.h>
#include <unistd.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTimer>
#include <algorithm>

#include "gui/corethread.h"
#include "gui/mainwindow.h"
#include "gui/uibridge.h"
#include "platform/numericlocale.h"
#include "platform/qtuserdefaults.h"

namespace veloran {
namespace {

constexpr int kIc910 = 7;
constexpr int kWatchMs = 6000;
constexpr int kProbeMs = 10;  // the GUI thread's probe timer

double CpuSeconds() {
    rusage use{};
    getrusage(RUSAGE_SELF, &use);
    return use.ru_utime.tv_sec + use.ru_stime.tv_sec +
           (use.ru_utime.tv_usec + use.ru_stime.tv_usec) / 1e6;
}

struct Watch {
    double worstStallMs = 0;
    double cpuPercent = 0;
};

// Opens the window with the core ticking and lets the event loop run for
// kWatchMs, a probe timer measuring how late each of its wake-ups comes.
Watch RunWindow(const StationOptions& options, bool globe = false) {
    QTemporaryDir folders;
    const std::string base = folders.path().toStdString();
    const DataPaths paths =
        DataPaths::InFolders(VELORAN_RESOURCE_DIR, base + "/data", base + "/config");
    std::string error;
    SeedDataFiles(paths, &error);
    {
        QtUserDefaults stored(paths.settingsFile);
        stored.setInteger("icomAddress", 0x60);
        stored.sync(&error);
    }
    CoreThread core(options, paths);
    MainWindow window(core.bridge(), [&core](CoreAction a) { core.post(std::move(a)); });
    core.start(true, false);
    window.show();
    if (globe) window.findChild<QTabWidget*>("mapTabs")->setCurrentIndex(1);

    Watch watch;
    QElapsedTimer since;
    QTimer probe;
    probe.setTimerType(Qt::PreciseTimer);
    probe.setInterval(kProbeMs);
    QObject::connect(&probe, &QTimer::timeout, [&] {
        const double late = static_cast<double>(since.nsecsElapsed()) / 1e6 - kProbeMs;
        watch.worstStallMs = std::max(watch.worstStallMs, late);
        since.restart();
    });
    // The first seconds load the files and open the ports; watch after them.
    QTimer::singleShot(2000, [&] {
        since.start();
        probe.start();
    });
    QElapsedTimer wall;
    double cpuStart = 0;
    QTimer::singleShot(2000, [&] {
        wall.start();
        cpuStart = CpuSeconds();
    });
    QTimer::singleShot(2000 + kWatchMs, [&] { QApplication::quit(); });
    QApplication::exec();
    watch.cpuPercent = 100.0 * (CpuSeconds() - cpuStart) / (wall.elapsed() / 1000.0);
    core.stop(5000);
    return watch;
}

void BM_GuiStallWithASilentIc910(benchmark::State& state) {
    // A pseudo-terminal whose far end nobody reads or answers.
    int master = -1, slave = -1;
    char name[128];
    if (openpty(&master, &slave, name, nullptr, nullptr) != 0) {
        state.SkipWithError("openpty failed");
        return;
    }
    StationOptions options;
    options.radio = kIc910;
    options.radioPort = name;
    options.sat = "AO-7";
    Watch watch;
    for (auto _ : state) watch = RunWindow(options);
    state.counters["worst_stall_ms"] = watch.worstStallMs;
    state.counters["cpu_percent"] = watch.cpuPercent;
    close(slave);
    close(master);
}
BENCHMARK(BM_GuiStallWithASilentIc910)->Iterations(1)->Unit(benchmark::kMillisecond);

void BM_IdleWindowNoDevices(benchmark::State& state) {
    Watch watch;
    for (auto _ : state) watch = RunWindow(StationOptions{});
    state.counters["worst_stall_ms"] = watch.worstStallMs;
    state.counters["cpu_percent"] = watch.cpuPercent;
}
BENCHMARK(BM_IdleWindowNoDevices)->Iterations(1)->Unit(benchmark::kMillisecond);

// The same with the globe's tab in front: its OpenGL view composites with
// the window and repaints for the main satellite's pulse.
void BM_IdleWindowWithGlobe(benchmark::State& state) {
    Watch watch;
    for (auto _ : state) watch = RunWindow(StationOptions{}, true);
    state.counters["worst_stall_ms"] = watch.worstStallMs;
    state.counters["cpu_percent"] = watch.cpuPercent;
}
BENCHMARK(BM_IdleWindowWithGlobe)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace veloran

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    veloran::UseCNumericLocale();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
