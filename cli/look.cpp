// veloran-cli look: the live values of every satellite at one instant.

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/options.h"
#include "cli/services.h"
#include "data/modes.h"
#include "engine/live.h"
#include "engine/timebase.h"

namespace veloran::cli {

namespace {

// One line per transponder mode, frequencies in MHz; tones are CTCSS table
// indices (0: none).
void PrintModes(const SatRec& s) {
    if (s.numberOfActiveChannels < 1) {
        std::printf("    (no modes)\n");
        return;
    }
    for (int i = 0; i < s.numberOfActiveChannels && i < kMaxModes; ++i) {
        const ModeRec& m = s.modes[i];
        char mode[kModeNameSize];
        ModeToStr(m.commMode, mode);
        std::printf("    %-12s %-9s up %11.6f  down %11.6f  beacon %11.6f  tone %d/%d\n", m.channel,
                    mode, m.upFreq, m.downFreq, m.beaconFreq, m.gTone, m.gCTone);
    }
}

}  // namespace

int RunLook(int argc, char** argv) {
    Arguments args;
    if (!ParseArguments(argc, argv, {"--modes"}, &args)) return kUsageError;
    if (args.positional.size() > 1) return Fail("look wants one element-set FILE (try --help)");
    SiteRec site;
    uint32_t now = 0;
    const bool showModes = args.has("--modes");
    if (!ParseSite(args, &site) || !ParseTime(args, &now)) return kUsageError;
    LoadedSatellites loaded;
    if (!LoadSatellites(args, site, &loaded)) return kUsageError;
    const std::string file = args.positional.empty() ? "the element sets" : args.positional[0];
    if (!SelectSatellite(args, file, &loaded.sats)) return kUsageError;
    std::vector<SatRec>& sats = loaded.sats;
    WarnStaleElements(sats, now);

    const double t = EpochTime(now);
    SatRec& sun = loaded.sun;
    SatelliteCalculationsV(t, kSunMoonSearchSpan, &sun, &site, 0, now, &sun);

    std::printf("%s UTC, site %.4f %c %.4f %c %.0f m\n", FormatIso(now).c_str(),
                std::fabs(site.siteLatDegs), site.siteLatDegs < 0 ? 'S' : 'N',
                std::fabs(site.siteLongDegs), site.siteLongDegs > 0 ? 'W' : 'E',
                site.siteAltitudeM);
    std::printf("%-10s %6s %6s %9s %8s %7s %8s %8s %4s %10s %6s\n", "Name", "Az", "El", "Range km",
                "RR km/s", "Lat", "Lon", "Height", "Ecl", "AOS in", "MaxEl");
    for (SatRec& s : sats) {
        SatelliteCalculationsV(t, kSatelliteSearchSpan, &s, &site, 0, now, &sun);
        std::string aos;
        if (s.AOS)
            aos = "in view";
        else if (s.secondsToAOS == kSecondsToAOSUnknown)
            aos = "none";
        else
            aos = FormatDuration(s.secondsToAOS);
        // Shown east positive, in (-180, 180], like every map a user knows.
        double lonEast = -s.subSatPtLongitudeDegs;
        if (lonEast <= -180.0) lonEast += 360.0;
        std::printf("%-10s %6.1f %6.1f %9.1f %8.3f %7.2f %8.2f %8.1f %4s %10s %6.1f\n", s.name,
                    s.azimuthDegs, s.elevationDegs, s.satRange, -s.satVelocity,
                    s.subSatPtLatitudeDegs, lonEast, s.satAltitude, s.eclipsed ? "yes" : "no",
                    aos.c_str(), s.maxElevation);
        if (showModes) PrintModes(s);
    }
    return 0;
}

}  // namespace veloran::cli
