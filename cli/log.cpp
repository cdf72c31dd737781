// veloran-cli log: the contact log from the command line: list it, export it
// as ADIF for LoTW (or CSV), import an ADIF file, keep the callsign service's
// password.

#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/options.h"
#include "data/files.h"
#include "engine/timebase.h"
#include "logbook/adif.h"
#include "logbook/callbook.h"
#include "logbook/dxcc.h"
#include "logbook/satnames.h"
#include "logbook/store.h"

namespace veloran::cli {

namespace {

struct LogFolders {
    std::string dataDir;
    std::string resourceDir;
};

bool OpenLog(const LogFolders& folders, LogStore* store) {
    if (!MakeDirectories(folders.dataDir)) {
        Fail("cannot create the data folder " + folders.dataDir);
        return false;
    }
    if (OpenLogStore(LogbookPath(folders.dataDir), store)) return true;
    Fail(store->error);
    return false;
}

SatNameTable SatNames(const LogFolders& folders) {
    SatNameTable names;
    const std::string path = SatNamesPath(folders.dataDir, folders.resourceDir);
    int bad = 0;
    if (!LoadSatNames(path, &names, &bad))
        std::fprintf(stderr,
                     "veloran-cli: warning: cannot read %s; satellite names go as they are\n",
                     path.c_str());
    else if (bad > 0)
        std::fprintf(stderr, "veloran-cli: warning: %d unreadable lines in %s\n", bad,
                     path.c_str());
    return names;
}

// --since DATE, or everything.
bool Since(const Arguments& args, uint32_t* since) {
    *since = 0;
    if (!args.has("--since")) return true;
    Arguments time;
    time.options = {{"--time", args.value("--since")}};
    return ParseTime(time, since);
}

int List(const Arguments& args, const LogFolders& folders) {
    uint32_t since = 0;
    if (!Since(args, &since)) return kUsageError;
    LogStore store;
    if (!OpenLog(folders, &store)) return 1;
    std::vector<ContactRec> contacts;
    const int count = ListContacts(&store, since, &contacts);
    CloseLogStore(&store);
    if (count < 0) return Fail(store.error), 1;
    for (const ContactRec& c : contacts) {
        char freqs[64];
        std::snprintf(freqs, sizeof freqs, "%11.6f %11.6f", c.uplinkMHz, c.downlinkMHz);
        std::printf("%s  %-12s %-8s %-4s %s  %3s/%-3s %-6s %s\n", FormatIso(c.startUTC).c_str(),
                    c.call.c_str(), c.satellite.c_str(), c.mode.c_str(), freqs, c.rstSent.c_str(),
                    c.rstRcvd.c_str(), c.grid.c_str(), c.country.c_str());
    }
    std::printf("%d contact%s\n", count, count == 1 ? "" : "s");
    return 0;
}

int Export(const Arguments& args, const LogFolders& folders) {
    const bool adif = args.has("--adif");
    if (adif == args.has("--csv")) return Fail("log export wants --adif FILE or --csv FILE");
    const std::string file = args.value(adif ? "--adif" : "--csv");
    uint32_t since = 0;
    if (!Since(args, &since)) return kUsageError;
    LogStore store;
    if (!OpenLog(folders, &store)) return 1;
    std::vector<ContactRec> contacts;
    const int count = ListContacts(&store, since, &contacts);
    CloseLogStore(&store);
    if (count < 0) return Fail(store.error), 1;
    const SatNameTable names = SatNames(folders);
    const std::string text =
        adif ? FormatAdif(contacts, &names, QFGetDateTimeUTC()) : FormatCsv(contacts);
    if (!AtomicWriteFile(file, [&text](FILE* out) {
            return std::fwrite(text.data(), 1, text.size(), out) == text.size();
        }))
        return Fail("cannot write " + file), 1;
    std::printf("%d contact%s written to %s\n", count, count == 1 ? "" : "s", file.c_str());
    return 0;
}

int Import(const Arguments& args, const LogFolders& folders) {
    if (args.positional.size() != 2) return Fail("log import wants one ADIF FILE");
    const std::string& file = args.positional[1];
    std::string text;
    if (!ReadWholeFile(file, &text)) return Fail("cannot read " + file), 1;
    const SatNameTable names = SatNames(folders);
    AdifImport imported;
    ParseAdif(text, &names, &imported);
    for (const std::string& m : imported.messages)
        std::fprintf(stderr, "%s: %s\n", file.c_str(), m.c_str());

    DxccTable dxcc;
    const bool haveDxcc =
        LoadDxccTable(DxccPath(folders.dataDir, folders.resourceDir), &dxcc, nullptr) != 0;
    LogStore store;
    if (!OpenLog(folders, &store)) return 1;
    // A file imported twice adds nothing the second time.
    std::vector<ContactRec> fresh;
    int already = 0;
    for (ContactRec& c : imported.contacts) {
        std::vector<ContactRec> same;
        if (FindContacts(&store, c.call, c.satellite, c.startUTC, c.startUTC, &same) > 0) {
            ++already;
            continue;
        }
        if (c.country.empty() && haveDxcc)
            if (const DxccEntity* e = LookupDxcc(&dxcc, c.call)) {
                c.country = e->name;
                if (c.dxcc == 0) c.dxcc = e->code;
            }
        fresh.push_back(c);
    }
    const int ok = AddContacts(&store, &fresh);
    CloseLogStore(&store);
    if (!ok) return Fail(store.error + "; nothing was imported"), 1;
    std::printf("%zu contact%s imported, %d already in the log, %d record%s skipped\n",
                fresh.size(), fresh.size() == 1 ? "" : "s", already, imported.skipped,
                imported.skipped == 1 ? "" : "s");
    return 0;
}

// The callsign service's password, read from the standard input so that it
// shows in no process list or shell history; an empty line removes it.
int StorePassword(const std::string& configDir) {
    // Typed at a terminal, it is not echoed.
    termios saved{};
    const bool terminal = isatty(STDIN_FILENO) && tcgetattr(STDIN_FILENO, &saved) == 0;
    if (terminal) {
        termios quiet = saved;
        quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(STDIN_FILENO, TCSANOW, &quiet);
        std::fprintf(stderr, "callbook password: ");
    }
    std::string password;
    for (int c = std::getchar(); c != EOF && c != '\n'; c = std::getchar())
        password += static_cast<char>(c);
    if (terminal) {
        tcsetattr(STDIN_FILENO, TCSANOW, &saved);
        std::fprintf(stderr, "\n");
    }
    if (!password.empty() && password.back() == '\r') password.pop_back();
    std::string error;
    if (!StoreCallbookPassword(configDir, password, &error)) return Fail(error);
    std::printf("callbook password %s %s\n", password.empty() ? "removed from" : "stored in",
                CallbookPasswordPath(configDir).c_str());
    return 0;
}

}  // namespace

int RunLog(int argc, char** argv) {
    Arguments args;
    if (!ParseArguments(argc, argv, {}, &args)) return kUsageError;
    if (!CheckOptions(args, {"--adif", "--csv", "--since", "--data-dir", "--config-dir"}))
        return kUsageError;
    const DataPaths paths =
        ResolveDataPaths({args.value("--data-dir"), args.value("--config-dir")});
    const LogFolders folders{paths.dataDir, paths.resourceDir};
    const std::string verb = args.positional.empty() ? "" : args.positional[0];
    if (verb == "list" && args.positional.size() == 1) return List(args, folders);
    if (verb == "export" && args.positional.size() == 1) return Export(args, folders);
    if (verb == "import") return Import(args, folders);
    if (verb == "callbook-password" && args.positional.size() == 1)
        return StorePassword(paths.configDir);
    return Fail("log wants list, export, import or callbook-password (try --help)");
}

}  // namespace veloran::cli
