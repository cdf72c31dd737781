// veloran --headless: loads the files, opens the radio, rotor and gateway
// ports the settings (or the options) enable, tracks, tunes, steers and
// speaks, and prints one status line a second. Options given here override
// the settings for this run only; they are not written into Veloran.conf.

#include "cli/headless.h"

#include <strings.h>

#include <QCoreApplication>
#include <cmath>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "app/appcontroller.h"
#include "app/silentui.h"
#include "app/tracklist.h"
#include "cli/options.h"
#include "data/files.h"
#include "data/settings.h"
#include "engine/timebase.h"
#include "platform/coretimers.h"
#include "platform/numericlocale.h"
#include "platform/qtdownloader.h"
#include "platform/qtserialports.h"
#include "platform/qtsounds.h"
#include "platform/qtspeech.h"
#include "platform/qtuserdefaults.h"

namespace veloran::cli {

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

// No window: alerts and beeps go to standard error, the channel pop-up is
// remembered so the chosen mode stays chosen, the rest is dropped.
class HeadlessUi : public SilentUserInterface, public TrackListUi {
  public:
    void alert(const std::string& title, const std::string& message, const std::string&) override {
        std::fprintf(stderr, "veloran: %s %s\n", title.c_str(), message.c_str());
    }
    void beep() override { std::fprintf(stderr, "veloran: (beep)\n"); }
    void removeAllChannelItems() override {
        channels_.clear();
        selected_ = 0;
    }
    void addChannelItem(const std::string& name) override { channels_.push_back(name); }
    int channelItemCount() const override { return static_cast<int>(channels_.size()); }
    void selectChannelItem(int index) override { selected_ = index; }
    int selectedChannelIndex() const override { return selected_; }
    void setRadioChecked(bool on) override { Report("radio", on); }
    void setRotorChecked(bool on) override { Report("rotor", on); }
    void setGatewayChecked(bool on) override { Report("gateway", on); }
    // The core has already written it to standard error; the status line
    // carries it once more, so that someone reading only that sees it.
    void setDeviceMessage(const std::string& text) override {
        deviceMessage_ += (deviceMessage_.empty() ? "" : "\n") + text;
    }
    std::string takeDeviceMessage() {
        std::string text;
        text.swap(deviceMessage_);
        return text;
    }

  private:
    static void Report(const char* device, bool on) {
        std::fprintf(stderr, "veloran: %s %s\n", device, on ? "on" : "off");
    }
    std::vector<std::string> channels_;
    int selected_ = 0;
    std::string deviceMessage_;
};

// "2026/11/21 18:30:05 UTC  AO-7  Az 123.4  El  12.3  LOS in 0:05:12  Up 435.12345  Down 145.92345"
void PrintStatusLine(const AppController& controller, const std::string& deviceMessage) {
    if (!deviceMessage.empty()) {
        std::printf("%s\n", deviceMessage.c_str());
        std::fflush(stdout);
    }
    char clock[32];
    formatDateTime(controller.timeBaseSecs(), clock);
    const char* virtualMark = controller.timeSliderMinutes() != 0 ? " (virtual)" : "";
    const int index = controller.mainSatNum() - 1;
    auto sat = std::make_unique<SatRec>();
    if (!controller.GetSatelliteRecordByIndex(index, sat.get()) ||
        index >= controller.GetTotalSats() - 2) {
        std::printf("%s UTC%s  no satellite\n", clock, virtualMark);
        std::fflush(stdout);
        return;
    }
    std::string next;
    if (sat->AOS || sat->elevationDegs >= 0.0)
        next = sat->secondsToLOS ? "LOS in " + FormatDuration(sat->secondsToLOS) : "in view";
    else if (sat->secondsToAOS == kSecondsToAOSUnknown)
        next = "no AOS within 18 h";
    else
        next = "AOS in " + FormatDuration(sat->secondsToAOS);
    const VFORec& vfo = controller.vfo();
    std::printf("%s UTC%s  %-10s Az %5.1f  El %5.1f  %-16s Up %.5f  Down %.5f\n", clock,
                virtualMark, sat->name, sat->azimuthDegs, sat->elevationDegs, next.c_str(), vfo.up,
                vfo.down);
    std::fflush(stdout);
}

int FindSatellite(const AppController& controller, const std::string& name) {
    auto sat = std::make_unique<SatRec>();
    for (int i = 0; i < controller.GetTotalSats(); ++i) {
        controller.GetSatelliteRecordByIndex(i, sat.get());
        if (strcasecmp(sat->name, name.c_str()) == 0) return i;
    }
    return -1;
}

void PrintHeadlessHelp(FILE* out) {
    std::fprintf(
        out,
        "usage: veloran --headless [options]\n"
        "  --config-dir DIR, --data-dir DIR  the settings/modes and element-set/places folders\n"
        "  --time-offset MINUTES             run ahead of (or behind) real time, like the time "
        "slider\n"
        "  --sat NAME                        the satellite to work\n"
        "  --track NAME,NAME,...             the track list;  --auto  pick from it by AOS and "
        "priority\n"
        "  --radio INDEX --radio-port PATH   the radio (driver index as in the preferences) and "
        "its port\n"
        "  --rotor INDEX --rotor-port PATH   the rotor controller and its port\n"
        "  --gateway-port PATH               the gateway board's port\n"
        "Every option can also come from the settings file (Veloran.conf); options win for this "
        "run\n"
        "only. One status line a second on standard output; SIGINT or SIGTERM quits and saves.\n");
}

}  // namespace

