// The station: the platform services, the application controller, the track
// list and the core's timers, put together in the one start-up order both
// front ends use. The window adds widgets on top, --headless a status line.
//
// Everything here lives on one thread, the core thread: a Station is started,
// ticked, driven and stopped there. --headless runs it on the main thread;
// the window runs it through StationThread, so that device traffic never
// freezes the screen, and reaches it only through StationThread::post.
#pragma once

#include <sys/types.h>

#include <QObject>
#include <QThread>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>

#include "app/interfaces.h"
#include "app/tracklist.h"
#include "data/files.h"
#include "station/stationoptions.h"

namespace veloran {

class AppController;
class Station;

// What a front end lends the station. The outlets are called on the core
// thread only and must outlive the station; an implementation on another
// thread copies what it is given and forwards it (queued) to its widgets.
struct StationFrontEnd {
    UserInterface* ui = nullptr;         // required
    TrackListUi* trackListUi = nullptr;  // required
    // The open and save panels; null: the file actions do nothing.
    FileChooser* files = nullptr;
    // After every one-second tick, on the core thread: the headless status
    // line, the window's snapshot of the records. May be empty.
    std::function<void(Station&)> afterTick;
    // What the operator should know but need not answer, on the core thread:
    // stale element sets, a failed periodic download. A window puts it on a
    // status line, --headless on standard error. May be empty.
    std::function<void(const std::string&)> notice;
    // The element-set download's bytes received and expected (-1 while
    // unknown), and its end whatever the outcome, for a progress bar. May be
    // empty.
    std::function<void(int64_t received, int64_t total)> downloadProgress;
    std::function<void()> downloadEnded;
    // Shown in the version line and in the radio's log lines.
    std::string versionString = "0.1";
    // False leaves the 1 s and 15 s timers off: tests tick by hand.
    bool startTimers = true;
    // False makes no speech engine (tests; announcements are then queued
    // and dropped).
    bool withSpeech = true;
};

class Station {
  public:
    // Remembers what to build; creates nothing yet, so it may be made on any
    // thread.
    Station(const StationOptions& options, const DataPaths& paths, const StationFrontEnd& frontEnd);
    ~Station();
    Station(const Station&) = delete;
    Station& operator=(const Station&) = delete;

    // On the core thread, once the front end holds the folder's InstanceLock:
    // removes temporary files that interrupted writes left, creates the settings store (with the
    // options laid over it), the speech, sounds, download and serial-port services, the controller
    // and the track list, runs the start-up sequence and starts the 1 s and 15 s timers there. 1,
    // or 0 with the reason in *error (a satellite named by --sat or --track that the element sets
    // do not hold; the message names the ones they do).
    int start(std::string* error);

    // On the core thread: stops the timers, saves the settings (not the
    // options of this run) and ends the announcement thread. Safe to call
    // twice or without start.
    void stop();

    // Core thread only; null before start.
    AppController* controller() { return controller_.get(); }
    SatelliteTableController* trackList() { return trackList_.get(); }
    // The settings with this run's options over them, for the front end's
    // own keys (tab selections, theme).
    UserDefaults* defaults();
    const DataPaths& paths() const { return paths_; }
    const StationOptions& options() const { return options_; }

  private:
    struct Parts;
    void tick();
    int findSatellite(const std::string& name, std::string* error) const;

    StationOptions options_;
    DataPaths paths_;
    StationFrontEnd frontEnd_;
    std::unique_ptr<Parts> parts_;
    std::unique_ptr<AppController> controller_;
    std::unique_ptr<SatelliteTableController> trackList_;
    bool running_ = false;
    int warnedAgeOf_ = 0;  // the main satellite whose stale elements were last reported
};

// One line for the operator at start: the site, the age of the main
// satellite's elements, the radio, rotor and gateway with their ports.
// "Site 43.7064 N 79.2442 W 200 m; elements of AO-7 3 days old; radio FT-847
// on /dev/ttyUSB0; rotor off; gateway off". Core thread.
std::string StationSummary(Station& station);

// A Station on a core thread of its own, for the window: the GUI thread
// starts it, posts the user's actions to it and stops it at quit.
class StationThread {
  public:
    StationThread(const StationOptions& options, const DataPaths& paths,
                  const StationFrontEnd& frontEnd);
    // Stops the station if it still runs.
    ~StationThread();
    StationThread(const StationThread&) = delete;
    StationThread& operator=(const StationThread&) = delete;

    // Starts the core thread and Station::start on it, and waits for the
    // start-up to finish. 1, or 0 with the reason (the thread is then ended).
    int start(std::string* error);
    // Runs `action` on the core thread between ticks; returns at once.
    // Ignored once stop has begun.
    void post(std::function<void(Station&)> action);
    // Station::stop on the core thread, then ends the thread and waits for
    // it. It waits out a tick or an action already under way, never a
    // queued one.
    void stop();

  private:
    QThread thread_;
    QObject* context_ = nullptr;  // lives on thread_; queued calls land there
    std::unique_ptr<Station> station_;
    bool stopping_ = false;
};

// One running station per settings folder: a lock file ("veloran.lock") in
// the config folder, held with flock for the life of the process (a crash
// releases it), holding the owner's process id.
class InstanceLock {
  public:
    InstanceLock() = default;
    ~InstanceLock();
    InstanceLock(const InstanceLock&) = delete;
    InstanceLock& operator=(const InstanceLock&) = delete;

    // 1 when this process now holds the folder's lock. 0 otherwise: *holder
    // is the process that holds it (0 when unknown) and *error says so, or
    // why the lock file could not be made.
    int acquire(const std::string& configDir, pid_t* holder, std::string* error);
    // A name unique to the folder, for a local socket through which a second
    // start can ask the running one to show itself instead of failing.
    static std::string channelName(const std::string& configDir);

  private:
    int fd_ = -1;
};

}  // namespace veloran
