// The window's outlets as the core thread sees them. The core calls the
// UserInterface and TrackListUi methods on its own thread; each call becomes
// a queued signal carrying value copies, so the GUI thread paints them when
// it is free and the core never waits for a repaint. What the core reads of
// the controls lives in the controller's ControlsModel, which the GUI's
// actions set before they run.
#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVector>
#include <vector>

#include "app/interfaces.h"
#include "app/tracklist.h"
#include "app/viewbuilder.h"
#include "data/kepssources.h"
#include "data/locations.h"
#include "engine/siterec.h"
#include "views/globeexchange.h"

namespace veloran {

class AppController;

// What the window restores from the settings at start-up, and which items
// of the radio menu the controller enables.
// One model Hamlib knows, as the preferences' model list shows it.
struct HamlibChoice {
    int number = 0;
    QString maker, model;
};

struct WindowPrefs {
    int mapTab = 0, listTab = 0, radioTab = 0;
    bool night = false;
    QByteArray trackListColumns;  // the table's saved column layout
    int lowerPanelHeight = 0;     // pixels under the map's splitter; 0: never stored
    int timeSliderMinutes = 0;    // --time-offset starts the slider off zero
    double kepsUpdateHours = 0;   // --keps-update-hours; 0: no automatic updates
    QStringList radioNames;
    QVector<bool> radioItemEnabled;
    // Read on the core thread, which is the only one that calls into Hamlib.
    QVector<HamlibChoice> hamlibRadios, hamlibRotors;
};

// Settings keys of the window's own state.
constexpr const char* kMapTabKey = "map_tab";
constexpr const char* kListTabKey = "tracklist_tab";
constexpr const char* kRadioTabKey = "radio_tab";
constexpr const char* kLowerPanelHeightKey = "lower_panel_height";

// The settings the main window's own controls show.
struct WindowSettings {
    bool followSat = false;
    bool displayTrackList = true;
    bool speech = false;
    bool rotorManual = false;
    bool fullDoppler = false;
    bool beacon = false;
    bool locked = false;
    int radio = 0;
    bool radioOn = false, rotorOn = false, gatewayOn = false;  // the ports the settings open
    QString locationName;
    QString latitude, longitude;  // the site, degrees, north and east positive
};

// What the preferences panel shows: a copy of the site record, the places
// to choose from and the ports found, taken on the core thread.
struct PrefsSnapshot {
    SiteRec site{};
    std::vector<Location> places;
    QStringList ports;
    QStringList voices;          // the speech engine's voices; empty without one
    bool speechAudible = false;  // an engine and an audio output
};

// What the modes editor shows: the satellites with modes, blocks of
// satellites outside the table, then BetweenPasses and OnExit (as
// AppController::modesForEditing gives them); and the names of the table's
// satellites without modes.
struct ModesForEditing {
    std::vector<SatRec> records;
    QStringList withoutModes;
};

// What the download dialog offers: the sources (the AMSAT bulletin, the
// CelesTrak groups, the user's own), which one is chosen, and why automatic
// updates stopped (empty while they run). Taken on the core thread.
struct KepsSourcesSnapshot {
    std::vector<KepsSource> sources;
    std::vector<std::string> userURLs;
    std::string chosenURL;
    std::string autoStopped;
};

// The devices of the panel's "Test" buttons.
enum class TestedDevice { Radio, Rotor, Gateway };

class UiBridge : public QObject, public UserInterface, public TrackListUi, public FileChooser {
    Q_OBJECT
  public:
    explicit UiBridge(QObject* parent = nullptr);

    // The controller whose records colour the track-list rows and whose
    // tab selections choose the pictures drawn; core thread.
    void setController(const AppController* app) { app_ = app; }
    // The file the operator picked on the GUI thread, set on the core thread
    // just before the action that asks for one; empty answers as a
    // cancelled panel.
    void setChosenFile(const std::string& path) { chosenFile_ = path; }
    // Builds the map and horizon pictures of each tick; core thread.
    ViewBuilder& viewBuilder() { return builder_; }

