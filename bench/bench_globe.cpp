// The 3D globe with 100 tracked satellites and their orbital planes: the
// scene update on the core thread, and whole frames at 1280 x 800 drawn by
// the OpenGL view on whatever renderer the display offers (run it under
// Xvfb for Mesa's software renderer).

#include <benchmark/benchmark.h>

#include <QApplication>
#include <cstring>
#include <ctime>
#include <memory>

#include "engine/orbit.h"
#include "engine/satrec.h"
#include "engine/siterec.h"
#include "engine/sunmoon.h"
#include "engine/timebase.h"
#include "gui/globewidget.h"
#include "platform/numericlocale.h"
#include "tests/support/element_sets.h"
#include "views/globeexchange.h"

namespace {

using namespace veloran;

constexpr int kSatellites = 100;

struct World {
    std::unique_ptr<SatRec[]> sats;
    SiteRec site;
    double epoch = 0;
    int total = 0;
};

// 100 low and medium orbits over many planes, then the Moon and the Sun.
World MakeWorld() {
    World w;
    w.site = testing::MakeSite(43.7, 79.2, 200.0);
    w.site.deadSpotState = 1;
    w.site.rotor_az = 135.0;
    w.site.rotor_el = 30.0;
    w.epoch = EpochTime(testing::Seconds(2026, 11, 21, 12));
    w.total = kSatellites + 2;
    w.sats = std::make_unique<SatRec[]>(w.total);
    for (int i = 0; i < w.total; ++i) {
        SatRec* rec = &w.sats[i];
        std::memset(rec, 0, sizeof(SatRec));
        InitSatRec(rec);
        KepRec* k = &rec->satKep;
        k->epochDay = w.epoch - 2.0;
        if (i == kSatellites) {
            std::strcpy(rec->name, "Moon");
            LoadMoonKeps(k, 11);
        } else if (i == kSatellites + 1) {
            std::strcpy(rec->name, "Sun");
            LoadSunKeps(k);
        } else {
            std::snprintf(rec->name, sizeof rec->name, "SAT-%d", i);
            k->inclination = (40.0 + (i * 7) % 60) * kDegreesToRadians;
            k->epochRAAN = i * 3.6 * kDegreesToRadians;
            k->eccentricity = 0.001 + 0.002 * (i % 5);
            k->epochMeanAnomaly = i * 23.0 * kDegreesToRadians;
            k->epochMeanMotion = 12.0 + (i % 8) * 0.5;
        }
        CalcKepVals(rec, &w.site);
        rec->tracked = 1;
        rec->enabled = 1;
    }
    w.sats[0].hasBVals = 1;
    w.sats[0].bLatDegs = 0.0;
    w.sats[0].bLonDegs = 180.0;
    return w;
}

GlobeInput Input(const World& w) {
    GlobeInput in;
    in.epoch = w.epoch;
    in.sats = w.sats.get();
    in.totalSats = w.total;
    in.mainSatNum = 1;
    in.moonNum = kSatellites + 1;
    in.sunNum = kSatellites + 2;
    in.site = &w.site;
    in.options.trackList = true;
    in.options.orbitalPlane = true;
    return in;
}

void BuildGlobeScene(benchmark::State& state) {
    const World w = MakeWorld();
    GlobeInput in = Input(w);
    GlobeSceneBuilder builder;
    GlobeScene scene;
    for (auto _ : state) {
        builder.build(&in, &scene);
        in.epoch += 1.0 / 86400.0;
        benchmark::DoNotOptimize(scene.lines.data());
    }
    state.counters["line_vertices"] = static_cast<double>(scene.lines.size());
}
BENCHMARK(BuildGlobeScene)->Unit(benchmark::kMillisecond);

double ProcessCpuSeconds() {
    timespec ts{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
    return ts.tv_sec + ts.tv_nsec * 1e-9;
}

// How each frame differs from the one before: nothing (drawn whole all the
// same), the camera turned, a new scene, or only the main satellite's pulse
// (the kept picture copied, as the window does between scenes).
enum Motion { kStill = 0, kTurning = 1, kNewScene = 2, kPulse = 3 };

// Arguments: the texture (1: 2048 pixels, 3: the wire frame) and the motion.
// Each frame is drawn into the view's framebuffer and read back, which
// waits for the renderer: the rate is an honest lower bound. cpu_ms counts
// every thread of the process (Mesa's rasterizer threads among them), so it
// stays meaningful while other work shares the machine.
void GlobeFrames(benchmark::State& state) {
    if (!GlobeWidget::openGlAvailable()) {
        state.SkipWithError("no OpenGL 3.3 context on this display");
        return;
    }
    const World w = MakeWorld();
    GlobeInput in = Input(w);
    in.options.labels = true;
    in.options.latLongLines = true;
    in.options.cityLights = true;
    auto exchange = std::make_shared<GlobeSceneExchange>();
    GlobeSceneBuilder builder;
    builder.build(&in, exchange->back());
    exchange->publish();
    GlobeWidget view(exchange);
    view.setResolution(static_cast<int>(state.range(0)));
    const auto motion = static_cast<Motion>(state.range(1));
    view.resize(1280, 800);
    view.show();
    QApplication::processEvents();
    view.grabFramebuffer();  // textures load on the first frame
    double yaw = 0.0;
    const double cpu0 = ProcessCpuSeconds();
    for (auto _ : state) {
        if (motion == kTurning) {
            yaw += 0.01;
            view.setFreeCamera(yaw, 0.4);
        } else if (motion == kNewScene) {
            state.PauseTiming();
            in.epoch += 1.0 / 86400.0;
            builder.build(&in, exchange->back());
            exchange->publish();
            state.ResumeTiming();
        }
        benchmark::DoNotOptimize(view.grabFramebuffer(motion != kPulse));
    }
    const double cpu = ProcessCpuSeconds() - cpu0;
    state.counters["fps"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
    state.counters["cpu_ms"] = 1000.0 * cpu / static_cast<double>(state.iterations());
}
BENCHMARK(GlobeFrames)
    ->ArgsProduct({{1, 3}, {kStill, kTurning, kNewScene, kPulse}})
    ->ArgNames({"texture", "motion"})
    ->Unit(benchmark::kMillisecond)
    ->MinTime(3.0)
    ->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    UseCNumericLocale();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
