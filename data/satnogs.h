// Transmitters from the SatNOGS DB (the public API's transmitters list as
// JSON) added to the user's modes file: the satellites and channels it lacks,
// frequencies in MHz, the communication mode from the bands and the mode,
// transponders at their passband centre. The user's own channels and edits
// always win; which channels came from an import is recorded in a side file,
// since the modes file's reader stops at a keyword it does not know.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "data/files.h"
#include "engine/satrec.h"

namespace veloran {

// One channel as the modes file holds it, made from one transmitter.
struct ImportedChannel {
    int32_t catalog = 0;
    std::string channel;  // the transmitter's description, cleaned and cut to fit
    int16_t commMode = 0;
    double upFreq = 0.0;    // MHz; 0 for receive-only
    double downFreq = 0.0;  // MHz
};

// Reads the transmitters list; inactive or dead transmitters, and those
// without a catalogue number or a downlink, are counted in *skipped. False,
// with *error set, when the text is not a JSON list.
bool ReadSatnogsTransmitters(const std::string& text, std::vector<ImportedChannel>* out,
                             int* skipped, std::string* error);

// The communication mode for a SatNOGS mode name, the frequencies in MHz
// (up 0 when there is none) and the inverting flag: FM between two bands is
// J_FM or B_FM, in one band REPEATER; linear transponders JA/B (inverting) or
// A/T (not) in SSB or CW by which band is higher; downlinks alone and data
// modes are received only (no uplink), in FM, wide FM (APT), AM or SSB.
int16_t CommModeFor(const std::string& mode, double upMHz, double downMHz, bool inverting,
                    double* upOut);

struct SatnogsImportResult {
    int satellitesAdded = 0;
    int channelsAdded = 0;
    int channelsUpdated = 0;  // imported before, unchanged by the user, new values now
    int keptUser = 0;         // the user's own or edited channels left as they were
    int alreadyThere = 0;     // the same frequencies are a channel already, under any name
    int skipped = 0;          // transmitters not imported (inactive, incomplete, no room)
    std::string message;
};

// The side file listing the channels that came from an import.
std::string ImportedChannelsPath(const DataPaths& paths);

// Imports the transmitters file into the user modes file (starting from the
// bundled one when the user has none). A transmitter whose frequencies are
// those of a channel the satellite has (within 1 kHz) is already there. Satellites are named by the
// element sets' short names, else the names tables, else "SAT" and the number. False, with the
// reason in result->message, when the file cannot be read or parsed, or the modes file cannot be
// written; nothing changes then.
bool ImportSatnogs(const std::string& transmittersPath, const DataPaths& paths,
                   SatnogsImportResult* result);

}  // namespace veloran
