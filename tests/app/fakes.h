// Recording fakes of the controller's interfaces, and a controller wired to
// them over a scratch data folder.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "app/appcontroller.h"
#include "data/files.h"
#include "scratch.h"

namespace veloran::testing {

class FakeUserInterface : public UserInterface {
  public:
    std::vector<std::string> satelliteItems;
    std::string kepsDate;
    std::vector<std::string> alerts;  // "title|message|button"
    std::vector<std::string> notices;
    void showNotice(const std::string& text) override { notices.push_back(text); }
    int beeps = 0;
    std::vector<std::string> channelItems;
    int selectedChannel = 0;  // the last item the controller selected
    double vfoSlider = -1;
    std::vector<std::string> locationItems;
    std::string shownLocation;  // "name|lat|lon"
    int sheetsClosed = 0;
    int settingsShown = 0;

    void removeAllSatelliteItems() override { satelliteItems.clear(); }
    void addSatelliteItem(const std::string& name) override { satelliteItems.push_back(name); }
    void setKepsDateText(const std::string& text) override { kepsDate = text; }
    std::vector<SatelliteNames> names;
    void setSatelliteNames(const std::vector<SatelliteNames>& n) override { names = n; }
    MainSatelliteStatus mainStatus;
    void setMainSatelliteStatus(const MainSatelliteStatus& s) override { mainStatus = s; }
    void alert(const std::string& title, const std::string& message,
               const std::string& button) override {
        alerts.push_back(title + "|" + message + "|" + button);
    }
    void beep() override { ++beeps; }
    void removeAllChannelItems() override { channelItems.clear(); }
    void addChannelItem(const std::string& name) override { channelItems.push_back(name); }
    void selectChannelItem(int index) override { selectedChannel = index; }
    void setVfoSlider(double value) override { vfoSlider = value; }
    void removeAllLocationItems() override { locationItems.clear(); }
    void addLocationItem(const std::string& name) override { locationItems.push_back(name); }
    void showLocation(const std::string& name, const std::string& lat,
                      const std::string& lon) override {
        shownLocation = name + "|" + lat + "|" + lon;
    }
    void closeLocationSheet() override { ++sheetsClosed; }
    void showSettings(const SiteRec&) override { ++settingsShown; }

    std::string clockLine;
    bool clockRed = false;
    std::string versionLine, mapStatus, transponder, flipLine, panelTitle;
    bool fullDopplerChecked = false, fullDopplerEnabled = false;
    std::string figures[4];  // altitude, velocity, max elevation, range
    std::string vfoPanel[6];
    bool radioChecked = false, rotorChecked = false, gatewayChecked = false;
    int zoomIn = -1, zoomOut = -1;  // -1: never set
    bool windowShown = true;
    int framesDrawn = 0;
    std::vector<std::string> portItems;

