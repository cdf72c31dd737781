// The command-line tools' stand-ins for the window and the settings store,
// and the satellite table loaded through the application controller.
#pragma once

#include <string>
#include <vector>

#include "cli/options.h"
#include "engine/satrec.h"
#include "engine/siterec.h"

namespace veloran::cli {

// What look and passes work on.
struct LoadedSatellites {
    std::vector<SatRec> sats;  // the element-set file's satellites, in file order
    SatRec sun;                // for the eclipse test
};

// Loads the element-set file (the positional FILE, else the user's, else the
// bundled one) and the modes (--modes=FILE, else the user's modes file, else
// the bundled one) exactly as the program does, for `site`. --data-dir and
// --config-dir name the user's folders. False, with a message printed, when
// a named file cannot be opened.
bool LoadSatellites(const Arguments& args, const SiteRec& site, LoadedSatellites* out);

// Warns on standard error about element sets too old for their orbit at
// `now`: each by name, or a count and the oldest when there are many.
void WarnStaleElements(const std::vector<SatRec>& sats, uint32_t now);

}  // namespace veloran::cli
