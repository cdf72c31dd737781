// The application controller: the satellite table, the site record and the
// settings, and the actions on them. It runs on the core thread only and
// reaches the outside world through the interfaces of app/interfaces.h.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "app/announcements.h"
#include "app/controlsmodel.h"
#include "app/interfaces.h"
#include "data/files.h"
#include "data/kepssources.h"
#include "data/locations.h"
#include "data/settings.h"
#include "engine/satrec.h"
#include "engine/siterec.h"
#include "radio/radioui.h"
#include "radio/vforec.h"
#include "rotor/rotorui.h"
#include "serial/portlist.h"

namespace veloran {

class ModesFile;
struct LiveContactState;

// The element-set bulletin fetched by startDownloadingURL unless the user
// chose another source.
constexpr const char* kKeplerDownloadURL = kAmsatKepsURL;
constexpr double kDownloadTimeoutSeconds = 60.0;
// How often a device that is wanted but off is tried again, seconds.
constexpr uint32_t kDeviceRetrySeconds = 5;

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
    // Leave null in the application: the controller's own queue is then
    // used and spoken by its announcement thread. Tests may record here.
    Announcer* announcer = nullptr;
    FILE* log = stderr;
    // The announcement thread's outlets; without speech no thread starts.
    Speech* speech = nullptr;
    SoundPlayer* sounds = nullptr;
    // Where serial ports are found at start-up; null finds none.
    SerialPortList* ports = nullptr;
    // The announcement thread's waits and gateway; null: real ones.
    TickSleeper* sleeper = nullptr;
    GatewayLine* gateway = nullptr;
    // Shown in the version line and the radio's log lines.
    std::string versionString = "1.0";
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
    // The loaded satellites' names, entry by entry (the Moon and the Sun
    // have none).
    const std::vector<SatelliteNames>& satelliteNames() const { return mSatelliteNames; }
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

    // Menu action: pick an element-set file (two-line sets, OMM CSV, JSON or
    // XML) and make it the current one, or merge it into the current one.
    void importKeps(bool merge = false);
    // Menu action: fetch the chosen source (the AMSAT bulletin by default),
    // within the download rules; a periodic update asks as Automatic. With
    // merge the downloaded sets join the current ones, the newer epoch
    // winning, instead of replacing them.
    void startDownloadingURL(DownloadTrigger trigger = DownloadTrigger::User, bool merge = false);
    // The same for one address the user gave (a CelesTrak query for one
    // satellite, say), which does not become the chosen source.
    void startDownloadingURL(const std::string& url, DownloadTrigger trigger, bool merge);
    // Completion of the download.
    void downloadDidFinish();
    void downloadDidFail(const std::string& description, const std::string& failingURL);
    // Stops the download under way; its completion then reports the failure.
    void cancelDownload();

    // --- Modes (modesactions.cpp) ---

    // Writes the table, the between-passes and the on-exit records to path,
    // keeping the blocks of satellites missing from the table; of those,
    // the ones named in `outside` are written from these records instead
    // (or added after them) and the ones named in `dropped` are left out.
    // False when the file could not be written (the old one then stands).
    bool writeModeFile(const std::string& path, const std::vector<SatRec>& outside = {},
                       const std::unordered_set<std::string>& dropped = {});
    void defaultModes();
    void importModes();
    void exportModes();
    // Copies of the records the modes editor shows: the table's satellites
    // that have modes, in order, then the blocks of satellites the modes
    // file holds but the table does not (their db_index is -1), then the
    // between-passes and the on-exit records.
    std::vector<SatRec> modesForEditing() const;
    // The table's satellites without modes: those the editor can add.
    std::vector<std::string> satellitesWithoutModes() const;
    // The modes editor saved `count` records and deleted the satellites
    // named in `deleted`: for each record, the entry of the same name takes
    // its modes and per-satellite settings (spoken name, track hours,
    // attitude, mean-anomaly window, enabled, priority); a record of a
    // satellite the table does not hold gets a block of its own. A deleted
    // satellite loses its block (and so its modes). The user modes file is
    // copied aside as a backup and rewritten, and the program uses the new
    // modes at once. 1; 0 when the file could not be written, or when
    // BetweenPasses or OnExit is among the deleted (nothing is changed then).
    int saveEditedModes(const SatRec* edited, int count,
                        const std::vector<std::string>& deleted = {});
    // The user picked a mode in the channel pop-up.
    void modeChanged();
    // Menu action: add the channels of a SatNOGS DB transmitters list (JSON)
    // to the user modes file, say what was added, and use the new modes at
    // once.
    void importSatnogs();
    // Sets the program up for a new main satellite: offsets, the channel
    // pop-up and its remembered choice, the next-satellite announcement,
    // the radio panel's title, the radio tuned with force, the rotor.
    void HandleNewSatellite();
    // Retunes the radio to the selected mode of the main satellite (force
    // = 1 also sets modes and tones). A failing radio is switched off with
    // a beep.
    void updateVFO(int force);

