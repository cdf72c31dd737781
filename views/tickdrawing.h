// What one main-timer tick feeds the map and the horizon: which satellites,
// in which order, with which flags. The desktop window's builder and the
// command line's export both go through here, so the two pictures of the
// same instant are the same.
#pragma once

#include <cstdint>

#include "engine/satrec.h"
#include "engine/siterec.h"
#include "views/horizonview.h"
#include "views/map2dview.h"

namespace veloran {

// The map's share of a tick: the follow switch from the site; when the site
// shows the track list, the footprint of every tracked and enabled satellite
// other than the main one; then the main satellite (index 0-based into
// `sats`, -1 for none) with its ground track from `epoch` (epoch day); then
// the site mark with its dead-spot line, red when `flipped`.
void DrawMapTick(map_2D_view* view, double epoch, const SatRec* sats, int32_t count,
                 int32_t mainIndex, const SiteRec* site, bool flipped);

// The horizon's share: the next pass of every tracked satellite, with the
// site's minimum elevation line.
void DrawHorizonTick(horizon_view* view, const SatRec* sats, int32_t count, const SiteRec* site);

}  // namespace veloran
