// Loading the satellite table for the command-line tools.

#include "cli/services.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "app/appcontroller.h"
#include "app/silentui.h"
#include "data/elementage.h"
#include "data/elementfile.h"
#include "data/files.h"

namespace veloran::cli {

namespace {

// The command line has no window: alerts go to standard error, everything
// else is dropped.
class ConsoleUserInterface : public SilentUserInterface {
  public:
    void alert(const std::string& title, const std::string& message, const std::string&) override {
        std::fprintf(stderr, "veloran-cli: %s %s\n", title.c_str(), message.c_str());
    }
};

bool Readable(const std::string& what, const std::string& path) {
    FILE* f = OpenRegularFile(path);
    if (f == nullptr) {
        Fail("cannot open " + what + path + ": " + FileErrorText(errno));
        return false;
    }
    std::fclose(f);
    return true;
}

}  // namespace

bool LoadSatellites(const Arguments& args, const SiteRec& site, LoadedSatellites* out) {
    // The user's folders are only read: a stateless tool seeds nothing.
    DataPaths paths = ResolveDataPaths({args.value("--data-dir"), args.value("--config-dir")});
    if (!args.positional.empty()) {
        paths.keplerFile = args.positional[0];
        if (!Readable("", paths.keplerFile)) return false;
    } else if (!FileExists(paths.keplerFile)) {
        paths.keplerFile = paths.resourceDir + "/kepler.dat";
    }
    const std::string modesFile = args.value("--modes");
    if (!modesFile.empty()) {
        if (!Readable("modes file ", modesFile)) return false;
        paths.userModesFile = modesFile;
    }

    ConsoleUserInterface ui;
    MemoryUserDefaults defaults;
    SystemClock clock;
    const Services services{.ui = &ui, .defaults = &defaults, .clock = &clock};
    auto controller = std::make_unique<AppController>(services, paths);
    controller->SetSiteRec(&site);
    controller->loadKepsAndModes();

    // The Moon and the Sun close the table.
    const int total = controller->GetTotalSats();
    out->sats.clear();
    out->sats.resize(static_cast<size_t>(total > 2 ? total - 2 : 0));
    for (int i = 0; i < total - 2; ++i)
        controller->GetSatelliteRecordByIndex(i, &out->sats[static_cast<size_t>(i)]);
    controller->GetSatelliteRecordByIndex(total - 1, &out->sun);

    // The program reads every carriage return as a line end, so a file with
    // CR LF line ends yields satellites without elements: say so.
    const int readable = CountElementSets(paths.keplerFile, kMaxElementSets);
    const int loaded = static_cast<int>(out->sats.size());
    if (readable <= 0) {
        // A binary or foreign file yields "satellites" of garbage numbers.
        Fail(paths.keplerFile +
             (readable < 0 ? ": " + FileErrorText(errno) : " holds no two-line element sets"));
        return false;
    }
    if (readable >= 0 && readable < loaded)
        std::fprintf(
            stderr,
            "veloran-cli: warning: %d of the %d satellites in %s have no element lines the program "
            "can "
            "read (69 characters, then one line feed; a carriage return also ends a line)\n",
            loaded - readable, loaded, paths.keplerFile.c_str());
    return true;
}

void WarnStaleElements(const std::vector<SatRec>& sats, uint32_t now) {
    // A few are named; a whole bulletin gone stale is one line.
    constexpr size_t kNamed = 3;
    std::vector<const SatRec*> stale;
    for (const SatRec& s : sats)
        if (!ElementAgeWarning(s, now).empty()) stale.push_back(&s);
    if (stale.size() <= kNamed) {
        for (const SatRec* s : stale)
            std::fprintf(stderr, "%s: warning: %s\n", ProgramName(),
                         ElementAgeWarning(*s, now).c_str());
        return;
    }
    const SatRec* oldest = stale.front();
    for (const SatRec* s : stale)
        if (ElementAgeDays(*s, now) > ElementAgeDays(*oldest, now)) oldest = s;
    std::fprintf(stderr,
                 "%s: warning: %zu of the %zu element sets are older than 14 days (7 below 400 "
                 "km); the oldest, %s, is %.1f days old: fetch current ones\n",
                 ProgramName(), stale.size(), sats.size(), oldest->name,
                 ElementAgeDays(*oldest, now));
}

}  // namespace veloran::cli