int RunHeadless(int argc, char** argv) {
    Arguments args;
    if (!ParseArguments(argc, argv, {"--auto", "--help"}, &args)) return kUsageError;
    if (args.has("--help")) {
        PrintHeadlessHelp(stdout);
        return 0;
    }
    const std::vector<std::string> known = {
        "--config-dir", "--data-dir",   "--time-offset", "--sat",        "--track",       "--auto",
        "--radio",      "--radio-port", "--rotor",       "--rotor-port", "--gateway-port"};
    if (!CheckOptions(args, known)) return kUsageError;
    if (!args.positional.empty()) return Fail("--headless takes no file: " + args.positional[0]);
    double offset = 0, radio = -1, rotor = -1;
    if (!ParseNumber(args, "--time-offset", 0, &offset) ||
        !ParseNumber(args, "--radio", -1, &radio) || !ParseNumber(args, "--rotor", -1, &rotor))
        return kUsageError;
    if (std::fabs(offset) > 60 * 24 * 365)
        return Fail("--time-offset is in minutes, at most a year either way");

    DataPaths paths = ResolveDataPaths({args.value("--data-dir"), args.value("--config-dir")});
    std::string error;
    if (!SeedDataFiles(paths, &error)) {
        std::fprintf(stderr, "veloran: %s\n", error.c_str());
        return 1;
    }

    static char programName[] = "veloran";
    char* qtArgv[] = {programName, nullptr};
    int qtArgc = 1;
    QCoreApplication app(qtArgc, qtArgv);
    UseCNumericLocale();
    QuitOnSignals();

    QtUserDefaults stored(paths.settingsFile);
    OverlayDefaults defaults(&stored);
    // Typed paths follow the machine's own ports in the port table.
    PortNameRecord probe[kMaxSerialPorts]{};
    const int machinePorts = QtSerialPortList().findPorts(probe, kMaxSerialPorts);
    PortsWithTyped ports;
    const auto usePort = [&](const char* option, const char* portKey, const char* pathKey,
                             const char* enabledKey) {
        if (!args.has(option)) return;
        defaults.override(portKey, std::to_string(machinePorts + ports.add(args.value(option))));
        defaults.override(pathKey, args.value(option));
        defaults.override(enabledKey, "true");
    };
    usePort("--radio-port", "radioport", prefkeys::kRadioPortPath, prefkeys::kVfoEnabled);
    usePort("--rotor-port", "rotorport", prefkeys::kRotorPortPath, prefkeys::kRotorEnabled);
    usePort("--gateway-port", "gatewayport", prefkeys::kGatewayPortPath, prefkeys::kGatewayEnabled);
    if (radio >= 0) defaults.override("radio", std::to_string(static_cast<int>(radio)));
    if (rotor >= 0) defaults.override("rotor", std::to_string(static_cast<int>(rotor)));
    if (args.has("--track")) {
        std::string list;
        for (const std::string& n : SplitNames(args.value("--track"))) list += n + " ";
        defaults.override(prefkeys::kTrackListString, list);
    }
    if (args.has("--auto")) defaults.override(prefkeys::kTrackListEnabled, "true");

    HeadlessUi ui;
    SystemClock clock;
    QtSpeech speech;
    QtSoundPlayer sounds(paths.resourceDir + "/sounds");
    std::unique_ptr<AppController> controller;
    QtDownloader downloader([&controller](bool ok, const std::string& why, const std::string& url) {
        if (ok)
            controller->downloadDidFinish();
        else
            controller->downloadDidFail(why, url);
    });
    Services services;
    services.ui = &ui;
    services.defaults = &defaults;
    services.downloader = &downloader;
    services.clock = &clock;
    services.speech = &speech;
    services.sounds = &sounds;
    services.ports = &ports;
    services.versionString = "0.1";
    controller = std::make_unique<AppController>(services, paths);

    controller->awakeFromNib();
    SatelliteTableController trackList(controller.get(), &defaults, &ui);
    trackList.awakeFromNib();
    trackList.updateTrackList();
    if (args.has("--sat")) {
        const int index = FindSatellite(*controller, args.value("--sat"));
        if (index < 0) {
            controller->stopAnnouncements();
            return Fail("no satellite named " + args.value("--sat") + " in " + paths.keplerFile);
        }
        controller->selectSatelliteWithIndex(index);
    }
    if (offset != 0) controller->timeSlid(static_cast<int>(offset));

    CoreTimers timers(
        [&]() {
            controller->mainTimerTasks();
            trackList.updateTrackList();
            PrintStatusLine(*controller, ui.takeDeviceMessage());
        },
        [&]() { controller->sunCalcTask(); });
    timers.start();
    app.exec();

    timers.stop();
    controller->applicationWillTerminate();
    trackList.applicationWillTerminate();
    if (!stored.sync(&error))
        std::fprintf(stderr, "veloran: settings not saved: %s\n", error.c_str());
    controller->stopAnnouncements();
    return 0;
}

}  // namespace veloran::cli