    // --- Places (places.cpp) ---

    void loadLocations();
    void rewriteLocations();
    void locationChosen();
    void locationOK();
    void removeLocation();
    // The places editor saved: `count` places replace the list, which is
    // rewritten to the file and shown again. Radians follow the degrees.
    void replaceLocations(const Location* places, int count);
    const std::vector<Location>& locations() const { return mLocations.places; }
    const std::vector<Point3F>& lightPoints() const { return mLocations.lightPoints; }

    // --- Settings (prefs.cpp) ---

    // Start-up defaults of the site record.
    void setSiteDefaults();
    void savePrefs();
    // Reads the settings over the defaults and shows them.
    void setUIStateFromPrefs();
    // The preferences panel was accepted showing `shown` (setVarsFromUI):
    // its settings replace the site's, are saved, and a device whose model,
    // port or speed changed is reopened when it was on.
    void prefsAccepted(const SiteRec* shown);
    // The panel was cancelled: the controls show the site's settings again.
    void prefsCancelled();
    // The panel's "Test" buttons, with the model, port and speed it shows.
    // A port the station holds is used as it is (never opened twice); any
    // other is opened for the test and closed again. A sentence for the
    // operator saying what answered.
    std::string testRadio(const SiteRec* shown);
    std::string testRotor(const SiteRec* shown);
    std::string testGateway(const SiteRec* shown);
    // "Speak a test sentence": queued like any announcement, never keyed,
    // in the voice and at the rate the panel shows (empty voice: the
    // engine's default; rate -1 .. 1). The site's own voice comes back when
    // the panel is accepted or cancelled.
    void speakTestSentence(const std::string& voice = std::string(), double rate = 0);
    // The voices the speech engine offers, and whether speech can be heard
    // here at all (an engine and an audio output); empty and false without
    // a speech engine.
    std::vector<std::string> speechVoices() const;
    bool speechAudible() const;
    // Stores / restores the tuning offsets of table entry index.
    void SaveTweaks(int index);
    void LoadTweaks(int index);

    // --- Start-up, the ticks, the window, quitting (tick.cpp) ---

    // The start-up sequence. Starts the announcement thread when speech
    // is given; the runner then starts its 1 s and 15 s timers.
    void awakeFromNib();
    // The one-second tick.
    void mainTimerTasks();
    // The fifteen-second Sun and Moon tick.
    void sunCalcTask();
    // Saves the settings (only while the window is open). Ports stay as
    // they are. Does not stop the announcement thread: stopAnnouncements.
    void applicationWillTerminate();
    // Ends the announcement thread and waits for it: the current
    // announcement is finished first, except that one still waiting for a
    // clear channel on the gateway gives up (within a poll of the board)
    // without keying.
    // The runner calls it last; the destructor does too. Queued items not
    // yet spoken are dropped.
    void stopAnnouncements();
    // The time slider moved to `minutes` off real time: runs a tick at once.
    void timeSlid(int minutes);
    int timeSliderMinutes() const { return mTimeSliderMinutes; }
    // The window is hidden, never closed: always false.
    bool windowShouldClose();
    void openNewWindow();
    bool windowOpen() const { return windowIsOpen; }
    // Whether a menu item is enabled, by its action's name ("openNewWindow",
    // "radioDriverChanged", ...) and tag: the radio driver with tag 9 never
    // is, and opening the window only while it is hidden.
    bool validateMenuItem(const std::string& action, int tag) const;
    void displayTrackListChanged(bool on);
    void followSatChanged(bool on);
    void zoomedin();
    void zoomedout();
    int32_t mapFrameWidth() const { return m2DMapFrameWidth; }
    // The last tick's instant, seconds since 1904 (real time plus the
    // time slider's minutes).
    uint32_t timeBaseSecs() const { return mTimeBaseSecs; }

