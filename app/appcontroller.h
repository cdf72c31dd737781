// The application controller: the satellite table, the site record and the
// settings, and the actions on them. It runs on the core thread only and
// reaches the outside world through the interfaces of app/interfaces.h.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "app/interfaces.h"
#include "data/files.h"
#include "data/locations.h"
#include "data/settings.h"
#include "engine/satrec.h"
#include "engine/siterec.h"

namespace veloran {

class ModesFile;

// The element-set bulletin fetched by startDownloadingURL.
constexpr const char* kKeplerDownloadURL = "https://www.amsat.org/amsat/ftp/keps/current/nasa.all";
constexpr double kDownloadTimeoutSeconds = 60.0;

// What the controller uses of the outside world. ui, defaults and clock are
// required; without files, downloader or announcer the actions that need
// them do nothing. Every pointer must stay valid for the controller's life.
// `log` takes the diagnostics of the debug setting (standard error; tests
// point it elsewhere).
struct Services {
    UserInterface* ui = nullptr;
    UserDefaults* defaults = nullptr;
    FileChooser* files = nullptr;
    Downloader* downloader = nullptr;
    const Clock* clock = nullptr;
    Announcer* announcer = nullptr;
    FILE* log = stderr;
};

class AppController {
public:
    AppController(const Services& services, const DataPaths& paths);
    AppController(const AppController&) = delete;
    AppController& operator=(const AppController&) = delete;

    // --- Satellite table (keps.cpp) ---

    // Rebuilds the table from the element-set file, attaches every
    // satellite's modes from the user modes file (else the default one),
    // appends the Moon and the Sun, refills the satellite pop-up, and alerts
    // when nothing but the Moon and the Sun was loaded.
    void loadKepsAndModes();

    int GetTotalSats() const { return mTotalSats; }
    void GetSiteRec(SiteRec* site) const;
    // Replaces the site record whole (the preferences panel, the
    // command-line tools).
    void SetSiteRec(const SiteRec* site);
    // 1 once after the modes changed, then 0.
    int refreshModes();
    // Copies entry index (0 .. GetTotalSats()-1; -1 the between-passes
    // record, -2 the on-exit record) into *rec and returns 1; 0 otherwise.
    int GetSatelliteRecordByIndex(int index, SatRec* rec) const;
    // The first entry, in table order, whose name occurs inside `name` (so
    // AO-7 answers a query for AO-71, deliberately). 1, or 0 when none does.
    int GetSatelliteRecordByName(const char* name, SatRec* rec) const;
    // Copies rec over entry index (-1, -2 as above). Indices outside the
    // table are ignored.
    void WriteSatelliteRecord(int index, const SatRec& rec);
    // Sets the entry's enabled flag and rewrites the user modes file.
    void MarkSatelliteEnabled(int index, int value);
    // Advances mCycleSatNum to the next tracked satellite other than the
    // main one; 1 when one was found. The last entry is never visited.
    int nextSatelliteInDB();

    // Menu action: pick an element-set file and make it the current one.
    void importKeps();
    // Menu action: fetch the element-set bulletin.
    void startDownloadingURL();
    // Completion of the download.
    void downloadDidFinish();
    void downloadDidFail(const std::string& description, const std::string& failingURL);

    // --- Modes (modesactions.cpp) ---

    // Writes the table, the between-passes and the on-exit records to path,
    // keeping the blocks of satellites missing from the table.
    void writeModeFile(const std::string& path);
    void defaultModes();
    void importModes();
    void exportModes();
    // The user picked a mode in the channel pop-up.
    void modeChanged();
    // Sets the program up for a new main satellite: offsets, the channel
    // pop-up and its remembered choice.
    void HandleNewSatellite();
    // Retunes the radio to the selected mode (force = 1 also sets modes and
    // tones). The tuning controller joins here; until then there is no
    // radio to tune.
    void updateVFO(int force);

    // --- Places (places.cpp) ---

    void loadLocations();
    void rewriteLocations();
    void locationChosen();
    void locationOK();
    void removeLocation();
    const std::vector<Location>& locations() const { return mLocations.places; }
    const std::vector<Point3F>& lightPoints() const { return mLocations.lightPoints; }

    // --- Settings (prefs.cpp) ---

    // Start-up defaults of the site record.
    void setSiteDefaults();
    void savePrefs();
    // Reads the settings over the defaults and shows them.
    void setUIStateFromPrefs();
    // Stores / restores the tuning offsets of table entry index.
    void SaveTweaks(int index);
    void LoadTweaks(int index);

    // --- State ---

    int32_t mainSatNum() const { return mMainSatNum; }
    void setMainSatNum(int32_t number) { mMainSatNum = number; }
    int32_t cycleSatNum() const { return mCycleSatNum; }
    void setCycleSatNum(int32_t number) { mCycleSatNum = number; }
    int32_t moonNum() const { return mMoonNum; }
    int32_t sunNum() const { return mSunNum; }
    const ViewPrefs& viewPrefs() const { return mViewPrefs; }
    const DataPaths& paths() const { return paths_; }

private:
    // The entry for index (-1, -2 the pseudo-records); null outside the table.
    SatRec* record(int index);
    const SatRec* record(int index) const;
    // The main satellite's entry, null when mMainSatNum is out of range.
    SatRec* mainSatellite();
    void debugLog(const char* format, ...) const __attribute__((format(printf, 2, 3)));
    void announce(const std::string& text);
    // Appends the Moon or the Sun, its name and elements already in place,
    // as entry mTotalSats: pop-up item, modes, orbit constants, index.
    void appendBody(SatRec* body, ModesFile* modes);
    // Reloads after the modes file changed, keeping the main satellite.
    void reloadModes(int32_t mainSatNum);
    // Replaces the element-set file with `candidate` when it holds at least
    // one element set; otherwise tells the user and keeps the current one.
    bool installElementFile(const std::string& candidate, bool moveIntoPlace);

    Services services_;
    DataPaths paths_;

    std::unique_ptr<SatRec[]> mAllSats;  // kMaxSatellites entries
    int32_t mTotalSats = 0;
    int32_t mMoonNum = 0;                 // the Sun's entry index, as the rest of the program reads it
    int32_t mSunNum = 0;                  // one past the Sun's entry
    std::unique_ptr<SatRec> BPSatRec;     // modes applied between passes
    std::unique_ptr<SatRec> EXITSatRec;   // modes applied when the program exits
    int32_t mCycleSatNum = 1;
    int32_t mMainSatNum = 1;
    bool mRefreshModes = true;
    std::string mModesSource;             // the modes file of the last load, empty when none was read
    bool newSatellite = false;
    SiteRec mSite{};
    ViewPrefs mViewPrefs;
    PlacesList mLocations;
};

}  // namespace veloran
