// Assembles the station on the core thread and runs actions there.

#include "gui/corethread.h"

#include <strings.h>

#include <QMetaObject>
#include <cstdio>

#include "app/appcontroller.h"
#include "app/tracklist.h"
#include "data/settings.h"
#include "gui/theme.h"
#include "gui/tracklistmodel.h"
#include "gui/uibridge.h"
#include "platform/coretimers.h"
#include "platform/qtdownloader.h"
#include "platform/qtserialports.h"
#include "platform/qtsounds.h"
#include "platform/qtspeech.h"
#include "platform/qtuserdefaults.h"
#include "radio/driver.h"

namespace veloran {

namespace {

// The settings file with this run's options over it: writes to an
// overridden key stay in memory, so a one-off port is not stored.
class OverlayDefaults : public UserDefaults {
  public:
    OverlayDefaults(UserDefaults* below, std::map<std::string, std::string> over)
        : below_(below), over_(std::move(over)) {}
    bool contains(const std::string& key) const override {
        return over_.count(key) != 0 || below_->contains(key);
    }
    std::string stringForKey(const std::string& key) const override {
        const auto it = over_.find(key);
        return it != over_.end() ? it->second : below_->stringForKey(key);
    }
    void setString(const std::string& key, const std::string& value) override {
        const auto it = over_.find(key);
        if (it != over_.end())
            it->second = value;
        else
            below_->setString(key, value);
    }
    void removeKey(const std::string& key) override {
        over_.erase(key);
        below_->removeKey(key);
    }

  private:
    UserDefaults* below_;
    std::map<std::string, std::string> over_;
};

// The machine's serial ports, then the typed device paths.
class PortsWithTyped : public SerialPortList {
  public:
    explicit PortsWithTyped(std::vector<std::string> typed) : typed_(std::move(typed)) {}
    int findPorts(PortNameRecord* ports, int maxPorts) override {
        int count = system_.findPorts(ports, maxPorts);
        for (const std::string& path : typed_) {
            if (count >= maxPorts) break;
            std::snprintf(ports[count].bsdPath, sizeof ports[count].bsdPath, "%s", path.c_str());
            std::snprintf(ports[count].userName, sizeof ports[count].userName, "%s", path.c_str());
            ++count;
        }
        return count;
    }

  private:
    QtSerialPortList system_;
    std::vector<std::string> typed_;
};

}  // namespace

struct CoreThread::Core {
    explicit Core(const StationSetup& setup, UiBridge* ui)
        : stored(setup.paths.settingsFile),
          defaults(&stored, setup.overrides),
          ports(setup.typedPorts),
          downloader([this](bool ok, const std::string& why, const std::string& url) {
              if (ok)
                  app->downloadDidFinish();
              else
                  app->downloadDidFail(why, url);
          }) {
        if (setup.withSpeech) {
            speech = std::make_unique<QtSpeech>();
            sounds = std::make_unique<QtSoundPlayer>(setup.paths.resourceDir + "/sounds");
        }
        Services services;
        services.ui = ui;
        services.defaults = &defaults;
        services.downloader = &downloader;
        services.clock = &clock;
        services.speech = speech.get();
        services.sounds = sounds.get();
        services.ports = &ports;
        services.versionString = "0.1";
        app = std::make_unique<AppController>(services, setup.paths);
        ui->setController(app.get());
        trackList = std::make_unique<SatelliteTableController>(app.get(), &defaults, ui);
        timers = std::make_unique<CoreTimers>(
            [this]() {
                app->mainTimerTasks();
                trackList->updateTrackList();
            },
            [this]() { app->sunCalcTask(); });
    }

