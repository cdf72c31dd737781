// The station as the logbook sees it when a contact is saved: the main
// satellite's mode and pass, the tick's instant, our call and locator.

#include <cmath>
#include <cstring>
#include <vector>

#include "app/appcontroller.h"
#include "engine/passfinder.h"
#include "engine/timebase.h"
#include "logbook/livecontact.h"
#include "radio/tuning.h"

namespace veloran {

namespace {

// How far back the last pass is looked for: a low orbiter may go half a day
// without a pass over a mid-latitude station.
constexpr double kPassSearchDays = 1.0;

}  // namespace

uint32_t AppController::currentPassAOS() {
    const SatRec* sat = mainSatellite();
    if (sat == nullptr) return 0;
    const uint32_t now = mTimeBaseSecs;
    const double nowDay = EpochTime(now);
    const double fromDay = nowDay - kPassSearchDays;
    // The instant itself is included: a pass under way ends the span in view.
    std::vector<PassRec> passes(16);
    int n = FindPasses(sat, &mSite, nullptr, fromDay, nowDay, 0.0, passes.data(),
                       static_cast<int>(passes.size()));
    if (n > static_cast<int>(passes.size())) {
        passes.resize(static_cast<size_t>(n));
        n = FindPasses(sat, &mSite, nullptr, fromDay, nowDay, 0.0, passes.data(), n);
    }
    if (n <= 0) return 0;
    const double back = (nowDay - passes[static_cast<size_t>(n - 1)].aosDay) * 86400.0;
    if (!(back >= 0)) return 0;
    const auto seconds = static_cast<uint32_t>(std::lround(back));
    return seconds <= now ? now - seconds : 0;
}

void AppController::fillLiveContact(LiveContactState* state) {
    FillStation(&mSite, state);
    state->nowUTC = mTimeBaseSecs;
    SatRec* sat = mainSatellite();
    if (sat == nullptr) return;
    state->satellite = std::string(sat->name, strnlen(sat->name, sizeof sat->name));
    const ModeRec* mode = SelectedMode(sat);
    if (mode != nullptr && sat->selectedModeIndex < sat->numberOfActiveChannels)
        FillMode(mode, state);
    state->passAOSUTC = currentPassAOS();
}

}  // namespace veloran
