// Short names, the side table, merging and the replacement of the
// element-set file.

#include "data/kepsimport.h"

#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <sstream>
#include <unordered_map>

#include "data/files.h"
#include "data/settings.h"

namespace veloran {

namespace {

constexpr size_t kMaxShortName = 9;
// A source file larger than this is not an element-set file anyone sends.
constexpr long long kMaxSourceBytes = 32LL * 1024 * 1024;

std::string Trim(const std::string& s) {
    size_t b = 0, e = s.size();
    while (b < e && std::isspace(static_cast<unsigned char>(s[b]))) ++b;
    while (e > b && std::isspace(static_cast<unsigned char>(s[e - 1]))) --e;
    return s.substr(b, e - b);
}

// Short-name candidates of a long name, in the order they are tried.
std::vector<std::string> Candidates(const std::string& longName) {
    std::vector<std::string> out;
    std::string plain = longName;
    const size_t open = longName.rfind('(');
    const size_t close = open == std::string::npos ? open : longName.find(')', open);
    if (close != std::string::npos) {
        out.push_back(Trim(longName.substr(open + 1, close - open - 1)));
        plain = longName.substr(0, open);  // "SAUDISAT 1C" of "SAUDISAT 1C (SO-50)"
    }
    std::string hyphenated = Trim(plain);
    std::replace(hyphenated.begin(), hyphenated.end(), ' ', '-');
    out.push_back(hyphenated);
    std::istringstream words(plain);
    std::string first;
    if (words >> first) out.push_back(first);
    return out;
}

// "NAME" -> "NAME-2": the suffix always fits, the name is cut for it.
std::string Numbered(const std::string& name, int n) {
    const std::string suffix = "-" + std::to_string(n);
    return name.substr(0, kMaxShortName - suffix.size()) + suffix;
}

bool IsRegularFile(const std::string& path, std::string* why) {
    struct stat st {};
    if (stat(path.c_str(), &st) != 0) {
        *why = std::strerror(errno);
        return false;
    }
    if (!S_ISREG(st.st_mode)) {
        *why = "not a regular file";
        return false;
    }
    if (st.st_size > kMaxSourceBytes) {
        *why = "larger than 32 MB";
        return false;
    }
    return true;
}

// The source's own "FROM" line (the AMSAT bulletin's date), else ours.
std::string HeaderFor(const std::string& text, const std::string& label) {
    if (DetectElementFormat(text) == ElementFormat::TwoLine) {
        std::istringstream lines(text);
        std::string line, found;
        while (std::getline(lines, line)) {
            if (!line.empty() && line.back() == '\r') line.pop_back();
            if (line.find("FROM") != std::string::npos && line.size() > 10 &&
                line.compare(0, 2, "1 ") != 0 && line.compare(0, 2, "2 ") != 0)
                found = line;
        }
        if (!found.empty()) return found;
    }
    char date[32];
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    gmtime_r(&now, &utc);
    std::strftime(date, sizeof date, "%Y-%m-%d %H:%M UTC", &utc);
    return "Element sets FROM " + label + ", converted " + date;
}

}  // namespace

bool LoadNamesTable(const std::string& path, NamesTable* table) {
    std::string text;
    if (!ReadWholeFile(path, &text)) return false;
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        const size_t hash = line.find('#');
        if (hash != std::string::npos) line.erase(hash);
        std::istringstream words(line);
        std::string number, name;
        if (!(words >> number >> name)) continue;
        const int32_t catalog =
            number.size() == 5 && std::isalpha(static_cast<unsigned char>(number[0]))
                ? ParseCatalogNumber(number.c_str())
                : std::atoi(number.c_str());
        if (catalog > 0 && IsShortName(name)) table->byCatalog.emplace(catalog, name);
    }
    return true;
}

bool IsShortName(const std::string& name) {
    if (name.size() < 2 || name.size() > kMaxShortName) return false;
    for (char c : name)
        if (!std::isgraph(static_cast<unsigned char>(c))) return false;
    return true;
}

