// The bundled satellites at one instant with every live value computed, as
// veloran-cli map loads them, for the builder and the screenshots.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "app/appcontroller.h"
#include "app/silentui.h"
#include "data/files.h"
#include "data/userdefaults.h"
#include "engine/live.h"
#include "engine/timebase.h"

namespace veloran::testing {

struct Scene {
    SiteRec site{};
    uint32_t now = 0;
    std::vector<SatRec> sats;  // the element-set file's, without the Sun and the Moon
    SatRec sun{};
};

// Loads resources/kepler.dat and mode.dat through the controller's loader
// for `site` (already pre-calculated) and computes every satellite at `now`;
// `mainIndex` gets the main satellite's calculation.
inline std::unique_ptr<Scene> LoadScene(const SiteRec& site, uint32_t now, int mainIndex,
                                        const std::string& scratch) {
    auto scene = std::make_unique<Scene>();
    scene->site = site;
    scene->now = now;
    DataPaths paths =
        DataPaths::InFolders(VELORAN_RESOURCE_DIR, scratch + "/no-data", scratch + "/no-config");
    paths.keplerFile = std::string(VELORAN_RESOURCE_DIR) + "/kepler.dat";
    SilentUserInterface ui;
    MemoryUserDefaults defaults;
    SystemClock clock;
    const Services services{.ui = &ui, .defaults = &defaults, .clock = &clock};
    auto controller = std::make_unique<AppController>(services, paths);
    controller->SetSiteRec(&scene->site);
    controller->loadKepsAndModes();
    const int total = controller->GetTotalSats();
    scene->sats.resize(static_cast<size_t>(total > 2 ? total - 2 : 0));
    for (int i = 0; i < total - 2; ++i)
        controller->GetSatelliteRecordByIndex(i, &scene->sats[static_cast<size_t>(i)]);
    controller->GetSatelliteRecordByIndex(total - 1, &scene->sun);
    const double t = EpochTime(now);
    SatelliteCalculationsV(t, kSunMoonSearchSpan, &scene->sun, &scene->site, 0, now, &scene->sun);
    for (size_t i = 0; i < scene->sats.size(); ++i)
        SatelliteCalculationsV(t, kSatelliteSearchSpan, &scene->sats[i], &scene->site,
                               static_cast<int>(i) == mainIndex, now, &scene->sun);
    return scene;
}

inline int FindSatellite(const Scene& scene, const std::string& name) {
    for (size_t i = 0; i < scene.sats.size(); ++i)
        if (name == scene.sats[i].name) return static_cast<int>(i);
    return -1;
}

}  // namespace veloran::testing
