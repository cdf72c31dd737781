// The main window: the map tabs on top, the satellite and place choosers and
// the clock above them, the status lines under them, and, below a splitter
// handle, the collapsible lower panel with the radio/rotor tabs, the
// track-list/horizon tabs and the time slider. It shows what the core
// publishes and posts every action.
#pragma once

#include <QMainWindow>
#include <atomic>
#include <memory>

#include "app/interfaces.h"
#include "gui/corethread.h"

class QLabel;
class QComboBox;
class QTabWidget;
class QSlider;
class QSpinBox;
class QCheckBox;
class QToolButton;
class QPushButton;
class QMenu;
class QProgressBar;
class QActionGroup;
class QSystemTrayIcon;
class QSplitter;

namespace veloran {

class UiBridge;
struct WindowPrefs;
class PlaceSheet;
class PrefsDialog;
class ModesEditor;
class PlacesEditor;
class KepsDownloadDialog;
class SimulatedDevices;
class MapWidget;
class HorizonWidget;
class TrackListWidget;
class PassesWindow;
class LogbookLink;
class LogbookWindow;
class LogStrip;
class GlobeTab;

class MainWindow : public QMainWindow {
    Q_OBJECT
  public:
    MainWindow(UiBridge* bridge, CorePost post, QWidget* parent = nullptr);
    ~MainWindow() override;

    // Where the desktop has a tray, closing hides the window and tracking
    // goes on; without one, closing quits.
    void setUpTray();
    bool hasTray() const { return tray_ != nullptr; }
    const SimulatedDevices& simulatedDevices() const { return *sims_; }

    void setFullScreenView(bool on);
    bool fullScreenView() const { return fullScreen_; }
    void setLowerPanelShown(bool shown);
    // The lower panel's height below the map, kept while the panel is
    // hidden; setting it never goes below what the panel needs.
    int lowerPanelHeight() const;
    void setLowerPanelHeight(int height);
    // Brings the window back (tray, Window menu, a second start).
    void showAgain();
    // Hands the window's own state (the table's column layout, the lower
    // panel's height) to the core to be saved with the settings; call
    // before stopping the core.
    void saveWindowState();
    // Opens the passes window (Ctrl+Shift+P); made on first use.
    void showPasses();
    PassesWindow* passesWindow() const { return passesWindow_; }
    // Opens the logbook window (Ctrl+L); made on first use.
    void showLogbook();
    LogbookWindow* logbookWindow() const { return logbookWindow_; }

  protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    QWidget* buildTopBar();
    QWidget* buildMapArea();
    QWidget* buildLowerPanel();
    QWidget* buildTimeBar();
    void buildMenus();
    void connectBridge();
    void applyWindowPrefs(const WindowPrefs& prefs);
    void slideTime(int minutes);
    void showSatelliteNames(const std::vector<SatelliteNames>& names);
    void showMainSatellite(const MainSatelliteStatus& status);
    void setNight(bool on);
    // Posts an action that asks the core's file panel, which answers `path`.
    void postWithFile(const QString& path, CoreAction action);
    void showUserGuide();

    UiBridge* bridge_;
    CorePost post_;
    QComboBox *satellites_, *locations_;
    QLabel *latitude_, *longitude_, *clock_, *version_, *mapStatus_, *figures_, *kepsDate_;
    QLabel *message_, *mainSatellite_;
    // The element-set download under way, with its Cancel button.
    QProgressBar* downloadBar_ = nullptr;
    QPushButton* downloadCancel_ = nullptr;
    QTabWidget *mapTabs_, *listTabs_, *radioTabs_;
    QToolButton* disclosure_;
    QCheckBox *showTrackList_, *debug_, *speech_;
    MapWidget* map_;
    GlobeTab* globeTab_;
    HorizonWidget* horizon_;
    TrackListWidget* trackList_;
    QSlider* timeSlider_;
    QSpinBox* timeMinutes_;
    QWidget *topBar_, *lowerPanel_, *statusBlock_;
    QSplitter* mapSplitter_;
    int lowerPanelHeight_ = 0;
    PlaceSheet* placeSheet_;
    PassesWindow* passesWindow_ = nullptr;
    PrefsDialog* prefs_;
    ModesEditor* modes_;
    PlacesEditor* places_;
    KepsDownloadDialog* kepsDownload_;
    // The "Simulated" devices of the port lists serve for the window's life.
    std::unique_ptr<SimulatedDevices> sims_;
    QAction* speechAction_;
    LogbookLink* logbook_;
    LogStrip* logStrip_;
    LogbookWindow* logbookWindow_ = nullptr;
    QMenu* radioMenu_;
    QActionGroup* radioGroup_;
    QAction *fullScreenAction_, *nightAction_, *windowAction_;
    QSystemTrayIcon* tray_ = nullptr;
    bool fullScreen_ = false;
    bool wasMaximized_ = false;
    // The time slider posts at most one tick at a time; the tick reads the
    // newest position when it runs.
    std::shared_ptr<std::atomic<int>> timeWanted_;
    std::shared_ptr<std::atomic<bool>> timePending_;
};

}  // namespace veloran
