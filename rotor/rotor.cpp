// The rotor send path (rounding, de-duplication, clamping) and the table that
// maps each rotor index to its controller's driver.

#include "rotor/rotor.h"

#include <algorithm>
#include <climits>
#include <cmath>

#include "rotor/hamlibrotor.h"
#include "rotor/protocols.h"
#include "serial/serial.h"

namespace veloran {

namespace {

using PositionFn = int (*)(int fd, int azimuth, int elevation, bool debug);
using PrecisePositionFn = int (*)(int fd, double azimuth, double elevation, bool debug);
using ReadBackFn = int (*)(int fd, double* azimuth, double* elevation, bool debug);
using ControlFn = void (*)(int fd, bool debug);

// One row per rotor index. Exactly one of position and precise is set:
// EasyComm takes the angles unrounded, with one decimal.
struct RotorRow {
    const char* name;
    bool azEl;
    bool translateAzimuth;  // azimuth through translate5500Azimuth first
    PositionFn position;
    PrecisePositionFn precise;
    ReadBackFn readBack;
    ControlFn start;
    ControlFn stop;
};

const RotorRow kRotors[kRotorCount] = {
    {"Yaesu GS-232", true, false, AzElGS232, nullptr, GetAzElGS232, nullptr, nullptr},
    {"Yaesu GS-232 (translated azimuth)", true, true, AzElGS232, nullptr, GetAzElGS232, nullptr,
     nullptr},
    {"AutoTracker", true, false, AzElAutoTracker, nullptr, nullptr, StartATVFO, nullptr},
    {"AutoTracker (alternate)", true, false, AzElAutoTracker, nullptr, nullptr, StartATVFO,
     nullptr},
    {"EasyComm", true, false, nullptr, AzElEasyComRotor, nullptr, nullptr, nullptr},
    {"EasyComm (alternate)", true, false, nullptr, AzElEasyComRotor, nullptr, nullptr, nullptr},
    {"KLM", true, false, AzElKLM, nullptr, nullptr, nullptr, nullptr},
    {"SARtek (azimuth only)", false, false, AzElSARtek, nullptr, nullptr, nullptr, nullptr},
    {"SatEL", true, false, AzElSatEL, nullptr, nullptr, StartSatEL, StopSatEL},
    {"Hy-Gain DCU-1 (azimuth only)", false, false, AzElDCU1, nullptr, nullptr, nullptr, nullptr},
    {"Alfa SPID", true, false, AzElAlphaSpid, nullptr, GetAzElAlphaSpid, nullptr, nullptr},
    {"PT", true, false, AzElPT, nullptr, nullptr, nullptr, nullptr},
};

// Any Hamlib rotator; Hamlib knows which of them turn in elevation.
const RotorRow kHamlibRow = {
    "Hamlib", true, false, HamlibRotorPosition, nullptr, HamlibRotorReadBack, nullptr, nullptr};

const RotorRow* rowFor(int index) {
    if (index == kHamlibRotor) return &kHamlibRow;
    return (index >= 0 && index < kRotorCount) ? &kRotors[index] : nullptr;
}

// The last pair sent, whole degrees, before clamping. INT_MIN: nothing sent
// yet, so that a first target of 0/0 (a park position) still goes out.
int saz = INT_MIN;
int sel = INT_MIN;

// Rotators never take more than a turn or so; this bound only keeps a wild
// target (an offset typed as 1e12) from overflowing the whole-degree pair.
constexpr double kLargestAngle = 1.0e6;

int wholeDegrees(double angle) {
    return static_cast<int>(std::round(std::clamp(angle, -kLargestAngle, kLargestAngle)));
}

}  // namespace

const char* rotorName(int index) {
    const RotorRow* row = rowFor(index);
    return row ? row->name : nullptr;
}

bool rotorIsAzEl(int index) {
    const RotorRow* row = rowFor(index);
    return row ? row->azEl : true;
}

int16_t translate5500Azimuth(int azimuth) {
    if (azimuth < 0) return 180;
    const double a = azimuth;
    return static_cast<int16_t>(std::lround(azimuth > 270 ? a / 1.5 - 180.0 : a / 1.5 + 180.0));
}

int SendAzEl(int index, int fd, double azimuth, double elevation, bool debug) {
    if (!std::isfinite(azimuth) || !std::isfinite(elevation)) return 0;
    const int az = wholeDegrees(azimuth);
    const int el = wholeDegrees(elevation);
    if (az == saz && el == sel) return 0;
    saz = az;
    sel = el;
    const int clampedAz = std::clamp(az, 0, 360);
    const int clampedEl = std::clamp(el, 0, 180);
    const RotorRow* row = rowFor(index);
    if (!row) return 0;
    beginDeviceCall(fd);
    if (row->precise) return row->precise(fd, azimuth, elevation, debug);
    const int sentAz = row->translateAzimuth ? translate5500Azimuth(clampedAz) : clampedAz;
    return row->position(fd, sentAz, clampedEl, debug);
}

void ResetRotorSendState() {
    saz = INT_MIN;
    sel = INT_MIN;
    ResetEasyCommClock();
}

int GetAzEl(int index, int fd, double* azimuth, double* elevation, bool debug) {
    const RotorRow* row = rowFor(index);
    if (!row || !row->readBack) return 0;
    beginDeviceCall(fd);
    return row->readBack(fd, azimuth, elevation, debug);
}

void startRotorDriver(int index, int fd, bool debug) {
    const RotorRow* row = rowFor(index);
    beginDeviceCall(fd);
    if (row && row->start) row->start(fd, debug);
}

void stopRotorDriver(int index, int fd, bool debug) {
    const RotorRow* row = rowFor(index);
    beginDeviceCall(fd);
    if (row && row->stop) row->stop(fd, debug);
}

}  // namespace veloran
