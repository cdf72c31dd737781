// The radio's target frequencies and the live Doppler shifts that produce
// them; one record, owned by the application controller (mVFO).
#pragma once

#include <cstdint>

#include "engine/satrec.h"

namespace veloran {

struct VFORec {
    double up;                  // uplink to set on the radio, MHz (0 while listening to the beacon)
    double down;                // downlink to set on the radio, MHz
    double uncorrected_up;      // the mode's upFreq, MHz
    double uncorrected_down;    // the mode's downFreq, MHz
    double uncorrected_beacon;  // the mode's beaconFreq, MHz
    double dopplerBE;           // Doppler shift of the beacon, MHz
    double dopplerTX;           // Doppler shift of the uplink, MHz
    double dopplerRX;           // Doppler shift of the downlink, MHz
    int32_t signalStrength;     // raw S-meter reading of the last squelch poll
    Bool32 squelched;           // squelch closed at the last poll
    Bool32 inverting;           // the selected mode is an inverting transponder
};

}  // namespace veloran
