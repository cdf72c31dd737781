// Start-up, the one-second and fifteen-second ticks, the status texts, the
// window, the map zoom, and quitting.

#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

#include "app/appcontroller.h"
#include "data/elementage.h"
#include "data/settings.h"
#include "engine/live.h"
#include "engine/observer.h"
#include "engine/sunmoon.h"
#include "engine/timebase.h"
#include "engine/units.h"
#include "radio/tuning.h"
#include "rotor/steering.h"

namespace veloran {

namespace {

// The operating system the program reports about itself; the check that
// once refused old systems is gone.
constexpr int32_t kOSVersion = 0x1049;
constexpr int32_t kNarrowestMap = 1024;
constexpr int32_t kWidestMap = 8192;

// The clock line for the time value `secs`, in UTC or in the machine's zone.
// The separators blink: colons on odd seconds, blanks on even ones.
std::string ClockLine(uint32_t secs, bool utc) {
    const std::time_t unixTime = static_cast<std::time_t>(
        static_cast<int64_t>(secs) - static_cast<int64_t>(kSecondsFrom1904To1970));
    std::tm parts{};
    if (utc)
        gmtime_r(&unixTime, &parts);
    else
        localtime_r(&unixTime, &parts);
    // glibc calls the UTC zone "GMT"; the line has always said "UTC".
    std::string format = secs % 2 == 1 ? "%Y:%m:%d %H:%M:%S " : "%Y:%m:%d %H %M %S ";
    format += utc ? "UTC" : "%Z";
    char text[96];
    if (std::strftime(text, sizeof text, format.c_str(), &parts) == 0) return std::string();
    return text;
}

}  // namespace

void AppController::awakeFromNib() {
    UserInterface* ui = services_.ui;
    windowIsOpen = true;
    mLocations = PlacesList();
    mSite.debug = services_.defaults->boolForKey(prefkeys::kDebug);
    ui->setDebugChecked(mSite.debug != 0);

    mFirstTimeMainTimerTask = true;
    mWarningIntervalMinutes = 0;
    mLastSat = -1;
    mProgramStartSecs = services_.clock->dateTimeUTC();
    mSaveTweaksLater = false;
    mGiveOneMinuteWarning = false;
    mRefreshModes = true;
    lastPosition = 0;

    mSite.OSVersion = kOSVersion;
    debugLog("Running on OS %02X\n", static_cast<unsigned>(mSite.OSVersion));
    const int32_t timeDiff =
        static_cast<int32_t>(services_.clock->dateTime() - services_.clock->dateTimeUTC());

    const int found = countSerialPorts(services_.ports, mPortNames.get(), mSite.debug != 0);
    std::vector<std::string> portItems;
    for (int i = 0; i < found && i < kMaxSerialPorts; ++i)
        portItems.emplace_back(mPortNames[i].userName);
    ui->setSerialPortItems(portItems);

    const Bool32 debug = mSite.debug;
    setSiteDefaults();
    mSite.debug = debug;
    mSite.OSVersion = kOSVersion;
    mSite.timeDiff = timeDiff;

    loadKepsAndModes();
    loadLocations();
    mMainSatNum = 1;
    setUIStateFromPrefs();
    updateRadioPrefsPanel();

    m2DMapFrameWidth = kNarrowestMap;
    if (mViewPrefs.map2DWidth != 0) {
        m2DMapFrameWidth = mViewPrefs.map2DWidth;
        if (m2DMapFrameWidth == 2048 || m2DMapFrameWidth == 4096)
            ui->setZoomButtons(true, true);
        else if (m2DMapFrameWidth == kWidestMap)
            ui->setZoomButtons(false, true);
        else
            ui->setZoomButtons(true, false);
    }

    openCloseRadio(mSite.vfo_enabled != 0);
    openCloseRotor(mSite.rotor_enabled != 0);
    openCloseGateway(mSite.gateway_enabled != 0);

    publishAnnouncementSettings();
    applySpeechVoice();
    if (services_.speech != nullptr && services_.sounds != nullptr &&
        services_.announcer == nullptr && !mSpeaker) {
        mSpeaker = std::make_unique<AnnouncementSpeaker>(
            &mAnnouncements, &mAnnouncementSettings, services_.speech, services_.sounds,
            services_.sleeper != nullptr ? services_.sleeper : &mRealSleeper,
            services_.gateway != nullptr ? services_.gateway : &mRealGateway, services_.log);
        mSpeaker->start();
    }
    mCycleSatNum = 1;
}

void AppController::stopAnnouncements() {
    if (mSpeaker) mSpeaker->stop();
}

void AppController::mainTimerTasks() {
    UserInterface* ui = services_.ui;
    mTimeBaseSecs = services_.clock->dateTimeUTC() + static_cast<uint32_t>(60 * mTimeSliderMinutes);
    const double epoch = EpochTime(mTimeBaseSecs);
    SiteCalculations(&mSite);
    superviseDevices();

    if (windowIsOpen) {
        resetVfoSlider();
        lastPosition = 0;
        if (mUseTrackList && findNextSatInList()) HandleNewSatellite();
    }
    const SatRec* sun = mSunNum >= 1 && mSunNum <= mTotalSats ? &mAllSats[mSunNum - 1] : nullptr;
    SatRec* sat = mainSatellite();
    if (sat != nullptr)
        SatelliteCalculationsV(epoch, kSatelliteSearchSpan, sat, &mSite, 1, mTimeBaseSecs, sun);
    CheckVisibility();
    if (nextSatelliteInDB() && mCycleSatNum >= 1 && mCycleSatNum <= mTotalSats)
        SatelliteCalculationsV(epoch, kSatelliteSearchSpan, &mAllSats[mCycleSatNum - 1], &mSite, 0,
                               mTimeBaseSecs, sun);
    publishAnnouncementSettings();
    if (!windowIsOpen) return;
    readRotorPosition();  // only the window's sky plot shows it

    if (mSaveTweaksLater) {
        SaveTweaks(mMainSatNum - 1);
        mSaveTweaksLater = false;
    }
    if (mFirstTimeMainTimerTask && !mUseTrackList) HandleNewSatellite();

    showStatusTexts();

    ViewFrame frame = viewFrame();
    ui->drawViews(frame);

    if (mFirstTimeMainTimerTask) {
        if (mSunNum >= 1 && mSunNum <= mTotalSats)
            SatelliteCalculationsV(epoch, kSunMoonSearchSpan, &mAllSats[mSunNum - 1], &mSite, 0,
                                   mTimeBaseSecs, &mAllSats[mSunNum - 1]);
        updateVFO(1);
        updateVFOPanel();
        updateRotors();
        mFirstTimeMainTimerTask = false;
    }
}

void AppController::showStatusTexts() {
    UserInterface* ui = services_.ui;
    ui->setClockLine(ClockLine(mTimeBaseSecs, mSite.displayUTC != 0), mTimeSliderMinutes != 0);

    SatRec* sat = mainSatellite();
    static const SatRec kNoSatellite{};
    const SatRec& m = sat != nullptr ? *sat : kNoSatellite;
    char text[1400];
    char pathLoss[48];
    std::snprintf(pathLoss, sizeof pathLoss, "Path Loss: %0.1fdB", m.pathLoss);
    std::snprintf(text, sizeof text, "%s %s v%s", pathLoss, mSite.call_sign,
                  services_.versionString.c_str());
    ui->setVersionLine(text);

    char toAOS[16], length[16], elevation[32];
    formatTime(m.secondsToAOS, toAOS);
    formatTime(m.passLength, length);
    if (m.AOS)
        std::snprintf(elevation, sizeof elevation, "Elev: %0.1f", m.elevationDegs);
    else
        std::snprintf(elevation, sizeof elevation, "MaxE: %0.1f", m.maxElevation);
    std::snprintf(text, sizeof text, "Next: %s Length: %s %s", toAOS, length, elevation);
    ui->setMapStatus(text);

    checkSquelch(&mVFO, &mSite, &mRadioUi);
    if (sat != nullptr && checkTuningDial(&mVFO, &mSite, SelectedMode(sat))) {
        updateVFO(0);
        updateVFOPanel();
    }

    if (mVFO.inverting)
        ui->setTransponderLine("Inverting Transponder", mSite.fullDopplerTuning != 0, true);
    else
        ui->setTransponderLine("Non-Inverting Transponder", true, false);

    const bool km = mSite.displayKM != 0;
    const double factor = km ? 1.0 : kMilesPerKilometre;
    char altitude[64], velocity[64], maxElevation[64], range[64];
    std::snprintf(altitude, sizeof altitude, km ? "Altitude: %0.2f km" : "Altitude: %0.2f mi",
                  m.satAltitude * factor);
    std::snprintf(velocity, sizeof velocity,
                  km ? "Velocity: %0.2f km/sec" : "Velocity: %0.2f mi/sec", m.satVelocity * factor);
    std::snprintf(maxElevation, sizeof maxElevation, "Max Elevation: %0.2f", m.maxElevation);
    std::snprintf(range, sizeof range, km ? "Range: %0.1f km" : "Range: %0.1f mi",
                  m.satRange * factor);
    ui->setSatelliteFigures(altitude, velocity, maxElevation, range);

    MainSatelliteStatus status;
    const int entry = mMainSatNum - 1;
    if (sat != nullptr && entry >= 0 && entry < static_cast<int>(mSatelliteNames.size())) {
        status.names = mSatelliteNames[static_cast<size_t>(entry)];
        status.hasElements = true;
        status.ageDays = ElementAgeDays(*sat, mTimeBaseSecs);
        status.limitDays = ElementAgeLimitDays(*sat);
        status.warning = ElementAgeWarning(*sat, mTimeBaseSecs);
    } else if (sat != nullptr) {
        status.names.name = sat->name;  // the Moon or the Sun
    }
    ui->setMainSatelliteStatus(status);

    if (mSite.rotor_manual)
        ui->setFlipLine("Manual");
    else
        ui->setFlipLine(rotorFlipped(&mSite) ? "Flipped" : "Not Flipped");

    displaySatName();
    updateVFOPanel();
    updateRotorPanel();
}

void AppController::sunCalcTask() {
    SatRec* sun = mSunNum >= 1 && mSunNum <= mTotalSats ? &mAllSats[mSunNum - 1] : nullptr;
    SatRec* moon = mMoonNum >= 1 && mMoonNum <= mTotalSats ? &mAllSats[mMoonNum - 1] : nullptr;
    veloran::sunCalcTask(mTimeBaseSecs, sun, moon, &mSite);
}

void AppController::applicationWillTerminate() {
    if (!windowIsOpen) return;
    mViewPrefs.map2DWidth = m2DMapFrameWidth;
    if (mControls.hasMapRect) {
        mViewPrefs.hasVisibleRect = true;
        for (int i = 0; i < 4; ++i)
            mViewPrefs.visibleRect[i] = static_cast<float>(mControls.mapRect[i]);
    }
    savePrefs();
}

void AppController::timeSlid(int minutes) {
    mTimeSliderMinutes = minutes;
    mainTimerTasks();
}

bool AppController::windowShouldClose() {
    windowIsOpen = false;
    services_.ui->showMainWindow(false);
    return false;
}

void AppController::openNewWindow() {
    services_.ui->showMainWindow(true);
    windowIsOpen = true;
}

bool AppController::validateMenuItem(const std::string& action, int tag) const {
    // Driver 9 has stayed disabled in the menu on purpose.
    if (action == "radioDriverChanged" && tag == 9) return false;
    if (action == "openNewWindow") return !windowIsOpen;
    return true;
}

void AppController::displayTrackListChanged(bool on) {
    mSite.displayTrackList = on;
    services_.defaults->setBool(prefkeys::kTrackListDisplayed, on);
}

void AppController::followSatChanged(bool on) {
    mSite.followSat_enabled = on;
    services_.defaults->setBool(prefkeys::kFollowSat, on);
}

void AppController::zoomedin() {
    m2DMapFrameWidth *= 2;
    scaleMapRect(2.0);
    services_.ui->zoomMap(m2DMapFrameWidth, 2.0);
    services_.ui->setZoomButtons(m2DMapFrameWidth < kWidestMap, true);
}

void AppController::zoomedout() {
    m2DMapFrameWidth /= 2;
    scaleMapRect(0.5);
    services_.ui->zoomMap(m2DMapFrameWidth, 0.5);
    services_.ui->setZoomButtons(true, m2DMapFrameWidth > kNarrowestMap);
}

void AppController::scaleMapRect(double scale) {
    // The map scales its visible area itself; the copy follows at once so a
    // quit before the map's next report saves the right rectangle.
    for (double& v : mControls.mapRect) v *= scale;
}

void AppController::resetVfoSlider() {
    mControls.vfoSlider = 0.0;
    services_.ui->setVfoSlider(0.0);
}

}  // namespace veloran
