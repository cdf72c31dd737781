// veloran-cli: stateless tools over the orbit engine and the data files.

#include <cstdio>
#include <cstring>

#include "cli/commands.h"
#include "cli/options.h"

namespace {

struct Command {
    const char* name;
    int (*run)(int argc, char** argv);
    const char* usage;
};

const Command kCommands[] = {
    {"look", veloran::cli::RunLook,
     "look [FILE] [--site LAT,LON,ALT_M] [--time UTC] [--sat NAME] [--modes | --modes=MODEFILE]\n"
     "      live azimuth, elevation, range, range rate, sub-satellite point, height,\n"
     "      eclipse, time to AOS and maximum elevation of every satellite in FILE;\n"
     "      --modes also lists each satellite's transponder modes"},
    {"passes", veloran::cli::RunPasses,
     "passes [FILE] [--site LAT,LON,ALT_M] [--time UTC] [--hours H | --days D] "
     "[--sat NAME,...]\n"
     "      [--min-elev DEG] [--csv] [--modes=MODEFILE]\n"
     "      the passes of the next H hours (default 24) or D days whose highest elevation\n"
     "      reaches DEG: AOS, maximum elevation, LOS, length, azimuths and sunlight"},
    {"map", veloran::cli::RunMap,
     "map [FILE] [--out SVG] [--width 1024|2048|4096|8192] [--sat NAME] [--track "
     "NAME,...|all|none]\n"
     "      [--time UTC] [--site LAT,LON,ALT_M] [--dead-spot 0|1|2] [--maps DIR] [--link-image]\n"
     "      the world map as SVG: footprints, ground track of the main satellite, night, Sun, "
     "site"},
    {"horizon", veloran::cli::RunHorizon,
     "horizon [FILE] [--out SVG] [--sat NAME | --track NAME,...|all|none] [--time UTC]\n"
     "      [--site LAT,LON,ALT_M] [--min-elev DEG]\n"
     "      the next eight hours of passes as SVG, coloured by maximum elevation"},
    {"sky", veloran::cli::RunSky,
     "sky [FILE] --sat NAME [--out SVG] [--time UTC] [--site LAT,LON,ALT_M] [--size PIXELS]\n"
     "      [--target AZ,EL] [--rotor AZ,EL]\n"
     "      the polar sky plot of the satellite's current or next pass as SVG, with where it\n"
     "      is now and the antenna's last target and reported position"},
    {"rotor", veloran::cli::RunRotor,
     "rotor --type INDEX|hamlib:MODEL --port PATH|HOST:PORT [--baud INDEX] [--debug]\n"
     "      [--read] AZ EL\n"
     "      points the rotor controller of type INDEX (0-11), or Hamlib's rotator MODEL\n"
     "      (2 for a rotctld at HOST:PORT), at AZ/EL degrees;\n"
     "      --debug shows the traffic, --read prints the position read back"},
    {"radio", veloran::cli::RunRadio,
     "radio --type INDEX|hamlib:MODEL --port PATH|HOST:PORT [--baud INDEX]\n"
     "      [--icom-address HEX] [--delay MS]\n"
     "      --up MHZ --down MHZ --mode NAME [--tone N] [--ctone N] [--force] [--debug]\n"
     "      one tuning update of the radio, as the tracker sends it each second"},
    {"keps", veloran::cli::RunKeps,
     "keps import FILE [--merge] | keps download [URL] [--merge] [--force] | keps sources\n"
     "      replaces the user's element sets from FILE (two-line sets with short or long\n"
     "      names, or OMM as CSV, JSON or XML) or from a download (https; the chosen source,\n"
     "      by default the AMSAT bulletin; the same address at most once every 2 hours\n"
     "      unless --force); --merge keeps the sets not in the new file, the newer epoch\n"
     "      winning; sources lists the download sources"},
    {"modes", veloran::cli::RunModes,
     "modes import-satnogs TRANSMITTERS.json\n"
     "      adds the satellites and channels of a SatNOGS DB transmitters list that the\n"
     "      user's modes file lacks; the user's own channels and edits are never changed"},
    {"grid", veloran::cli::RunGrid,
     "grid LAT LON | grid LOCATOR\n"
     "      the six-character Maidenhead locator of a position (longitude east positive),\n"
     "      or the latitude and longitude of the centre of a locator's square"},
    {"log", veloran::cli::RunLog,
     "log list [--since DATE] | log export --adif FILE|--csv FILE [--since DATE] | log import "
     "FILE | log callbook-password\n"
     "      the contact log in the data folder: list it, export it as ADIF for LoTW\n"
     "      (or CSV), or add the contacts of an ADIF file; callbook-password reads the\n"
     "      callsign service's password from the standard input into a private file"},
};

void PrintHelp(FILE* out) {
    std::fprintf(out, "usage: veloran-cli COMMAND [ARGS]\n\ncommands:\n");
    for (const Command& c : kCommands) std::fprintf(out, "  %s\n", c.usage);
    std::fprintf(
        out,
        "\nFILE is a two-line element file (a name line of 2 to 9 characters, then lines 1\n"
        "and 2); without it, the user's element sets, else the bundled ones. Modes come\n"
        "from MODEFILE, else the user's modes file, else the bundled mode.dat.\n"
        "--data-dir DIR and --config-dir DIR name the user's folders (default: the XDG\n"
        "folders, or $VELORAN_DATA_DIR and $VELORAN_CONFIG_DIR).\n"
        "--site takes latitude north positive and longitude EAST positive, in degrees,\n"
        "and height in metres; the default station is 43.7064 N, 79.2442 W, 200 m.\n"
        "--time takes ISO 8601 UTC, e.g. 2026-11-21T18:30:00Z; the default is now.\n");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2 || std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0 ||
        std::strcmp(argv[1], "help") == 0) {
        PrintHelp(argc < 2 ? stderr : stdout);
        return argc < 2 ? veloran::cli::kUsageError : 0;
    }
    for (const Command& c : kCommands) {
        if (std::strcmp(argv[1], c.name) != 0) continue;
        for (int i = 2; i < argc; ++i) {
            if (std::strcmp(argv[i], "--help") == 0) {
                std::printf("usage: veloran-cli %s\n", c.usage);
                return 0;
            }
        }
        return c.run(argc - 2, argv + 2);
    }
    return veloran::cli::Fail(std::string("unknown command '") + argv[1] + "' (try --help)");
}