void AssignShortNames(std::vector<OrbitElements>* sets, const NamesTable& table,
                      const std::set<std::string>& modesNames) {
    // The Moon and the Sun join the table under these names after loading.
    std::set<std::string> taken = {"Moon", "Sun"};
    // Names already given (sets kept from the current file) stay as they are.
    for (OrbitElements& e : *sets) {
        if (!e.shortName.empty() && IsShortName(e.shortName) && taken.insert(e.shortName).second)
            continue;
        e.shortName.clear();
    }
    // The names table's names first, so that a satellite the modes file
    // knows keeps its name when another set would want it too.
    for (OrbitElements& e : *sets) {
        if (!e.shortName.empty()) continue;
        const auto it = table.byCatalog.find(e.catalog);
        if (it != table.byCatalog.end() && taken.insert(it->second).second)
            e.shortName = it->second;
    }
    for (OrbitElements& e : *sets) {
        if (!e.shortName.empty()) continue;
        std::string chosen;
        for (const std::string& c : Candidates(e.longName)) {
            if (!IsShortName(c)) continue;
            if (chosen.empty()) chosen = c;
            if (modesNames.count(c) != 0 && taken.count(c) == 0) {
                chosen = c;
                break;
            }
        }
        if (chosen.empty()) chosen = "SAT" + std::to_string(e.catalog);
        std::string name = chosen;
        for (int n = 2; taken.count(name) != 0; ++n) name = Numbered(chosen, n);
        taken.insert(name);
        e.shortName = name;
    }
}

std::set<std::string> ModesFileNames(const std::string& modesText) {
    std::set<std::string> names;
    std::istringstream lines(modesText);
    std::string line;
    while (std::getline(lines, line)) {
        std::istringstream words(line);
        std::string key, name;
        if (words >> key >> name && key == "Satellite:") names.insert(name);
    }
    return names;
}

std::string SideTablePath(const std::string& keplerFile) {
    const size_t dot = keplerFile.rfind('.');
    const size_t slash = keplerFile.rfind('/');
    const bool hasExt = dot != std::string::npos && (slash == std::string::npos || dot > slash);
    return (hasExt ? keplerFile.substr(0, dot) : keplerFile) + ".names";
}

std::map<std::string, SideEntry> ReadSideTable(const std::string& keplerFile) {
    std::map<std::string, SideEntry> table;
    std::string text;
    if (!ReadWholeFile(SideTablePath(keplerFile), &text)) return table;
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        if (line.empty() || line[0] == '#') continue;
        const size_t t1 = line.find('\t');
        const size_t t2 = t1 == std::string::npos ? t1 : line.find('\t', t1 + 1);
        if (t2 == std::string::npos) continue;
        SideEntry entry;
        entry.catalog = std::atoi(line.substr(t1 + 1, t2 - t1 - 1).c_str());
        entry.longName = line.substr(t2 + 1);
        if (!entry.longName.empty() && entry.longName.back() == '\r') entry.longName.pop_back();
        table[line.substr(0, t1)] = entry;
    }
    return table;
}

std::vector<OrbitElements> ReadInstalledSets(const std::string& keplerFile) {
    std::vector<OrbitElements> sets;
    std::string text;
    if (!ReadWholeFile(keplerFile, &text)) return sets;
    ConversionReport ignored;
    ReadTwoLineText(text, &sets, &ignored);
    const std::map<std::string, SideEntry> side = ReadSideTable(keplerFile);
    for (OrbitElements& e : sets) {
        e.shortName = e.longName;  // the loader's name line
        const auto it = side.find(e.shortName);
        if (it == side.end()) continue;
        // Numbers beyond Alpha-5 are written as 00000; the side table has
        // them whole where it agrees with the file.
        char written[6], recorded[6];
        FormatCatalogNumber(e.catalog, written);
        FormatCatalogNumber(it->second.catalog, recorded);
        if (std::strcmp(written, recorded) == 0) e.catalog = it->second.catalog;
        e.longName = it->second.longName;
    }
    return sets;
}

std::string FormatElementFile(const std::vector<OrbitElements>& sets, const std::string& header) {
    std::string text = header + "\n";
    for (const OrbitElements& e : sets)
        text += e.shortName + "\n" + FormatLineOne(e) + "\n" + FormatLineTwo(e) + "\n";
    return text;
}

KepsInstall PrepareKepsInstall(const DataPaths& paths, const UserDefaults* defaults,
                               const std::string& source, const std::string& label, bool merge) {
    KepsInstall request;
    request.source = source;
    request.sourceLabel = label;
    request.keplerFile = paths.keplerFile;
    request.merge = merge;
    request.namesTables = {paths.userNamesFile, paths.defaultNamesFile};
    if (!ReadWholeFile(paths.userModesFile, &request.modesText))
        ReadWholeFile(paths.defaultModesFile, &request.modesText);
    if (defaults != nullptr) {
        std::istringstream words(defaults->stringForKey(prefkeys::kTrackListString));
        std::string name;
        while (words >> name) request.trackList.push_back(name);
    }
    return request;
}

