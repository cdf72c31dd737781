// veloran-cli map: the world map of one instant as an SVG file, with the
// footprints, crosses and names of the tracked satellites, the main
// satellite's ground track, the night side, the Sun and the site.

#include <unistd.h>

#include <cstdio>
#include <string>

#include "cli/commands.h"
#include "cli/options.h"
#include "cli/viewexport.h"
#include "engine/timebase.h"
#include "views/map2dview.h"
#include "views/svgwriter.h"
#include "views/tickdrawing.h"

namespace veloran::cli {

namespace {

bool FileExists(const std::string& path) {
    FILE* f = std::fopen(path.c_str(), "rb");
    if (f == nullptr) return false;
    std::fclose(f);
    return true;
}

// Where the map image lies: --maps DIR; else the build tree's folder; else
// share/veloran/maps beside an installed veloran-cli.
std::string MapImagePath(const Arguments& args, const std::string& name) {
    if (args.has("--maps")) return args.value("--maps") + "/" + name;
    const std::string built = std::string(VELORAN_MAP_DIR) + "/" + name;
    if (FileExists(built)) return built;
    char exe[4096];
    const ssize_t n = readlink("/proc/self/exe", exe, sizeof exe - 1);
    if (n > 0) {
        std::string dir(exe, static_cast<size_t>(n));
        dir = dir.substr(0, dir.find_last_of('/'));
        const std::string installed = dir + "/../share/veloran/maps/" + name;
        if (FileExists(installed)) return installed;
    }
    return built;
}

}  // namespace

int RunMap(int argc, char** argv) {
    Arguments args;
    if (!ParseArguments(argc, argv, {"--link-image"}, &args)) return kUsageError;
    if (!CheckOptions(
            args, {"--out", "--width", "--sat", "--track", "--time", "--site", "--maps", "--modes",
                   "--data-dir", "--config-dir", "--link-image", "--dead-spot"}))
        return kUsageError;
    double width = 1024, deadSpot = 0;
    if (!ParseNumber(args, "--width", 1024, &width) ||
        !ParseNumber(args, "--dead-spot", 0, &deadSpot))
        return kUsageError;
    if (MapImageName(static_cast<int32_t>(width)).empty() || width != static_cast<int32_t>(width))
        return Fail("--width must be 1024, 2048, 4096 or 8192");
    if (deadSpot != 0 && deadSpot != 1 && deadSpot != 2)
        return Fail("--dead-spot must be 0 (none), 1 (south) or 2 (north)");

    ViewScene scene;
    if (!LoadScene(args, &scene)) return kUsageError;
    scene.site.deadSpotState = static_cast<int32_t>(deadSpot);

    HelveticaEstimate measure;
    map_2D_view view;
    initWithFrame(&view, &measure);
    setMapWidth(&view, static_cast<int32_t>(width), RectF{0, 0, 0, 0}, false);
    // The footprints use the site height of the previous tick; here there
    // is no previous tick, so start from the site given.
    view.mSite = scene.site;
    // The export draws every tracked satellite, as the window does with the
    // track list shown, and never scrolls.
    scene.site.displayTrackList = 1;
    scene.site.followSat_enabled = 0;
    // No rotor here, so it never works flipped.
    DrawMapTick(&view, EpochTime(scene.now), scene.sats.data(),
                static_cast<int32_t>(scene.sats.size()), scene.main, &scene.site, false);

    // The export pictures the chosen instant, so the Sun and the night
    // follow --time as well.
    DisplayList list;
    drawRect(&view, scene.now, &list);

    const bool link = args.has("--link-image");
    const std::string svg = WriteSvg(list, [&](const std::string& name) {
        const std::string path = MapImagePath(args, name);
        std::string href;
        if (FileExists(path)) href = link ? path : ImageFileAsDataUri(path);
        if (href.empty())
            std::fprintf(stderr,
                         "veloran-cli: no map image %s (install xplanet-images and rebuild, "
                         "or give --maps DIR); drawing a plain sea\n",
                         path.c_str());
        return href;
    });
    return WriteOutput(args, svg);
}

}  // namespace veloran::cli
