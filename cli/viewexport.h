// What veloran-cli map and horizon share: the satellites of one instant with
// their live values, the track list, and writing the SVG.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cli/options.h"
#include "engine/satrec.h"
#include "engine/siterec.h"

namespace veloran::cli {

// The picture's inputs: the site, the instant, every satellite with its live
// values and next pass, which one is the main one, which are tracked.
struct ViewScene {
    SiteRec site;
    uint32_t now = 0;  // seconds since 1904
    std::vector<SatRec> sats;
    int main = -1;  // index into sats, -1 when there is none
};

// Reads the element file (the positional FILE or the bundled sample), the
// site and time, runs the live calculation for every satellite, picks the
// main satellite (--sat, else the first in view, else the next to rise) and
// marks the track list (--track NAME,NAME | all | none; default all).
bool LoadScene(const Arguments& args, ViewScene* scene);

// Writes the document to --out, or to standard output without it. Returns
// the process exit status.
int WriteOutput(const Arguments& args, const std::string& svg);

}  // namespace veloran::cli
