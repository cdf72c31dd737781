// Command-line parsing shared by veloran-cli and the station front ends.

#include "station/options.h"

#include <strings.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "engine/observer.h"
#include "engine/timebase.h"

namespace veloran {

namespace {

const char* gProgramName = "veloran-cli";

// The program's start-up station until the user sets another.
constexpr double kDefaultLatitude = 43.7064;
constexpr double kDefaultLongitudeWest = 79.2442;
constexpr double kDefaultAltitudeM = 200.0;

bool ToNumber(const std::string& text, double* out) {
    if (text.empty()) return false;
    char* end = nullptr;
    errno = 0;
    const double v = std::strtod(text.c_str(), &end);
    if (errno != 0 || end == text.c_str() || *end != '\0' || !std::isfinite(v)) return false;
    *out = v;
    return true;
}

}  // namespace

bool Arguments::has(const std::string& name) const {
    for (const auto& o : options)
        if (o.first == name) return true;
    return false;
}

std::string Arguments::value(const std::string& name, const std::string& fallback) const {
    for (const auto& o : options)
        if (o.first == name) return o.second;
    return fallback;
}

bool ParseArguments(int argc, char** argv, const std::vector<std::string>& flags, Arguments* out) {
    for (int i = 0; i < argc; ++i) {
        std::string word = argv[i];
        if (word.rfind("--", 0) != 0 || word == "--") {
            out->positional.push_back(word);
            continue;
        }
        const size_t equals = word.find('=');
        if (equals != std::string::npos) {
            out->options.emplace_back(word.substr(0, equals), word.substr(equals + 1));
            continue;
        }
        bool isFlag = false;
        for (const auto& f : flags) isFlag = isFlag || f == word;
        if (isFlag) {
            out->options.emplace_back(word, "");
        } else if (i + 1 < argc) {
            out->options.emplace_back(word, argv[++i]);
        } else {
            Fail("option " + word + " needs a value");
            return false;
        }
    }
    return true;
}

void SetProgramName(const char* name) {
    gProgramName = name;
}
const char* ProgramName() {
    return gProgramName;
}

int Fail(const std::string& message) {
    std::fprintf(stderr, "%s: %s\n", gProgramName, message.c_str());
    return kUsageError;
}

bool ParseSite(const Arguments& args, SiteRec* site) {
    std::memset(site, 0, sizeof *site);
    site->siteLatDegs = kDefaultLatitude;
    site->siteLongDegs = kDefaultLongitudeWest;
    site->siteAltitudeM = kDefaultAltitudeM;
    if (args.has("--site")) {
        const std::string text = args.value("--site");
        double parts[3] = {0, 0, 0};
        int count = 0;
        size_t start = 0;
        bool ok = true;
        while (ok) {
            const size_t comma = text.find(',', start);
            const std::string piece =
                text.substr(start, comma == std::string::npos ? std::string::npos : comma - start);
            ok = count < 3 && ToNumber(piece, &parts[count]);
            ++count;
            if (comma == std::string::npos) break;
            start = comma + 1;
        }
        if (!ok || count < 2) {
            Fail(
                "--site wants LAT,LON[,ALT_M] in degrees (longitude east positive) and metres, not "
                "'" +
                text + "'");
            return false;
        }
        if (std::fabs(parts[0]) > 90.0 || std::fabs(parts[1]) > 180.0) {
            Fail("--site latitude must lie within +-90 and longitude within +-180 degrees");
            return false;
        }
        site->siteLatDegs = parts[0];
        site->siteLongDegs = -parts[1];  // the engine counts longitude west positive
        site->siteAltitudeM = count == 3 ? parts[2] : 0.0;
    }
    SitePreCalc(site);
    SiteCalculations(site);
    return true;
}

bool ParseTime(const Arguments& args, uint32_t* secs) {
    if (!args.has("--time")) {
        *secs = QFGetDateTimeUTC();
        return true;
    }
    const std::string text = args.value("--time");
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    char separator = 'T';
    int used = 0;
    int fields = std::sscanf(text.c_str(), "%4d-%2d-%2d%n%c%2d:%2d%n:%2d%n", &year, &month, &day,
                             &used, &separator, &hour, &minute, &used, &second, &used);
    std::string rest = text.substr(static_cast<size_t>(used));
    bool ok = (fields == 3 || fields == 6 || fields == 7) &&
              (separator == 'T' || separator == ' ') && (rest.empty() || rest == "Z");
    if (fields == 3 && text.size() != 10) ok = false;
    if (fields < 6) hour = minute = second = 0;
    ok = ok && month >= 1 && month <= 12 && day >= 1 && day <= 31 && hour >= 0 && hour <= 23 &&
         minute >= 0 && minute <= 59 && second >= 0 && second <= 59;
    if (!ok) {
        Fail("--time wants ISO 8601 UTC such as 2026-11-21T18:30:00Z, not '" + text + "'");
        return false;
    }
    // Time values count seconds since 1904 in 32 bits: they end in February 2040.
    const DateTimeRec rec{static_cast<int16_t>(year),
                          static_cast<int16_t>(month),
                          static_cast<int16_t>(day),
                          static_cast<int16_t>(hour),
                          static_cast<int16_t>(minute),
                          static_cast<int16_t>(second),
                          0};
    DateTimeRec back{};
    *secs = QFDateToSeconds(&rec);
    QFSecondsToDate(*secs, &back);
    if (year < 1904 || back.year != year || back.month != month || back.day != day) {
        Fail("--time " + text + " is not a date between 1904 and February 2040");
        return false;
    }
    return true;
}

bool CheckOptions(const Arguments& args, const std::vector<std::string>& known) {
    for (const auto& option : args.options) {
        bool ok = false;
        for (const auto& k : known) ok = ok || option.first == k;
        if (!ok) {
            Fail("unknown option " + option.first + " (try --help)");
            return false;
        }
    }
    return true;
}

std::vector<std::string> SplitNames(const std::string& text) {
    std::vector<std::string> names;
    size_t start = 0;
    while (start <= text.size()) {
        const size_t comma = text.find(',', start);
        const std::string name =
            text.substr(start, comma == std::string::npos ? std::string::npos : comma - start);
        if (!name.empty()) names.push_back(name);
        if (comma == std::string::npos) break;
        start = comma + 1;
    }
    return names;
}

bool ParseNumber(const Arguments& args, const std::string& name, double fallback, double* out) {
    *out = fallback;
    if (!args.has(name)) return true;
    if (ToNumber(args.value(name), out)) return true;
    Fail(name + " wants a number, not '" + args.value(name) + "'");
    return false;
}

std::string FormatIso(uint32_t secs) {
    DateTimeRec d{};
    QFSecondsToDate(secs, &d);
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02dZ", d.year, d.month, d.day,
                  d.hour, d.minute, d.second);
    return text;
}

