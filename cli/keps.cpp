// veloran-cli keps: replace or merge the user's element-set file from a file
// in any format the converter reads, or from a download, with the same
// checks and the same atomic replacement as the program's own menu actions.

#include <cstdio>
#include <ctime>
#include <memory>

#include "cli/commands.h"
#include "cli/options.h"
#include "data/files.h"
#include "data/kepsimport.h"
#include "data/kepssources.h"

#ifdef VELORAN_HAVE_PLATFORM
#include <QCoreApplication>
#include <QTimer>

#include "platform/numericlocale.h"
#include "platform/qtdownloader.h"
#include "platform/qtuserdefaults.h"
#endif

namespace veloran::cli {

namespace {

constexpr double kDownloadTimeoutSeconds = 60.0;

// The settings the program uses: the track list decides what the limit
// keeps, and the download rules keep their state there. Without the
// platform layer nothing is remembered between runs.
std::unique_ptr<UserDefaults> OpenSettings(const DataPaths& paths) {
#ifdef VELORAN_HAVE_PLATFORM
    return std::make_unique<QtUserDefaults>(paths.settingsFile);
#else
    (void)paths;
    return std::make_unique<MemoryUserDefaults>();
#endif
}

bool SaveSettings(UserDefaults* defaults) {
#ifdef VELORAN_HAVE_PLATFORM
    std::string error;
    if (!static_cast<QtUserDefaults*>(defaults)->sync(&error)) {
        Fail("cannot save the settings: " + error);
        return false;
    }
#else
    (void)defaults;
#endif
    return true;
}

int Install(const DataPaths& paths, const UserDefaults* defaults, const std::string& source,
            const std::string& label, bool merge) {
    KepsInstallResult result;
    if (!InstallElementSets(PrepareKepsInstall(paths, defaults, source, label, merge), &result))
        return Fail(result.message);
    std::printf("%s\n", result.message.c_str());
    return 0;
}

int Import(const Arguments& args, const DataPaths& paths) {
    if (args.positional.size() != 2) return Fail("keps import needs one FILE");
    std::unique_ptr<UserDefaults> defaults = OpenSettings(paths);
    return Install(paths, defaults.get(), args.positional[1], args.positional[1],
                   args.has("--merge"));
}

int Download(const Arguments& args, const DataPaths& paths) {
    if (args.positional.size() > 2) return Fail("keps download takes at most one URL");
#ifdef VELORAN_HAVE_PLATFORM
    static char programName[] = "veloran-cli";
    char* qtArgv[] = {programName, nullptr};
    int qtArgc = 1;
    QCoreApplication app(qtArgc, qtArgv);
    UseCNumericLocale();

    std::unique_ptr<UserDefaults> defaults = OpenSettings(paths);
    const std::string url =
        args.positional.size() == 2 ? args.positional[1] : ChosenKepsURL(defaults.get());
    const int64_t now = static_cast<int64_t>(std::time(nullptr));
    std::string why;
    if (!MayDownload(defaults.get(), url, now,
                     args.has("--force") ? DownloadTrigger::Forced : DownloadTrigger::User, &why))
        return Fail(why);

    bool ok = false;
    std::string error;
    QtDownloader downloader([&](bool good, const std::string& reason, const std::string&) {
        ok = good;
        error = reason;
        app.quit();
    });
    if (!downloader.start(url, paths.downloadFile, kDownloadTimeoutSeconds))
        return Fail("cannot start the download of " + url);
    RecordDownloadStarted(defaults.get(), url, now);
    app.exec();
    if (!ok) {
        RecordDownloadAnswer(defaults.get(), url, downloader.lastStatus(), error);
        SaveSettings(defaults.get());
        std::remove(paths.downloadFile.c_str());
        return Fail("the download of " + url + " failed: " + error +
                    ". The current element sets are kept.");
    }
    SaveSettings(defaults.get());
    const int status = Install(paths, defaults.get(), paths.downloadFile, url, args.has("--merge"));
    std::remove(paths.downloadFile.c_str());
    return status;
#else
    (void)paths;
    return Fail("this veloran-cli was built without Qt and cannot download; use keps import");
#endif
}

int Sources(const DataPaths& paths) {
    std::unique_ptr<UserDefaults> defaults = OpenSettings(paths);
    const std::string chosen = ChosenKepsURL(defaults.get());
    for (const KepsSource& s : KepsSources(defaults.get()))
        std::printf("%c %s\n    %s\n", s.url == chosen ? '*' : ' ', s.name.c_str(), s.url.c_str());
    return 0;
}

}  // namespace

int RunKeps(int argc, char** argv) {
    Arguments args;
    if (!ParseArguments(argc, argv, {"--merge", "--force"}, &args)) return kUsageError;
    if (!CheckOptions(args, {"--merge", "--force", "--data-dir", "--config-dir"}))
        return kUsageError;
    const std::string action = args.positional.empty() ? "" : args.positional[0];
    const DataPaths paths =
        ResolveDataPaths({args.value("--data-dir"), args.value("--config-dir")});
    std::string error;
    if (action != "sources" && !SeedDataFiles(paths, &error)) return Fail(error);
    if (action == "import") return Import(args, paths);
    if (action == "download") return Download(args, paths);
    if (action == "sources") return Sources(paths);
    return Fail("keps needs import FILE, download [URL] or sources");
}

}  // namespace veloran::cli
