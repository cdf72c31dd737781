// Settings keys, start-up defaults and tuning offsets.

#include "data/settings.h"

#include <cmath>
#include <cstdio>
#include <cstring>

#include "data/cnumeric.h"
#include "engine/observer.h"

namespace veloran {

namespace {

// The keys in the order savePrefs writes them, each with the field it holds.
// One visitor writes them and another reads them, so the order and the
// types cannot drift apart.
template <class Visitor>
void VisitPrefs(Visitor& v, SiteRec* s, ViewPrefs* p) {
    v.integer(prefkeys::kMainSatNum, &p->mainSatNum);
    v.integer(prefkeys::kRadio, &s->radio);
    v.integer(prefkeys::kRadioPort, &s->radioPort);
    v.integer(prefkeys::kRadioBaud, &s->radioBaud);
    v.boolean(prefkeys::kVfoEnabled, &s->vfo_enabled);
    v.boolean(prefkeys::kVfoLocked, &s->vfo_locked);
    v.boolean(prefkeys::kBeaconEnabled, &s->listenForBeacon);
    v.boolean(prefkeys::kFullDopplerTuning, &s->fullDopplerTuning);
    v.integer(prefkeys::kIcomAddress, &s->icomAddress);
    v.real32("commandDelay", &s->commandDelay);
    v.boolean("s_meter_enabled", &s->s_meter_enabled);
    v.boolean("dial_tracking_enabled", &s->dial_tracking_enabled);
    v.integer(prefkeys::kRotor, &s->rotor);
    v.integer(prefkeys::kRotorPort, &s->rotorPort);
    v.integer(prefkeys::kRotorBaud, &s->rotorBaud);
    v.boolean(prefkeys::kRotorEnabled, &s->rotor_enabled);
    v.boolean(prefkeys::kRotorManual, &s->rotor_manual);
    v.boolean("park", &s->park);
    v.real("siteParkAz", &s->siteParkAz);
    v.real("siteParkEl", &s->siteParkEl);
    v.real("siteAzOffset", &s->siteAzOffset);
    v.real("siteElOffset", &s->siteElOffset);
    v.integer("deadspot", &s->deadSpotState);
    v.text("userCallSign", s->call_sign, sizeof s->call_sign);
    v.boolean(prefkeys::kSpeech, &s->wants_speech);
    v.boolean("sounds", &s->wants_sounds);
    v.boolean(prefkeys::kDebug, &s->debug);
    v.boolean("kilometers", &s->displayKM);
    v.boolean("utc", &s->displayUTC);
    v.text("location_name", s->locationName, sizeof s->locationName);
    v.real(prefkeys::kSiteLatitude, &s->siteLatDegs);
    v.real(prefkeys::kSiteLongitude, &s->siteLongDegs);
    v.real(prefkeys::kSiteAltitude, &s->siteAltitudeM);
    v.real("siteMinimumElevation", &s->siteMinElevDegs);
    v.integer(prefkeys::kGatewayPort, &s->gatewayPort);
    v.integer("gatewaybaud", &s->gatewayBaud);
    v.boolean(prefkeys::kGatewayEnabled, &s->gateway_enabled);
    v.integer(prefkeys::kMap2DWidth, &p->map2DWidth);
    v.boolean(prefkeys::kTrackListDisplayed, &s->displayTrackList);
    v.boolean(prefkeys::kFollowSat, &s->followSat_enabled);
    v.rect(prefkeys::kVisibleRect, p);
    v.short16("qcameraPOV", &s->cameraPOV);
    v.short16("qresolution", &s->maxRezTex);
    v.real("qcameraDistance", &s->cameraDistance);
    v.short16("qshowNightLight", &s->nightLight);
    v.boolean("qdisplayTrackList", &p->globeTrackList);
    v.boolean("qgroundCoverage", &s->groundCoverage);
    v.boolean("qdisplayMapLabels", &s->displayMapLabels);
    v.boolean("qlatLongLinesDeg", &p->globeLatLongLines);
    v.boolean("qshowSkyTrack", &s->showSkyTrack);
    v.boolean("qshowGroundTrack", &s->showGroundTrack);
    v.boolean("qshowOrbitalPlane", &s->showOrbitalPlane);
    v.boolean("qshowCityLights", &s->cityLights);
    // Ours, after the classic keys: Hamlib models, the FM retune threshold,
    // the speech voice and rate.
    v.integer(prefkeys::kHamlibRadioModel, &s->hamlibRadioModel);
    v.integer(prefkeys::kHamlibRotorModel, &s->hamlibRotorModel);
    v.integer(prefkeys::kFmRetuneHz, &s->fmRetuneHz);
    v.text(prefkeys::kSpeechVoice, s->speechVoice, sizeof s->speechVoice);
    v.real(prefkeys::kSpeechRate, &s->speechRate);
}

struct KeyLister {
    std::vector<std::string> keys;
    void integer(const char* k, int32_t*) { keys.push_back(k); }
    void boolean(const char* k, Bool32*) { keys.push_back(k); }
    void real(const char* k, double*) { keys.push_back(k); }
    void real32(const char* k, float*) { keys.push_back(k); }
    void short16(const char* k, int16_t*) { keys.push_back(k); }
    void text(const char* k, char*, size_t) { keys.push_back(k); }
    void rect(const char* k, ViewPrefs*) { keys.push_back(k); }
};

struct Writer {
    UserDefaults* d;
    void integer(const char* k, int32_t* v) { d->setInteger(k, *v); }
    void boolean(const char* k, Bool32* v) { d->setBool(k, *v != 0); }
    void real(const char* k, double* v) { d->setDouble(k, *v); }
    void real32(const char* k, float* v) { d->setDouble(k, *v); }
    void short16(const char* k, int16_t* v) { d->setInteger(k, *v); }
    void text(const char* k, char* v, size_t size) {
        d->setString(k, std::string(v, strnlen(v, size)));
    }
    void rect(const char* k, ViewPrefs* p) {
        char text[160];
        std::snprintf(text, sizeof text, "%f %f %f %f", p->visibleRect[0], p->visibleRect[1],
                      p->visibleRect[2], p->visibleRect[3]);
        d->setString(k, text);
    }
};

// The values a setting may take. Anything else (NaN, infinity, a number out
// of range) would hang a wait, aim the rotor at nonsense or index past a
// table, so it is refused at load and the default stays.
struct Range {
    const char* key;
    double lowest, highest;
};
constexpr Range kRanges[] = {
    {"main_sat_num", 1, 1023},
    {"radio", 0, 17},  // the radio table's rows, then the Hamlib entry
    {"radioport", -1, 63},
    {"radiobaud", 0, 12},  // the baud table's rows
    {"icomAddress", 0, 255},
    {"commandDelay", 0, 1000},  // milliseconds between commands
    {"rotor", 0, 12},           // the rotor table's rows, then the Hamlib entry
    {"rotorport", -1, 63},
    {"rotorbaud", 0, 12},
    {"siteParkAz", -360, 720},
    {"siteParkEl", -90, 180},
    {"siteAzOffset", -360, 360},
    {"siteElOffset", -90, 90},
    {"site_latitude", -90, 90},
    {"site_longitude", -180, 180},
    {"siteAltitude", -1000, 10000},  // metres
    {"siteMinimumElevation", -90, 90},
    {"gatewayport", -1, 63},
    {"gatewaybaud", 0, 12},
    {"map_2d_width", 0, 8192},
    {"qcameraDistance", -1e6, 1e6},
    {"speechRate", -1, 1},  // QTextToSpeech's rate
};

struct Reader {
    const UserDefaults* d;
    std::vector<std::string>* problems;

