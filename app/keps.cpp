// Loading the satellite table, and replacing the element-set file by import
// or download.

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>

#include "app/appcontroller.h"
#include "data/elementfile.h"
#include "data/kepsimport.h"
#include "data/modes.h"
#include "engine/sunmoon.h"
#include "engine/timebase.h"
#include "engine/units.h"

namespace veloran {

namespace {

// Names are cut to fit the record's field.
void CopyName(char* to, const char* from) {
    const size_t n = strnlen(from, sizeof(SatRec::name) - 1);
    std::memcpy(to, from, n);
    to[n] = '\0';
}

}  // namespace

void AppController::loadKepsAndModes() {
    UserInterface* ui = services_.ui;
    mTotalSats = 0;
    ui->removeAllSatelliteItems();
    ui->addSatelliteItem("Add Satellite");

    FILE* keps = OpenRegularFile(paths_.keplerFile);
    const int kepsError = errno;
    // The modes file is read once and every satellite's block is looked up
    // in memory.
    ModesFile modes;
    mUserModesUnreadable = 0;
    if (!modes.load(paths_.userModesFile)) {
        if (errno != ENOENT) {
            mUserModesUnreadable = errno != 0 ? errno : EIO;
            std::fprintf(stderr, "cannot read the modes file %s: %s; it stays as it is\n",
                         paths_.userModesFile.c_str(), FileErrorText(mUserModesUnreadable).c_str());
        }
        modes.load(paths_.defaultModesFile);
    }
    const int modesError = errno;
    mModesSource = modes.isOpen() ? modes.path() : std::string();
    if (modes.isOpen()) debugLog("Mode file: %s.\n", modes.path().c_str());
    // The messages keep their historical text whatever the paths are.
    if (keps == nullptr)
        std::fprintf(stderr, "cannot open /Contents/Resources/kepler.dat file. Error %d (%sd) \n",
                     kepsError, std::strerror(kepsError));
    if (!modes.isOpen())
        std::fprintf(
            stderr,
            "cannot open default mode file: /Contents/Resources/mode.dat file. Error %d (%sd) \n",
            modesError, std::strerror(modesError));

    if (keps != nullptr) {
        ElementFileScanner scanner(keps);
        char name[kLineBufferSize];
        while (scanner.nextName(name, sizeof name)) {
            const int n = mTotalSats;
            SatRec* sat = &mAllSats[n];
            InitSatRec(sat);
            CopyName(sat->name, name);
            if (!ReadElementLines(&scanner, sat)) continue;  // abandoned, not counted
            KepRec* k = &sat->satKep;
            ElementAnglesToRadians(k);
            sat->db_index = n;
            if (modes.isOpen()) {
                const int found = modes.getModes(sat, sat->name);
                debugLog("loadKepsAndModes: %d modes loaded for satellite: %s.\n", found,
                         sat->name);
            }
            CalcKepVals(sat, &mSite);
            debugLog(
                "loadKepsAndModes: %s Epoch Day:%f Element Set:%d Inclination:%f Epoch RAAN:%f "
                "Eccentricity:%f Arg Perigee:%f Mean Anomaly:%f Mean Motion:%f Epoch Rev:%d Semi "
                "Major "
                "Axis:%f Reference Orbit:%f\n",
                sat->name, k->epochDay, k->elementSet, k->inclination * kRadiansToDegrees,
                k->epochRAAN * kRadiansToDegrees, k->eccentricity,
                k->epochArgPerigee * kRadiansToDegrees, k->epochMeanAnomaly * kRadiansToDegrees,
                k->epochMeanMotion, k->OrbitNum, k->semiMajorAxis, k->referenceOrbit);
            const int selected = sat->selectedModeIndex;
            sat->currrentDownlink =
                selected >= 0 && selected < kMaxModes ? sat->modes[selected].downFreq : 0.0;
            ui->addSatelliteItem(sat->name);
            if (n > kMaxElementSets - 1) break;  // the Moon takes this entry
            ++mTotalSats;
        }
        // The long names and whole catalogue numbers the last import or
        // download kept beside the file.
        const std::map<std::string, SideEntry> side = ReadSideTable(paths_.keplerFile);
        mSatelliteNames.clear();
        for (int i = 0; i < mTotalSats; ++i) {
            SatelliteNames names;
            names.name = mAllSats[i].name;
            names.catalog = mAllSats[i].satKep.catalogNumber;
            const auto found = side.find(names.name);
            if (found != side.end()) {
                names.catalog = found->second.catalog;
                names.longName = found->second.longName;
            }
            mSatelliteNames.push_back(std::move(names));
        }
        if (!scanner.header().empty()) {
            std::snprintf(mSite.keps_date, sizeof mSite.keps_date, "Keplerian Elements: %s",
                          scanner.header().c_str());
            ui->setKepsDateText(mSite.keps_date);
        }
    }

    if (keps == nullptr) mSatelliteNames.clear();
    ui->setSatelliteNames(mSatelliteNames);

    if (modes.isOpen()) {
        InitSatRec(BPSatRec.get());
        modes.getModes(BPSatRec.get(), kBetweenPassesName);
        InitSatRec(EXITSatRec.get());
        modes.getModes(EXITSatRec.get(), kOnExitName);
    }

    DateTimeRec now{};
    QFSecondsToDate(services_.clock->dateTime(), &now);

    // The Moon and the Sun are not cleared first: the Moon may overwrite a
    // set read past the limit.
    SatRec* moon = &mAllSats[mTotalSats];
    CopyName(moon->name, "Moon");
    LoadMoonKeps(&moon->satKep, now.month);
    appendBody(moon, &modes);
    mMoonNum = mTotalSats;  // the Sun's entry, as the rest of the program reads it

    SatRec* sun = &mAllSats[mTotalSats];
    CopyName(sun->name, "Sun");
    LoadSunKeps(&sun->satKep);
    appendBody(sun, &modes);
    mSunNum = mTotalSats;

    debugLog("loadKepsAndModes: %d satellites loaded.\n", mTotalSats);
    char spoken[96];
    std::snprintf(spoken, sizeof spoken, "Keplerian elements for %d satellites loaded", mTotalSats);
    announce(spoken);
    if (keps != nullptr) std::fclose(keps);
    if (mTotalSats <= 2)
        ui->alert("There are no keplerian elements loaded.", "Please Download or Import keps",
                  "OK");
}

void AppController::appendBody(SatRec* body, ModesFile* modes) {
    services_.ui->addSatelliteItem(body->name);
    if (modes->isOpen()) modes->getModes(body, body->name);
    CalcKepVals(body, &mSite);
    body->db_index = mTotalSats;
    ++mTotalSats;
}

bool AppController::installElementFile(const std::string& candidate, const std::string& label,
                                       bool merge, std::string* report) {
    const KepsInstall request =
        PrepareKepsInstall(paths_, services_.defaults, candidate, label, merge);
    KepsInstallResult result;
    if (!InstallElementSets(request, &result)) {
        services_.ui->alert("The element sets were not replaced.", result.message, "OK");
        return false;
    }
    // Never a silent cut: sets left out or unreadable are told.
    if (result.leftOut > 0 || result.skipped > 0)
        services_.ui->alert("Not every element set was installed.", result.message, "OK");
    if (report != nullptr) *report = result.message;
    return true;
}

void AppController::importKeps(bool merge) {
    std::string chosen;
    if (services_.files == nullptr || !services_.files->chooseFileToOpen(&chosen)) return;
    std::string report;
    if (FileExists(chosen) && !installElementFile(chosen, chosen, merge, &report)) return;
    loadKepsAndModes();
    if (!report.empty()) services_.ui->showNotice(report);
}

void AppController::startDownloadingURL(DownloadTrigger trigger, bool merge) {
    startDownloadingURL(ChosenKepsURL(services_.defaults), trigger, merge);
}

void AppController::startDownloadingURL(const std::string& url, DownloadTrigger trigger,
                                        bool merge) {
    const int64_t unixNow = static_cast<int64_t>(services_.clock->dateTimeUTC()) -
                            static_cast<int64_t>(kSecondsFrom1904To1970);
    std::string why;
    if (!MayDownload(services_.defaults, url, unixNow, trigger, &why)) {
        debugLog("Download refused: %s\n", why.c_str());
        if (trigger != DownloadTrigger::Automatic)
            services_.ui->alert("The element sets were not downloaded.", why + ".", "OK");
        return;
    }
    if (services_.downloader == nullptr ||
        !services_.downloader->start(url, paths_.downloadFile, kDownloadTimeoutSeconds)) {
        debugLog("Download connection failed!");
        announce("keplerian element download connection failed.");
        return;
    }
    mDownloadURL = url;
    mDownloadMerge = merge;
    RecordDownloadStarted(services_.defaults, url, unixNow);
}

void AppController::downloadDidFinish() {
    debugLog("kepler.dat downloadDidFinish");
    const std::string downloaded = paths_.downloadFile;
    std::string report;
    const bool installed =
        installElementFile(downloaded, mDownloadURL.empty() ? kKeplerDownloadURL : mDownloadURL,
                           mDownloadMerge, &report);
    std::remove(downloaded.c_str());
    if (!installed) return;
    announce("keplerian elements downloaded from the internet.");
    loadKepsAndModes();
    // The newest set tells whether the source itself is stale: a mirror that
    // stopped updating still answers 200.
    double newest = 0.0;
    for (int i = 0; i < mTotalSats; ++i) newest = std::max(newest, mAllSats[i].satKep.epochDay);
    const double age = EpochTime(services_.clock->dateTimeUTC()) - newest;
    std::string notice = "Element sets downloaded: " + report;
    if (newest > 0.0 && age >= 0.0)
        notice += "; element sets " + std::to_string(static_cast<int>(age)) + " days old";
    services_.ui->showNotice(notice);
    mCycleSatNum = 1;
}

void AppController::cancelDownload() {
    if (services_.downloader != nullptr) services_.downloader->cancel();
}

void AppController::downloadDidFail(const std::string& description, const std::string& failingURL) {
    debugLog("Download failed! Error - %s %s", description.c_str(), failingURL.c_str());
    announce("keplerian element download failed.");
    std::remove(paths_.downloadFile.c_str());
    // The operator is told why, in words; the current element sets stay.
    const int status = services_.downloader != nullptr ? services_.downloader->lastStatus() : 0;
    std::string why = description;
    if (status >= 400) why = "the server answered HTTP " + std::to_string(status);
    if (!why.empty() && why.back() == '.') why.pop_back();
    // Any answer but 200 stops the automatic updates until the user acts.
    const bool stops = status != 0 && status != 200;
    services_.ui->showNotice("The element sets were not downloaded (" + why +
                             "); the current ones are kept." +
                             (stops ? " Automatic updates are stopped until you download by hand "
                                      "or resume them."
                                    : ""));
    if (services_.downloader != nullptr)
        RecordDownloadAnswer(services_.defaults, failingURL, services_.downloader->lastStatus(),
                             description);
}

}  // namespace veloran