    void setClockLine(const std::string& text, bool red) override {
        clockLine = text;
        clockRed = red;
    }
    void setVersionLine(const std::string& text) override { versionLine = text; }
    void setMapStatus(const std::string& text) override { mapStatus = text; }
    void setTransponderLine(const std::string& text, bool checked, bool enabled) override {
        transponder = text;
        fullDopplerChecked = checked;
        fullDopplerEnabled = enabled;
    }
    void setSatelliteFigures(const std::string& a, const std::string& v, const std::string& m,
                             const std::string& r) override {
        figures[0] = a;
        figures[1] = v;
        figures[2] = m;
        figures[3] = r;
    }
    void setFlipLine(const std::string& text) override { flipLine = text; }
    void setRadioPanelTitle(const std::string& text) override { panelTitle = text; }
    void setVfoPanel(const std::string& a, const std::string& b, const std::string& c,
                     const std::string& d, const std::string& e, const std::string& f) override {
        const std::string texts[6] = {a, b, c, d, e, f};
        for (int i = 0; i < 6; ++i) vfoPanel[i] = texts[i];
    }
    void setSerialPortItems(const std::vector<std::string>& names) override { portItems = names; }
    void setRadioChecked(bool on) override { radioChecked = on; }
    std::vector<std::string> deviceMessages;
    void setDeviceMessage(const std::string& text) override { deviceMessages.push_back(text); }
    void setGatewayChecked(bool on) override { gatewayChecked = on; }
    void setRotorChecked(bool on) override { rotorChecked = on; }
    void setZoomButtons(bool in, bool out) override {
        zoomIn = in;
        zoomOut = out;
    }
    void showMainWindow(bool shown) override { windowShown = shown; }
    void drawViews(const ViewFrame&) override { ++framesDrawn; }
};

class FakeFileChooser : public FileChooser {
  public:
    std::string answer;  // empty: the user cancels
    std::string proposed;
    bool chooseFileToOpen(std::string* path) override {
        *path = answer;
        return !answer.empty();
    }
    bool chooseFileToSave(const std::string& proposedName, std::string* path) override {
        proposed = proposedName;
        *path = answer;
        return !answer.empty();
    }
};

class FakeDownloader : public Downloader {
  public:
    bool accept = true;
    std::string url, destination;
    double timeout = 0;
    int status = 0;  // the HTTP status lastStatus reports
    bool start(const std::string& u, const std::string& d, double t) override {
        url = u;
        destination = d;
        timeout = t;
        return accept;
    }
    int lastStatus() const override { return status; }
};

class FakeClock : public Clock {
  public:
    // 2026-11-21 12:00:00, in seconds since 1904.
    uint32_t now = 3878107200u;
    uint32_t dateTimeUTC() const override { return now; }
    uint32_t dateTime() const override { return now; }
};

class FakeAnnouncer : public Announcer {
  public:
    std::vector<std::string> spoken;
    std::vector<Announcement> items;
    void queueAnnouncement(const Announcement& item) override {
        spoken.push_back(item.text);
        items.push_back(item);
    }
};

// A controller over a scratch data folder seeded from the bundled resources.
struct ControllerRig {
    ScratchDir dir;
    FakeUserInterface ui;
    MemoryUserDefaults defaults;
    FakeFileChooser files;
    FakeDownloader downloader;
    FakeClock clock;
    FakeAnnouncer announcer;
    FILE* log = std::tmpfile();
    DataPaths paths;
    std::unique_ptr<AppController> app;

    ControllerRig() {
        paths = DataPaths::InFolders(VELORAN_RESOURCE_DIR, dir.file("data"), dir.file("config"));
        std::string error;
        SeedDataFiles(paths, &error);
        const Services s{.ui = &ui,
                         .defaults = &defaults,
                         .files = &files,
                         .downloader = &downloader,
                         .clock = &clock,
                         .announcer = &announcer,
                         .log = log};
        app = std::make_unique<AppController>(s, paths);
    }
    ~ControllerRig() { std::fclose(log); }

    std::string logText() const {
        std::fflush(log);
        std::rewind(log);
        std::string text;
        char buf[4096];
        size_t n = 0;
        while ((n = std::fread(buf, 1, sizeof buf, log)) > 0) text.append(buf, n);
        return text;
    }
    void setSite(void (*change)(SiteRec*)) {
        SiteRec site;
        app->GetSiteRec(&site);
        change(&site);
        app->SetSiteRec(&site);
    }
    std::unique_ptr<SatRec> sat(int index) const {
        auto rec = NewSatRec();
        app->GetSatelliteRecordByIndex(index, rec.get());
        return rec;
    }
};

// Element sets for tests: n sets named S0, S1, ... (ISS's elements).
inline std::string ElementSets(int n, const char* lineEnd = "\n") {
    std::string text;
    for (int i = 0; i < n; ++i) {
        text += "S" + std::to_string(i) + lineEnd;
        text +=
            std::string("1 25544U 98067A   26320.50000000  .00012000  00000-0  10000-3 0  9995") +
            lineEnd;
        text +=
            std::string("2 25544  51.6390 245.7770 0005800  42.2150 317.9220 15.50100000498305") +
            lineEnd;
    }
    return text;
}

}  // namespace veloran::testing