    // True when the stored value (read into `value`) may be used.
    bool acceptable(const char* k, double value) {
        bool ok = std::isfinite(value);
        const Range* range = nullptr;
        for (const Range& r : kRanges)
            if (std::strcmp(r.key, k) == 0) range = &r;
        if (ok && range != nullptr) ok = value >= range->lowest && value <= range->highest;
        if (!ok && problems != nullptr) {
            char text[256];
            if (range != nullptr)
                std::snprintf(text, sizeof text, "%s=%s is not a number from %g to %g", k,
                              d->stringForKey(k).c_str(), range->lowest, range->highest);
            else
                std::snprintf(text, sizeof text, "%s=%s is not a finite number", k,
                              d->stringForKey(k).c_str());
            problems->push_back(text);
        }
        return ok;
    }
    void integer(const char* k, int32_t* v) {
        int32_t read = *v;
        if (d->readInt(k, &read) && acceptable(k, read)) *v = read;
    }
    void boolean(const char* k, Bool32* v) { d->readBool(k, v); }
    void real(const char* k, double* v) {
        double read = *v;
        if (d->readDouble(k, &read) && acceptable(k, read)) *v = read;
    }
    void real32(const char* k, float* v) {
        float read = *v;
        if (d->readFloat(k, &read) && acceptable(k, read)) *v = read;
    }
    void short16(const char* k, int16_t* v) {
        int32_t wide = 0;
        if (d->readInt(k, &wide) && acceptable(k, wide)) *v = static_cast<int16_t>(wide);
    }
    void text(const char* k, char* v, size_t size) { d->readText(k, v, size); }
    void rect(const char* k, ViewPrefs* p) {
        if (!d->contains(k)) return;
        float r[4];
        if (std::sscanf(d->stringForKey(k).c_str(), "%f %f %f %f", &r[0], &r[1], &r[2], &r[3]) != 4)
            return;
        for (const float x : r)
            if (!acceptable(k, x)) return;
        std::memcpy(p->visibleRect, r, sizeof r);
        p->hasVisibleRect = true;
    }
};

}  // namespace

void SetSiteDefaults(SiteRec* site) {
    std::memset(site, 0, sizeof *site);
    site->siteAzOffset = 0;
    site->siteElOffset = 0;
    site->commandDelay = 3.0f;
    site->siteLatDegs = 43.7064;
    site->siteLongDegs = 79.2442;
    site->siteAltitudeM = 200.0;
    site->siteMinElevRads = 0;
    site->siteMinElevDegs = 0;
    site->displayUTC = 1;
    site->displayKM = 1;
    site->rotor_manual = 0;
    site->park = 0;
    site->siteParkAz = 0;
    site->siteParkEl = 0;
    site->displayTrackList = 1;
    site->deadSpotState = 1;
    site->s_meter_enabled = 0;
    site->fmRetuneHz = 500;      // far inside an FM channel; FM receivers click on every retune
    site->hamlibRadioModel = 1;  // Hamlib's dummy rig until one is chosen
    site->hamlibRotorModel = 1;
    // The globe on a first start: the 2048-pixel Earth from four Earth
    // radii, a little light on the night side, and everything it can show.
    site->maxRezTex = 1;
    site->cameraPOV = 0;
    site->cameraDistance = 4.0;
    site->nightLight = 20;
    site->groundCoverage = 1;
    site->displayMapLabels = 1;
    site->showSkyTrack = 1;
    site->showGroundTrack = 1;
    site->showOrbitalPlane = 1;
    site->cityLights = 1;
    std::snprintf(site->siteName, sizeof site->siteName, "Quillfern");
    site->locationName[0] = '\0';
    // A zeroed descriptor would be standard input; closed is -1.
    site->radioPortFileDescriptor = -1;
    site->rotorPortFileDescriptor = -1;
    site->gatewayPortFileDescriptor = -1;
    SitePreCalc(site);
}

std::vector<std::string> PrefKeys() {
    KeyLister lister;
    SiteRec site{};
    ViewPrefs view;
    VisitPrefs(lister, &site, &view);
    return lister.keys;
}

void SavePrefs(const SiteRec& site, const ViewPrefs& view, UserDefaults* defaults) {
    CNumericLocale cLocale;
    Writer writer{defaults};
    // The writer only reads the fields.
    VisitPrefs(writer, const_cast<SiteRec*>(&site), const_cast<ViewPrefs*>(&view));
}

void ReadPrefs(const UserDefaults& defaults, SiteRec* site, ViewPrefs* view,
               std::vector<std::string>* problems) {
    CNumericLocale cLocale;
    Reader reader{&defaults, problems};
    VisitPrefs(reader, site, view);
    defaults.readBool(prefkeys::kTrackListEnabled, &view->trackListEnabled);
    if (defaults.contains(prefkeys::kTrackListString))
        view->trackListString = defaults.stringForKey(prefkeys::kTrackListString);
    site->siteLatRads = site->siteLatDegs * kDegreesToRadians;
    site->siteLongRads = site->siteLongDegs * kDegreesToRadians;
    site->siteMinElevRads = site->siteMinElevDegs * kDegreesToRadians;
    SitePreCalc(site);
}

std::string TweaksKey(const char* satelliteName) {
    return std::string("tweaks/") + satelliteName;
}

void SaveTweaks(UserDefaults* defaults, const SatRec& sat) {
    CNumericLocale cLocale;
    std::string text;
    char piece[128];
    const int n = sat.numberOfActiveChannels < kMaxModes ? sat.numberOfActiveChannels : kMaxModes;
    for (int i = 0; i < n; ++i) {
        const ModeRec& m = sat.modes[i];
        std::snprintf(piece, sizeof piece, "%f %f %f\t", m.RXOffset, m.TXOffset, m.BEOffset);
        text += piece;
    }
    defaults->setString(TweaksKey(sat.name), text);
}

void LoadTweaks(const UserDefaults& defaults, SatRec* sat) {
    const std::string key = TweaksKey(sat->name);
    if (!defaults.contains(key)) return;
    CNumericLocale cLocale;
    const std::string text = defaults.stringForKey(key);
    const int n = sat->numberOfActiveChannels < kMaxModes ? sat->numberOfActiveChannels : kMaxModes;
    size_t start = 0;
    for (int i = 0; i < n && start < text.size(); ++i) {
        size_t tab = text.find('\t', start);
        if (tab == std::string::npos) tab = text.size();
        const std::string piece = text.substr(start, tab - start);
        double rx = 0, tx = 0, be = 0;
        if (std::sscanf(piece.c_str(), "%lf %lf %lf", &rx, &tx, &be) == 3) {
            sat->modes[i].RXOffset = rx;
            sat->modes[i].TXOffset = tx;
            sat->modes[i].BEOffset = be;
        }
        start = tab + 1;
    }
}

std::string TrackListString(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& n : names) text += n + " ";
    return text;
}

}  // namespace veloran
