// The user's settings: the start-up defaults of the site record, the
// user-defaults keys under which the settings persist (written and read in
// one fixed order), and the per-satellite tuning offsets ("tweaks").
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "data/userdefaults.h"
#include "engine/satrec.h"
#include "engine/siterec.h"

namespace veloran {

// Keys written by other actions than savePrefs, and read back at start-up,
// and the savePrefs keys that the command-line options override.
namespace prefkeys {
constexpr const char* kRadio = "radio";
constexpr const char* kRadioPort = "radioport";
constexpr const char* kRadioBaud = "radiobaud";
constexpr const char* kIcomAddress = "icomAddress";
constexpr const char* kRotor = "rotor";
constexpr const char* kRotorPort = "rotorport";
constexpr const char* kRotorBaud = "rotorbaud";
constexpr const char* kSiteLatitude = "site_latitude";
constexpr const char* kSiteLongitude = "site_longitude";
constexpr const char* kSiteAltitude = "siteAltitude";
constexpr const char* kGatewayPort = "gatewayport";
constexpr const char* kMainSatNum = "main_sat_num";
constexpr const char* kVfoEnabled = "vfo_enabled";
constexpr const char* kVfoLocked = "vfo_locked";
constexpr const char* kBeaconEnabled = "beacon_enabled";
constexpr const char* kFullDopplerTuning = "full_doppler_tuning";
constexpr const char* kRotorEnabled = "rotor_enabled";
constexpr const char* kRotorManual = "rotor_manual";
// Read the rotor's position back every few seconds while tracking, for the
// sky plot (on unless the user turns it off).
constexpr const char* kRotorReadBack = "rotor_read_back";
constexpr const char* kGatewayEnabled = "gateway_enabled";
constexpr const char* kSpeech = "speech";
constexpr const char* kDebug = "debug";
constexpr const char* kMap2DWidth = "map_2d_width";
constexpr const char* kVisibleRect = "2D_Visible_Rect";
constexpr const char* kTrackListDisplayed = "track_list_enabled";  // the track list is shown
constexpr const char* kFollowSat = "followSat_enabled";
constexpr const char* kTrackListEnabled =
    "trackListEnabled";  // automatic selection from the track list
constexpr const char* kTrackListString =
    "trackList_string";  // "NAME NAME " of the track list's rows
// The device path of each port (a /dev/serial/by-id link when one points at
// it), written beside the index keys and read in preference to them.
constexpr const char* kRadioPortPath = "radioPortPath";
constexpr const char* kRotorPortPath = "rotorPortPath";
constexpr const char* kGatewayPortPath = "gatewayPortPath";
// Whether a device that went away is opened again by itself (default on).
constexpr const char* kReopenDevices = "reopenDevices";
// A Hamlib rig or rotator model number, used when the radio or rotor is the
// Hamlib entry of its table.
constexpr const char* kHamlibRadioModel = "hamlibRadioModel";
constexpr const char* kHamlibRotorModel = "hamlibRotorModel";
// On FM, how far (Hz) the computed frequency must move before it is sent.
constexpr const char* kFmRetuneHz = "fmRetuneHz";
// The voice announcements are spoken in (a name the speech engine offers;
// empty for its default) and the speaking rate, -1 .. 1 (0 normal).
constexpr const char* kSpeechVoice = "speechVoice";
constexpr const char* kSpeechRate = "speechRate";
}  // namespace prefkeys

// Settings that live in the controller and the controls rather than in the
// site record.
struct ViewPrefs {
    int32_t mainSatNum = 1;       // "main_sat_num": the main satellite's number, 1-based
    int32_t map2DWidth = 0;       // "map_2d_width": world-map width in pixels; 0 = never stored
    bool hasVisibleRect = false;  // "2D_Visible_Rect" was stored and parsed
    float visibleRect[4] = {0, 0, 0, 0};  // x, y, width, height of the map's visible area
    Bool32 globeTrackList = 1;            // "qdisplayTrackList": the globe shows the track list
    Bool32 globeLatLongLines = 1;         // "qlatLongLinesDeg": the globe's grid lines
    Bool32 trackListEnabled = 0;          // "trackListEnabled": automatic selection is on
    std::string trackListString;          // "trackList_string"
};

// Zeroes the record and puts in the start-up defaults: station 43.7064 N,
// 79.2442 W (west positive), 200 m; site name "Quillfern"; command delay 3 ms;
// times in UTC and distances in km; dead-spot state 1; the track list shown;
// no rotor offsets, park or manual steering; no S-meter polling; the globe
// with the 2048-pixel Earth, four Earth radii away, 20% night light and all
// its overlays on. The port descriptors are -1 (closed). Then SitePreCalc.
void SetSiteDefaults(SiteRec* site);

// Every key savePrefs writes, in its order.
std::vector<std::string> PrefKeys();

// Writes the settings under their keys, in the order of PrefKeys().
void SavePrefs(const SiteRec& site, const ViewPrefs& view, UserDefaults* defaults);

// Reads back every key that is stored; a missing or unreadable key leaves the
// value standing, and so does a number that is NaN, infinite or outside the
// setting's range, which is also described in *problems when given. Then brings siteLatRads,
// siteLongRads and siteMinElevRads in line with the degrees and runs SitePreCalc. Also reads the
// track-list keys.
void ReadPrefs(const UserDefaults& defaults, SiteRec* site, ViewPrefs* view,
               std::vector<std::string>* problems = nullptr);

// The user-defaults key of a satellite's tuning offsets.
std::string TweaksKey(const char* satelliteName);

// Stores the receive, transmit and beacon offsets of every active mode as
// "%f %f %f\t" per mode under TweaksKey(name).
void SaveTweaks(UserDefaults* defaults, const SatRec& sat);

// Reads them back ("%lf %lf %lf" per tab-separated piece) into the active
// modes; modes without a piece, and a satellite without the key, keep their
// offsets.
void LoadTweaks(const UserDefaults& defaults, SatRec* sat);

// The track list as stored: every name followed by one blank.
std::string TrackListString(const std::vector<std::string>& names);

}  // namespace veloran
