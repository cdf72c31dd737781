// What every radio driver shares: the call shapes the tuning controller
// dispatches through, one row per radio model, and the common start of every
// set-frequencies driver (the skip when nothing changed).
#pragma once

#include <cstdint>

#include "engine/commmode.h"
#include "radio/vforec.h"

namespace veloran {

// Set both frequencies (MHz) for a transponder mode; 1 on success, 0 when the
// radio cannot be talked to. Yaesu and Kenwood drivers ignore icomAddress.
using SetFrequenciesFn = int (*)(int fd, int icomAddress, double upMHz, double downMHz,
                                 int commMode, int gTone, int gCTone, bool force, bool debug);
// Start or stop the radio's computer control.
using RadioControlFn = void (*)(int fd, bool debug);
// 1 when the squelch is closed; stores the raw S-meter into vfo->signalStrength.
using SquelchFn = int (*)(int fd, VFORec* vfo, bool debug);
// 1 and the change in hertz when the radio's receive frequency moved away
// from the downlink last sent.
using DownlinkChangedFn = int (*)(int fd, int icomAddress, int32_t* changeHz, bool debug);

// 1 when the radio answers a harmless read: tells a connected radio from a
// silent line before a pass.
using AnswersFn = int (*)(int fd, bool debug);

// One row of the radio table. A null operation does nothing for that radio; a
// null setFrequencies makes every tuning attempt fail.
struct RadioDriver {
    const char* model;  // the radio pop-up's item text
    RadioControlFn start;
    RadioControlFn stop;
    SetFrequenciesFn setFrequencies;
    SquelchFn squelched;
    double sMeterFactor;                // raw reading -> S-meter indicator
    DownlinkChangedFn downlinkChanged;  // dial read-back
    AnswersFn answers;                  // null: the radio never replies to anything
};

constexpr int kRadioCount = 17;
// The row for radio index `index`, or null outside 0..16 and the Hamlib
// index (kHamlibRadio, radio/hamlibradio.h).
const RadioDriver* RadioDriverFor(int index);

// MHz as the wire takes it: 1000 MHz and more in tenths (microwave bands are
// commanded through their transverter IF tenfold down), then whole hertz
// truncated toward zero; negative or oversized values are clamped.
uint32_t RadioHertz(double mhz);

// What a set-frequencies driver last sent, whole hertz (0 before the first).
struct LastSent {
    uint32_t up;
    uint32_t down;
};

// The common start: converts both frequencies, and unless forced returns 0
// when they equal what was last sent (nothing to send). Otherwise remembers
// them and returns 1.
int DriverCommonStart(LastSent* last, double upMHz, double downMHz, bool force, uint32_t* upHz,
                      uint32_t* downHz);

// How the drivers group the transponder modes: one channel (REPEATER,
// SIMP_FM, WIDE_FM, SIMP_AM, SIMP_SSB) or an uplink and a downlink band (every
// other named mode). RECEIVE_ONLY and UNKNOWN are in neither group.
bool IsSingleChannelMode(int commMode);
bool IsTwoBandMode(int commMode);

}  // namespace veloran
