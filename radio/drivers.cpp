// The radio table: one row per model of the radio pop-up, and the common
// start every set-frequencies driver makes.
//
// Row 13 (TS-790) is never connected: choosing it makes every tuning fail,
// which switches the radio off with a beep.

#include "radio/drivers.h"

#include <cmath>

#include "radio/aor.h"
#include "radio/hamlibradio.h"
#include "radio/icom.h"
#include "radio/kenwood.h"
#include "radio/pcr1000.h"
#include "radio/ts50.h"
#include "radio/yaesu.h"

namespace veloran {

namespace {

// The Yaesu and Kenwood drivers take no CI-V address.
template <int (*Driver)(int, double, double, int, int, int, bool, bool)>
int withoutAddress(int fd, int, double up, double down, int commMode, int gTone, int gCTone,
                   bool force, bool debug) {
    return Driver(fd, up, down, commMode, gTone, gCTone, force, debug);
}

template <int (*Dial)(int, int32_t*, bool)>
int dialWithoutAddress(int fd, int, int32_t* change, bool debug) {
    return Dial(fd, change, debug);
}

// S-meter factors scale each radio's raw reading to the indicator.
constexpr double kYaesuSMeter = 3.125;
constexpr double kPcr1000SMeter = 1.0 / 2.54;
constexpr double kTs2000SMeter = 1.666;

const RadioDriver kRadios[kRadioCount] = {
    {"FT-736R", Start736R, Kill736R, withoutAddress<Set736VFO>, Squelched736R, kYaesuSMeter,
     nullptr, YaesuRadioAnswers},
    {"FT-847", Start847, Kill847, withoutAddress<Set847VFO>, Squelched847, kYaesuSMeter,
     dialWithoutAddress<DownLinkChanged847>, YaesuRadioAnswers},
    {"FT-817", Start817, Kill817, withoutAddress<SetFT817VFO>, Squelched817, kYaesuSMeter,
     dialWithoutAddress<DownLinkChanged817>, YaesuRadioAnswers},
    {"FT-100D", nullptr, nullptr, withoutAddress<Set100DVFO>, nullptr, 0.0,
     dialWithoutAddress<DownLinkChanged100>, FT100Answers},
    {"VR-5000", StartVR5000, KillVR5000, withoutAddress<SetVR5000VFO>, nullptr, 0.0, nullptr,
     nullptr},
    {"IC-820", nullptr, nullptr, Set821HVFO, nullptr, 0.0, DownLinkChanged821, nullptr},
    {"IC-821", nullptr, nullptr, Set821HVFO, nullptr, 0.0, DownLinkChanged821, nullptr},
    {"IC-910", nullptr, nullptr, Set910VFO, nullptr, 0.0, DownLinkChanged910, nullptr},
    {"IC-970", nullptr, nullptr, Set821HVFO, nullptr, 0.0, DownLinkChanged821, nullptr},
    {"IC-706", nullptr, nullptr, Set706VFO, nullptr, 0.0, nullptr, nullptr},
    {"IC-706MKII", nullptr, nullptr, Set706VFO, nullptr, 0.0, nullptr, nullptr},
    {"PCR1000", StartPCR1000, nullptr, withoutAddress<SetPCR1000VFO>, SquelchedPCR1000,
     kPcr1000SMeter, nullptr, nullptr},
    {"IC-706MKIIG", nullptr, nullptr, Set706VFO, nullptr, 0.0, nullptr, nullptr},
    // Never connected: choosing it makes every tuning fail on purpose.
    {"TS-790", nullptr, nullptr, nullptr, nullptr, 0.0, nullptr, nullptr},
    {"TS-2000", StartTS2000, KillTS2000, withoutAddress<SetTS2000VFO>, SquelchedTS2000,
     kTs2000SMeter, dialWithoutAddress<DownLinkChangedTS2000>, nullptr},
    {"TS-50", StartTS50, KillTS50, withoutAddress<SetTS50VFO>, nullptr, 0.0,
     dialWithoutAddress<DownLinkChangedTS50>, nullptr},
    {"AOR AR8000", nullptr, nullptr, withoutAddress<SetAORVFO>, SquelchedAOR, kYaesuSMeter, nullptr,
     nullptr},
};

}  // namespace

const RadioDriver* RadioDriverFor(int index) {
    if (index == kHamlibRadio) return HamlibRadioDriver();
    if (index < 0 || index >= kRadioCount) return nullptr;
    return &kRadios[index];
}

uint32_t RadioHertz(double mhz) {
    if (!(mhz > 0)) return 0;  // also NaN
    if (mhz >= 1000.0) mhz /= 10.0;
    const double hertz = std::trunc(mhz * 1000000.0);
    if (hertz >= 4294967295.0) return 4294967295u;
    return static_cast<uint32_t>(hertz);
}

int DriverCommonStart(LastSent* last, double upMHz, double downMHz, bool force, uint32_t* upHz,
                      uint32_t* downHz) {
    const uint32_t up = RadioHertz(upMHz);
    const uint32_t down = RadioHertz(downMHz);
    if (upHz) *upHz = up;
    if (downHz) *downHz = down;
    if (!last) return 1;
    if (!force && up == last->up && down == last->down) return 0;
    last->up = up;
    last->down = down;
    return 1;
}

bool IsSingleChannelMode(int commMode) {
    switch (commMode) {
        case CommMode::REPEATER:
        case CommMode::SIMP_FM:
        case CommMode::WIDE_FM:
        case CommMode::SIMP_AM:
        case CommMode::SIMP_SSB:
            return true;
        default:
            return false;
    }
}

bool IsTwoBandMode(int commMode) {
    return commMode >= CommMode::J_FM && commMode <= CommMode::J_EXP &&
           !IsSingleChannelMode(commMode);
}

}  // namespace veloran
