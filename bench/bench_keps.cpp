// The element-set converter on a source the size of CelesTrak's "active"
// group (about 12000 sets): OMM JSON and three-line text read, short names
// given, and the loader's file written.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "data/elementsets.h"
#include "data/kepsimport.h"

namespace {

using namespace veloran;

std::vector<OrbitElements> Sets(int n) {
    std::vector<OrbitElements> sets(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) {
        OrbitElements& e = sets[static_cast<size_t>(i)];
        e.catalog = 10000 + 17 * i;
        e.longName = "OBJECT " + std::to_string(i) + " (OB-" + std::to_string(i) + ")";
        e.epochYear = 2026;
        e.epochDay = 320.5 + (i % 100) * 0.01;
        e.inclination = 51.6 + (i % 40);
        e.raan = (i * 7) % 360;
        e.eccentricity = 0.0001 * (i % 50);
        e.meanMotion = 12.0 + (i % 4);
        e.bstar = 1.2e-4;
        e.shortName = "OB-" + std::to_string(i);
    }
    return sets;
}

std::string Json(const std::vector<OrbitElements>& sets) {
    std::string text = "[";
    for (const OrbitElements& e : sets) {
        if (text.size() > 1) text += ",";
        text += "{\"OBJECT_NAME\":\"" + e.longName + "\",\"OBJECT_ID\":\"2020-001A\"," +
                "\"EPOCH\":\"2026-11-16T12:00:00.000000\",\"MEAN_MOTION\":" +
                std::to_string(e.meanMotion) +
                ",\"ECCENTRICITY\":" + std::to_string(e.eccentricity) +
                ",\"INCLINATION\":" + std::to_string(e.inclination) +
                ",\"RA_OF_ASC_NODE\":" + std::to_string(e.raan) +
                ",\"ARG_OF_PERICENTER\":1.5,\"MEAN_ANOMALY\":2.5,\"EPHEMERIS_TYPE\":0," +
                "\"CLASSIFICATION_TYPE\":\"U\",\"NORAD_CAT_ID\":" + std::to_string(e.catalog) +
                ",\"ELEMENT_SET_NO\":999,\"REV_AT_EPOCH\":1000,\"BSTAR\":0.00012," +
                "\"MEAN_MOTION_DOT\":1e-05,\"MEAN_MOTION_DDOT\":0}";
    }
    return text + "]";
}

void BM_ReadOmmJson(benchmark::State& state) {
    const std::string text = Json(Sets(static_cast<int>(state.range(0))));
    for (auto _ : state) {
        std::vector<OrbitElements> out;
        ConversionReport report;
        std::string error;
        ReadElementText(text, &out, &report, &error);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_ReadOmmJson)->Arg(12000)->Unit(benchmark::kMillisecond);

void BM_ReadThreeLine(benchmark::State& state) {
    std::vector<OrbitElements> sets = Sets(static_cast<int>(state.range(0)));
    std::string text;
    for (const OrbitElements& e : sets)
        text += e.longName + "\n" + FormatLineOne(e) + "\n" + FormatLineTwo(e) + "\n";
    for (auto _ : state) {
        std::vector<OrbitElements> out;
        ConversionReport report;
        std::string error;
        ReadElementText(text, &out, &report, &error);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_ReadThreeLine)->Arg(12000)->Unit(benchmark::kMillisecond);

void BM_NamesAndFile(benchmark::State& state) {
    const std::vector<OrbitElements> sets = Sets(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        std::vector<OrbitElements> named = sets;
        for (OrbitElements& e : named) e.shortName.clear();
        AssignShortNames(&named, NamesTable(), {});
        const std::string file = FormatElementFile(named, "BENCH FROM VELORAN");
        benchmark::DoNotOptimize(file.data());
    }
}
BENCHMARK(BM_NamesAndFile)->Arg(12000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
