// The core thread of the desktop application. The station (controller,
// track list, timers, downloader, every driver) lives on it; the GUI thread
// reaches it only through post(), a queued call that runs between two ticks.
// Quitting saves on the core thread and gives it a bounded time, so a device
// stuck in a long exchange never keeps the window from closing.
#pragma once

#include <QObject>
#include <QThread>
#include <functional>
#include <memory>
#include <string>

#include "data/files.h"
#include "station/stationoptions.h"

namespace veloran {

class AppController;
class SatelliteTableController;
class Station;
class UiBridge;
class UserDefaults;

// What an action posted to the core sees. Valid on the core thread only.
struct CoreSide {
    AppController* app = nullptr;
    UserDefaults* defaults = nullptr;
    SatelliteTableController* trackList = nullptr;
    UiBridge* ui = nullptr;
};

// How a widget hands an action to the core: the action runs later on the
// core thread; the widget keeps no pointer into the core.
using CoreAction = std::function<void(CoreSide&)>;
using CorePost = std::function<void(CoreAction)>;

class CoreThread : public QObject {
    Q_OBJECT
  public:
    CoreThread(const StationOptions& options, const DataPaths& paths, QObject* parent = nullptr);
    ~CoreThread() override;

    // The outlets; connect to its signals before start().
    UiBridge* bridge() const { return bridge_; }
    // Starts the thread; the station assembles itself there. `ticking` false
    // leaves the timers off and `speech` false makes no synthesiser (tests).
    // A start-up that fails (an unknown --sat) emits startFailed.
    void start(bool ticking = true, bool speech = true);
    // Runs `action` on the core thread after whatever it is doing now;
    // dropped once the core has stopped.
    void post(CoreAction action);
    // Stops the timers, saves the settings and the window's tab selections
    // (neither while the window is hidden), ends the announcement thread and
    // the core thread. Waits at most `waitMs`; false when the core was still
    // busy (the process may then exit without it).
    bool stop(int waitMs);

  signals:
    void startFailed(const QString& why);

  private:
    void showWindowPrefs();
    void saveWindowPrefs();

    StationOptions options_;
    DataPaths paths_;
    QThread thread_;
    UiBridge* bridge_;                  // lives on the core thread
    std::unique_ptr<Station> station_;  // created, run and destroyed on the core thread
    bool stopped_ = false;
};

}  // namespace veloran
