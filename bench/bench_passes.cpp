// Pass finder speed: one satellite over ten days, and the 24-hour table of a
// whole catalogue on one and on two threads, with the position evaluations
// each needs (the counter "evals"; time over evals gives the cost of one).
// The catalogue is VELORAN_CATALOGUE, else the 979-set January 2018 file
// beside the repository; the instant and site are the ones its notes give.

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "data/elementfile.h"
#include "engine/observer.h"
#include "engine/passfinder.h"
#include "engine/satrec.h"
#include "engine/sunmoon.h"
#include "engine/timebase.h"

namespace veloran {
namespace {

struct Catalogue {
    SiteRec site{};
    std::vector<SatRec> sats;
    std::unique_ptr<SatRec> sun = std::make_unique<SatRec>();
    double startDay = 0;
};

SiteRec Toronto() {
    SiteRec site{};
    site.siteLatDegs = 43.7064;
    site.siteLongDegs = 79.2442;  // west positive
    site.siteAltitudeM = 200;
    SitePreCalc(&site);
    return site;
}

std::string CataloguePath() {
    const char* path = std::getenv("VELORAN_CATALOGUE");
    return path != nullptr ? path : VELORAN_DEFAULT_CATALOGUE;
}

// The element sets read the way the program reads its element-set file.
bool Load(const std::string& path, Catalogue* c) {
    FILE* file = std::fopen(path.c_str(), "r");
    if (file == nullptr) return false;
    c->site = Toronto();
    c->sats.clear();
    c->sats.reserve(kMaxElementSets);
    ElementFileScanner scanner(file);
    char name[256];
    auto rec = std::make_unique<SatRec>();
    while (c->sats.size() < kMaxElementSets && scanner.nextName(name, sizeof name)) {
        std::memset(rec.get(), 0, sizeof(SatRec));
        InitSatRec(rec.get());
        std::snprintf(rec->name, sizeof rec->name, "%.254s", name);
        bool decoded = false;
        if (!ReadElementLines(&scanner, rec.get(), &decoded)) break;
        if (!decoded) continue;
        ElementAnglesToRadians(&rec->satKep);
        CalcKepVals(rec.get(), &c->site);
        c->sats.push_back(*rec);
    }
    std::fclose(file);
    std::memset(c->sun.get(), 0, sizeof(SatRec));
    InitSatRec(c->sun.get());
    LoadSunKeps(&c->sun->satKep);
    CalcKepVals(c->sun.get(), &c->site);
    // 2018-01-20T22:33:15Z
    const DateTimeRec instant{2018, 1, 20, 22, 33, 15, 0};
    c->startDay = EpochTime(QFDateToSeconds(&instant));
    return !c->sats.empty();
}

const Catalogue* Shared() {
    static Catalogue catalogue;
    static const bool loaded = Load(CataloguePath(), &catalogue);
    return loaded ? &catalogue : nullptr;
}

void BM_OneSatelliteTenDays(benchmark::State& state) {
    const Catalogue* c = Shared();
    if (c == nullptr) return state.SkipWithError("no catalogue: set VELORAN_CATALOGUE");
    const SatRec* iss = &c->sats[0];
    for (const SatRec& s : c->sats)
        if (std::strcmp(s.name, "ISSZARYA") == 0) iss = &s;
    PassRec passes[256];
    long evaluations = 0;
    int count = 0;
    for (auto _ : state) {
        count = FindPassesCounted(iss, &c->site, c->sun.get(), c->startDay, c->startDay + 10, 0,
                                  passes, 256, &evaluations);
        benchmark::DoNotOptimize(passes);
    }
    state.counters["passes"] = count;
    state.counters["evals"] = static_cast<double>(evaluations);
}
BENCHMARK(BM_OneSatelliteTenDays)->Unit(benchmark::kMicrosecond);

void BM_CatalogueDay(benchmark::State& state) {
    const Catalogue* c = Shared();
    if (c == nullptr) return state.SkipWithError("no catalogue: set VELORAN_CATALOGUE");
    const int threads = static_cast<int>(state.range(0));
    std::atomic<long> evaluations{0}, passes{0};
    for (auto _ : state) {
        evaluations = 0;
        passes = 0;
        std::atomic<size_t> next{0};
        const auto work = [&] {
            PassRec found[64];
            long evals = 0, total = 0, count = 0;
            for (size_t i = next++; i < c->sats.size(); i = next++) {
                count += FindPassesCounted(&c->sats[i], &c->site, c->sun.get(), c->startDay,
                                           c->startDay + 1, 0, found, 64, &evals);
                total += evals;
            }
            evaluations += total;
            passes += count;
        };
        std::vector<std::thread> helpers;
        for (int i = 1; i < threads; ++i) helpers.emplace_back(work);
        work();
        for (std::thread& t : helpers) t.join();
    }
    state.counters["sats"] = static_cast<double>(c->sats.size());
    state.counters["passes"] = static_cast<double>(passes);
    state.counters["evals"] = static_cast<double>(evaluations);
}
BENCHMARK(BM_CatalogueDay)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

// Reading and decoding the catalogue: the part of a table that is not the search.
void BM_CatalogueLoad(benchmark::State& state) {
    Catalogue c;
    for (auto _ : state) benchmark::DoNotOptimize(Load(CataloguePath(), &c));
    state.counters["sats"] = static_cast<double>(c.sats.size());
}
BENCHMARK(BM_CatalogueLoad)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace veloran

BENCHMARK_MAIN();
