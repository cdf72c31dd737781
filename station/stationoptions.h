// The options of the station program, shared by the window and --headless:
// parsed once into a plain record, then laid over the settings for this run
// only (they are never written into Veloran.conf).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "data/files.h"

namespace veloran {

struct StationOptions {
    PathOverrides folders;           // --data-dir, --config-dir
    double timeOffsetMinutes = 0;    // --time-offset, and --time as an offset: like the time slider
    std::string sat;                 // --sat: the satellite to work, empty for the saved one
    bool hasTrack = false;           // --track given (possibly empty)
    std::vector<std::string> track;  // --track NAME,NAME,...
    bool autoSelect = false;         // --auto: pick from the track list
    int radio = -1;                  // --radio: driver index, -1 for the saved one
    int hamlibRadioModel = -1;       // --radio hamlib:MODEL: Hamlib's model number, -1 none
    std::string radioPort;           // --radio-port: device path, empty for the saved port
    int radioBaud = -1;              // --baud, as an index of the baud table; -1 saved
    int icomAddress = -1;            // --icom-address, 0..255; -1 saved
    int rotor = -1;                  // --rotor
    int hamlibRotorModel = -1;       // --rotor hamlib:MODEL
    std::string rotorPort;           // --rotor-port
    int rotorBaud = -1;              // --rotor-baud, as a baud-table index
    std::string gatewayPort;         // --gateway-port
    bool hasSite = false;            // --site LAT,LON,ALT_M given
    double siteLatDegs = 0;          // north positive
    double siteLongDegsWest = 0;     // west positive, as the settings keep it
    double siteAltitudeM = 0;
    double kepsUpdateHours = 0;  // --keps-update-hours: fetch element sets this often; 0 never
};

// Parses the words after the program name (and after "--headless"). Returns
// -1 when the station should run, else the exit status: 0 after --help,
// --list-radios or --list-rotors (`usage`, then the option list, or the
// list, on standard output), 2 after a mistake (said on standard error,
// prefixed with ProgramName()). `now` (seconds since 1904) turns --time into
// an offset.
int ParseStationOptions(const char* usage, int argc, char** argv, uint32_t now,
                        StationOptions* out);

}  // namespace veloran