    // --- The globe (globe.cpp) ---
    // A display option of the globe changed (mapOptionsChanged:,
    // resolutionChanged:): stores and saves the options, then draws one
    // globe frame at once.
    void globeOptionsChanged(const GlobeOptions& options);
    // The picture of the tick's instant (mTimeBaseSecs) for the views.
    ViewFrame viewFrame() const;

    // --- Selection (selection.cpp) ---

    // Automatic choice from the track list: the earliest AOS among tracked,
    // enabled satellites with a predicted pass; lower priority on a tie.
    // True when the main satellite changed.
    bool findNextSatInList();
    // AOS and LOS of the main satellite, the warnings before a pass, the
    // per-second radio and rotor update of a pass, the Doppler shifts.
    void CheckVisibility();
    void setTrackList(bool on);
    bool trackListInUse() const { return mUseTrackList; }
    void selectSatelliteWithIndex(int index);
    // Between awakeFromNib and the first tick: makes entry index the main
    // satellite without tuning, steering or announcing, since the first tick
    // does all three once for it. Indices outside the table are ignored.
    void chooseSatelliteAtStart(int index);
    int selectedSatelliteIndex() const { return mMainSatNum - 1; }
    void MarkSatelliteTracked(int index, bool flag);

    // --- Announcements (announcements of the controller, selection.cpp) ---

    void NextSatelliteAnnouncement();
    void speechChanged();
    // The name spoken for a satellite: its speakName, else its name.
    static std::string FixSatNameForAgnes(const SatRec& sat);
    // The controller's own queue (the thread speaks it).
    AnnouncementQueue& announcementQueue() { return mAnnouncements; }

    // --- Radio (radioactions.cpp) ---

    void openCloseRadio(bool checked);
    void openCloseGateway(bool checked);
    void updateVFOPanel();
    void displaySatName();
    void updateRadioPrefsPanel();
    // Hands the site's voice and rate to the speech engine.
    void applySpeechVoice();
    void uplinkClicked(double value);
    void downlinkClicked(double value);
    void vfoSliderMoved(double value);
    void fullDopplerTuningChanged(bool on);
    void vfoLockChanged(bool on);
    void beaconChanged(bool on);
    void radioDriverChanged(int index);
    // A typed device path joins the port table; its index, -1 when full.
    int addTypedPort(const char* path);
    const VFORec& vfo() const { return mVFO; }
    const PortNameRecord* portNames() const { return mPortNames.get(); }

    // --- Rotor (rotoractions.cpp) ---

    void updateRotors();
    void az_el_Moved(bool manualSwitchOn, int azimuth, int elevation);
    void openCloseRotor(bool checked);
    void updateRotorPanel();
    // Every few ticks, where the rotor can say so and the setting allows:
    // the position it reports, for the sky plot. Within the drivers' bounded
    // time-outs; a silent or unsupported rotor leaves the position unknown.
    void readRotorPosition();
    // 1 with the angles (degrees, as the rotor reports them) when a read-back
    // has succeeded since the rotor port opened; 0 otherwise.
    int rotorPosition(double* azimuth, double* elevation) const;

    // --- The logbook's view of the station (contactstate.cpp) ---

    // The AOS, as a time value, of the main satellite's pass under way, or of
    // its last pass when it is below the horizon: "this pass" for the
    // duplicate check. Searched over the day before the tick's instant; a
    // satellite up all that day gives the day's start. 0 without a main
    // satellite or without a pass in that day.
    uint32_t currentPassAOS();
    // What a contact saved now records: the main satellite and its selected
    // mode (the frequencies at the satellite, trims included, never the
    // radio's), the tick's instant, currentPassAOS, our call and locator.
    void fillLiveContact(LiveContactState* state);

