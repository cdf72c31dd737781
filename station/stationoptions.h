// The options of the station program, shared by the window and --headless:
// parsed once into a plain record, then laid over the settings for this run
// only (they are never written into Veloran.conf).
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "data/files.h"

namespace veloran {

struct StationOptions {
    PathOverrides folders;           // --data-dir, --config-dir
    double timeOffsetMinutes = 0;    // --time-offset: like the time slider, minutes
    std::string sat;                 // --sat: the satellite to work, empty for the saved one
    bool hasTrack = false;           // --track given (possibly empty)
    std::vector<std::string> track;  // --track NAME,NAME,...
    bool autoSelect = false;         // --auto: pick from the track list
    int radio = -1;                  // --radio: driver index, -1 for the saved one
    std::string radioPort;           // --radio-port: device path, empty for the saved port
    int rotor = -1;                  // --rotor
    std::string rotorPort;           // --rotor-port
    std::string gatewayPort;         // --gateway-port
};

// Parses the words after the program name (and after "--headless"). Returns
// -1 when the station should run, else the exit status: 0 after --help
// (`usage`, then the option list, on standard output), 2 after a mistake
// (said on standard error, prefixed with ProgramName()).
int ParseStationOptions(const char* usage, int argc, char** argv, StationOptions* out);

}  // namespace veloran
