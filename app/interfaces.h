// The small interfaces through which the application core asks the outside
// world for things: the window's outlets, file panels, the download, the
// clock, the announcement queue and the user-defaults store. The desktop
// application implements them with Qt, the command-line tools with console
// versions, the tests with fakes that record every call.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "data/userdefaults.h"
#include "engine/satrec.h"
#include "engine/siterec.h"
#include "engine/vector3.h"
#include "views/globescene.h"

namespace veloran {

// What the tick hands the drawing once a second, only while the window is
// open: the records are the controller's own and valid during the call only.
struct ViewFrame {
    double epoch = 0;              // epoch day of the tick
    uint32_t timeBaseSecs = 0;     // the tick's instant, seconds since 1904
    const SatRec* sats = nullptr;  // entries 0 .. totalSats-1
    int32_t totalSats = 0;
    int32_t mainSatNum = 0;  // 1-based
    const SiteRec* site = nullptr;
    bool flipped = false;  // the site mark's flip (no manual case)
    bool firstTick = false;
    // First tick only: the map width and the stored visible rectangle
    // ("2D_Visible_Rect"); hasStoredRect is false when none was stored.
    int32_t mapFrameWidth = 1024;
    bool hasStoredRect = false;
    double rect[4] = {0, 0, 0, 0};  // x, y, width, height
    // The globe: the Sun's and the Moon's entries (1-based, 0 for none),
    // the places' city-light points and the display options.
    int32_t sunNum = 0, moonNum = 0;
    const Point3F* lightPoints = nullptr;
    int32_t lightPointCount = 0;
    GlobeOptions globe;
};

// A satellite as the operator may read it: the short name that identifies it
// everywhere, its catalogue number and the long name its element sets came
// with (empty when the source had none).
struct SatelliteNames {
    std::string name;
    int32_t catalog = 0;
    std::string longName;
};

// The main satellite as the status lines show it, with the age of its
// element set at the tick's instant.
struct MainSatelliteStatus {
    SatelliteNames names;
    bool hasElements = false;  // false for the Moon, the Sun or no satellite
    double ageDays = 0;        // negative for an epoch after the tick
    double limitDays = 0;      // too old past this: 7 days below 400 km, else 14
    std::string warning;       // what to do about it; empty while young enough
};

// The main window's outlets: pop-ups, text fields, alerts, beeps. Every call
// comes from the core thread; an implementation forwards it to its window.
// Outlets only: what the core reads of the controls is its ControlsModel.
class UserInterface {
  public:
    virtual ~UserInterface() = default;

    // The satellite pop-up (item 0 is "Add Satellite", item k satellite k).
    virtual void removeAllSatelliteItems() = 0;
    virtual void addSatelliteItem(const std::string& name) = 0;

    // The element sets' date line.
    virtual void setKepsDateText(const std::string& text) = 0;
    // The names of the satellites loaded, in table order (the Moon and the
    // Sun left out), after every load.
    virtual void setSatelliteNames(const std::vector<SatelliteNames>& /*names*/) {}

    // A modal alert with one button.
    virtual void alert(const std::string& title, const std::string& message,
                       const std::string& button) = 0;
    // The system beep of a refused action.
    virtual void beep() = 0;

    // The channel pop-up of the radio panel and the tuning slider.
    virtual void removeAllChannelItems() = 0;
    virtual void addChannelItem(const std::string& name) = 0;
    virtual void selectChannelItem(int index) = 0;
    virtual void setVfoSlider(double value) = 0;

    // The places combo box, the latitude and longitude fields beside it.
    virtual void removeAllLocationItems() = 0;
    virtual void addLocationItem(const std::string& name) = 0;
    virtual void showLocation(const std::string& name, const std::string& latitude,
                              const std::string& longitude) = 0;
    // The add-place sheet has been read: close it.
    virtual void closeLocationSheet() = 0;

    // The settings shown in the controls (start-up and after "Cancel").
    virtual void showSettings(const SiteRec& site) = 0;