    // --- Devices lost and found (devices.cpp) ---

    // Once a tick: a port whose device went away (hang-up, EIO, the node
    // gone) is closed and said once; a device the user switched on that is
    // off now (lost, silent, missing at start) is tried again every
    // kDeviceRetrySeconds while the "reopenDevices" setting is on, and when it
    // is back the radio is tuned with force or the rotor pointed again, its
    // box ticked and that said.
    void superviseDevices();
    // The user's wish, apart from the check box: set when the device is
    // switched on, cleared only when it is switched off.
    bool radioWanted() const { return mDevices[kRadioDevice].wanted; }
    bool rotorWanted() const { return mDevices[kRotorDevice].wanted; }
    bool gatewayWanted() const { return mDevices[kGatewayDevice].wanted; }

    // --- State ---

    int32_t mainSatNum() const { return mMainSatNum; }
    void setMainSatNum(int32_t number) { mMainSatNum = number; }
    int32_t cycleSatNum() const { return mCycleSatNum; }
    void setCycleSatNum(int32_t number) { mCycleSatNum = number; }
    int32_t moonNum() const { return mMoonNum; }
    int32_t sunNum() const { return mSunNum; }
    const ViewPrefs& viewPrefs() const { return mViewPrefs; }
    // The controls as the core knows them. A front end sets the fields an
    // action reads (the chosen mode, place, sheet, map area, tab) before
    // running it; core thread only.
    ControlsModel& controls() { return mControls; }
    const ControlsModel& controls() const { return mControls; }
    const DataPaths& paths() const { return paths_; }

  private:
    // Keep the controls' copy in step with what the outlets show.
    void scaleMapRect(double scale);
    void resetVfoSlider();

    // The window's outlets as the radio and rotor code sees them.
    struct RadioOutlets : RadioUi {
        AppController* app = nullptr;
        void beep() override;
        void setRadioChecked(bool on) override;
        void setGatewayChecked(bool on) override;
        void setSMeter(int level) override;
        void storeBool(const char* key, bool value) override;
    };
    struct RotorOutlets : RotorUi {
        AppController* app = nullptr;
        void beep() override;
        void setRotorChecked(bool on) override;
        void setElevationControl(int value) override;
        void setRotorPanel(const char* azimuthText, const char* elevationText) override;
        void storeBool(const char* key, bool value) override;
    };

    enum DeviceIndex { kRadioDevice = 0, kRotorDevice = 1, kGatewayDevice = 2 };
    struct DeviceWatch {
        bool wanted = false;
        uint32_t nextTry = 0;  // clock seconds of the next attempt to reopen
        std::string said;      // the last message, so that a repeat is not said again
    };
    // "radio IC-910 on /dev/ttyUSB0", "rotor GS-232 on ...", "gateway on ...".
    std::string deviceName(int device) const;
    int& deviceFd(int device);
    bool deviceEnabled(int device) const;
    // Puts the text on the status line and in the log, unless it is the
    // last thing said about this device.
    void sayDevice(int device, const std::string& text);
    // The port went away: closed, box unticked, said once.
    void deviceLost(int device, int error);
    // A wanted device that is off: try again.
    void retryDevice(int device);
    // After a failed tune: says why, and closes a port whose device is gone.
    void radioFailed();
    // Saved port paths: read over the index keys at start, written at quit.
    void readPortPaths();
    void savePortPaths();

