// The globe's options to and from the settings' records.
#include "views/globeoptions.h"

#include <algorithm>
#include <cmath>

namespace veloran {

GlobeOptions GlobeOptionsFromSettings(const SiteRec* site, const ViewPrefs* view) {
    GlobeOptions o;
    o.cameraPOV = std::clamp<int>(site->cameraPOV, 0, 3);
    o.resolution = std::clamp<int>(site->maxRezTex, 0, kGlobeWireFrame);
    // A never-stored distance reads as 0: the camera starts at its default.
    if (std::isfinite(site->cameraDistance) && site->cameraDistance > 0.0)
        o.cameraDistance = std::clamp(site->cameraDistance, kGlobeMinDistance, kGlobeMaxDistance);
    o.nightLight = std::clamp<int>(site->nightLight, 0, 100);
    o.trackList = view->globeTrackList != 0;
    o.groundCoverage = site->groundCoverage != 0;
    o.labels = site->displayMapLabels != 0;
    o.latLongLines = view->globeLatLongLines != 0;
    o.skyTrack = site->showSkyTrack != 0;
    o.groundTrack = site->showGroundTrack != 0;
    o.orbitalPlane = site->showOrbitalPlane != 0;
    o.cityLights = site->cityLights != 0;
    return o;
}

void StoreGlobeOptions(const GlobeOptions* o, SiteRec* site, ViewPrefs* view) {
    site->cameraPOV = static_cast<int16_t>(o->cameraPOV);
    site->maxRezTex = static_cast<int16_t>(o->resolution);
    site->cameraDistance = o->cameraDistance;
    site->nightLight = static_cast<int16_t>(o->nightLight);
    view->globeTrackList = o->trackList;
    site->groundCoverage = o->groundCoverage;
    site->displayMapLabels = o->labels;
    view->globeLatLongLines = o->latLongLines;
    site->showSkyTrack = o->skyTrack;
    site->showGroundTrack = o->groundTrack;
    site->showOrbitalPlane = o->orbitalPlane;
    site->cityLights = o->cityLights;
}

}  // namespace veloran
