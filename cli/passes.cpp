// veloran-cli passes: every pass of the coming hours or days from the pass
// finder, as a table or as CSV. The satellites are shared out among the
// machine's cores.

#include <strings.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "cli/commands.h"
#include "cli/options.h"
#include "cli/services.h"
#include "engine/passfinder.h"
#include "engine/timebase.h"

namespace veloran::cli {

namespace {

struct Pass {
    const SatRec* sat;
    PassRec rec;
};

// Every pass of every satellite, each satellite's in time order.
std::vector<std::vector<PassRec>> FindAll(const std::vector<SatRec>& sats, const SiteRec* site,
                                          const SatRec* sun, double startDay, double endDay,
                                          double minElevationDegs) {
    std::vector<std::vector<PassRec>> found(sats.size());
    std::atomic<size_t> next{0};
    const auto work = [&] {
        for (size_t i = next++; i < sats.size(); i = next++) {
            std::vector<PassRec>& out = found[i];
            out.resize(32);
            int n = FindPasses(&sats[i], site, sun, startDay, endDay, minElevationDegs, out.data(),
                               static_cast<int>(out.size()));
            if (n > static_cast<int>(out.size())) {
                out.resize(n);
                n = FindPasses(&sats[i], site, sun, startDay, endDay, minElevationDegs, out.data(),
                               n);
            }
            out.resize(n);
        }
    };
    const unsigned cores = std::max(1u, std::thread::hardware_concurrency());
    const size_t helpers = std::min<size_t>(std::min(cores, 16u) - 1, sats.size() / 8);
    std::vector<std::thread> threads;
    for (size_t i = 0; i < helpers; ++i) threads.emplace_back(work);
    work();
    for (std::thread& t : threads) t.join();
    return found;
}

bool SelectSatellites(const Arguments& args, const std::string& file, std::vector<SatRec>* sats) {
    if (!args.has("--sat")) return true;
    const std::vector<std::string> wanted = SplitNames(args.value("--sat"));
    if (wanted.empty()) {
        Fail("--sat wants one or more names, separated by commas");
        return false;
    }
    std::vector<SatRec> kept;
    for (const SatRec& s : *sats)
        for (const std::string& name : wanted)
            if (strcasecmp(s.name, name.c_str()) == 0) {
                kept.push_back(s);
                break;
            }
    for (const std::string& name : wanted) {
        bool known = false;
        for (const SatRec& s : kept) known = known || strcasecmp(s.name, name.c_str()) == 0;
        if (!known) {
            Fail("no satellite named " + name + " in " + file);
            return false;
        }
    }
    *sats = std::move(kept);
    return true;
}

std::string Degrees(double value, int decimals) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.*f", decimals, value);
    return buf;
}

std::string Sunlit(const PassRec& p) {
    const auto word = [](Bool32 lit) { return lit ? std::string("yes") : std::string("no"); };
    return word(p.sunlitAtAOS) + "/" + word(p.sunlitAtMax) + "/" + word(p.sunlitAtLOS);
}

// A CSV field, quoted when it holds a separator or a quote.
std::string Field(const std::string& text) {
    if (text.find_first_of(",\"\n") == std::string::npos) return text;
    std::string quoted = "\"";
    for (char c : text) {
        if (c == '"') quoted += '"';
        quoted += c;
    }
    return quoted + "\"";
}

}  // namespace