    // The queue announcements go to: the test's recorder or our own.
    Announcer* announcer();
    void queue(const std::string& text, int32_t sound, bool transmit, bool waitForCOR);
    // The announcement thread's copies of the site's fields.
    void publishAnnouncementSettings();
    // The timed warning and the next-satellite sentence share their tail.
    std::string passSentence(const SatRec& sat, const char* lead) const;
    void showStatusTexts();
    void showTrimsAndFrequencies();
    // The entry for index (-1, -2 the pseudo-records); null outside the table.
    SatRec* record(int index);
    const SatRec* record(int index) const;
    // The main satellite's entry, null when mMainSatNum is out of range.
    SatRec* mainSatellite();
    void debugLog(const char* format, ...) const __attribute__((format(printf, 2, 3)));
    // The descriptor for a test on port index `port`: a held one, else the
    // port opened at `baud` (*opened set). -1 with *why filled otherwise.
    int portForTest(int port, int baud, bool* opened, std::string* why);
    void announce(const std::string& text);
    // Appends the Moon or the Sun, its name and elements already in place,
    // as entry mTotalSats: pop-up item, modes, orbit constants, index.
    void appendBody(SatRec* body, ModesFile* modes);
    // Reloads after the modes file changed, keeping the main satellite.
    void reloadModes(int32_t mainSatNum);
    // Replaces the element-set file with `candidate` when it holds at least
    // one element set; otherwise tells the user and keeps the current one.
    // Converts from any format the converter reads, merging when asked.
    // *report (may be null) gets what was installed.
    bool installElementFile(const std::string& candidate, const std::string& label,
                            bool merge = false, std::string* report = nullptr);

    Services services_;
    DataPaths paths_;

    std::unique_ptr<SatRec[]> mAllSats;  // kMaxSatellites entries
    int32_t mTotalSats = 0;
    int32_t mMoonNum = 0;              // the Sun's entry index, as the rest of the program reads it
    int32_t mSunNum = 0;               // one past the Sun's entry
    std::unique_ptr<SatRec> BPSatRec;  // modes applied between passes
    std::unique_ptr<SatRec> EXITSatRec;  // modes applied when the program exits
    int32_t mCycleSatNum = 1;
    std::string mDownloadURL;     // the source of the download under way
    bool mDownloadMerge = false;  // the download under way joins the current sets
    // Entry k's names (k < mTotalSats - 2: the Moon and the Sun have none).
    std::vector<SatelliteNames> mSatelliteNames;
    int32_t mMainSatNum = 1;
    bool mRefreshModes = true;
    std::string mModesSource;  // the modes file of the last load, empty when none was read
    bool newSatellite = false;
    SiteRec mSite{};
    ViewPrefs mViewPrefs;
    PlacesList mLocations;

    VFORec mVFO{};
    std::unique_ptr<PortNameRecord[]> mPortNames;  // kMaxSerialPorts entries
    RadioOutlets mRadioUi;
    RotorOutlets mRotorUi;
    int32_t mRotorReadCountdown = 0;  // ticks until the next rotor read-back
    bool mRotorPositionKnown = false;
    double mRotorReadAz = 0, mRotorReadEl = 0;  // degrees, as the rotor reported them
    uint32_t mTimeBaseSecs = 0;
    uint32_t mProgramStartSecs = 0;
    int mTimeSliderMinutes = 0;
    bool windowIsOpen = true;
    bool mFirstTimeMainTimerTask = true;
    // The user's modes or places file exists but could not be read: the
    // errno, 0 when it was read. A change then never rewrites it, so the
    // user's own file is not replaced by what the program fell back on.
    int mUserModesUnreadable = 0;
    int mPlacesUnreadable = 0;
    bool mUseTrackList = false;
    bool mSaveTweaksLater = false;
    int32_t mWarningIntervalMinutes = 0;
    bool mGiveOneMinuteWarning = false;
    int32_t mLastSat = -1;
    int32_t m2DMapFrameWidth = 1024;
    ControlsModel mControls;
    double lastPosition = 0;    // the VFO slider's last position
    double mUplinkStepper = 0;  // the trim steppers' last values, MHz
    double mDownlinkStepper = 0;

    DeviceWatch mDevices[3];
    bool mReopenDevices = true;

    AnnouncementQueue mAnnouncements;
    AnnouncementSettings mAnnouncementSettings;
    RealTickSleeper mRealSleeper;
    GatewayLine mRealGateway;
    std::unique_ptr<AnnouncementSpeaker> mSpeaker;
};

}  // namespace veloran
