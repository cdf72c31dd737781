// The station program's options, parsed for the window and --headless alike.

#include "station/stationoptions.h"

#include <cmath>

#include "station/options.h"

namespace veloran {

namespace {

const std::vector<std::string> kFlags = {"--auto", "--help"};
const std::vector<std::string> kKnown = {
    "--config-dir", "--data-dir",   "--time-offset", "--sat",        "--track",        "--auto",
    "--radio",      "--radio-port", "--rotor",       "--rotor-port", "--gateway-port", "--help"};

// A year either way is far more than the time slider reaches, and keeps the
// instant inside the 32-bit time base.
constexpr double kMaxTimeOffsetMinutes = 60.0 * 24 * 365;

void PrintHelp(const char* usage) {
    std::printf("%s\n", usage);
    std::printf(
        "  --config-dir DIR, --data-dir DIR  the settings/modes and element-set/places folders\n"
        "  --time-offset MINUTES             run ahead of (or behind) real time, like the time "
        "slider\n"
        "  --sat NAME                        the satellite to work\n"
        "  --track NAME,NAME,...             the track list;  --auto  pick from it by AOS and "
        "priority\n"
        "  --radio INDEX --radio-port PATH   the radio (driver index as in the preferences) and "
        "its port\n"
        "  --rotor INDEX --rotor-port PATH   the rotor controller and its port\n"
        "  --gateway-port PATH               the gateway board's port\n"
        "Every option can also come from the settings file (Veloran.conf); options win for this "
        "run only.\n");
}

}  // namespace

int ParseStationOptions(const char* usage, int argc, char** argv, StationOptions* out) {
    Arguments args;
    if (!ParseArguments(argc, argv, kFlags, &args)) return kUsageError;
    if (args.has("--help")) {
        PrintHelp(usage);
        return 0;
    }
    if (!CheckOptions(args, kKnown)) return kUsageError;
    if (!args.positional.empty()) return Fail("the station takes no file: " + args.positional[0]);
    double offset = 0, radio = -1, rotor = -1;
    if (!ParseNumber(args, "--time-offset", 0, &offset) ||
        !ParseNumber(args, "--radio", -1, &radio) || !ParseNumber(args, "--rotor", -1, &rotor))
        return kUsageError;
    if (std::fabs(offset) > kMaxTimeOffsetMinutes)
        return Fail("--time-offset is in minutes, at most a year either way");
    out->folders = {args.value("--data-dir"), args.value("--config-dir")};
    out->timeOffsetMinutes = offset;
    out->sat = args.value("--sat");
    out->hasTrack = args.has("--track");
    out->track = SplitNames(args.value("--track"));
    out->autoSelect = args.has("--auto");
    out->radio = static_cast<int>(radio);
    out->radioPort = args.value("--radio-port");
    out->rotor = static_cast<int>(rotor);
    out->rotorPort = args.value("--rotor-port");
    out->gatewayPort = args.value("--gateway-port");
    return -1;
}

}  // namespace veloran
