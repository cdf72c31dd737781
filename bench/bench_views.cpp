// Cost of building the map and timeline scenes once per tick: 50 tracked
// satellites on the map at the smallest and largest zoom, and 50 passes on
// the timeline.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

#include "engine/orbit.h"
#include "engine/satrec.h"
#include "engine/siterec.h"
#include "engine/timebase.h"
#include "views/horizonview.h"
#include "views/map2dview.h"
#include "views/svgwriter.h"
#include "viewscene.h"

namespace {

using namespace veloran;

void BuildMap(benchmark::State& state) {
    const Scene scene = MakeScene();
    HelveticaEstimate measure;
    map_2D_view view;
    initWithFrame(&view, &measure);
    setMapWidth(&view, static_cast<int32_t>(state.range(0)), RectF{0, 0, 0, 0}, false);
    DisplayList list;
    for (auto _ : state) {
        for (int i = 1; i < kSatellites; ++i) drawSatPath(&view, scene.sats[i].get(), false);
        drawSatPath(&view, scene.sats[0].get(), true);
        drawGroundTrack(&view, scene.epoch, scene.sats[0].get(), &scene.site, true);
        drawSiteCross(&view, scene.site.siteLatRads, scene.site.siteLongRads, 1, false);
        drawRect(&view, scene.now, &list);
        benchmark::DoNotOptimize(list.items.data());
    }
    state.counters["items"] = static_cast<double>(list.items.size());
}
BENCHMARK(BuildMap)->Arg(1024)->Arg(8192)->Unit(benchmark::kMillisecond);

void BuildHorizon(benchmark::State& state) {
    const Scene scene = MakeScene();
    HelveticaEstimate measure;
    horizon_view view;
    initWithFrame(&view, RectF{0, 0, kHorizonDefaultWidth, kHorizonDefaultHeight}, &measure);
    DisplayList list;
    for (auto _ : state) {
        for (const auto& sat : scene.sats) drawSat(&view, sat.get(), 5.0);
        drawRect(&view, &list);
        benchmark::DoNotOptimize(list.items.data());
    }
}
BENCHMARK(BuildHorizon)->Unit(benchmark::kMillisecond);

// Export only, not part of the tick.
void WriteMapSvg(benchmark::State& state) {
    const Scene scene = MakeScene();
    map_2D_view view;
    initWithFrame(&view, nullptr);
    setMapWidth(&view, static_cast<int32_t>(state.range(0)), RectF{0, 0, 0, 0}, false);
    for (int i = 1; i < kSatellites; ++i) drawSatPath(&view, scene.sats[i].get(), false);
    drawSatPath(&view, scene.sats[0].get(), true);
    drawGroundTrack(&view, scene.epoch, scene.sats[0].get(), &scene.site, true);
    DisplayList list;
    drawRect(&view, scene.now, &list);
    for (auto _ : state) {
        std::string svg = WriteSvg(list, nullptr);
        benchmark::DoNotOptimize(svg.data());
    }
}
BENCHMARK(WriteMapSvg)->Arg(1024)->Arg(8192)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