std::string FormatDuration(uint32_t secs) {
    char text[32];
    std::snprintf(text, sizeof text, "%u:%02u:%02u", secs / 3600, secs / 60 % 60, secs % 60);
    return text;
}

bool SelectSatellite(const Arguments& args, const std::string& file, std::vector<SatRec>* sats) {
    if (!args.has("--sat")) return true;
    const std::string wanted = args.value("--sat");
    std::vector<SatRec> kept;
    for (const SatRec& s : *sats)
        if (strcasecmp(s.name, wanted.c_str()) == 0) kept.push_back(s);
    if (kept.empty()) {
        Fail("no satellite named " + wanted + " in " + file);
        return false;
    }
    *sats = std::move(kept);
    return true;
}

int ParseHamlibChoice(const Arguments& args, const char* name, int hamlibIndex, int* index,
                      int* model) {
    const std::string text = args.value(name);
    if (text.rfind("hamlib:", 0) != 0) return 0;
    const std::string number = text.substr(7);
    char* end = nullptr;
    const long value = number.empty() ? -1 : std::strtol(number.c_str(), &end, 10);
    if (number.empty() || *end != '\0' || value < 1 || value > 999999) {
        Fail(std::string(name) +
             " wants hamlib: and a Hamlib model number, such as hamlib:2, not '" + text + "'");
        return -1;
    }
    *index = hamlibIndex;
    *model = static_cast<int>(value);
    return 1;
}

}  // namespace veloran
