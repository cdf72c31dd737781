// A whole station for integration tests: the controller over a scratch data
// folder, on a fake clock, with a recording speech synthesiser and chime
// player, its announcement thread running on fast sleeps, and helpers to
// find a pass of a synthetic satellite and to tick through it.
#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "app/appcontroller.h"
#include "data/files.h"
#include "engine/live.h"
#include "engine/sunmoon.h"
#include "engine/timebase.h"
#include "fakes.h"
#include "serial/serial.h"
#include "tests/support/element_sets.h"

namespace veloran::testing {

class RecordingSpeech : public Speech {
  public:
    // Called on the announcement thread as each sentence starts.
    std::function<void(const std::string&)> onSpeak;
    void speak(const std::string& text) override {
        if (onSpeak) onSpeak(text);
        std::lock_guard<std::mutex> lock(mutex_);
        said_.push_back(text);
    }
    bool isSpeaking() const override { return false; }
    void stop() override {}
    std::vector<std::string> said() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return said_;
    }

  private:
    mutable std::mutex mutex_;
    std::vector<std::string> said_;
};

class RecordingSounds : public SoundPlayer {
  public:
    void play(int32_t sound) override {
        std::lock_guard<std::mutex> lock(mutex_);
        played_.push_back(sound);
    }
    bool isPlaying() const override { return false; }
    std::vector<int32_t> played() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return played_;
    }

  private:
    mutable std::mutex mutex_;
    std::vector<int32_t> played_;
};

// Every wait of the announcement thread is a short real pause.
class FastSleeper : public TickSleeper {
  public:
    void sleepTicks(int) override { std::this_thread::sleep_for(std::chrono::microseconds(100)); }
};

// A modes-file block for a satellite with one FM mode.
inline std::string ModeBlock(const std::string& name, const std::string& speakName, int priority,
                             double up = 145.85, double down = 436.795,
                             const char* cmode = "J_FM") {
    char text[1024];
    std::snprintf(
        text, sizeof text,
        "Satellite:\t%s\nChannel: \tFM\nUplink:  \t%f\nDownlink:\t%f\nCMode:   \t%s\nBeacon:  "
        "\t0.000000\n"
        "Tone:    \t0\nCTone:   \t0\nTxVrtrUp: \t0.000000\nTxVrtrDn: \t0.000000\nBeamUp:   \t0.00\n"
        "BeamDwn:  \t0.00\nTrackHours:\t111111111111111111111111\nSpeakName:\t%s\nEnabled:\t1\n"
        "Priority:\t%d\n\n",
        name.c_str(), up, down, cmode, speakName.c_str(), priority);
    return text;
}

// The between-passes block: the radio rests on the FM calling channel.
inline std::string BetweenPassesBlock() {
    return ModeBlock("BetweenPasses", "", 5, 145.5, 145.5, "SIMP_FM");
}

struct Station {
    ScratchDir dir;
    FakeUserInterface ui;
    MemoryUserDefaults defaults;
    FakeClock clock;
    RecordingSpeech speech;
    RecordingSounds sounds;
    FastSleeper sleeper;
    FILE* log = std::tmpfile();
    DataPaths paths;
    std::unique_ptr<AppController> app;

    // `elements` and `modes` are the element-set and user modes files.
    Station(const std::string& elements, const std::string& modes) {
        paths = DataPaths::InFolders(VELORAN_RESOURCE_DIR, dir.file("data"), dir.file("config"));
        std::string error;
        SeedDataFiles(paths, &error);
        WriteText(paths.keplerFile, elements);
        MakeDirectories(paths.configDir);
        WriteText(paths.userModesFile, modes);
        const Services s{.ui = &ui,
                         .defaults = &defaults,
                         .clock = &clock,
                         .log = log,
                         .speech = &speech,
                         .sounds = &sounds,
                         .sleeper = &sleeper};
        app = std::make_unique<AppController>(s, paths);
    }
    ~Station() {
        app->stopAnnouncements();
        std::fclose(log);
    }

    template <typename F>
    void setSite(F change) {
        SiteRec site;
        app->GetSiteRec(&site);
        change(&site);
        app->SetSiteRec(&site);
    }
    // Starts the program with an FT-847 on `path` (9600 baud, no command
    // delay), `more` setting the rest of the site, and switches the radio on.
    template <typename F>
    void startWithFt847(const std::string& path, F more) {
        app->awakeFromNib();
        const int port = app->addTypedPort(path.c_str());
        setSite([&](SiteRec* s) {
            s->radio = 1;  // FT-847
            s->radioPort = port;
            s->radioBaud = 5;
            s->commandDelay = 0;
            more(s);
        });
        app->openCloseRadio(true);
    }
    SiteRec site() const {
        SiteRec rec;
        app->GetSiteRec(&rec);
        return rec;
    }
    std::unique_ptr<SatRec> sat(int index) const {
        auto rec = std::make_unique<SatRec>();
        app->GetSatelliteRecordByIndex(index, rec.get());
        return rec;
    }
    void tickAt(uint32_t secs) {
        clock.now = secs;
        app->mainTimerTasks();
    }
    // Waits until the announcement thread has spoken all that is queued,
    // then stops it so that what it recorded can be read.
    void drainAnnouncements() {
        for (int spins = 0; app->announcementQueue().size() > 0 && spins < 200000; ++spins)
            std::this_thread::sleep_for(std::chrono::microseconds(100));
        app->stopAnnouncements();
    }
};

// A pass of `e` over the default station after `from`, with the highest
// elevation between lowest and highest degrees: its AOS and LOS. With
// quietSeconds, the pass must also follow at least that long after the
// previous one (or after `from`), so that every warning before it is about
// this pass.
inline bool FindPass(const Elements& e, uint32_t from, double lowest, double highest, uint32_t* aos,
                     uint32_t* los, uint32_t quietSeconds = 0) {
    SiteRec site = MakeSite(43.7064, 79.2442, 200.0);
    auto sun = LoadSun(&site);
    auto rec = LoadRecord("PASS", e, &site);
    uint32_t s = from;
    uint32_t previousLOS = from;
    for (int pass = 0; pass < 200; ++pass) {
        sunCalcTask(s, sun.get(), nullptr, &site);
        SatelliteCalculationsV(EpochTime(s), kSatelliteSearchSpan, rec.get(), &site, 0, s,
                               sun.get());
        if (rec->AOS) {
            s += 600;
            previousLOS = s;
            continue;
        }
        if (rec->secondsToAOS >= kSecondsToAOSUnknown) return false;
        if (rec->maxElevation >= lowest && rec->maxElevation <= highest &&
            rec->AOSTime >= previousLOS + quietSeconds) {
            *aos = rec->AOSTime;
            *los = rec->LOSTime;
            return true;
        }
        s = rec->LOSTime + 60;
        previousLOS = rec->LOSTime;
    }
    return false;
}

}  // namespace veloran::testing
