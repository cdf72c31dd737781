// The station's assembly and start-up order, its core thread, and the one
// station per settings folder.

#include "station/station.h"

#include <fcntl.h>
#include <strings.h>
#include <sys/file.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QTimer>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <map>
#include <vector>

#include "app/appcontroller.h"
#include "data/cnumeric.h"
#include "data/elementage.h"
#include "data/settings.h"
#include "platform/coretimers.h"
#include "platform/qtdownloader.h"
#include "platform/qtserialports.h"
#include "platform/qtsounds.h"
#include "platform/qtspeech.h"
#include "platform/qtuserdefaults.h"
#include "radio/drivers.h"
#include "radio/hamlibradio.h"
#include "rotor/hamlibrotor.h"
#include "rotor/rotor.h"
#include "station/options.h"

namespace veloran {

namespace {

// The settings file with this run's options laid over it: reads see the
// options first, and writes to an overridden key stay in memory, so that
// quitting does not turn a one-off --radio-port into the station's setting.
class OverlayDefaults : public UserDefaults {
  public:
    explicit OverlayDefaults(UserDefaults* below) : below_(below) {}
    void override(const std::string& key, const std::string& value) { over_[key] = value; }

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

// The serial ports of the machine, then the device paths given on the
// command line (a pseudo-terminal of veloran-sim, a by-id link), so that
// those get fixed indices the options can point at.
class PortsWithTyped : public SerialPortList {
  public:
    int add(const std::string& path) {
        typed_.push_back(path);
        return static_cast<int>(typed_.size()) - 1;
    }
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

std::string Degrees(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6f", value);
    return text;
}

// The names an unknown satellite could have been; a long file gets the first few.
constexpr int kNamesShown = 12;

}  // namespace

// The services, created on the core thread by start.
struct Station::Parts {
    explicit Parts(const std::string& settingsFile, const std::string& soundFolder)
        : stored(settingsFile), defaults(&stored), sounds(soundFolder) {}

