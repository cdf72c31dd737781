// veloran --headless: the station with no window, for a station computer
// without a screen. It prints one status line a second; alerts, beeps and
// the devices' state go to standard error.

#include "cli/headless.h"

#include <QCoreApplication>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "app/appcontroller.h"
#include "app/silentui.h"
#include "app/tracklist.h"
#include "data/files.h"
#include "engine/timebase.h"
#include "platform/coretimers.h"
#include "platform/numericlocale.h"
#include "station/options.h"
#include "station/station.h"

namespace veloran::cli {

namespace {

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
    // The core has already written it to standard error; the status lines
    // carry it once more, so that someone reading only those sees it.
    void setDeviceMessage(const std::string& text) override {
        deviceMessages_ += (deviceMessages_.empty() ? "" : "\n") + text;
    }
    std::string takeDeviceMessages() {
        std::string text;
        text.swap(deviceMessages_);
        return text;
    }

  private:
    static void Report(const char* device, bool on) {
        std::fprintf(stderr, "veloran: %s %s\n", device, on ? "on" : "off");
    }
    std::vector<std::string> channels_;
    int selected_ = 0;
    std::string deviceMessages_;
};

// "2026/11/21 18:30:05 UTC  AO-7  Az 123.4  El  12.3  LOS in 0:05:12  Up 435.12345  Down
// 145.92345", or "no transponder data" in place of the frequencies for a satellite without modes.
void PrintStatusLine(const AppController& controller) {
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
    char tuning[64] = "no transponder data";
    if (sat->numberOfActiveChannels > 0)
        std::snprintf(tuning, sizeof tuning, "Up %.5f  Down %.5f", vfo.up, vfo.down);
    std::printf("%s UTC%s  %-10s Az %5.1f  El %5.1f  %-16s %s\n", clock, virtualMark, sat->name,
                sat->azimuthDegs, sat->elevationDegs, next.c_str(), tuning);
    std::fflush(stdout);
}

}  // namespace

int RunHeadless(int argc, char** argv) {
    SetProgramName("veloran");
    StationOptions options;
    const int status = ParseStationOptions(
        "usage: veloran --headless [options]\n"
        "One status line a second on standard output; SIGINT or SIGTERM quits and saves.",
        argc, argv, QFGetDateTimeUTC(), &options);
    if (status >= 0) return status;

    const DataPaths paths = ResolveDataPaths(options.folders);
    std::string error;
    if (!SeedDataFiles(paths, &error)) {
        std::fprintf(stderr, "veloran: %s\n", error.c_str());
        return 1;
    }
    InstanceLock lock;
    pid_t holder = 0;
    if (!lock.acquire(paths.configDir, &holder, &error)) {
        std::fprintf(stderr, "veloran: %s\n", error.c_str());
        return 1;
    }

    static char programName[] = "veloran";
    char* qtArgv[] = {programName, nullptr};
    int qtArgc = 1;
    QCoreApplication app(qtArgc, qtArgv);
    UseCNumericLocale();
    QuitOnSignals();

    HeadlessUi ui;
    StationFrontEnd frontEnd;
    frontEnd.ui = &ui;
    frontEnd.trackListUi = &ui;
    bool first = true;
    frontEnd.afterTick = [&first, &ui](Station& station) {
        if (first) std::printf("%s\n", StationSummary(station).c_str());
        first = false;
        const std::string said = ui.takeDeviceMessages();
        if (!said.empty()) std::printf("%s\n", said.c_str());
        PrintStatusLine(*station.controller());
    };
    frontEnd.notice = [](const std::string& text) {
        std::fprintf(stderr, "veloran: %s\n", text.c_str());
    };
    Station station(options, paths, frontEnd);
    if (!station.start(&error)) return Fail(error);
    app.exec();
    station.stop();
    return 0;
}

}  // namespace veloran::cli