int RunPasses(int argc, char** argv) {
    Arguments args;
    if (!ParseArguments(argc, argv, {"--modes", "--csv"}, &args)) return kUsageError;
    if (args.positional.size() > 1) return Fail("passes wants one element-set FILE (try --help)");
    SiteRec site;
    uint32_t now = 0;
    double hours = 24, days = 1, minElevation = 0;
    if (!ParseSite(args, &site) || !ParseTime(args, &now) ||
        !ParseNumber(args, "--hours", 24, &hours) || !ParseNumber(args, "--days", 1, &days) ||
        !ParseNumber(args, "--min-elev", 0, &minElevation))
        return kUsageError;
    if (args.has("--hours") && args.has("--days")) return Fail("give --hours or --days, not both");
    if (args.has("--days")) {
        if (!(days > 0 && days <= 30)) return Fail("--days must lie between 0 and 30");
        hours = days * 24;
    }
    if (!(hours > 0 && hours <= 24 * 30)) return Fail("--hours must lie between 0 and 720");
    if (!(minElevation >= 0 && minElevation <= 90))
        return Fail("--min-elev must lie between 0 and 90 degrees");
    LoadedSatellites loaded;
    if (!LoadSatellites(args, site, &loaded)) return kUsageError;
    const std::string file = args.positional.empty() ? "the element sets" : args.positional[0];
    if (!SelectSatellites(args, file, &loaded.sats)) return kUsageError;
    const std::vector<SatRec>& sats = loaded.sats;
    WarnStaleElements(sats, now);

    const double startDay = EpochTime(now);
    const double endDay = startDay + hours / 24.0;
    const std::vector<std::vector<PassRec>> found =
        FindAll(sats, &site, &loaded.sun, startDay, endDay, minElevation);
    std::vector<Pass> passes;
    for (size_t i = 0; i < sats.size(); ++i)
        for (const PassRec& p : found[i]) passes.push_back({&sats[i], p});
    std::stable_sort(passes.begin(), passes.end(),
                     [](const Pass& a, const Pass& b) { return a.rec.aosDay < b.rec.aosDay; });
    const auto secs = [&](double day) {
        return now + static_cast<uint32_t>(std::lround((day - startDay) * 86400.0));
    };

    const bool csv = args.has("--csv");
    if (csv) {
        std::printf(
            "name,aos,max_time,max_elevation,los,length,aos_azimuth,max_azimuth,los_azimuth,"
            "sunlit_aos,sunlit_max,sunlit_los\n");
    } else {
        std::printf("Passes from %s for %.4g hours, site %.4f %c %.4f %c %.0f m\n",
                    FormatIso(now).c_str(), hours, std::fabs(site.siteLatDegs),
                    site.siteLatDegs < 0 ? 'S' : 'N', std::fabs(site.siteLongDegs),
                    site.siteLongDegs > 0 ? 'W' : 'E', site.siteAltitudeM);
        std::printf("%-10s %-20s %-20s %6s %-20s %9s %6s %6s %6s %s\n", "Name", "AOS",
                    "Max elevation at", "MaxEl", "LOS", "Length", "AOSAz", "MaxAz", "LOSAz",
                    "Sunlit AOS/max/LOS");
    }
    for (const Pass& pass : passes) {
        const PassRec& p = pass.rec;
        const uint32_t aos = secs(p.aosDay), los = secs(p.losDay);
        const std::string aosText = FormatIso(aos), maxText = FormatIso(secs(p.maxDay));
        const std::string el = Degrees(p.maxElevationDegs, 1);
        const std::string aosAz = Degrees(p.aosAzimuthDegs, 0);
        const std::string maxAz = Degrees(p.maxAzimuthDegs, 0);
        const std::string losAz = p.upAtEnd ? "-" : Degrees(p.losAzimuthDegs, 0);
        if (csv) {
            const std::string losText = p.upAtEnd ? "" : FormatIso(los);
            const std::string length = p.upAtEnd ? "" : FormatDuration(los - aos);
            std::printf("%s,%s,%s,%s,%s,%s,%s,%s,%s,%d,%d,%d\n", Field(pass.sat->name).c_str(),
                        aosText.c_str(), maxText.c_str(), el.c_str(), losText.c_str(),
                        length.c_str(), aosAz.c_str(), maxAz.c_str(),
                        p.upAtEnd ? "" : losAz.c_str(), p.sunlitAtAOS ? 1 : 0,
                        p.sunlitAtMax ? 1 : 0, p.sunlitAtLOS ? 1 : 0);
            continue;
        }
        const std::string losText = p.upAtEnd ? "beyond search" : FormatIso(los);
        const std::string length = p.upAtEnd ? "-" : FormatDuration(los - aos);
        std::printf("%-10s %-20s %-20s %6s %-20s %9s %6s %6s %6s %s\n", pass.sat->name,
                    aosText.c_str(), maxText.c_str(), el.c_str(), losText.c_str(), length.c_str(),
                    aosAz.c_str(), maxAz.c_str(), losAz.c_str(), Sunlit(p).c_str());
    }
    if (passes.empty() && !csv) std::printf("(no passes)\n");
    return 0;
}

}  // namespace veloran::cli
