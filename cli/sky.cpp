// veloran-cli sky: the polar sky plot of one satellite's current or next pass
// as an SVG file, with where the satellite is now and, when given, where the
// antenna was sent and where the rotor says it points.

#include <cstdio>
#include <string>

#include "cli/commands.h"
#include "cli/options.h"
#include "cli/viewexport.h"
#include "engine/timebase.h"
#include "views/skyplot.h"
#include "views/svgwriter.h"

namespace veloran::cli {

namespace {

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
    SkyPlotForPass(sat, &scene.site, EpochTime(scene.now), scene.now, &plot);
    DisplayList list;
    BuildSkyPlot(&plot, &list);
    return WriteOutput(args, WriteSvg(list, nullptr));
}

}  // namespace veloran::cli