    QtUserDefaults stored;
    OverlayDefaults defaults;
    PortsWithTyped ports;
    SystemClock clock;
    QtSpeech speech;
    QtSoundPlayer sounds;
    std::unique_ptr<QtDownloader> downloader;
    std::unique_ptr<CoreTimers> timers;
    std::unique_ptr<QTimer> kepsUpdate;  // --keps-update-hours
};

Station::Station(const StationOptions& options, const DataPaths& paths,
                 const StationFrontEnd& frontEnd)
    : options_(options), paths_(paths), frontEnd_(frontEnd) {}

Station::~Station() {
    stop();
}

int Station::start(std::string* error) {
    // Left by a write that a crash or a kill interrupted; nobody else writes
    // here while this process holds the folder's lock.
    RemoveStaleTemporaryFiles({paths_.keplerFile, paths_.downloadFile, paths_.placesFile,
                               paths_.userModesFile, paths_.userModesFile + ".bak",
                               paths_.settingsFile});
    parts_ = std::make_unique<Parts>(paths_.settingsFile, paths_.resourceDir + "/sounds");
    Parts& p = *parts_;

    // Typed paths follow the machine's own ports in the port table.
    PortNameRecord probe[kMaxSerialPorts]{};
    const int machinePorts = QtSerialPortList().findPorts(probe, kMaxSerialPorts);
    // The saved path would otherwise win over the typed port.
    const auto usePort = [&](const std::string& path, const char* portKey, const char* pathKey,
                             const char* enabledKey) {
        if (path.empty()) return;
        p.defaults.override(portKey, std::to_string(machinePorts + p.ports.add(path)));
        p.defaults.override(pathKey, path);
        p.defaults.override(enabledKey, "true");
    };
    usePort(options_.radioPort, prefkeys::kRadioPort, prefkeys::kRadioPortPath,
            prefkeys::kVfoEnabled);
    usePort(options_.rotorPort, prefkeys::kRotorPort, prefkeys::kRotorPortPath,
            prefkeys::kRotorEnabled);
    usePort(options_.gatewayPort, prefkeys::kGatewayPort, prefkeys::kGatewayPortPath,
            prefkeys::kGatewayEnabled);
    if (options_.radio >= 0) p.defaults.override(prefkeys::kRadio, std::to_string(options_.radio));
    if (options_.rotor >= 0) p.defaults.override(prefkeys::kRotor, std::to_string(options_.rotor));
    if (options_.hamlibRadioModel >= 0)
        p.defaults.override(prefkeys::kHamlibRadioModel, std::to_string(options_.hamlibRadioModel));
    if (options_.hamlibRotorModel >= 0)
        p.defaults.override(prefkeys::kHamlibRotorModel, std::to_string(options_.hamlibRotorModel));
    if (options_.hasTrack) {
        std::string list;
        for (const std::string& n : options_.track) list += n + " ";
        p.defaults.override(prefkeys::kTrackListString, list);
    }
    if (options_.autoSelect) p.defaults.override(prefkeys::kTrackListEnabled, "true");
    if (options_.radioBaud >= 0)
        p.defaults.override(prefkeys::kRadioBaud, std::to_string(options_.radioBaud));
    if (options_.rotorBaud >= 0)
        p.defaults.override(prefkeys::kRotorBaud, std::to_string(options_.rotorBaud));
    if (options_.icomAddress >= 0)
        p.defaults.override(prefkeys::kIcomAddress, std::to_string(options_.icomAddress));
    if (options_.hasSite) {
        CNumericLocale cLocale;
        p.defaults.override(prefkeys::kSiteLatitude, Degrees(options_.siteLatDegs));
        p.defaults.override(prefkeys::kSiteLongitude, Degrees(options_.siteLongDegsWest));
        p.defaults.override(prefkeys::kSiteAltitude, Degrees(options_.siteAltitudeM));
    }

    p.downloader = std::make_unique<QtDownloader>(
        [this](bool ok, const std::string& why, const std::string& url) {
            if (ok)
                controller_->downloadDidFinish();
            else
                controller_->downloadDidFail(why, url);
            if (frontEnd_.downloadEnded) frontEnd_.downloadEnded();
        });
    p.downloader->setProgress(frontEnd_.downloadProgress);
    Services services;
    services.ui = frontEnd_.ui;
    services.files = frontEnd_.files;
    services.defaults = &p.defaults;
    services.downloader = p.downloader.get();
    services.clock = &p.clock;
    if (frontEnd_.withSpeech) {
        services.speech = &p.speech;
        services.sounds = &p.sounds;
    }
    services.ports = &p.ports;
    services.versionString = frontEnd_.versionString;
    controller_ = std::make_unique<AppController>(services, paths_);
    running_ = true;

    controller_->awakeFromNib();
    trackList_ = std::make_unique<SatelliteTableController>(controller_.get(), &p.defaults,
                                                            frontEnd_.trackListUi);
    trackList_->awakeFromNib();
    for (const std::string& name : options_.track) {
        if (findSatellite(name, error) < 0) {
            controller_->stopAnnouncements();
            running_ = false;
            return 0;
        }
    }
    trackList_->updateTrackList();
    if (!options_.sat.empty()) {
        const int index = findSatellite(options_.sat, error);
        if (index < 0) {
            controller_->stopAnnouncements();
            running_ = false;
            return 0;
        }
        controller_->chooseSatelliteAtStart(index);
    }
    if (options_.timeOffsetMinutes != 0)
        controller_->timeSlid(static_cast<int>(options_.timeOffsetMinutes));

    p.timers = std::make_unique<CoreTimers>([this]() { tick(); },
                                            [this]() { controller_->sunCalcTask(); });
    if (frontEnd_.startTimers) p.timers->start();
    if (options_.kepsUpdateHours > 0) {
        p.kepsUpdate = std::make_unique<QTimer>();
        p.kepsUpdate->setInterval(std::chrono::milliseconds(
            static_cast<long long>(options_.kepsUpdateHours * 3600.0 * 1000.0)));
        QObject::connect(p.kepsUpdate.get(), &QTimer::timeout, [this]() {
            controller_->startDownloadingURL(DownloadTrigger::Automatic);
        });
        p.kepsUpdate->start();
    }
    return 1;
}

UserDefaults* Station::defaults() {
    return parts_ ? &parts_->defaults : nullptr;
}

void Station::tick() {
    controller_->mainTimerTasks();
    trackList_->updateTrackList();
    // Stale elements are said once for each satellite that becomes the main one.
    const int main = controller_->mainSatNum();
    if (main != warnedAgeOf_ && frontEnd_.notice) {
        warnedAgeOf_ = main;
        auto sat = std::make_unique<SatRec>();
        if (main >= 1 && main <= controller_->GetTotalSats() - 2 &&
            controller_->GetSatelliteRecordByIndex(main - 1, sat.get())) {
            const std::string warning = ElementAgeWarning(*sat, controller_->timeBaseSecs());
            if (!warning.empty()) frontEnd_.notice("warning: " + warning);
        }
    }
    if (frontEnd_.afterTick) frontEnd_.afterTick(*this);
}

int Station::findSatellite(const std::string& name, std::string* error) const {
    auto sat = std::make_unique<SatRec>();
    std::string names;
    // The last two entries are the Moon and the Sun, which are not worked.
    const int count = controller_->GetTotalSats() - 2;
    for (int i = 0; i < count; ++i) {
        controller_->GetSatelliteRecordByIndex(i, sat.get());
        if (strcasecmp(sat->name, name.c_str()) == 0) return i;
        if (i < kNamesShown) names += std::string(i == 0 ? "" : ", ") + sat->name;
    }
    if (count > kNamesShown) names += ", ... (" + std::to_string(count) + " in all)";
    *error = "no satellite named " + name + " in " + paths_.keplerFile +
             (count > 0 ? "; it holds " + names : "; it holds no element sets");
    return -1;
}

std::string StationSummary(Station& station) {
    AppController* controller = station.controller();
    SiteRec site;
    controller->GetSiteRec(&site);
    char text[512];
    std::snprintf(text, sizeof text, "Site %.4f %c %.4f %c %.0f m", std::fabs(site.siteLatDegs),
                  site.siteLatDegs < 0 ? 'S' : 'N', std::fabs(site.siteLongDegs),
                  site.siteLongDegs < 0 ? 'E' : 'W', site.siteAltitudeM);
    std::string line = text;
    const int main = controller->mainSatNum();
    auto sat = std::make_unique<SatRec>();
    if (main >= 1 && main <= controller->GetTotalSats() - 2 &&
        controller->GetSatelliteRecordByIndex(main - 1, sat.get())) {
        std::snprintf(text, sizeof text, "; elements of %s %.0f days old", sat->name,
                      std::floor(ElementAgeDays(*sat, controller->timeBaseSecs())));
        line += text;
    } else {
        line += "; no element sets";
    }
    const PortNameRecord* ports = controller->portNames();
    const auto portName = [&](int index) {
        return index >= 0 && index < kMaxSerialPorts && ports[index].bsdPath[0] != '\0'
                   ? std::string(ports[index].bsdPath)
                   : std::string("no port");
    };
    const RadioDriver* radio = RadioDriverFor(site.radio);
    line += "; radio ";
    line += radio != nullptr && radio->model != nullptr ? radio->model : "none";
    if (site.radio == kHamlibRadio) line += " model " + std::to_string(site.hamlibRadioModel);
    line += site.vfo_enabled ? " on " + portName(site.radioPort) : std::string(" off");
    const char* rotor = rotorName(site.rotor);
    line += "; rotor ";
    line += rotor != nullptr ? rotor : "none";
    if (site.rotor == kHamlibRotor) line += " model " + std::to_string(site.hamlibRotorModel);
    line += site.rotor_enabled ? " on " + portName(site.rotorPort) : std::string(" off");
    line += site.gateway_enabled ? "; gateway on " + portName(site.gatewayPort)
                                 : std::string("; gateway off");
    return line;
}

void Station::stop() {
    if (!running_) return;
    running_ = false;
    parts_->timers->stop();
    if (parts_->kepsUpdate) parts_->kepsUpdate->stop();
    controller_->applicationWillTerminate();
    trackList_->applicationWillTerminate();
    std::string error;
    if (!parts_->stored.sync(&error))
        std::fprintf(stderr, "%s: settings not saved: %s\n", ProgramName(), error.c_str());
    controller_->stopAnnouncements();
}

StationThread::StationThread(const StationOptions& options, const DataPaths& paths,
                             const StationFrontEnd& frontEnd)
    : station_(std::make_unique<Station>(options, paths, frontEnd)) {
    thread_.setObjectName("veloran-core");
}

StationThread::~StationThread() {
    stop();
}

int StationThread::start(std::string* error) {
    context_ = new QObject;
    context_->moveToThread(&thread_);
    QObject::connect(&thread_, &QThread::finished, context_, &QObject::deleteLater);
    thread_.start();
    int ok = 0;
    QMetaObject::invokeMethod(
        context_, [&]() { ok = station_->start(error); }, Qt::BlockingQueuedConnection);
    if (!ok) stop();
    return ok;
}

void StationThread::post(std::function<void(Station&)> action) {
    if (stopping_ || context_ == nullptr) return;
    Station* station = station_.get();
    QMetaObject::invokeMethod(
        context_, [station, action = std::move(action)]() { action(*station); },
        Qt::QueuedConnection);
}

void StationThread::stop() {
    if (stopping_ || context_ == nullptr) return;
    stopping_ = true;
    // The station's timers and services belong to the core thread, so they
    // are stopped and destroyed there; queued actions after this are dropped
    // with the thread's event loop.
    Station* station = station_.get();
    QMetaObject::invokeMethod(
        context_,
        [station, this]() {
            station->stop();
            station_.reset();
            thread_.quit();
        },
        Qt::BlockingQueuedConnection);
    thread_.wait();
}

InstanceLock::~InstanceLock() {
    if (fd_ >= 0) ::close(fd_);  // closing releases the flock
}

int InstanceLock::acquire(const std::string& configDir, pid_t* holder, std::string* error) {
    *holder = 0;
    const std::string path = configDir + "/veloran.lock";
    const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) {
        *error = "cannot create " + path + ": " + std::strerror(errno);
        return 0;
    }
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        const int why = errno;
        char text[32] = {};
        const ssize_t got = ::pread(fd, text, sizeof text - 1, 0);
        ::close(fd);
        if (why != EWOULDBLOCK) {
            *error = "cannot lock " + path + ": " + std::strerror(why);
            return 0;
        }
        *holder = got > 0 ? static_cast<pid_t>(std::atol(text)) : 0;
        *error = "another Veloran (process " + std::to_string(*holder) +
                 ") already runs on the settings in " + configDir;
        return 0;
    }
    // Without the number the lock still holds; a second start just cannot
    // name this process.
    const std::string pid = std::to_string(::getpid()) + "\n";
    if (::ftruncate(fd, 0) == 0) [[maybe_unused]]
        const ssize_t put = ::pwrite(fd, pid.data(), pid.size(), 0);
    fd_ = fd;
    return 1;
}

std::string InstanceLock::channelName(const std::string& configDir) {
    // FNV-1a, so that every build of the program names the folder alike.
    uint64_t hash = 14695981039346656037ull;
    for (const unsigned char c : configDir) hash = (hash ^ c) * 1099511628211ull;
    char name[32];
    std::snprintf(name, sizeof name, "veloran-%016llx", static_cast<unsigned long long>(hash));
    return name;
}

}  // namespace veloran
