// How long the live search takes: per satellite and for a whole catalogue.
// The one-second tick runs it for two satellites; the track list and the
// pass predictions run it for many.

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

#include "engine/live.h"
#include "engine/orbit.h"
#include "engine/sunmoon.h"
#include "engine/timebase.h"
#include "tests/support/element_sets.h"

namespace veloran {
namespace {

using testing::Elements;

const uint32_t kNow = testing::Seconds(2026, 11, 21, 12);

struct Station {
    SiteRec site = testing::MakeSite(43.7064, 79.2442, 200.0);
    std::unique_ptr<SatRec> sun = testing::LoadSun(&site);
    Station() { sunCalcTask(kNow, sun.get(), nullptr, &site); }
};

// A LEO searched from just after a LOS, so that its next AOS is hours away
// and the search walks most of its window.
void BM_LiveLeoAosHoursAway(benchmark::State& state) {
    Station st;
    auto rec = testing::LoadRecord("LEO", testing::PolarLeo(300, 230), &st.site);
    uint32_t now = kNow;
    for (;; now += 60) {
        SatelliteCalculationsV(EpochTime(now), kSatelliteSearchSpan, rec.get(), &st.site, 0, now,
                               st.sun.get());
        if (rec->secondsToAOS > 3 * 3600 && rec->secondsToAOS != kSecondsToAOSUnknown) break;
    }
    state.counters["aos_in_h"] = rec->secondsToAOS / 3600.0;
    for (auto _ : state)
        SatelliteCalculationsV(EpochTime(now), kSatelliteSearchSpan, rec.get(), &st.site, 0, now,
                               st.sun.get());
}
BENCHMARK(BM_LiveLeoAosHoursAway)->Unit(benchmark::kMicrosecond);

void BM_LiveGeostationary(benchmark::State& state) {
    Station st;
    Elements e;
    e.meanMotion = 1.00273791;
    e.meanAnomaly = 150;
    auto rec = testing::LoadRecord("GEO", e, &st.site);
    for (auto _ : state)
        SatelliteCalculationsV(EpochTime(kNow), kSatelliteSearchSpan, rec.get(), &st.site, 0, kNow,
                               st.sun.get());
}
BENCHMARK(BM_LiveGeostationary)->Unit(benchmark::kMicrosecond);

void BM_LiveSun(benchmark::State& state) {
    Station st;
    for (auto _ : state)
        SatelliteCalculationsV(EpochTime(kNow), kSunMoonSearchSpan, st.sun.get(), &st.site, 0, kNow,
                               st.sun.get());
}
BENCHMARK(BM_LiveSun)->Unit(benchmark::kMicrosecond);

void BM_KeplerD(benchmark::State& state) {
    double M = 0.0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(KeplerD(M, 0.1));
        M += 0.001;
        if (M > kTwoPi) M = 0.0;
    }
}
BENCHMARK(BM_KeplerD)->Unit(benchmark::kNanosecond);

// A thousand LEOs spread over every plane and phase, each searched once.
void BM_CatalogueOf1000(benchmark::State& state) {
    Station st;
    std::vector<std::unique_ptr<SatRec>> catalogue;
    for (int i = 0; i < 1000; ++i) {
        Elements e = testing::PolarLeo((i * 37) % 360, (i * 101) % 360);
        e.inclination = 40.0 + (i % 60);
        e.meanMotion = 13.0 + (i % 25) * 0.1;
        catalogue.push_back(testing::LoadRecord("SAT", e, &st.site));
    }
    const double t = EpochTime(kNow);
    for (auto _ : state)
        for (auto& rec : catalogue)
            SatelliteCalculationsV(t, kSatelliteSearchSpan, rec.get(), &st.site, 0, kNow,
                                   st.sun.get());
    state.counters["us_per_sat"] = benchmark::Counter(
        1000.0 * state.iterations(), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_CatalogueOf1000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace veloran

BENCHMARK_MAIN();