bool InstallElementSets(const KepsInstall& request, KepsInstallResult* result) {
    *result = KepsInstallResult();
    const std::string notReplaced = "The element sets were not replaced: " + request.sourceLabel;
    const std::string kept = ". The current element sets are kept.";
    std::string why, text;
    if (!IsRegularFile(request.source, &why) || !ReadWholeFile(request.source, &text)) {
        if (why.empty()) why = std::strerror(errno);
        result->message = notReplaced + " cannot be read (" + why + ")" + kept;
        return false;
    }
    std::vector<OrbitElements> incoming;
    ConversionReport report;
    if (!ReadElementText(text, &incoming, &report, &why)) {
        result->message = notReplaced + " is " + ElementFormatName(DetectElementFormat(text)) +
                          " but " + why + kept;
        return false;
    }
    result->skipped = report.skipped;
    result->fromFile = static_cast<int>(incoming.size());
    if (incoming.empty()) {
        result->message = notReplaced + " holds no element set" +
                          (report.skipped > 0 ? " that can be read (" + report.firstProblem + ")"
                                              : " (neither two-line sets nor OMM records)") +
                          kept;
        return false;
    }

    std::vector<OrbitElements> sets;
    if (request.merge) sets = ReadInstalledSets(request.keplerFile);
    std::unordered_map<int32_t, size_t> byCatalog;
    for (size_t i = 0; i < sets.size(); ++i) byCatalog.emplace(sets[i].catalog, i);
    for (OrbitElements& e : incoming) {
        // A plain import keeps every set of the file, as the loader would.
        if (!request.merge) {
            sets.push_back(e);
            continue;
        }
        const auto it = byCatalog.find(e.catalog);
        if (it == byCatalog.end()) {
            byCatalog.emplace(e.catalog, sets.size());
            sets.push_back(e);
        } else if (EpochOrdinal(e) > EpochOrdinal(sets[it->second])) {
            // Newer elements of a satellite already here: it keeps its name.
            e.shortName = sets[it->second].shortName;
            sets[it->second] = e;
        }
    }

    NamesTable names;
    for (const std::string& path : request.namesTables) LoadNamesTable(path, &names);
    const std::set<std::string> modesNames = ModesFileNames(request.modesText);
    AssignShortNames(&sets, names, modesNames);

    if (static_cast<int>(sets.size()) > request.limit) {
        std::set<std::string> wanted = modesNames;
        wanted.insert(request.trackList.begin(), request.trackList.end());
        std::vector<bool> keep(sets.size(), false);
        int room = request.limit;
        for (int pass = 0; pass < 2; ++pass) {
            for (size_t i = 0; i < sets.size() && room > 0; ++i) {
                if (keep[i] || (pass == 0 && wanted.count(sets[i].shortName) == 0)) continue;
                keep[i] = true;
                --room;
            }
        }
        std::vector<OrbitElements> chosen;
        for (size_t i = 0; i < sets.size(); ++i)
            if (keep[i]) chosen.push_back(sets[i]);
        result->leftOut = static_cast<int>(sets.size() - chosen.size());
        sets.swap(chosen);
    }

    std::string side = "# short name\tcatalogue number\tlong name\n";
    for (const OrbitElements& e : sets)
        side += e.shortName + "\t" + std::to_string(e.catalog) + "\t" +
                (e.longName.empty() ? e.shortName : e.longName) + "\n";
    const std::string file = FormatElementFile(sets, HeaderFor(text, request.sourceLabel));
    const auto writeText = [](const std::string& path, const std::string& body) {
        return AtomicWriteFile(path, [&body](FILE* out) {
            return std::fwrite(body.data(), 1, body.size(), out) == body.size();
        });
    };
    // The side table first: a crash between the two leaves the old sets
    // beside a newer table, from which readers take only entries whose
    // number agrees with the element-set file.
    if (!writeText(SideTablePath(request.keplerFile), side) ||
        !writeText(request.keplerFile, file)) {
        result->message = notReplaced + ": cannot write " + request.keplerFile + " (" +
                          std::strerror(errno) + ")" + kept;
        return false;
    }
    result->written = static_cast<int>(sets.size());
    result->message = std::to_string(result->written) + " element sets installed from " +
                      request.sourceLabel + " (" + std::to_string(result->fromFile) + " read";
    if (request.merge) result->message += ", merged with the sets already there";
    result->message += ").";
    if (result->leftOut > 0)
        result->message += " " + std::to_string(result->leftOut) +
                           " sets were left out: the program holds at most " +
                           std::to_string(request.limit) +
                           " (the satellites of the modes file and the track list were kept).";
    if (result->skipped > 0)
        result->message += " " + std::to_string(result->skipped) +
                           " entries could not be read (the first: " + report.firstProblem + ").";
    return true;
}

}  // namespace veloran