    // --- Outlets of the one-second tick and the device actions. A window
    // shows them; a station without a screen may ignore every one. ---

    // A line for the operator that needs no answer (a download that failed
    // and why); a window's message line, nothing without a screen.
    virtual void showNotice(const std::string& /*text*/) {}
    // The clock line; red while the time slider is off zero.
    virtual void setClockLine(const std::string& /*text*/, bool /*red*/) {}
    // "Path Loss: ... <call> v<version>".
    virtual void setVersionLine(const std::string& /*text*/) {}
    // "Next: ... Length: ... Elev:/MaxE: ...".
    virtual void setMapStatus(const std::string& /*text*/) {}
    // "Inverting Transponder" / "Non-Inverting Transponder" and the
    // full-Doppler check box beside it.
    virtual void setTransponderLine(const std::string& /*text*/, bool /*fullDopplerChecked*/,
                                    bool /*fullDopplerEnabled*/) {}
    // The four figures of the main satellite, already formatted.
    virtual void setSatelliteFigures(const std::string& /*altitude*/,
                                     const std::string& /*velocity*/,
                                     const std::string& /*maxElevation*/,
                                     const std::string& /*range*/) {}
    // The main satellite's names and the age of its element set.
    virtual void setMainSatelliteStatus(const MainSatelliteStatus& /*status*/) {}
    // "Manual", "Flipped" or "Not Flipped".
    virtual void setFlipLine(const std::string& /*text*/) {}
    // The radio panel's title, "Veloran: <name>".
    virtual void setRadioPanelTitle(const std::string& /*text*/) {}
    // The radio panel: both frequencies (formatFreq), both trims ("%01.5f"),
    // "Uplink: ..." and "Downlink: ...".
    virtual void setVfoPanel(const std::string& /*uplink*/, const std::string& /*downlink*/,
                             const std::string& /*uplinkTrim*/, const std::string& /*downlinkTrim*/,
                             const std::string& /*uplinkLine*/,
                             const std::string& /*downlinkLine*/) {}
    // The two trim steppers' values, MHz.
    virtual void setTrimSteppers(double /*uplink*/, double /*downlink*/) {}
    // Which controls of the radio preferences the chosen model uses.
    virtual void setRadioPrefsControls(bool /*icomAddress*/, bool /*sMeter*/,
                                       bool /*dialTracking*/) {}
    // The three port pop-ups' items (radio, rotor, gateway share the list).
    virtual void setSerialPortItems(const std::vector<std::string>& /*names*/) {}
    // Device check boxes, the S-meter and the rotor panel.
    virtual void setRadioChecked(bool /*on*/) {}
    virtual void setGatewayChecked(bool /*on*/) {}
    virtual void setRotorChecked(bool /*on*/) {}
    virtual void setSMeter(int /*level*/) {}
    // What happened to a device, on the status line: "radio IC-910 on
    // /dev/ttyUSB0: no answer", "... is back". The core also writes it to its
    // log (standard error).
    virtual void setDeviceMessage(const std::string& /*text*/) {}
    virtual void setElevationControl(int /*value*/) {}
    virtual void setRotorPanel(const std::string& /*azimuth*/, const std::string& /*elevation*/) {}
    // The debug and speech check boxes (and the speech menu item).
    virtual void setDebugChecked(bool /*on*/) {}
    virtual void setSpeechChecked(bool /*on*/) {}
    // The map zoom buttons.
    virtual void setZoomButtons(bool /*zoomInEnabled*/, bool /*zoomOutEnabled*/) {}
    // The zoom changed the map's width (pixels); its visible rectangle
    // scales by `scale` (2 in, 0.5 out).
    virtual void zoomMap(int32_t /*width*/, double /*scale*/) {}
    // The main window shown or hidden (it is never really closed).
    virtual void showMainWindow(bool /*shown*/) {}
    // The drawing of this tick, only while the window is open: the horizon
    // (every tracked satellite) when its tab shows, the world map (follow
    // switch, tracked and enabled satellites' paths when displayTrackList,
    // the main satellite's path and ground track, the site mark with
    // frame.flipped) or the globe when theirs does. The first frame also
    // carries the map width and the stored visible rectangle.
    virtual void drawViews(const ViewFrame& /*frame*/) {}
    // One globe frame now, between ticks: a display option changed.
    virtual void drawGlobe(const ViewFrame& /*frame*/) {}
};

// The open and save panels.
class FileChooser {
  public:
    virtual ~FileChooser() = default;
    // One existing file, any type. False when cancelled.
    virtual bool chooseFileToOpen(std::string* path) = 0;
    // A place to save, proposing proposedName in the default folder; folders
    // may be created. False when cancelled.
    virtual bool chooseFileToSave(const std::string& proposedName, std::string* path) = 0;
};

// An HTTP download to a file. The completion arrives later, on the core
// thread, as AppController::downloadDidFinish or downloadDidFail.
class Downloader {
  public:
    virtual ~Downloader() = default;
    // Starts fetching url into destination (overwriting it); false when the
    // download cannot be created.
    virtual bool start(const std::string& url, const std::string& destination,
                       double timeoutSeconds) = 0;
    // The HTTP status of the last download's answer; 0 when there was none
    // (no connection, a time-out) or nothing has been fetched.
    virtual int lastStatus() const { return 0; }
    // Stops the download under way, which then completes as failed; nothing
    // when none runs.
    virtual void cancel() {}
};

// Wall-clock time in the time base of the engine (seconds since 1904).
class Clock {
  public:
    virtual ~Clock() = default;
    virtual uint32_t dateTimeUTC() const = 0;
    // Local time: UTC plus the machine's GMT offset, as QFGetDateTime has it.
    virtual uint32_t dateTime() const = 0;
};

// The machine's clock.
class SystemClock : public Clock {
  public:
    uint32_t dateTimeUTC() const override;
    uint32_t dateTime() const override;
};

// One queued spoken message.
struct Announcement {
    enum Sound : int32_t { kNone = 0, kAnnounce = 1, kAOS = 2, kLOS = 3, kRotor = 4 };
    int32_t sound = kNone;
    bool transmit = false;    // key the transmitter around it
    bool waitForCOR = false;  // wait for a clear channel before keying
    std::string text;
};

// The speech synthesiser. speak, isSpeaking and the volume are used from
// the announcement thread only; stop may come from the core thread. A
// machine without a speech engine gets an implementation that stays silent.
class Speech {
  public:
    virtual ~Speech() = default;
    // Starts speaking and returns at once.
    virtual void speak(const std::string& text) = 0;
    virtual bool isSpeaking() const = 0;
    // Stops the current sentence at once.
    virtual void stop() = 0;
    // Whether speech reaches a loudspeaker (an engine and an audio output).
    // Announcements over the air key the transmitter only when it does, so a
    // station without sound never sends dead carrier.
    virtual bool canPlay() const { return true; }
    // The voices the engine offers for the current language, by name;
    // empty when it offers no choice.
    virtual std::vector<std::string> voices() const { return {}; }
    // The voice (by name; empty or unknown: the engine's default) and the
    // rate (-1 slowest, 0 normal, 1 fastest; clamped) from the next sentence
    // on. May come from the core thread.
    virtual void setVoice(const std::string& /*voice*/, double /*rate*/) {}
};

// The four chimes (announce.wav, AOS.wav, LOS.wav, rotor.wav), played from
// the announcement thread. A missing sound plays as silence.
class SoundPlayer {
  public:
    virtual ~SoundPlayer() = default;
    // Starts one of Announcement::kAnnounce .. kRotor; others do nothing.
    virtual void play(int32_t sound) = 0;
    virtual bool isPlaying() const = 0;
};

// The producer side of the announcement queue.
class Announcer {
  public:
    virtual ~Announcer() = default;
    virtual void queueAnnouncement(const Announcement& item) = 0;
};

}  // namespace veloran
