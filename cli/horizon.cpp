// veloran-cli horizon: the eight-hour pass timeline of the tracked
// satellites as an SVG file.

#include <string>

#include "cli/commands.h"
#include "cli/options.h"
#include "cli/viewexport.h"
#include "views/horizonview.h"
#include "views/svgwriter.h"
#include "views/tickdrawing.h"

namespace veloran::cli {

int RunHorizon(int argc, char** argv) {
    Arguments args;
    if (!ParseArguments(argc, argv, {}, &args)) return kUsageError;
    if (!CheckOptions(args, {"--out", "--sat", "--track", "--time", "--site", "--min-elev",
                             "--modes", "--data-dir", "--config-dir"}))
        return kUsageError;
    double minElev = 0;
    if (!ParseNumber(args, "--min-elev", 0, &minElev)) return kUsageError;
    if (minElev < 0 || minElev > 90) return Fail("--min-elev must lie between 0 and 90 degrees");

    ViewScene scene;
    if (!LoadScene(args, &scene)) return kUsageError;
    scene.site.siteMinElevDegs = minElev;

    HelveticaEstimate measure;
    horizon_view view;
    initWithFrame(&view, RectF{0, 0, kHorizonDefaultWidth, kHorizonDefaultHeight}, &measure);
    // --sat shows that satellite alone, as in look and passes.
    if (args.has("--sat"))
        for (size_t i = 0; i < scene.sats.size(); ++i)
            scene.sats[i].tracked = static_cast<int>(i) == scene.main;
    DrawHorizonTick(&view, scene.sats.data(), static_cast<int32_t>(scene.sats.size()), &scene.site);
    DisplayList list;
    drawRect(&view, &list);
    return WriteOutput(args, WriteSvg(list, nullptr));
}

}  // namespace veloran::cli
