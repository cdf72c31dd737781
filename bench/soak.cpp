// The station left running: 24 hours of virtual time, one tick a second, with
// 100 satellites in the track list choosing the main one automatically, a
// simulated FT-847, GS-232 rotor and gateway board (veloran-sim, in processes
// of their own so that their recording does not count as ours). Reports the
// ticks, the AOS and LOS of the main satellite seen and announced, the
// errors, and how the process's memory grew after the first hour (the first
// quarter of a shorter run).
//
//   build-rel/bench/veloran-soak [HOURS]        (24 unless given)
//
// Not part of the test suite: it takes minutes, and what it measures is a
// figure to read, not a pass or a fail (it does exit 1 when an AOS or LOS
// went unannounced or an error occurred).

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "app/appcontroller.h"
#include "app/silentui.h"
#include "app/tracklist.h"
#include "data/settings.h"
#include "tests/support/element_sets.h"

namespace {

using namespace veloran;

constexpr int kSatellites = 100;
constexpr uint32_t kStart = 3878107200u;  // 2026-11-21 12:00 UTC
constexpr int kFt847 = 1;
constexpr int kGs232 = 0;
constexpr int kBaud9600 = 5;

class SteppingClock : public Clock {
  public:
    uint32_t now = kStart;
    uint32_t dateTimeUTC() const override { return now; }
    uint32_t dateTime() const override { return now; }
};

// Counts what the program queues to be spoken.
class CountingAnnouncer : public Announcer {
  public:
    long aos = 0, los = 0, other = 0;
    void queueAnnouncement(const Announcement& item) override {
        if (item.sound == Announcement::kAOS)
            ++aos;
        else if (item.sound == Announcement::kLOS)
            ++los;
        else
            ++other;
    }
};

// Beeps, alerts and devices switched off are the errors of a run.
class CountingUi : public SilentUserInterface, public TrackListUi {
  public:
    long beeps = 0, alerts = 0, devicesOff = 0;
    void beep() override { ++beeps; }
    void alert(const std::string& title, const std::string& message, const std::string&) override {
        ++alerts;
        std::fprintf(stderr, "alert: %s %s\n", title.c_str(), message.c_str());
    }
    void setRadioChecked(bool on) override { devicesOff += on ? 0 : 1; }
    void setRotorChecked(bool on) override { devicesOff += on ? 0 : 1; }
    void setGatewayChecked(bool on) override { devicesOff += on ? 0 : 1; }
};

// veloran-sim in a child process; its first line is the device path.
struct SimProcess {
    pid_t pid = -1;
    std::string path;
    explicit SimProcess(const std::vector<std::string>& words) {
        int out[2];
        if (pipe(out) != 0) return;
        pid = fork();
        if (pid == 0) {
            dup2(out[1], 1);
            close(out[0]);
            std::vector<char*> argv;
            for (const std::string& w : words) argv.push_back(const_cast<char*>(w.c_str()));
            argv.push_back(nullptr);
            execv(argv[0], argv.data());
            _exit(127);
        }
        close(out[1]);
        char c = 0;
        while (read(out[0], &c, 1) == 1 && c != '\n') path += c;
        // The rotor simulator reports every command on its standard output:
        // drain it so that it never blocks on a full pipe.
        if (fork() == 0) {
            char buf[4096];
            while (read(out[0], buf, sizeof buf) > 0) {
            }
            _exit(0);
        }
        close(out[0]);
    }
    ~SimProcess() {
        if (pid > 0) {
            kill(pid, SIGTERM);
            waitpid(pid, nullptr, 0);
        }
    }
};

// Kilobytes of the process's resident set now, or its peak so far.
long StatusKb(const char* field) {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind(field, 0) == 0) return std::atol(line.c_str() + std::strlen(field));
    return -1;
}

std::string ModeBlock(const std::string& name) {
    return "Satellite:\t" + name +
           "\nChannel: \tFM\nUplink:  \t145.850000\nDownlink:\t436.795000\nCMode:   \tJ_FM\n"
           "Beacon:  \t0.000000\nTone:    \t0\nCTone:   \t0\nTxVrtrUp: \t0.000000\n"
           "TxVrtrDn: \t0.000000\nBeamUp:   \t0.00\nBeamDwn:  \t0.00\n"
           "TrackHours:\t111111111111111111111111\nSpeakName:\t" +
           name + "\nEnabled:\t1\nPriority:\t5\n\n";
}

}  // namespace