    QtUserDefaults stored;
    OverlayDefaults defaults;
    PortsWithTyped ports;
    SystemClock clock;
    std::unique_ptr<QtSpeech> speech;
    std::unique_ptr<QtSoundPlayer> sounds;
    QtDownloader downloader;
    std::unique_ptr<AppController> app;
    std::unique_ptr<SatelliteTableController> trackList;
    std::unique_ptr<CoreTimers> timers;
};

CoreThread::CoreThread(StationSetup setup, QObject* parent)
    : QObject(parent), setup_(std::move(setup)), bridge_(new UiBridge) {
    RegisterBridgeTypes();
    thread_.setObjectName("veloran-core");
    bridge_->moveToThread(&thread_);
    QObject::connect(&thread_, &QThread::finished, bridge_, &QObject::deleteLater);
}

CoreThread::~CoreThread() {
    if (!stop(2000)) {
        // The core is stuck in a device exchange; the process is ending, so
        // leave the thread to the exit rather than destroy what it uses.
        std::fprintf(stderr, "veloran: the core did not stop in time\n");
        std::fflush(stderr);
        std::_Exit(0);
    }
}

void CoreThread::start(bool ticking) {
    thread_.start();
    QMetaObject::invokeMethod(
        bridge_,
        [this, ticking]() {
            core_ = std::make_unique<Core>(setup_, bridge_);
            AppController& app = *core_->app;
            app.awakeFromNib();
            core_->trackList->awakeFromNib();
            core_->trackList->updateTrackList();
            if (!setup_.satellite.empty()) {
                auto sat = std::make_unique<SatRec>();
                for (int i = 0; i < app.GetTotalSats(); ++i) {
                    app.GetSatelliteRecordByIndex(i, sat.get());
                    if (strcasecmp(sat->name, setup_.satellite.c_str()) == 0) {
                        app.selectSatelliteWithIndex(i);
                        break;
                    }
                }
            }
            if (setup_.timeOffsetMinutes != 0) app.timeSlid(setup_.timeOffsetMinutes);
            showWindowPrefs();
            if (ticking) core_->timers->start();
        },
        Qt::QueuedConnection);
}

void CoreThread::post(CoreAction action) {
    // Queued calls run in order, so every action finds the station that
    // start() assembled; after stop() actions are dropped.
    QMetaObject::invokeMethod(
        bridge_,
        [this, action = std::move(action)]() {
            if (!core_) return;
            Station station{core_->app.get(), &core_->defaults, core_->trackList.get(), bridge_};
            action(station);
        },
        Qt::QueuedConnection);
}

bool CoreThread::stop(int waitMs) {
    if (stopped_ || !thread_.isRunning()) return true;
    stopped_ = true;
    QMetaObject::invokeMethod(
        bridge_,
        [this]() {
            if (core_) {
                core_->timers->stop();
                if (core_->app->windowOpen()) saveWindowPrefs();
                core_->app->applicationWillTerminate();
                core_->trackList->applicationWillTerminate();
                std::string error;
                if (!core_->stored.sync(&error)) saveError_ = error;
                core_->app->stopAnnouncements();
                core_.reset();
            }
            thread_.quit();
        },
        Qt::QueuedConnection);
    return thread_.wait(QDeadlineTimer(waitMs));
}

void CoreThread::showWindowPrefs() {
    const UserDefaults& defaults = core_->defaults;
    CoreControls& controls = bridge_->controls();
    controls.mapTab = static_cast<int>(defaults.integerForKey(kMapTabKey));
    controls.listTab = static_cast<int>(defaults.integerForKey(kListTabKey));
    controls.radioTab = static_cast<int>(defaults.integerForKey(kRadioTabKey));
    WindowPrefs prefs;
    prefs.mapTab = controls.mapTab;
    prefs.listTab = controls.listTab;
    prefs.radioTab = controls.radioTab;
    prefs.night = defaults.boolForKey(kNightThemeKey);
    controls.trackColumns = defaults.stringForKey(kTrackListColumnsKey);
    prefs.trackColumns = QByteArray::fromBase64(QByteArray::fromStdString(controls.trackColumns));
    for (int i = 0; i < kRadioCount; ++i) {
        const RadioDriver* driver = RadioDriverFor(i);
        prefs.radioNames << QString::fromUtf8(driver != nullptr ? driver->model : "");
        prefs.radioItemEnabled << core_->app->validateMenuItem("radioDriverChanged", i);
    }
    bridge_->showWindowPrefs(prefs);
}

void CoreThread::saveWindowPrefs() {
    const CoreControls& controls = bridge_->controls();
    core_->defaults.setInteger(kMapTabKey, controls.mapTab);
    core_->defaults.setInteger(kListTabKey, controls.listTab);
    core_->defaults.setInteger(kRadioTabKey, controls.radioTab);
    if (!controls.trackColumns.empty())
        core_->defaults.setString(kTrackListColumnsKey, controls.trackColumns);
}

std::string CoreThread::saveError() const {
    return saveError_;
}

}  // namespace veloran
