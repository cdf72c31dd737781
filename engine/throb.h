// The pulsing brightness of the satellite markers in the 3D view.
#pragma once

namespace veloran {

// Steps the brightness when more than 4 ticks (1/60 s) have passed since the
// last step: the satellite brightness moves by 0.1 between 0.1 and 0.9,
// reversing at the ends, and the Sun's becomes 0.8 - satellite / 5.
void Throb();
float ThrobSatelliteBrightness();
float ThrobSunBrightness();

}  // namespace veloran
