// Settings: start-up defaults, saving and reading back, the preferences
// panel's accept, cancel and device tests, tuning offsets.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "app/appcontroller.h"
#include "engine/observer.h"
#include "radio/drivers.h"
#include "rotor/rotor.h"
#include "serial/gateway.h"
#include "serial/serial.h"

namespace veloran {

namespace {

// The gateway board's input line wired to the receiver's carrier-operated
// relay, and how long a test listens to it (sixtieths of a second).
constexpr int kCarrierLine = 1;
constexpr unsigned long kCarrierTestTicks = 150;

template <size_t N>
void copyText(char (&to)[N], const char* from) {
    std::snprintf(to, N, "%s", from);
}

int bitsPerSecond(int baudIndex) {
    return baudIndex >= 0 && baudIndex < kBaudTableSize ? kBaudTable[baudIndex].bitsPerSecond : 0;
}

}  // namespace

void AppController::setSiteDefaults() {
    SetSiteDefaults(&mSite);
}

void AppController::savePrefs() {
    mViewPrefs.mainSatNum = mMainSatNum;
    SavePrefs(mSite, mViewPrefs, services_.defaults);
    savePortPaths();
}

void AppController::setUIStateFromPrefs() {
    mViewPrefs.mainSatNum = mMainSatNum;
    std::vector<std::string> problems;
    ReadPrefs(*services_.defaults, &mSite, &mViewPrefs, &problems);
    for (const std::string& problem : problems)
        std::fprintf(stderr, "settings: %s; the default is used\n", problem.c_str());
    readPortPaths();
    mMainSatNum = mViewPrefs.mainSatNum;
    services_.ui->showSettings(mSite);
}

void AppController::prefsAccepted(const SiteRec* shown) {
    if (shown == nullptr) return;
    const SiteRec before = mSite;
    copyText(mSite.call_sign, shown->call_sign);
    copyText(mSite.siteName, shown->siteName);
    copyText(mSite.locationName, shown->locationName);
    mSite.siteLatDegs = shown->siteLatDegs;
    mSite.siteLongDegs = shown->siteLongDegs;
    mSite.siteAltitudeM = shown->siteAltitudeM;
    mSite.siteMinElevDegs = shown->siteMinElevDegs;
    mSite.siteLatRads = mSite.siteLatDegs * kDegreesToRadians;
    mSite.siteLongRads = mSite.siteLongDegs * kDegreesToRadians;
    mSite.siteMinElevRads = mSite.siteMinElevDegs * kDegreesToRadians;
    mSite.radio = shown->radio;
    mSite.radioPort = shown->radioPort;
    mSite.radioBaud = shown->radioBaud;
    mSite.icomAddress = shown->icomAddress;
    mSite.commandDelay = shown->commandDelay;
    mSite.s_meter_enabled = shown->s_meter_enabled;
    mSite.dial_tracking_enabled = shown->dial_tracking_enabled;
    mSite.rotor = shown->rotor;
    mSite.rotorPort = shown->rotorPort;
    mSite.rotorBaud = shown->rotorBaud;
    mSite.siteAzOffset = shown->siteAzOffset;
    mSite.siteElOffset = shown->siteElOffset;
    mSite.park = shown->park;
    mSite.siteParkAz = shown->siteParkAz;
    mSite.siteParkEl = shown->siteParkEl;
    mSite.deadSpotState = shown->deadSpotState;
    mSite.gatewayPort = shown->gatewayPort;
    mSite.gatewayBaud = shown->gatewayBaud;
    mSite.wants_speech = shown->wants_speech;
    mSite.wants_sounds = shown->wants_sounds;
    copyText(mSite.speechVoice, shown->speechVoice);
    mSite.speechRate =
        std::isfinite(shown->speechRate) ? std::clamp(shown->speechRate, -1.0, 1.0) : 0.0;
    mSite.displayUTC = shown->displayUTC;
    mSite.displayKM = shown->displayKM;
    mSite.displayTrackList = shown->displayTrackList;
    mSite.debug = shown->debug;
    SitePreCalc(&mSite);
    SetCommandDelay(mSite.commandDelay);
    savePrefs();
    updateRadioPrefsPanel();
    publishAnnouncementSettings();
    applySpeechVoice();
    services_.ui->setSpeechChecked(mSite.wants_speech != 0);
    services_.ui->showSettings(mSite);

    // Only what changed is reopened: reopening a radio retunes it, and a
    // rotor that is reopened mid-pass would stop for nothing.
    if (mSite.vfo_enabled && (mSite.radio != before.radio || mSite.radioPort != before.radioPort ||
                              mSite.radioBaud != before.radioBaud))
        openCloseRadio(true);
    if (mSite.rotor_enabled &&
        (mSite.rotor != before.rotor || mSite.rotorPort != before.rotorPort ||
         mSite.rotorBaud != before.rotorBaud))
        openCloseRotor(true);
    if (mSite.gateway_enabled &&
        (mSite.gatewayPort != before.gatewayPort || mSite.gatewayBaud != before.gatewayBaud))
        openCloseGateway(true);
}

void AppController::prefsCancelled() {
    applySpeechVoice();  // a test sentence may have tried another
    services_.ui->showSettings(mSite);
    updateRadioPrefsPanel();
}

int AppController::portForTest(int port, int baud, bool* opened, std::string* why) {
    *opened = false;
    if (port < 0 || port >= kMaxSerialPorts || mPortNames[port].bsdPath[0] == '\0') {
        *why = "No port is chosen.";
        return -1;
    }
    // The station's own descriptor when it holds this port: a second open
    // of a device would interleave two conversations on one line.
    const struct {
        int port;
        int fd;
    } held[] = {{mSite.radioPort, mSite.radioPortFileDescriptor},
                {mSite.rotorPort, mSite.rotorPortFileDescriptor},
                {mSite.gatewayPort, mSite.gatewayPortFileDescriptor}};
    for (const auto& h : held)
        if (h.port == port && h.fd >= 0) return h.fd;
    const int fd = openSerialPort(mPortNames[port].bsdPath, baud, mSite.radio, mSite.debug != 0);
    if (fd < 0) {
        *why = std::string(mPortNames[port].userName) + " could not be opened.";
        return -1;
    }
    *opened = true;
    return fd;
}

std::string AppController::testRadio(const SiteRec* shown) {
    if (shown == nullptr) return {};
    const RadioDriver* driver = RadioDriverFor(shown->radio);
    if (driver == nullptr) return "No radio is chosen.";
    if (driver->answers == nullptr)
        return std::string("The ") + driver->model +
               " cannot be asked anything over its port; tune it to check the cable.";
    bool opened = false;
    std::string why;
    const int fd = portForTest(shown->radioPort, shown->radioBaud, &opened, &why);
    if (fd < 0) return why;
    const float delay = CommandDelay();
    SetCommandDelay(shown->commandDelay);
    const int answered = driver->answers(fd, mSite.debug != 0);
    SetCommandDelay(delay);
    if (opened) closeSerialPort(fd, mSite.debug != 0);
    const char* port = mPortNames[shown->radioPort].userName;
    char text[1200];
    if (answered)
        std::snprintf(text, sizeof text, "The %s answered on %s.", driver->model, port);
    else
        std::snprintf(text, sizeof text,
                      "Nothing answered on %s at %d bit/s: check the cable, the speed and that "
                      "the radio is on.",
                      port, bitsPerSecond(shown->radioBaud));
    return text;
}

std::string AppController::testRotor(const SiteRec* shown) {
    if (shown == nullptr) return {};
    const char* name = rotorName(shown->rotor);
    if (name == nullptr) return "No rotor is chosen.";
    bool opened = false;
    std::string why;
    const int fd = portForTest(shown->rotorPort, shown->rotorBaud, &opened, &why);
    if (fd < 0) return why;
    double azimuth = 0, elevation = 0;
    const int answered = GetAzEl(shown->rotor, fd, &azimuth, &elevation, mSite.debug != 0);
    if (opened) closeSerialPort(fd, mSite.debug != 0);
    char text[256];
    if (answered)
        std::snprintf(text, sizeof text, "The rotor stands at azimuth %.0f, elevation %.0f.",
                      azimuth, elevation);
    else
        std::snprintf(text, sizeof text,
                      "The %s did not report a position (not every controller can).", name);
    return text;
}

std::string AppController::testGateway(const SiteRec* shown) {
    if (shown == nullptr) return {};
    bool opened = false;
    std::string why;
    const int fd = portForTest(shown->gatewayPort, shown->gatewayBaud, &opened, &why);
    if (fd < 0) return why;
    // Reads the carrier line only; nothing is keyed.
    unsigned long waited = 0;
    const int quiet =
        waitForRadio(fd, kCarrierLine, kCarrierTestTicks, &waited, mSite.debug != 0, nullptr);
    if (opened) closeSerialPort(fd, mSite.debug != 0);
    return quiet ? "The gateway answered: the channel is quiet."
                 : "The gateway did not report a quiet channel: a signal is being received, or "
                   "the board does not answer.";
}

void AppController::speakTestSentence(const std::string& voice, double rate) {
    if (services_.speech != nullptr)
        services_.speech->setVoice(voice, std::isfinite(rate) ? std::clamp(rate, -1.0, 1.0) : 0.0);
    queue("This is Veloran. Speech is working.", Announcement::kNone, false, false);
}

std::vector<std::string> AppController::speechVoices() const {
    return services_.speech != nullptr ? services_.speech->voices() : std::vector<std::string>();
}

bool AppController::speechAudible() const {
    return services_.speech != nullptr && services_.speech->canPlay();
}

void AppController::applySpeechVoice() {
    if (services_.speech != nullptr)
        services_.speech->setVoice(mSite.speechVoice, mSite.speechRate);
}

void AppController::SaveTweaks(int index) {
    const SatRec* sat = record(index);
    if (sat != nullptr && index < mTotalSats) veloran::SaveTweaks(services_.defaults, *sat);
}

void AppController::LoadTweaks(int index) {
    SatRec* sat = record(index);
    if (sat != nullptr && index < mTotalSats) veloran::LoadTweaks(*services_.defaults, sat);
}

}  // namespace veloran
