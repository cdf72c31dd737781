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

namespace {

using namespace veloran;

constexpr int kSatellites = 50;

struct Scene {
    std::vector<std::unique_ptr<SatRec>> sats;
    SiteRec site;
    uint32_t now;
    double epoch;
};

// Fifty low and medium orbits spread over planes and phases, with a
// made-up pass profile each for the timeline.
Scene MakeScene() {
    Scene s;
    std::memset(&s.site, 0, sizeof s.site);
    s.site.siteLatRads = 43.7 * kDegreesToRadians;
    s.site.siteLongRads = 79.2 * kDegreesToRadians;
    DateTimeRec d{2026, 11, 21, 12, 0, 0, 7};
    s.now = QFDateToSeconds(&d);
    s.epoch = EpochTime(s.now);
    for (int i = 0; i < kSatellites; ++i) {
        auto rec = std::make_unique<SatRec>();
        std::memset(rec.get(), 0, sizeof(SatRec));
        InitSatRec(rec.get());
        std::snprintf(rec->name, sizeof rec->name, "SAT-%d", i);
        KepRec* k = &rec->satKep;
        k->epochDay = s.epoch - 2.0;
        k->inclination = (45.0 + i) * kDegreesToRadians;
        k->epochRAAN = i * 7.2 * kDegreesToRadians;
        k->eccentricity = 0.001 + 0.002 * (i % 5);
        k->epochMeanAnomaly = i * 23.0 * kDegreesToRadians;
        k->epochMeanMotion = 12.0 + (i % 8) * 0.5;
        CalcKepVals(rec.get(), &s.site);
        OneShot(rec.get(), s.epoch);
        rec->satAltitude = rec->satOrbitRadius - kEarthRadiusKm;
        rec->tracked = 1;
        rec->AOS = i == 0;
        rec->secondsToAOS = static_cast<uint32_t>(i * 500);
        rec->secondsToMAXE = rec->secondsToAOS + 300;
        rec->maxElevation = (i * 13) % 90;
        rec->passElevCounter = 50;
        for (int j = 0; j < 50; ++j)
            rec->passElev[j] = static_cast<uint8_t>(rec->maxElevation * std::sin(j * 3.14159 / 49));
        s.sats.push_back(std::move(rec));
    }
    return s;
}

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