    void removeAllSatelliteItems() override;
    void addSatelliteItem(const std::string& name) override;
    void setKepsDateText(const std::string& text) override;
    void setSatelliteNames(const std::vector<SatelliteNames>& names) override;
    void setMainSatelliteStatus(const MainSatelliteStatus& status) override;
    void alert(const std::string& title, const std::string& message,
               const std::string& button) override;
    void beep() override;
    void removeAllChannelItems() override;
    void addChannelItem(const std::string& name) override;
    void selectChannelItem(int index) override;
    void setVfoSlider(double value) override;
    void removeAllLocationItems() override;
    void addLocationItem(const std::string& name) override;
    void showLocation(const std::string& name, const std::string& latitude,
                      const std::string& longitude) override;
    void closeLocationSheet() override;
    void showSettings(const SiteRec& site) override;
    void setClockLine(const std::string& text, bool red) override;
    void setVersionLine(const std::string& text) override;
    void setMapStatus(const std::string& text) override;
    void setTransponderLine(const std::string& text, bool fullDopplerChecked,
                            bool fullDopplerEnabled) override;
    void setSatelliteFigures(const std::string& altitude, const std::string& velocity,
                             const std::string& maxElevation, const std::string& range) override;
    void setFlipLine(const std::string& text) override;
    void setRadioPanelTitle(const std::string& text) override;
    void setVfoPanel(const std::string& uplink, const std::string& downlink,
                     const std::string& uplinkTrim, const std::string& downlinkTrim,
                     const std::string& uplinkLine, const std::string& downlinkLine) override;
    void setTrimSteppers(double uplink, double downlink) override;
    void setRadioPrefsControls(bool icomAddress, bool sMeter, bool dialTracking) override;
    void setSerialPortItems(const std::vector<std::string>& names) override;
    void setRadioChecked(bool on) override;
    void setDeviceMessage(const std::string& text) override;
    void setGatewayChecked(bool on) override;
    void setRotorChecked(bool on) override;
    void setSMeter(int level) override;
    void setElevationControl(int value) override;
    void setRotorPanel(const std::string& azimuth, const std::string& elevation) override;
    void setDebugChecked(bool on) override;
    void setSpeechChecked(bool on) override;
    void setZoomButtons(bool zoomInEnabled, bool zoomOutEnabled) override;
    void zoomMap(int32_t width, double scale) override;
    void showMainWindow(bool shown) override;
    void drawViews(const ViewFrame& frame) override;
    void drawGlobe(const ViewFrame& frame) override;
    // The globe's scenes, built on the core thread while the globe's tab is
    // in front; any thread may keep the pointer.
    std::shared_ptr<GlobeSceneExchange> globeExchange() const { return globe_; }

    // FileChooser: the panels were shown before the action was posted.
    bool chooseFileToOpen(std::string* path) override;
    bool chooseFileToSave(const std::string& proposedName, std::string* path) override;

    // TrackListUi
    void reloadRows(const std::vector<SatelliteSlot>& rows) override;
    void deselectAllRows() override;
    void setTrackListChecked(bool on) override;

    // Start-up: the window's stored state (not an outlet of the core).
    void showWindowPrefs(const WindowPrefs& prefs) { emit windowPrefsShown(prefs); }
    // A line for the operator from the station (stale element sets, a
    // device that went away): the window's message line, never a dialog.
    void showNotice(const std::string& text) override {
        emit noticeShown(QString::fromStdString(text));
    }
    // The element-set download's bytes so far and expected (-1: unknown),
    // and its end.
    void showDownloadProgress(int64_t received, int64_t total) {
        emit downloadProgressed(received, total);
    }
    void endDownloadProgress() { emit downloadEnded(); }
    // The records the modes editor edits, copied on the core thread, and
    // the table's satellites it can add.
    void showModesForEditing(std::vector<SatRec> records, std::vector<std::string> withoutModes) {
        auto shown = std::make_shared<ModesForEditing>();
        shown->records = std::move(records);
        for (const std::string& name : withoutModes)
            shown->withoutModes << QString::fromStdString(name);
        emit modesForEditingShown(std::move(shown));
    }
    // The download dialog's sources, read from the settings on the core thread.
    void showKepsSources(KepsSourcesSnapshot snapshot) {
        emit kepsSourcesShown(std::make_shared<const KepsSourcesSnapshot>(std::move(snapshot)));
    }
    // What a "Test" button found.
    void showDeviceTest(TestedDevice device, const std::string& text) {
        emit deviceTested(device, QString::fromStdString(text));
    }

