// The order in which a tick feeds the map and the horizon.

#include "views/tickdrawing.h"

namespace veloran {

void DrawMapTick(map_2D_view* view, double epoch, const SatRec* sats, int32_t count,
                 int32_t mainIndex, const SiteRec* site, bool flipped) {
    if (site == nullptr) return;
    if (sats == nullptr) count = 0;
    if (mainIndex >= count) mainIndex = -1;
    setFollowSat(view, site->followSat_enabled != 0);
    if (site->displayTrackList) {
        for (int32_t i = 0; i < count; ++i) {
            const SatRec& s = sats[i];
            if (s.tracked && s.enabled && i != mainIndex) drawSatPath(view, &s, false);
        }
    }
    const SatRec* mainSat = mainIndex >= 0 ? &sats[mainIndex] : nullptr;
    drawSatPath(view, mainSat, true);
    drawGroundTrack(view, epoch, mainSat, site, true);
    drawSiteCross(view, site->siteLatRads, site->siteLongRads, site->deadSpotState, flipped);
}

void DrawHorizonTick(horizon_view* view, const SatRec* sats, int32_t count, const SiteRec* site) {
    if (site == nullptr || sats == nullptr) return;
    for (int32_t i = 0; i < count; ++i)
        if (sats[i].tracked) drawSat(view, &sats[i], site->siteMinElevDegs);
}

}  // namespace veloran
