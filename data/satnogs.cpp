// SatNOGS transmitters into the modes file.

#include "data/satnogs.h"

#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "data/cnumeric.h"
#include "data/kepsimport.h"
#include "data/modes.h"
#include "data/textline.h"

namespace veloran {

namespace {

// commMode values of the modes file.
constexpr int16_t kRepeater = 1, kJFm = 2, kJaSsb = 3, kBSsb = 4, kASsb = 5, kSimpFm = 6, kJaCw = 7,
                  kBCw = 8, kACw = 9, kBFm = 10, kWideFm = 12, kTSsb = 13, kTCw = 14, kSimpAm = 15,
                  kSimpSsb = 16;

// The whole SatNOGS database's transmitters list is a few megabytes.
constexpr long long kMaxTransmittersBytes = 32LL * 1024 * 1024;

// Channels this close in both directions are the same channel.
constexpr double kSameChannelMHz = 0.001;

// Frequencies a factor 1.5 apart are in different amateur bands (the
// closest pair used by satellites, 2 m and 70 cm, is a factor 3).
bool SameBand(double a, double b) {
    return std::max(a, b) < 1.5 * std::min(a, b);
}

double Hz(const nlohmann::json& record, const char* key) {
    const auto it = record.find(key);
    return it != record.end() && it->is_number() ? it->get<double>() : 0.0;
}

std::string Text(const nlohmann::json& record, const char* key) {
    const auto it = record.find(key);
    return it != record.end() && it->is_string() ? it->get<std::string>() : std::string();
}

std::string Upper(std::string s) {
    for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return s;
}

// A channel name the modes file keeps intact: no tabs or line ends, no
// leading or trailing blanks, at least one letter or digit, cut to fit.
std::string CleanChannel(const std::string& description) {
    std::string name;
    for (char c : description) {
        const unsigned char u = static_cast<unsigned char>(c);
        name += (u < 0x20 || u == 0x7f) ? ' ' : c;
    }
    const size_t b = name.find_first_not_of(' ');
    const size_t e = name.find_last_not_of(' ');
    name = b == std::string::npos ? "" : name.substr(b, e - b + 1);
    if (name.size() > sizeof(ModeRec::channel) - 1) name.resize(sizeof(ModeRec::channel) - 1);
    return nonBlank(name.c_str()) ? name : "Imported";
}

// The values an import wrote, to tell an untouched channel from an edited one.
std::string Fingerprint(const ModeRec& m) {
    const CNumericLocale cLocale;  // the side file is written as it is compared
    char text[128];
    char mode[kModeNameSize];
    ModeToStr(m.commMode, mode);
    std::snprintf(text, sizeof text, "%s\t%f\t%f", mode, m.upFreq, m.downFreq);
    return text;
}

void FillMode(ModeRec* m, const ImportedChannel& c) {
    *m = ModeRec{};
    std::snprintf(m->channel, sizeof m->channel, "%s", c.channel.c_str());
    m->commMode = c.commMode;
    m->upFreq = c.upFreq;
    m->downFreq = c.downFreq;
}

}  // namespace

int16_t CommModeFor(const std::string& rawMode, double upMHz, double downMHz, bool inverting,
                    double* upOut) {
    const std::string mode = Upper(rawMode);
    *upOut = 0.0;
    const bool twoWay = upMHz > 0.0 && downMHz > 0.0;
    if (mode == "FM" || mode == "FMN") {
        if (!twoWay) return kSimpFm;
        *upOut = upMHz;
        if (SameBand(upMHz, downMHz)) return kRepeater;
        return upMHz < downMHz ? kJFm : kBFm;
    }
    const bool ssb = mode == "SSB" || mode == "USB" || mode == "LSB";
    const bool cw = mode == "CW";
    if ((ssb || cw) && twoWay && !SameBand(upMHz, downMHz)) {
        *upOut = upMHz;
        if (inverting) {
            if (upMHz < downMHz) return ssb ? kJaSsb : kJaCw;
            return ssb ? kBSsb : kBCw;
        }
        if (upMHz > downMHz) return ssb ? kASsb : kACw;
        return ssb ? kTSsb : kTCw;
    }
    // Received only: beacons, telemetry and every data mode.
    if (mode == "APT") return kWideFm;
    if (mode == "AM") return kSimpAm;
    if (mode.find("PSK") != std::string::npos || ssb || cw) return kSimpSsb;
    return kSimpFm;  // AFSK, FSK, GMSK and the other FM-based data modes
}

bool ReadSatnogsTransmitters(const std::string& text, std::vector<ImportedChannel>* out,
                             int* skipped, std::string* error) {
    const nlohmann::json doc = nlohmann::json::parse(text, nullptr, false);
    if (doc.is_discarded() || !doc.is_array()) {
        *error = doc.is_discarded() ? "not valid JSON" : "not a list of transmitters";
        return false;
    }
    for (const nlohmann::json& t : doc) {
        if (!t.is_object()) {
            ++*skipped;
            continue;
        }
        const auto alive = t.find("alive");
        const auto cat = t.find("norad_cat_id");
        const bool dead = alive != t.end() && alive->is_boolean() && !alive->get<bool>();
        const std::string status = Text(t, "status");
        if (dead || (!status.empty() && status != "active") || cat == t.end() ||
            !cat->is_number_integer() || cat->get<int64_t>() <= 0 ||
            cat->get<int64_t>() > 999999999) {
            ++*skipped;
            continue;
        }
        // A transponder's range is worked at its centre; single channels
        // have only the low edge.
        const double downLow = Hz(t, "downlink_low"), downHigh = Hz(t, "downlink_high");
        const double upLow = Hz(t, "uplink_low"), upHigh = Hz(t, "uplink_high");
        const double down = (downHigh > 0 ? (downLow + downHigh) / 2 : downLow) / 1e6;
        const double up = (upHigh > 0 && upLow > 0 ? (upLow + upHigh) / 2 : upLow) / 1e6;
        if (!(down > 0.0) || !std::isfinite(down) || !std::isfinite(up)) {
            ++*skipped;
            continue;
        }
        const auto invert = t.find("invert");
        ImportedChannel c;
        c.catalog = static_cast<int32_t>(cat->get<int64_t>());
        c.channel = CleanChannel(Text(t, "description"));
        c.downFreq = down;
        c.commMode = CommModeFor(Text(t, "mode"), up, down,
                                 invert != t.end() && invert->is_boolean() && invert->get<bool>(),
                                 &c.upFreq);
        out->push_back(c);
    }
    return true;
}

std::string ImportedChannelsPath(const DataPaths& paths) {
    return paths.userModesFile + ".imported";
}

bool ImportSatnogs(const std::string& transmittersPath, const DataPaths& paths,
                   SatnogsImportResult* result) {
    *result = SatnogsImportResult();
    const std::string nothing = ". The modes file is unchanged.";
    std::string text, error;
    // A device or a folder would be read for ever or not at all.
    struct stat st {};
    if (stat(transmittersPath.c_str(), &st) == 0 &&
        (!S_ISREG(st.st_mode) || st.st_size > kMaxTransmittersBytes)) {
        result->message =
            transmittersPath +
            (S_ISREG(st.st_mode) ? " is larger than 32 MB" : " is not a regular file") + nothing;
        return false;
    }
    if (!ReadWholeFile(transmittersPath, &text)) {
        result->message = "cannot read " + transmittersPath + ": " + std::strerror(errno) + nothing;
        return false;
    }
    std::vector<ImportedChannel> channels;
    if (!ReadSatnogsTransmitters(text, &channels, &result->skipped, &error)) {
        result->message = transmittersPath + " is " + error + nothing;
        return false;
    }

    // Names: the element sets' short names, else the names tables.
    std::map<int32_t, std::string> names;
    for (const OrbitElements& e : ReadInstalledSets(paths.keplerFile))
        names.emplace(e.catalog, e.shortName);
    NamesTable table;
    LoadNamesTable(paths.userNamesFile, &table);
    LoadNamesTable(paths.defaultNamesFile, &table);
    names.insert(table.byCatalog.begin(), table.byCatalog.end());

    ModesFile modes;
    if (!modes.load(paths.userModesFile) && !modes.load(paths.defaultModesFile)) modes.setText("");
    std::set<std::string> imported;  // "SAT\tCHANNEL\tFINGERPRINT" lines of earlier imports
    std::string side;
    if (ReadWholeFile(ImportedChannelsPath(paths), &side)) {
        std::istringstream lines(side);
        std::string line;
        while (std::getline(lines, line))
            if (!line.empty() && line[0] != '#') imported.insert(line);
    }

    // The satellites touched, in the order first met.
    std::vector<std::string> order;
    std::map<std::string, std::unique_ptr<SatRec>> touched;
    std::set<std::string> changed;  // only these blocks are rewritten
    for (const ImportedChannel& c : channels) {
        const auto named = names.find(c.catalog);
        const std::string sat =
            named != names.end() ? named->second : "SAT" + std::to_string(c.catalog);
        auto& rec = touched[sat];
        if (!rec) {
            rec = std::make_unique<SatRec>();
            InitSatRec(rec.get());
            if (modes.getModes(rec.get(), sat.c_str()) == 0 && rec->enabled == 0) {
                std::snprintf(rec->name, sizeof rec->name, "%s", sat.c_str());
                rec->enabled = 1;
                ++result->satellitesAdded;
            }
            order.push_back(sat);
        }
        ModeRec wanted;
        FillMode(&wanted, c);
        int found = -1;
        for (int i = 0; i < rec->numberOfActiveChannels; ++i)
            if (c.channel == rec->modes[i].channel) found = i;
        if (found < 0) {
            bool same = false;
            for (int i = 0; i < rec->numberOfActiveChannels && !same; ++i)
                same = std::fabs(rec->modes[i].upFreq - wanted.upFreq) < kSameChannelMHz &&
                       std::fabs(rec->modes[i].downFreq - wanted.downFreq) < kSameChannelMHz;
            if (same) {
                ++result->alreadyThere;
                continue;
            }
            if (rec->numberOfActiveChannels >= kMaxModes) {
                ++result->skipped;
                continue;
            }
            rec->modes[rec->numberOfActiveChannels++] = wanted;
            ++result->channelsAdded;
            changed.insert(sat);
            continue;
        }
        ModeRec& have = rec->modes[found];
        const bool ours = imported.count(sat + "\t" + have.channel + "\t" + Fingerprint(have)) != 0;
        if (!ours) {
            ++result->keptUser;
        } else if (Fingerprint(have) != Fingerprint(wanted)) {
            imported.erase(sat + "\t" + have.channel + "\t" + Fingerprint(have));
            have = wanted;
            ++result->channelsUpdated;
            changed.insert(sat);
        }
    }
    // Record what is now ours: channels added or refreshed by this import.
    for (const std::string& sat : order) {
        const SatRec& rec = *touched[sat];
        for (int i = 0; i < rec.numberOfActiveChannels; ++i) {
            for (const ImportedChannel& c : channels) {
                ModeRec wanted;
                FillMode(&wanted, c);
                if (c.channel == rec.modes[i].channel &&
                    Fingerprint(wanted) == Fingerprint(rec.modes[i]))
                    imported.insert(sat + "\t" + rec.modes[i].channel + "\t" +
                                    Fingerprint(rec.modes[i]));
            }
        }
    }

    // The file is copied as it stands, each touched satellite's first block
    // rewritten in place and the new satellites added at the end.
    std::string current;
    if (!ReadWholeFile(paths.userModesFile, &current))
        ReadWholeFile(paths.defaultModesFile, &current);
    std::set<std::string> pending = changed;
    const bool written = AtomicWriteFile(paths.userModesFile, [&](FILE* out) {
        bool ok = true;
        bool skipping = false;  // inside a block being rewritten
        std::istringstream lines(current);
        std::string line;
        while (std::getline(lines, line)) {
            std::istringstream words(line);
            std::string key, name;
            if (words >> key >> name && key == "Satellite:") {
                skipping = pending.erase(name) != 0;
                if (skipping) WriteMode(out, *touched[name]);
            }
            if (!skipping) ok = ok && std::fprintf(out, "%s\n", line.c_str()) >= 0;
        }
        for (const std::string& sat : order)
            if (pending.count(sat) != 0) WriteMode(out, *touched[sat]);  // new satellites
        return ok;
    });
    std::string sideText = "# satellite\tchannel\tmode, uplink and downlink MHz as imported\n";
    for (const std::string& line : imported) sideText += line + "\n";
    if (!written || !AtomicWriteFile(ImportedChannelsPath(paths), [&sideText](FILE* out) {
            return std::fputs(sideText.c_str(), out) >= 0;
        })) {
        result->message = "cannot write " + paths.userModesFile + ": " + std::strerror(errno) +
                          (written ? "" : nothing);
        return false;
    }
    result->message = std::to_string(result->channelsAdded) + " channels added (" +
                      std::to_string(result->satellitesAdded) + " new satellites), " +
                      std::to_string(result->channelsUpdated) + " updated, " +
                      std::to_string(result->keptUser) + " of your own kept, " +
                      std::to_string(result->alreadyThere) + " already there, " +
                      std::to_string(result->skipped) + " transmitters skipped.";
    return true;
}

}  // namespace veloran
