// The core thread of the desktop application. The controller, the track
// list, the timers, the downloader and every driver live on it; the GUI
// thread reaches them only through post(), a queued call that runs between
// two ticks. Quitting saves on the core thread and gives it a bounded time,
// so a device stuck in a long exchange never keeps the window from closing.
#pragma once

#include <QObject>
#include <QThread>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "data/files.h"
#include "data/userdefaults.h"

namespace veloran {

class AppController;
class SatelliteTableController;
class UiBridge;

// What the core needs to start: the folders, and this run's options laid
// over the settings file (they are not written back).
struct StationSetup {
    DataPaths paths;
    std::map<std::string, std::string> overrides;  // settings key -> value for this run
    std::vector<std::string> typedPorts;           // device paths after the machine's own ports
    std::string satellite;                         // the satellite to work, empty: as stored
    int timeOffsetMinutes = 0;
    bool withSpeech = true;  // tests run without the speech engine and chimes
};

// What an action posted to the core sees. Valid on the core thread only.
struct Station {
    AppController* app = nullptr;
    UserDefaults* defaults = nullptr;
    SatelliteTableController* trackList = nullptr;
    UiBridge* ui = nullptr;
};

// How a widget hands an action to the core: the action runs later on the
// core thread; the widget keeps no pointer into the core.
using CoreAction = std::function<void(Station&)>;
using CorePost = std::function<void(CoreAction)>;

class CoreThread : public QObject {
    Q_OBJECT
  public:
    explicit CoreThread(StationSetup setup, QObject* parent = nullptr);
    ~CoreThread() override;

    // The outlets; connect to its signals before start().
    UiBridge* bridge() const { return bridge_; }
    // Starts the thread; the station assembles itself there and starts its
    // timers. `ticking` false leaves the timers off (tests tick by hand).
    void start(bool ticking = true);
    // Runs `action` on the core thread after whatever it is doing now.
    void post(CoreAction action);
    // Stops the timers, saves the settings (the controller skips that while
    // the window is hidden), ends the announcement thread and the core
    // thread. Waits at most `waitMs`; false when the core was still busy
    // (the process may then exit without it).
    bool stop(int waitMs);
    // Settings left unsaved at the last stop, for the message ("" when saved).
    std::string saveError() const;

  private:
    struct Core;
    void showWindowPrefs();
    void saveWindowPrefs();
    StationSetup setup_;
    QThread thread_;
    UiBridge* bridge_;
    std::unique_ptr<Core> core_;  // created and destroyed on the core thread
    std::string saveError_;
    bool stopped_ = false;
};

}  // namespace veloran
