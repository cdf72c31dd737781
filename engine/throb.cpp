// The pulsing brightness of the 3D view's satellite markers.

#include "engine/throb.h"

#include <chrono>

namespace veloran {

namespace {

unsigned long gLastThrobTick = 0;
float gSatelliteBrightness = 0.1f;
float gSunBrightness = 0.78f;
float gThrobStep = 0.1f;

// Ticks of 1/60 s on the steady clock.
unsigned long TickCount() {
    using namespace std::chrono;
    const auto since = steady_clock::now().time_since_epoch();
    return static_cast<unsigned long>(duration_cast<microseconds>(since).count() * 60 / 1000000);
}

}  // namespace

void Throb() {
    const unsigned long now = TickCount();
    if (now - gLastThrobTick <= 4) return;
    gLastThrobTick = now;
    gSatelliteBrightness += gThrobStep;
    if (gSatelliteBrightness >= 0.9f) {
        gSatelliteBrightness = 0.9f;
        gThrobStep = -0.1f;
    } else if (gSatelliteBrightness <= 0.1f) {
        gSatelliteBrightness = 0.1f;
        gThrobStep = 0.1f;
    }
    gSunBrightness = 0.8f - gSatelliteBrightness / 5.0f;
}

float ThrobSatelliteBrightness() {
    return gSatelliteBrightness;
}
float ThrobSunBrightness() {
    return gSunBrightness;
}

}  // namespace veloran