  signals:
    void globeScenePublished();
    void windowPrefsShown(const veloran::WindowPrefs& prefs);
    void noticeShown(const QString& text);
    void downloadProgressed(qint64 received, qint64 total);
    void downloadEnded();
    void prefsShown(std::shared_ptr<const veloran::PrefsSnapshot> prefs);
    void deviceTested(veloran::TestedDevice device, const QString& text);
    void modesForEditingShown(std::shared_ptr<const veloran::ModesForEditing> modes);
    void satelliteItemsCleared();
    void satelliteItemAdded(const QString& name);
    void kepsDateChanged(const QString& text);
    void satelliteNamesChanged(std::vector<veloran::SatelliteNames> names);
    void mainSatelliteStatusChanged(veloran::MainSatelliteStatus status);
    void kepsSourcesShown(std::shared_ptr<const veloran::KepsSourcesSnapshot> snapshot);
    void alertRequested(const QString& title, const QString& message, const QString& button);
    void beepRequested();
    void channelItemsCleared();
    void channelItemAdded(const QString& name);
    void channelItemSelected(int index);
    void vfoSliderReset(double value);
    void locationItemsCleared();
    void locationItemAdded(const QString& name);
    void locationShown(const QString& name, const QString& latitude, const QString& longitude);
    void locationSheetClosed();
    void settingsShown(const veloran::WindowSettings& settings);
    void clockLineChanged(const QString& text, bool red);
    void versionLineChanged(const QString& text);
    void mapStatusChanged(const QString& text);
    void deviceMessageChanged(const QString& text);
    void transponderLineChanged(const QString& text, bool fullDopplerChecked,
                                bool fullDopplerEnabled);
    void satelliteFiguresChanged(const QString& altitude, const QString& velocity,
                                 const QString& maxElevation, const QString& range);
    void flipLineChanged(const QString& text);
    void radioPanelTitleChanged(const QString& text);
    void vfoPanelChanged(const QString& uplink, const QString& downlink, const QString& uplinkTrim,
                         const QString& downlinkTrim, const QString& uplinkLine,
                         const QString& downlinkLine);
    void trimSteppersChanged(double uplink, double downlink);
    void radioPrefsControlsChanged(bool icomAddress, bool sMeter, bool dialTracking);
    void serialPortItemsChanged(const QStringList& names);
    void radioCheckedChanged(bool on);
    void gatewayCheckedChanged(bool on);
    void rotorCheckedChanged(bool on);
    void sMeterChanged(int level);
    void elevationControlChanged(int value);
    void rotorPanelChanged(const QString& azimuth, const QString& elevation);
    void debugCheckedChanged(bool on);
    void speechCheckedChanged(bool on);
    void zoomButtonsChanged(bool zoomInEnabled, bool zoomOutEnabled);
    void mapZoomed(int width, double scale);
    void mainWindowShown(bool shown);
    // The tick's pictures; a null list means that view is not showing.
    void viewListsPublished(std::shared_ptr<const veloran::DisplayList> map,
                            std::shared_ptr<const veloran::DisplayList> horizon);
    void trackRowsChanged(std::vector<veloran::SatelliteSlot> rows,
                          std::vector<veloran::RowColour> colours);
    void trackRowsDeselected();
    void trackListCheckedChanged(bool on);

  private:
    ViewBuilder builder_;
    SystemClock clock_;  // the Sun and the night follow the wall clock
    const AppController* app_ = nullptr;
    std::string chosenFile_;
    std::shared_ptr<GlobeSceneExchange> globe_;
    GlobeSceneBuilder globeBuilder_;
};

// A satellite's long name and catalogue number, for its tool tips; empty
// when there is neither.
QString SatelliteToolTip(const SatelliteNames& names);

// Makes the value types above travel through queued connections.
void RegisterBridgeTypes();

}  // namespace veloran

Q_DECLARE_METATYPE(veloran::WindowSettings)
Q_DECLARE_METATYPE(veloran::WindowPrefs)
Q_DECLARE_METATYPE(veloran::TestedDevice)
