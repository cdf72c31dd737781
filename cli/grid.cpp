// veloran-cli grid: a Maidenhead locator from a position, or the centre of a
// locator's square.

#include "data/grid.h"

#include <cctype>
#include <cmath>
#include <cstdio>
#include <string>

#include "cli/commands.h"
#include "cli/options.h"

namespace veloran::cli {

int RunGrid(int argc, char** argv) {
    Arguments args;
    if (!ParseArguments(argc, argv, {}, &args)) return kUsageError;
    if (args.positional.size() == 2) {
        double lat = 0, lon = 0;
        Arguments coords;
        coords.options = {{"--lat", args.positional[0]}, {"--lon", args.positional[1]}};
        if (!ParseNumber(coords, "--lat", 0, &lat) || !ParseNumber(coords, "--lon", 0, &lon))
            return kUsageError;
        if (std::fabs(lat) > 90.0 || std::fabs(lon) > 180.0)
            return Fail("grid wants a latitude within +-90 and a longitude within +-180 degrees");
        char locator[7];
        LatLon_to_Grid(lat, -lon, locator);  // the conversion counts longitude west positive
        std::printf("%s\n", locator);
        return 0;
    }
    if (args.positional.size() != 1) return Fail("grid wants LAT LON or a LOCATOR (try --help)");
    // The field and sub-square letters are read as capitals, whatever was typed.
    std::string locator = args.positional[0];
    for (char& c : locator) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    double lat = 0, lon = 0;
    if (!Grid_toLatLon(locator.c_str(), &lon, &lat, true))
        return Fail("'" + args.positional[0] +
                    "' is not a 4- or 6-character locator such as FN03 or JJ00AA");
    std::printf("%.4f %.4f\n", lat, lon);
    return 0;
}

}  // namespace veloran::cli
