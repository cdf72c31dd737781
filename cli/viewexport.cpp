// Shared steps of veloran-cli map and horizon.

#include "cli/viewexport.h"

#include <strings.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>

#include "cli/services.h"
#include "engine/live.h"
#include "engine/timebase.h"
#include "views/svgwriter.h"

namespace veloran::cli {

namespace {

int FindByName(const std::vector<SatRec>& sats, const std::string& name) {
    for (size_t i = 0; i < sats.size(); ++i)
        if (strcasecmp(sats[i].name, name.c_str()) == 0) return static_cast<int>(i);
    return -1;
}

}  // namespace

bool LoadScene(const Arguments& args, ViewScene* scene) {
    if (args.positional.size() > 1) {
        Fail("give at most one element-set FILE (try --help)");
        return false;
    }
    const std::string file = args.positional.empty() ? "the element sets" : args.positional[0];
    if (!ParseSite(args, &scene->site) || !ParseTime(args, &scene->now)) return false;
    LoadedSatellites loaded;
    if (!LoadSatellites(args, scene->site, &loaded)) return false;
    scene->sats = std::move(loaded.sats);
    if (scene->sats.empty()) {
        Fail("no element sets in " + file);
        return false;
    }

    for (SatRec& s : scene->sats) s.tracked = 1;
    if (args.has("--track")) {
        const std::string list = args.value("--track");
        if (strcasecmp(list.c_str(), "none") == 0) {
            for (SatRec& s : scene->sats) s.tracked = 0;
        } else if (strcasecmp(list.c_str(), "all") != 0) {
            for (SatRec& s : scene->sats) s.tracked = 0;
            for (const std::string& name : SplitNames(list)) {
                const int i = FindByName(scene->sats, name);
                if (i < 0) {
                    Fail("--track: no satellite named " + name + " in " + file);
                    return false;
                }
                scene->sats[i].tracked = 1;
            }
        }
    }
    scene->main = -1;
    if (args.has("--sat")) {
        scene->main = FindByName(scene->sats, args.value("--sat"));
        if (scene->main < 0) {
            Fail("no satellite named " + args.value("--sat") + " in " + file);
            return false;
        }
    }

    const double t = EpochTime(scene->now);
    SatRec& sun = loaded.sun;
    SatelliteCalculationsV(t, kSunMoonSearchSpan, &sun, &scene->site, 0, scene->now, &sun);
    for (size_t i = 0; i < scene->sats.size(); ++i)
        SatelliteCalculationsV(t, kSatelliteSearchSpan, &scene->sats[i], &scene->site,
                               static_cast<int>(i) == scene->main, scene->now, &sun);

    if (scene->main < 0) {
        // As the program would pick without priorities: in view first, else the next to rise.
        uint32_t best = UINT32_MAX;
        for (size_t i = 0; i < scene->sats.size(); ++i) {
            const SatRec& s = scene->sats[i];
            const uint32_t key = s.AOS ? 0 : s.secondsToAOS;
            if (key < best) {
                best = key;
                scene->main = static_cast<int>(i);
            }
        }
    }
    return true;
}

int WriteOutput(const Arguments& args, const std::string& svg) {
    const std::string out = args.value("--out", "-");
    if (out == "-") {
        std::fwrite(svg.data(), 1, svg.size(), stdout);
        return std::fflush(stdout) == 0 ? 0 : 1;
    }
    if (!WriteTextFile(out, svg)) {
        Fail("cannot write " + out + ": " + std::strerror(errno));
        return 1;
    }
    return 0;
}

}  // namespace veloran::cli
