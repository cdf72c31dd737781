// Runs the station on the core thread and actions there.

#include "gui/corethread.h"

#include <QMetaObject>
#include <algorithm>
#include <cstdint>
#include <cstdio>

#include "app/appcontroller.h"
#include "app/tracklist.h"
#include "gui/theme.h"
#include "gui/tracklistmodel.h"
#include "gui/uibridge.h"
#include "radio/drivers.h"
#include "radio/hamlibradio.h"
#include "rotor/hamlibrotor.h"
#include "station/station.h"

namespace veloran {

CoreThread::CoreThread(const StationOptions& options, const DataPaths& paths, QObject* parent)
    : QObject(parent), options_(options), paths_(paths), bridge_(new UiBridge) {
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

void CoreThread::start(bool ticking, bool speech) {
    thread_.start();
    QMetaObject::invokeMethod(
        bridge_,
        [this, ticking, speech]() {
            StationFrontEnd frontEnd;
            frontEnd.ui = bridge_;
            frontEnd.trackListUi = bridge_;
            frontEnd.files = bridge_;
            frontEnd.startTimers = ticking;
            frontEnd.withSpeech = speech;
            frontEnd.notice = [this](const std::string& text) { bridge_->showNotice(text); };
            frontEnd.downloadProgress = [this](int64_t received, int64_t total) {
                bridge_->showDownloadProgress(received, total);
            };
            frontEnd.downloadEnded = [this]() { bridge_->endDownloadProgress(); };
            station_ = std::make_unique<Station>(options_, paths_, frontEnd);
            std::string error;
            if (!station_->start(&error)) {
                station_.reset();
                emit startFailed(QString::fromStdString(error));
                return;
            }
            bridge_->setController(station_->controller());
            showWindowPrefs();
        },
        Qt::QueuedConnection);
}

void CoreThread::post(CoreAction action) {
    // Queued calls run in order, so every action finds the station that
    // start() assembled; after stop() they find none and are dropped.
    QMetaObject::invokeMethod(
        bridge_,
        [this, action = std::move(action)]() {
            if (!station_) return;
            CoreSide side{station_->controller(), station_->defaults(), station_->trackList(),
                          bridge_};
            action(side);
        },
        Qt::QueuedConnection);
}

bool CoreThread::stop(int waitMs) {
    if (!thread_.isRunning()) return true;
    if (!stopped_) {
        stopped_ = true;
        QMetaObject::invokeMethod(
            bridge_,
            [this]() {
                if (station_) {
                    if (station_->controller()->windowOpen()) saveWindowPrefs();
                    station_->stop();
                    station_.reset();
                }
                thread_.quit();
            },
            Qt::QueuedConnection);
    }
    return thread_.wait(QDeadlineTimer(waitMs));
}

void CoreThread::showWindowPrefs() {
    const UserDefaults& defaults = *station_->defaults();
    ControlsModel& controls = station_->controller()->controls();
    controls.mapTab = static_cast<int>(defaults.integerForKey(kMapTabKey));
    controls.listTab = static_cast<int>(defaults.integerForKey(kListTabKey));
    controls.radioTab = static_cast<int>(defaults.integerForKey(kRadioTabKey));
    WindowPrefs prefs;
    prefs.mapTab = controls.mapTab;
    prefs.listTab = controls.listTab;
    prefs.radioTab = controls.radioTab;
    prefs.night = defaults.boolForKey(kNightThemeKey);
    prefs.timeSliderMinutes = station_->controller()->timeSliderMinutes();
    prefs.kepsUpdateHours = options_.kepsUpdateHours;
    prefs.trackListColumns = QByteArray::fromBase64(
        QByteArray::fromStdString(defaults.stringForKey(kTrackListColumnsKey)));
    prefs.lowerPanelHeight = static_cast<int>(
        std::clamp<int32_t>(defaults.integerForKey(kLowerPanelHeightKey), 0, 4000));
    for (int i = 0; i < kRadioCount; ++i) {
        const RadioDriver* driver = RadioDriverFor(i);
        prefs.radioNames << QString::fromUtf8(driver != nullptr ? driver->model : "");
        prefs.radioItemEnabled << station_->controller()->validateMenuItem("radioDriverChanged", i);
    }
    for (const HamlibModel& m : HamlibRadioModels())
        prefs.hamlibRadios.push_back(
            {m.number, QString::fromStdString(m.maker), QString::fromStdString(m.model)});
    for (const HamlibRotorModel& m : HamlibRotorModels())
        prefs.hamlibRotors.push_back(
            {m.number, QString::fromStdString(m.maker), QString::fromStdString(m.model)});
    bridge_->showWindowPrefs(prefs);
}

void CoreThread::saveWindowPrefs() {
    UserDefaults& defaults = *station_->defaults();
    const ControlsModel& controls = station_->controller()->controls();
    defaults.setInteger(kMapTabKey, controls.mapTab);
    defaults.setInteger(kListTabKey, controls.listTab);
    defaults.setInteger(kRadioTabKey, controls.radioTab);
}

}  // namespace veloran
