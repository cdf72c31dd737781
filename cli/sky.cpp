// veloran-cli sky: the polar sky plot of one satellite's current or next pass
// as an SVG file, with where the satellite is now and, when given, where the
// antenna was sent and where the rotor says it points.

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/options.h"
#include "cli/viewexport.h"
#include "engine/passfinder.h"
#include "engine/timebase.h"
#include "views/skyplot.h"
#include "views/svgwriter.h"

namespace veloran::cli {

namespace {

constexpr int kTrackSamples = 180;

// "AZ,EL" in degrees (elevation 0..180, as a rotor takes it).
bool ParseAngles(const Arguments& args, const std::string& name, bool* has, SkyDirection* out) {
    *has = args.has(name);
    if (!*has) return true;
    double az = 0, el = 0;
    char tail = 0;
    if (std::sscanf(args.value(name).c_str(), "%lf,%lf%c", &az, &el, &tail) != 2 ||
        !(az >= 0 && az <= 360 && el >= 0 && el <= 180)) {
        Fail(name + " wants AZ,EL in degrees (azimuth 0..360, elevation 0..180)");
        return false;
    }
    *out = SkyDirection{az, el};
    return true;
}

std::string Clock(uint32_t secs) {
    return FormatIso(secs).substr(11, 8);
}

}  // namespace

int RunSky(int argc, char** argv) {
    Arguments args;
    if (!ParseArguments(argc, argv, {}, &args)) return kUsageError;
    if (!CheckOptions(args, {"--out", "--sat", "--time", "--site", "--size", "--target", "--rotor",
                             "--modes", "--data-dir", "--config-dir"}))
        return kUsageError;
    if (!args.has("--sat")) return Fail("sky wants --sat NAME");
    double size = 400;
    if (!ParseNumber(args, "--size", 400, &size)) return kUsageError;
    if (!(size >= 100 && size <= 4000)) return Fail("--size must lie between 100 and 4000 pixels");
    SkyPlotScene plot;
    if (!ParseAngles(args, "--target", &plot.hasTarget, &plot.target) ||
        !ParseAngles(args, "--rotor", &plot.hasRotor, &plot.rotor))
        return kUsageError;
    ViewScene scene;
    if (!LoadScene(args, &scene)) return kUsageError;
    const SatRec* sat = &scene.sats[scene.main];

    plot.size = static_cast<float>(size);
    plot.hasSatellite = true;
    plot.satellite = SkyDirection{sat->azimuthDegs, sat->elevationDegs};
    plot.satelliteName = sat->name;
    plot.title = std::string(sat->name) + ", no pass in the next two days";

    // The pass in progress, searched from far enough back to find its AOS,
    // else the next one.
    const double now = EpochTime(scene.now);
    PassRec passes[64];
    const int count = FindPasses(sat, &scene.site, nullptr, now - 0.5, now + 2.0, 0.0, passes, 64);
    for (int i = 0; i < count && i < 64; ++i) {
        const PassRec& p = passes[i];
        if (p.losDay < now) continue;
        std::vector<double> az(kTrackSamples), el(kTrackSamples);
        const int n = LookAnglesOver(sat, &scene.site, p.aosDay, p.losDay, kTrackSamples, az.data(),
                                     el.data());
        for (int j = 0; j < n; ++j) plot.track.push_back({az[j], el[j]});
        const auto secs = [&](double day) {
            return scene.now + static_cast<uint32_t>(std::lround((day - now) * 86400.0));
        };
        char max[32];
        std::snprintf(max, sizeof max, "MAX %.1f\xC2\xB0 %s", p.maxElevationDegs,
                      Clock(secs(p.maxDay)).c_str());
        plot.aosText = "AOS " + Clock(secs(p.aosDay));
        plot.maxText = max;
        plot.losText = "LOS " + Clock(secs(p.losDay));
        plot.title =
            std::string(sat->name) + ", pass of " + FormatIso(secs(p.aosDay)).substr(0, 10);
        break;
    }
    DisplayList list;
    BuildSkyPlot(&plot, &list);
    return WriteOutput(args, WriteSvg(list, nullptr));
}

}  // namespace veloran::cli
