// veloran-cli passes: the passes of the coming hours, found by repeated live
// calculations, each starting just after the previous LOS.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/options.h"
#include "cli/services.h"
#include "engine/live.h"
#include "engine/timebase.h"

namespace veloran::cli {

namespace {

struct Pass {
    std::string name;
    uint32_t aos, maxTime, los;  // time values; los 0 when the pass outlasts the search
    double maxElevation;         // degrees
};

// Every pass of `sat` that begins before `end`.
void FindPasses(SatRec* sat, SiteRec* site, uint32_t start, uint32_t end, std::vector<Pass>* out) {
    const uint32_t spanSeconds = static_cast<uint32_t>(kSatelliteSearchSpan * 86400.0);
    uint32_t from = start;
    while (from < end) {
        // Pass times that the search does not reach keep their old values
        // in the record; clear the two this listing reads.
        sat->maxElevation = -90.0;
        sat->MAXETime = 0;
        SatelliteCalculationsV(EpochTime(from), kSatelliteSearchSpan, sat, site, 0, from, nullptr);
        if (sat->secondsToAOS == kSecondsToAOSUnknown) {
            from += spanSeconds;  // nothing in this window
            continue;
        }
        if (sat->AOSTime >= end) return;
        Pass p{sat->name, sat->AOSTime, sat->MAXETime, sat->secondsToLOS ? sat->LOSTime : 0,
               sat->maxElevation};
        if (p.maxTime < p.aos) p.maxTime = p.aos;  // already falling at the start
        out->push_back(p);
        if (p.los == 0) return;  // in view beyond the search: stationary or very high
        from = sat->LOSTime + 1;
    }
}

}  // namespace

int RunPasses(int argc, char** argv) {
    Arguments args;
    if (!ParseArguments(argc, argv, {"--modes"}, &args)) return kUsageError;
    if (args.positional.size() > 1) return Fail("passes wants one element-set FILE (try --help)");
    SiteRec site;
    uint32_t now = 0;
    double hours = 24;
    if (!ParseSite(args, &site) || !ParseTime(args, &now) ||
        !ParseNumber(args, "--hours", 24, &hours))
        return kUsageError;
    if (!(hours > 0 && hours <= 24 * 30)) return Fail("--hours must lie between 0 and 720");
    LoadedSatellites loaded;
    if (!LoadSatellites(args, site, &loaded)) return kUsageError;
    const std::string file = args.positional.empty() ? "the element sets" : args.positional[0];
    if (!SelectSatellite(args, file, &loaded.sats)) return kUsageError;
    std::vector<SatRec>& sats = loaded.sats;
    WarnStaleElements(sats, now);

    const uint32_t end = now + static_cast<uint32_t>(hours * 3600.0);
    std::vector<Pass> passes;
    for (SatRec& s : sats) FindPasses(&s, &site, now, end, &passes);
    std::stable_sort(passes.begin(), passes.end(),
                     [](const Pass& a, const Pass& b) { return a.aos < b.aos; });

    std::printf("Passes from %s for %.4g hours, site %.4f %c %.4f %c %.0f m\n",
                FormatIso(now).c_str(), hours, std::fabs(site.siteLatDegs),
                site.siteLatDegs < 0 ? 'S' : 'N', std::fabs(site.siteLongDegs),
                site.siteLongDegs > 0 ? 'W' : 'E', site.siteAltitudeM);
    std::printf("%-10s %-20s %-20s %6s %-20s %9s\n", "Name", "AOS", "Max elevation at", "MaxEl",
                "LOS", "Length");
    for (const Pass& p : passes) {
        const std::string los = p.los ? FormatIso(p.los) : "beyond search";
        const std::string length = p.los ? FormatDuration(p.los - p.aos) : "-";
        std::printf("%-10s %-20s %-20s %6.1f %-20s %9s\n", p.name.c_str(), FormatIso(p.aos).c_str(),
                    FormatIso(p.maxTime).c_str(), p.maxElevation, los.c_str(), length.c_str());
    }
    if (passes.empty()) std::printf("(no passes)\n");
    return 0;
}

}  // namespace veloran::cli
