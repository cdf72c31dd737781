// The station program's options, parsed for the window and --headless alike.

#include "station/stationoptions.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "radio/drivers.h"
#include "radio/hamlibradio.h"
#include "rotor/hamlibrotor.h"
#include "rotor/rotor.h"
#include "serial/serial.h"
#include "station/options.h"

namespace veloran {

namespace {

const std::vector<std::string> kFlags = {"--auto", "--help", "--list-radios", "--list-rotors"};
const std::vector<std::string> kKnown = {"--config-dir",
                                         "--data-dir",
                                         "--time-offset",
                                         "--time",
                                         "--sat",
                                         "--track",
                                         "--auto",
                                         "--radio",
                                         "--radio-port",
                                         "--baud",
                                         "--icom-address",
                                         "--rotor",
                                         "--rotor-port",
                                         "--rotor-baud",
                                         "--gateway-port",
                                         "--site",
                                         "--keps-update-hours",
                                         "--list-radios",
                                         "--list-rotors",
                                         "--help"};

// A year either way is far more than the time slider reaches, and keeps the
// instant inside the 32-bit time base.
constexpr double kMaxTimeOffsetMinutes = 60.0 * 24 * 365;
// A CI-V address is one byte.
constexpr int kLargestIcomAddress = 0xFF;

void PrintHelp(const char* usage) {
    std::printf("%s\n", usage);
    std::printf(
        "  --config-dir DIR, --data-dir DIR   the settings/modes and element-set/places folders\n"
        "  --time UTC                         start at this instant (virtual time, "
        "2026-11-21T18:30:00Z)\n"
        "  --time-offset MINUTES              run ahead of (or behind) real time, like the time "
        "slider\n"
        "  --site LAT,LON,ALT_M               the station: degrees, longitude east positive, "
        "metres\n"
        "  --sat NAME                         the satellite to work\n"
        "  --track NAME,NAME,...              the track list;  --auto  pick from it by AOS and "
        "priority\n"
        "  --radio INDEX --radio-port PATH    the radio (see --list-radios) and its port\n"
        "  --radio hamlib:MODEL --radio-port PATH|HOST:PORT   a radio through Hamlib\n"
        "  --baud BPS  --icom-address ADDR    the radio's speed, and a CI-V address (0x60 or "
        "96)\n"
        "  --rotor INDEX --rotor-port PATH    the rotor controller (see --list-rotors) and its "
        "port\n"
        "  --rotor hamlib:MODEL --rotor-port PATH|HOST:PORT   a rotator through Hamlib\n"
        "  --rotor-baud BPS                   the rotor controller's speed\n"
        "  --gateway-port PATH                the gateway board's port\n"
        "  --keps-update-hours N              fetch current element sets every N hours (off "
        "unless given)\n"
        "  --list-radios, --list-rotors       the model indices and names\n"
        "Every option but --time, --keps-update-hours and the lists can also come from the "
        "settings\n"
        "file (Veloran.conf, keys listed in the README); options win for this run only.\n");
}

void ListRadios() {
    for (int i = 0; i < kRadioCount; ++i) {
        const RadioDriver* row = RadioDriverFor(i);
        if (row != nullptr && row->model != nullptr && row->model[0] != '\0')
            std::printf("%2d  %s\n", i, row->model);
    }
    for (const HamlibModel& m : HamlibRadioModels())
        std::printf("hamlib:%d  %s %s\n", m.number, m.maker.c_str(), m.model.c_str());
}

void ListRotors() {
    for (int i = 0; i < kRotorCount; ++i)
        if (rotorName(i) != nullptr) std::printf("%2d  %s\n", i, rotorName(i));
    for (const HamlibRotorModel& m : HamlibRotorModels())
        std::printf("hamlib:%d  %s %s\n", m.number, m.maker.c_str(), m.model.c_str());
}

// An index option within 0..count-1; `list` names the option that lists them.
bool ParseIndex(const Arguments& args, const char* name, int count, const char* list, int* out) {
    double value = -1;
    if (!ParseNumber(args, name, -1, &value)) return false;
    if (!args.has(name)) return true;
    if (value < 0 || value >= count || value != std::floor(value)) {
        Fail(std::string(name) + " wants an index from 0 to " + std::to_string(count - 1) + " (" +
             list + " names them), not '" + args.value(name) + "'");
        return false;
    }
    *out = static_cast<int>(value);
    return true;
}

// Bits per second into the baud table's index.
bool ParseBaud(const Arguments& args, const char* name, int* out) {
    if (!args.has(name)) return true;
    double bps = 0;
    if (!ParseNumber(args, name, 0, &bps)) return false;
    std::string choices;
    for (int i = 0; i < kBaudTableSize; ++i) {
        if (kBaudTable[i].speed == B0) continue;  // listed by the pop-up, unknown to termios
        if (kBaudTable[i].bitsPerSecond == bps) {
            *out = i;
            return true;
        }
        choices += (choices.empty() ? "" : ", ") + std::to_string(kBaudTable[i].bitsPerSecond);
    }
    Fail(std::string(name) + " wants one of " + choices + ", not '" + args.value(name) + "'");
    return false;
}

// "0x60", "60h" (hexadecimal, as radio manuals write CI-V addresses) or "96".
bool ParseIcomAddress(const Arguments& args, int* out) {
    if (!args.has("--icom-address")) return true;
    std::string text = args.value("--icom-address");
    int base = 10;
    if (text.size() > 2 && (text.rfind("0x", 0) == 0 || text.rfind("0X", 0) == 0)) {
        text = text.substr(2);
        base = 16;
    } else if (text.size() > 1 && (text.back() == 'h' || text.back() == 'H')) {
        text.pop_back();
        base = 16;
    }
    char* end = nullptr;
    const long value = text.empty() ? -1 : std::strtol(text.c_str(), &end, base);
    if (text.empty() || *end != '\0' || value < 0 || value > kLargestIcomAddress) {
        Fail("--icom-address wants a CI-V address from 0x00 to 0xFF (0x60 or 96), not '" +
             args.value("--icom-address") + "'");
        return false;
    }
    *out = static_cast<int>(value);
    return true;
}

// Refuses unknown words before their values are looked for, so "--bogus" at
// the end is an unknown option rather than one missing its value.
bool CheckWords(int argc, char** argv) {
    for (int i = 0; i < argc; ++i) {
        const std::string word = argv[i];
        if (word.rfind("--", 0) != 0 || word == "--") continue;
        const std::string name = word.substr(0, word.find('='));
        bool known = false;
        for (const std::string& k : kKnown) known = known || k == name;
        if (!known) {
            Fail("unknown option " + name + " (try --help)");
            return false;
        }
        bool flag = false;
        for (const std::string& f : kFlags) flag = flag || f == name;
        if (!flag && name == word) ++i;  // its value may look like anything
    }
    return true;
}

}  // namespace

int ParseStationOptions(const char* usage, int argc, char** argv, uint32_t now,
                        StationOptions* out) {
    Arguments args;
    if (!CheckWords(argc, argv) || !ParseArguments(argc, argv, kFlags, &args)) return kUsageError;
    if (args.has("--help")) {
        PrintHelp(usage);
        return 0;
    }
    if (args.has("--list-radios") || args.has("--list-rotors")) {
        if (args.has("--list-radios")) ListRadios();
        if (args.has("--list-rotors")) ListRotors();
        return 0;
    }
    if (!args.positional.empty()) return Fail("the station takes no file: " + args.positional[0]);
    double offset = 0, hours = 0;
    const int radioChoice =
        ParseHamlibChoice(args, "--radio", kHamlibRadio, &out->radio, &out->hamlibRadioModel);
    const int rotorChoice =
        ParseHamlibChoice(args, "--rotor", kHamlibRotor, &out->rotor, &out->hamlibRotorModel);
    if (radioChoice < 0 || rotorChoice < 0) return kUsageError;
    if (!ParseNumber(args, "--time-offset", 0, &offset) ||
        !ParseNumber(args, "--keps-update-hours", 0, &hours) ||
        (radioChoice == 0 &&
         !ParseIndex(args, "--radio", kRadioCount, "--list-radios", &out->radio)) ||
        (rotorChoice == 0 &&
         !ParseIndex(args, "--rotor", kRotorCount, "--list-rotors", &out->rotor)) ||
        !ParseBaud(args, "--baud", &out->radioBaud) ||
        !ParseBaud(args, "--rotor-baud", &out->rotorBaud) ||
        !ParseIcomAddress(args, &out->icomAddress))
        return kUsageError;
    if (args.has("--time")) {
        uint32_t start = 0;
        if (!ParseTime(args, &start)) return kUsageError;
        offset += std::round((static_cast<double>(start) - now) / 60.0);
    }
    if (std::fabs(offset) > kMaxTimeOffsetMinutes)
        return Fail("--time and --time-offset reach at most a year either way from now");
    if (hours < 0 || (hours > 0 && hours < 1))
        return Fail("--keps-update-hours wants at least 1 hour (0 or absent: never)");
    if (args.has("--site")) {
        SiteRec site;
        if (!ParseSite(args, &site)) return kUsageError;
        out->hasSite = true;
        out->siteLatDegs = site.siteLatDegs;
        out->siteLongDegsWest = site.siteLongDegs;
        out->siteAltitudeM = site.siteAltitudeM;
    }
    out->folders = {args.value("--data-dir"), args.value("--config-dir")};
    out->timeOffsetMinutes = offset;
    out->sat = args.value("--sat");
    out->hasTrack = args.has("--track");
    out->track = SplitNames(args.value("--track"));
    out->autoSelect = args.has("--auto");
    out->radioPort = args.value("--radio-port");
    out->rotorPort = args.value("--rotor-port");
    out->gatewayPort = args.value("--gateway-port");
    out->kepsUpdateHours = hours;
    return -1;
}

}  // namespace veloran
