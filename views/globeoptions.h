// The globe's display options between the settings' records (the site
// record and the controller's view preferences, where the keys "qcameraPOV"
// ... "qshowCityLights" are read and saved) and the scene's GlobeOptions.
#pragma once

#include "data/settings.h"
#include "engine/siterec.h"
#include "views/globescene.h"

namespace veloran {

// Out-of-range stored values (a hand-edited settings file) come back as the
// nearest usable option.
GlobeOptions GlobeOptionsFromSettings(const SiteRec* site, const ViewPrefs* view);
void StoreGlobeOptions(const GlobeOptions* options, SiteRec* site, ViewPrefs* view);

}  // namespace veloran
