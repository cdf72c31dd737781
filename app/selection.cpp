// Which satellite is worked: the automatic choice from the track list, the
// rotation of the one other satellite refreshed each tick, the main
// satellite's rise and set with the warnings before a pass, and the spoken
// announcements the core thread queues.

#include <cmath>
#include <cstdio>
#include <cstring>

#include "app/appcontroller.h"
#include "data/settings.h"
#include "engine/commmode.h"
#include "engine/timebase.h"
#include "radio/tuning.h"

namespace veloran {

namespace {

// Seconds to AOS at which a pass is announced: 4 h, 3 h, 2 h, 1 h, 30, 15
// and 5 minutes.
constexpr uint32_t kWarningSeconds[] = {14400, 10800, 7200, 3600, 1800, 900, 300};
// The speed of light as the Doppler shift has always used it, km/s.
constexpr double kDopplerLightSpeed = 299792.5;
// A candidate must rise within two days.
constexpr uint32_t kSelectionHorizonSeconds = 172800;
constexpr int16_t kWorstPriority = 20;

bool IsWarningTime(uint32_t secondsToAOS) {
    for (uint32_t s : kWarningSeconds)
        if (s == secondsToAOS) return true;
    return false;
}

}  // namespace

std::string AppController::FixSatNameForAgnes(const SatRec& sat) {
    return sat.speakName[0] != '\0' ? std::string(sat.speakName) : std::string(sat.name);
}

std::string AppController::passSentence(const SatRec& sat, const char* lead) const {
    char text[512];
    std::snprintf(text, sizeof text, "%s%s", FixSatNameForAgnes(sat).c_str(), lead);
    addTimeToAOSString(sat.secondsToAOS, true, text);
    std::string sentence = text;
    const ModeRec* mode = SelectedMode(const_cast<SatRec*>(&sat));
    char tail[160];
    std::snprintf(
        tail, sizeof tail,
        " with a maximum elevation of %.01f degrees, and an uplink frequency of %.02f mhz",
        sat.maxElevation, mode != nullptr ? mode->upFreq : 0.0);
    sentence += tail;
    if (mode != nullptr && mode->commMode == CommMode::J_EXP) sentence += ", upper side band";
    return sentence + ".";
}

bool AppController::findNextSatInList() {
    if (mMainSatNum > mTotalSats) mMainSatNum = 1;
    uint32_t bestTime = kSelectionHorizonSeconds;
    int16_t bestPriority = kWorstPriority;
    for (int i = 1; i <= mTotalSats; ++i) {
        const SatRec& sat = mAllSats[i - 1];
        if (!sat.tracked || !sat.satActivePass || !sat.enabled) continue;
        const uint32_t s = sat.secondsToAOS;
        if (s < bestTime) {
            mMainSatNum = i;
            bestTime = s;
        }
        // bestPriority stays as it is after an earlier AOS was taken: a
        // later tie must beat every priority accepted so far.
        if (s == bestTime && sat.priority < bestPriority) {
            mMainSatNum = i;
            bestPriority = sat.priority;
        }
    }
    if (mMainSatNum == mLastSat) return false;
    if (mLastSat != -1) SaveTweaks(mLastSat - 1);
    mLastSat = mMainSatNum;
    return true;
}

void AppController::CheckVisibility() {
    SatRec* sat = mainSatellite();
    if (sat == nullptr) return;
    DateTimeRec clock{};
    QFSecondsToDate(services_.clock->dateTime(), &clock);
    const bool gateway = mSite.gateway_enabled != 0;
    ModeRec* mode = SelectedMode(sat);

    if (sat->elevationRads < 0) {
        if (sat->AOS) {
            sat->AOS = 0;
            mVFO.dopplerBE = mVFO.dopplerTX = mVFO.dopplerRX = 0;
            if (mode != nullptr) sat->currrentDownlink = mode->downFreq;
            updateVFO(1);
            updateRotors();
            if (mSite.wants_speech)
                queue(FixSatNameForAgnes(*sat) + " is no longer visible", Announcement::kLOS,
                      gateway, false);
            mSite.deadSpotCrossed = 0;
        }
        if (sat->secondsToAOS == 60) {
            mGiveOneMinuteWarning = true;
            if (mSite.wants_sounds) queue("", Announcement::kRotor, gateway, false);
            updateRotors();
            mGiveOneMinuteWarning = false;
        }
        if (IsWarningTime(sat->secondsToAOS) &&
            static_cast<int32_t>(sat->secondsToAOS / 60) != mWarningIntervalMinutes) {
            mWarningIntervalMinutes = static_cast<int32_t>(sat->secondsToAOS / 60);
            const std::string warning = passSentence(*sat, " will be visible in ");
            // The timed warning has a comma before "with"; the next-satellite
            // sentence has none. Both are kept as the operators know them.
            const size_t at = warning.find(" with a maximum elevation");
            const std::string spoken = warning.substr(0, at) + "," + warning.substr(at);
            if (mSite.wants_speech) queue(spoken, Announcement::kAnnounce, gateway, gateway);
        }
        mVFO.dopplerBE = mVFO.dopplerTX = mVFO.dopplerRX = 0;
        return;
    }

    if (!sat->AOS) {
        sat->AOS = 1;
        updateVFO(1);
        updateRotors();
        // Keyed even with the gateway off: a closed port makes keying a no-op.
        if (mSite.wants_speech)
            queue(FixSatNameForAgnes(*sat) + " is visible", Announcement::kAOS, true, false);
    } else {
        updateVFO(0);
        updateRotors();
    }

    if (clock.minute != mWarningIntervalMinutes && !gateway) {
        mWarningIntervalMinutes = clock.minute;
        if (clock.minute % 3 == 0) {
            char text[320];
            std::snprintf(text, sizeof text, "%s is %s%0.1f%s", FixSatNameForAgnes(*sat).c_str(),
                          sat->elevationDegs < 0 ? "minus " : "", std::fabs(sat->elevationDegs),
                          sat->elevationRising ? " degrees, rising" : " degrees, descending");
            if (mSite.wants_speech) queue(text, Announcement::kAnnounce, false, false);
        }
    }

    if (mode == nullptr) return;
    const double v = sat->satVelocity;
    mVFO.dopplerTX = mode->upFreq * v / kDopplerLightSpeed;
    mVFO.dopplerRX = mode->downFreq * v / kDopplerLightSpeed;
    mVFO.dopplerBE = mode->beaconFreq * v / kDopplerLightSpeed;
    sat->currrentDownlink =
        mSite.listenForBeacon ? mode->beaconFreq + mVFO.dopplerBE : mode->downFreq + mVFO.dopplerRX;
}

void AppController::setTrackList(bool on) {
    mUseTrackList = on;
    if (mSite.wants_speech)
        queue(on ? "track list enabled" : "track list disabled", Announcement::kNone, false, false);
}

void AppController::selectSatelliteWithIndex(int index) {
    SaveTweaks(mMainSatNum - 1);
    mLastSat = mMainSatNum;
    mMainSatNum = index + 1;
    HandleNewSatellite();
}

void AppController::chooseSatelliteAtStart(int index) {
    if (index >= 0 && index < mTotalSats) mMainSatNum = index + 1;
}

void AppController::MarkSatelliteTracked(int index, bool flag) {
    if (index >= 0 && index < mTotalSats) mAllSats[index].tracked = flag;
}

void AppController::NextSatelliteAnnouncement() {
    const SatRec* sat = mainSatellite();
    if (sat == nullptr) return;
    std::string text;
    if (sat->secondsToAOS == 0 || sat->AOS)
        text = FixSatNameForAgnes(*sat) + " is visible.";
    else
        text = passSentence(*sat, mUseTrackList ? " is the next Satellite, and will be visible in "
                                                : " will be visible in ");
    const bool gateway = mSite.gateway_enabled != 0;
    if (mSite.wants_speech) queue(text, Announcement::kAnnounce, gateway, gateway);
}

void AppController::speechChanged() {
    mSite.wants_speech = !mSite.wants_speech;
    if (mSite.wants_speech)
        queue("Speech enabled.", Announcement::kNone, false, false);
    else if (services_.speech != nullptr)
        services_.speech->stop();
    services_.ui->setSpeechChecked(mSite.wants_speech != 0);
    services_.defaults->setBool(prefkeys::kSpeech, mSite.wants_speech != 0);
}

}  // namespace veloran
