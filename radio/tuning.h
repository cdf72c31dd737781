// The Doppler tuning controller: the two frequencies the radio must be set
// to, keeping it there as the shift changes, the user's trims (steppers,
// slider, the radio's own dial), squelch and S-meter, and the dispatch of
// every radio operation to the model chosen in the preferences.
//
// Everything here is a free function over the records; the application
// controller's actions are thin wrappers that add the widgets.
#pragma once

#include <cstddef>

#include "engine/satrec.h"
#include "engine/siterec.h"
#include "radio/drivers.h"
#include "radio/radioui.h"
#include "radio/vforec.h"

namespace veloran {

// The radio's set-frequencies driver for radio index `radio`; 0 for index 13,
// an index outside 0..16, a radio without a driver, or a closed port.
int SetVFO(int radio, int fd, int icomAddress, double upMHz, double downMHz, int commMode,
           int gTone, int gCTone, bool force, bool debug);

// Band code of a frequency in MHz: 1 up to 30, -1 between 30 and 144, 2 for
// 144 to 430, 3 for 430 to 500, 4 above 500; exactly 500 has no band (-1).
int Band(double mhz);

// "%03.5f" of the frequency in MHz into `text` (size bytes).
void formatFreq(double mhz, char* text, size_t size);

// The satellite's selected mode, or null when the record or index is bad.
ModeRec* SelectedMode(SatRec* sat);

// Fills the target frequencies from `mode`, the live shifts already in *vfo
// and the site's full-Doppler and beacon switches. Null arguments: nothing.
void calculateFrequencies(VFORec* vfo, const SiteRec* site, const ModeRec* mode);

// One tuning step: recompute from the main satellite's selected mode and, if
// the radio is on and its port open, send the frequencies. Between passes
// (main satellite not in view) an enabled `bpSat` lends its first mode's
// operating mode and tones and the command is forced. When the driver fails:
// beep, radio off, check box unticked; the result is then 0, else 1.
int updateVFO(VFORec* vfo, SiteRec* site, SatRec* mainSat, const SatRec* bpSat, bool force,
              RadioUi* ui);

// The radio's start and stop drivers, when the radio is switched on; start
// first sets the command delay.
void startRadioDriver(const SiteRec* site);
void stopRadioDriver(const SiteRec* site);

// Follows the radio's tuning dial into the mode's trims (RXOffset, and
// TXOffset when locked; BEOffset on the beacon). Changes of 50 kHz or more are
// ignored. 1 when the dial was followed.
int checkTuningDial(const VFORec* vfo, const SiteRec* site, ModeRec* mode);

// Polls squelch and S-meter into *vfo and the S-meter indicator.
void checkSquelch(VFORec* vfo, const SiteRec* site, RadioUi* ui);

// The uplink stepper moved from `previousUp` to `upValue` (MHz): TXOffset
// follows it; with the lock on the downlink stepper value *downStepper moves
// by the same change (its negative for an inverting transponder) and
// RXOffset takes it. The caller then tunes without force and shows both.
void applyUplinkStepper(ModeRec* mode, bool inverting, bool locked, double previousUp,
                        double upValue, double* downStepper);
// The mirror image for the downlink stepper.
void applyDownlinkStepper(ModeRec* mode, bool inverting, bool locked, double previousDown,
                          double downValue, double* upStepper);
// The trim slider moved to `sliderValue`: d = change / 100 MHz. Unlocked,
// only TXOffset moves; locked, RXOffset moves by d and TXOffset by d (or -d
// when inverting). *previousSlider takes the new value.
void applySliderMove(ModeRec* mode, bool inverting, bool locked, double sliderValue,
                     double* previousSlider);

// The three tuning check boxes: copy into the site and the user defaults
// ("full_doppler_tuning", "beacon_enabled", "vfo_locked"). After the beacon
// switch the caller tunes at once with force.
void setFullDopplerTuning(SiteRec* site, bool on, RadioUi* ui);
void setListenForBeacon(SiteRec* site, bool on, RadioUi* ui);
void setVfoLocked(SiteRec* site, bool on, RadioUi* ui);

// Which preference controls a radio model uses.
struct RadioPrefsControls {
    bool icomAddress;
    bool sMeter;
    bool dialTracking;
};
RadioPrefsControls radioPrefsControls(int radio);

}  // namespace veloran