int main(int argc, char** argv) {
    const double hours = argc > 1 ? std::atof(argv[1]) : 24.0;
    const std::string sim = VELORAN_SIM;
    SimProcess radio({sim, "radio", "ft847"});
    SimProcess rotor({sim, "rotor", "gs232", "--speed", "30"});
    SimProcess gateway({sim, "gateway"});
    if (radio.path.empty() || rotor.path.empty() || gateway.path.empty()) {
        std::fprintf(stderr, "soak: the simulators did not start (%s)\n", sim.c_str());
        return 2;
    }

    char pattern[] = "/tmp/veloran-soak-XXXXXX";
    const std::string dir = mkdtemp(pattern);
    const DataPaths paths = DataPaths::InFolders(VELORAN_RESOURCE_DIR, dir, dir);
    std::string elements, modes, names;
    for (int i = 0; i < kSatellites; ++i) {
        char name[16];
        std::snprintf(name, sizeof name, "SOAK%03d", i);
        testing::Elements e;
        e.catalog = 90000 + i;
        e.inclination = 40.0 + (i * 7) % 60;
        e.raan = i * 3.6;
        e.meanAnomaly = (i * 37) % 360;
        e.argPerigee = (i * 53) % 360;
        e.eccentricity = 0.001 * (i % 10);
        e.meanMotion = 12.0 + (i % 39) * 0.1;
        elements += testing::ElementSetText(name, e);
        modes += ModeBlock(name);
        names += std::string(name) + " ";
    }
    std::ofstream(paths.keplerFile) << elements;
    std::ofstream(paths.userModesFile) << modes;

    CountingUi ui;
    MemoryUserDefaults defaults;
    defaults.setString(prefkeys::kTrackListString, names);
    defaults.setBool(prefkeys::kTrackListEnabled, true);
    SteppingClock clock;
    CountingAnnouncer announcer;
    FILE* log = std::fopen("/dev/null", "w");
    const Services services{
        .ui = &ui, .defaults = &defaults, .clock = &clock, .announcer = &announcer, .log = log};
    auto app = std::make_unique<AppController>(services, paths);
    app->awakeFromNib();
    SiteRec site;
    app->GetSiteRec(&site);
    site.radio = kFt847;
    site.radioPort = app->addTypedPort(radio.path.c_str());
    site.radioBaud = kBaud9600;
    site.rotor = kGs232;
    site.rotorPort = app->addTypedPort(rotor.path.c_str());
    site.rotorBaud = kBaud9600;
    site.gatewayPort = app->addTypedPort(gateway.path.c_str());
    site.gatewayBaud = kBaud9600;
    site.commandDelay = 0;
    site.wants_speech = 1;
    app->SetSiteRec(&site);
    SatelliteTableController trackList(app.get(), &defaults, &ui);
    trackList.awakeFromNib();
    trackList.updateTrackList();
    app->openCloseRadio(true);
    app->openCloseRotor(true);
    app->openCloseGateway(true);

    const long ticks = static_cast<long>(hours * 3600.0);
    long seenAos = 0, seenLos = 0, kbAfterHour = -1, peakAfterHour = -1;
    int lastMain = -1;
    bool lastInView = false;
    // Rises and sets of every satellite, as the live calculation (the main
    // satellite each second, the others in rotation) finds them.
    std::vector<char> inViewBefore(kSatellites, 0);
    long rises = 0, sets = 0;
    auto sat = std::make_unique<SatRec>();
    for (long t = 0; t < ticks; ++t) {
        app->mainTimerTasks();
        trackList.updateTrackList();
        if (t % 15 == 0) app->sunCalcTask();
        const int main = app->mainSatNum();
        app->GetSatelliteRecordByIndex(main - 1, sat.get());
        const bool inView = sat->AOS != 0;
        if (main == lastMain && inView != lastInView) ++(inView ? seenAos : seenLos);
        lastMain = main;
        lastInView = inView;
        for (int i = 0; i < kSatellites; ++i) {
            app->GetSatelliteRecordByIndex(i, sat.get());
            const char now = sat->AOS != 0;
            if (now != inViewBefore[static_cast<size_t>(i)]) ++(now ? rises : sets);
            inViewBefore[static_cast<size_t>(i)] = now;
        }
        if (t == std::min(3600L, ticks / 4)) {
            kbAfterHour = StatusKb("VmRSS:");
            peakAfterHour = StatusKb("VmHWM:");
        }
        ++clock.now;
    }
    app->stopAnnouncements();
    const long kbEnd = StatusKb("VmRSS:"), peakEnd = StatusKb("VmHWM:");
    const long errors = ui.beeps + ui.alerts + ui.devicesOff;
    std::printf(
        "soak: %.1f h of virtual time, %ld ticks, %d satellites\n"
        "all satellites: %ld rises and %ld sets; main satellite: %ld AOS and %ld LOS seen, "
        "announced %ld AOS, %ld LOS, %ld other\n"
        "errors: %ld (beeps %ld, alerts %ld, devices switched off %ld)\n"
        "memory: resident %ld kB after warming up, %ld kB at the end (growth %ld kB); "
        "peak %ld kB -> %ld kB (growth %ld kB)\n",
        ticks / 3600.0, ticks, kSatellites, rises, sets, seenAos, seenLos, announcer.aos,
        announcer.los, announcer.other, errors, ui.beeps, ui.alerts, ui.devicesOff, kbAfterHour,
        kbEnd, kbEnd - kbAfterHour, peakAfterHour, peakEnd, peakEnd - peakAfterHour);
    std::fclose(log);
    std::filesystem::remove_all(dir);
    const bool allHandled = announcer.aos >= seenAos && announcer.los >= seenLos;
    return errors == 0 && allHandled ? 0 : 1;
}
