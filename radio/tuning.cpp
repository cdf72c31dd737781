// The Doppler tuning controller as free functions over the records.

#include "radio/tuning.h"

#include <cmath>
#include <cstdio>

#include "data/settings.h"
#include "radio/hamlibradio.h"
#include "serial/serial.h"

namespace veloran {

namespace {

constexpr double kDialLimitMHz = 0.05;  // larger jumps are band or memory changes on the radio
constexpr int kDisconnectedRadio = 13;

bool isInvertingMode(int commMode) {
    return commMode == CommMode::JA_SSB || commMode == CommMode::B_SSB ||
           commMode == CommMode::JA_CW || commMode == CommMode::B_CW;
}

// Which preference controls each radio of the table can use: the CI-V
// address, the S-meter and dial tracking.
constexpr RadioPrefsControls kPrefsControls[kRadioCount] = {
    {false, false, false},  // FT-736R
    {false, false, true},   // FT-847
    {false, true, true},    // FT-817
    {false, false, true},   // FT-100D
    {false, false, true},   // VR-5000
    {true, false, true},    // IC-820
    {true, false, true},    // IC-821
    {true, true, true},     // IC-910
    {true, false, true},    // IC-970
    {true, false, true},    // IC-706
    {true, false, true},    // IC-706MKII
    {false, false, false},  // PCR1000
    {true, false, true},    // IC-706MKIIG
    {false, false, true},   // TS-790
    {false, true, true},    // TS-2000
    {false, false, true},   // TS-50
    {false, true, false},   // AOR receiver
};

// FM transponder modes, whose receivers click on every retune.
bool isFmMode(int commMode) {
    switch (commMode) {
        case CommMode::REPEATER:
        case CommMode::J_FM:
        case CommMode::SIMP_FM:
        case CommMode::B_FM:
        case CommMode::WIDE_FM:
            return true;
        default:
            return false;
    }
}

// The frequencies last handed to the radio, for the FM retune threshold.
struct FmSent {
    double up, down;  // MHz
    int radio;
    bool valid;
};
FmSent gFmSent{0, 0, -1, false};

// True when an FM retune may be left out: the computed frequencies moved by
// no more than the threshold since the last ones sent to the same radio.
bool withinFmThreshold(const SiteRec* site, int commMode, double up, double down) {
    if (site->fmRetuneHz <= 0 || !isFmMode(commMode) || !gFmSent.valid ||
        gFmSent.radio != site->radio)
        return false;
    const double limit = site->fmRetuneHz / 1000000.0;
    return std::fabs(up - gFmSent.up) <= limit && std::fabs(down - gFmSent.down) <= limit;
}

void storeSwitch(Bool32* field, const char* key, bool on, RadioUi* ui) {
    *field = on ? 1 : 0;
    if (ui) ui->storeBool(key, on);
}

}  // namespace

int SetVFO(int radio, int fd, int icomAddress, double upMHz, double downMHz, int commMode,
           int gTone, int gCTone, bool force, bool debug) {
    if (radio == kDisconnectedRadio) return 0;
    const RadioDriver* driver = RadioDriverFor(radio);
    if (!driver || !driver->setFrequencies) return 0;
    beginDeviceCall(fd);
    const int done = driver->setFrequencies(fd, icomAddress, upMHz, downMHz, commMode, gTone,
                                            gCTone, force, debug);
    // The drivers ignore some acknowledgements; a radio that answered nothing
    // at all, or a line that refused the bytes, still fails the call.
    return done && deviceCallStatus(fd).fault == LineFault::kNone ? 1 : 0;
}

int Band(double mhz) {
    if (mhz <= 30.0) return 1;
    if (mhz < 144.0) return -1;
    if (mhz < 430.0) return 2;
    if (mhz < 500.0) return 3;
    if (mhz > 500.0) return 4;
    return -1;  // exactly 500 MHz belongs to no band
}

void formatFreq(double mhz, char* text, size_t size) {
    if (!text || size == 0) return;
    std::snprintf(text, size, "%03.5f", mhz);
}

ModeRec* SelectedMode(SatRec* sat) {
    if (!sat || sat->selectedModeIndex < 0 || sat->selectedModeIndex >= kMaxModes) return nullptr;
    return &sat->modes[sat->selectedModeIndex];
}

void calculateFrequencies(VFORec* vfo, const SiteRec* site, const ModeRec* mode) {
    if (!vfo || !site || !mode) return;
    const int commMode = mode->commMode;
    vfo->inverting = isInvertingMode(commMode) ? 1 : 0;
    vfo->uncorrected_up = mode->upFreq;
    vfo->uncorrected_down = mode->downFreq;
    vfo->uncorrected_beacon = mode->beaconFreq;
    const double u0 = mode->TXOffset + mode->upFreq - mode->txVrtrUp;
    const double d0 = mode->RXOffset + mode->downFreq - mode->txVrtrDn;
    if (site->listenForBeacon) {
        vfo->up = 0.0;
        // The beacon comes down through the downlink transverter.
        vfo->down = mode->BEOffset + mode->beaconFreq - mode->txVrtrDn + vfo->dopplerBE;
    } else if (site->fullDopplerTuning || !vfo->inverting) {
        vfo->up = u0 - vfo->dopplerTX;
        vfo->down = d0 + vfo->dopplerRX;
    } else if (commMode == CommMode::JA_SSB || commMode == CommMode::JA_CW) {
        // Downlink-only tuning: the whole correction goes on the downlink.
        vfo->up = u0;
        vfo->down = d0 - vfo->dopplerTX + vfo->dopplerRX;
    } else {
        // B_SSB and B_CW keep the downlink fixed and correct the uplink.
        vfo->down = d0;
        vfo->up = u0 - vfo->dopplerTX + vfo->dopplerRX;
    }
}

int updateVFO(VFORec* vfo, SiteRec* site, SatRec* mainSat, const SatRec* bpSat, bool force,
              RadioUi* ui) {
    if (!vfo || !site) return 1;
    const ModeRec* mode = SelectedMode(mainSat);
    calculateFrequencies(vfo, site, mode);
    if (!site->vfo_enabled || site->radioPortFileDescriptor == -1) return 1;
    if (mainSat && !mainSat->AOS && bpSat && bpSat->enabled) {
        // Between passes the radio is set up for the between-passes mode.
        mode = &bpSat->modes[0];
        force = true;
    }
    if (!mode) return 1;
    if (!force && withinFmThreshold(site, mode->commMode, vfo->up, vfo->down)) return 1;
    if (SetVFO(site->radio, site->radioPortFileDescriptor, site->icomAddress, vfo->up, vfo->down,
               mode->commMode, mode->gTone, mode->gCTone, force, site->debug != 0)) {
        gFmSent = {vfo->up, vfo->down, site->radio, true};
        return 1;
    }
    gFmSent.valid = false;
    if (IsHamlibRadio(site->radioPortFileDescriptor))
        std::fprintf(stderr, "radio Hamlib model %d: %s\n", site->hamlibRadioModel,
                     HamlibRadioError(site->radioPortFileDescriptor).c_str());
    if (ui) ui->beep();
    site->vfo_enabled = 0;
    if (ui) ui->setRadioChecked(false);
    return 0;
}

void startRadioDriver(const SiteRec* site) {
    if (!site || !site->vfo_enabled) return;
    SetCommandDelay(site->commandDelay);
    beginDeviceCall(site->radioPortFileDescriptor);
    const RadioDriver* driver = RadioDriverFor(site->radio);
    if (driver && driver->start) driver->start(site->radioPortFileDescriptor, site->debug != 0);
}

void stopRadioDriver(const SiteRec* site) {
    if (!site || !site->vfo_enabled) return;
    beginDeviceCall(site->radioPortFileDescriptor);
    const RadioDriver* driver = RadioDriverFor(site->radio);
    if (driver && driver->stop) driver->stop(site->radioPortFileDescriptor, site->debug != 0);
}

int checkTuningDial(const VFORec* vfo, const SiteRec* site, ModeRec* mode) {
    if (!vfo || !site || !mode || !site->vfo_enabled || !site->dial_tracking_enabled) return 0;
    const RadioDriver* driver = RadioDriverFor(site->radio);
    if (!driver || !driver->downlinkChanged) return 0;
    int32_t changeHz = 0;
    beginDeviceCall(site->radioPortFileDescriptor);
    if (!driver->downlinkChanged(site->radioPortFileDescriptor, site->icomAddress, &changeHz,
                                 site->debug != 0)) {
        return 0;
    }
    const double d = changeHz / 1000000.0;
    if (std::fabs(d) >= kDialLimitMHz) return 0;
    if (site->listenForBeacon) {
        mode->BEOffset += d;
    } else {
        mode->RXOffset += d;
        if (site->vfo_locked) mode->TXOffset += vfo->inverting ? -d : d;
    }
    return 1;
}

void checkSquelch(VFORec* vfo, const SiteRec* site, RadioUi* ui) {
    if (!vfo || !site || !site->vfo_enabled || !site->s_meter_enabled) return;
    const RadioDriver* driver = RadioDriverFor(site->radio);
    if (!driver || !driver->squelched) return;
    beginDeviceCall(site->radioPortFileDescriptor);
    const int closed = driver->squelched(site->radioPortFileDescriptor, vfo, site->debug != 0);
    vfo->squelched = closed ? 1 : 0;
    if (!ui) return;
    if (closed)
        ui->setSMeter(0);
    else
        ui->setSMeter(static_cast<int>(vfo->signalStrength * driver->sMeterFactor));
}

void applyUplinkStepper(ModeRec* mode, bool inverting, bool locked, double previousUp,
                        double upValue, double* downStepper) {
    if (!mode) return;
    mode->TXOffset = upValue;
    if (!locked || !downStepper) return;
    const double change = upValue - previousUp;
    *downStepper += inverting ? -change : change;
    mode->RXOffset = *downStepper;
}

void applyDownlinkStepper(ModeRec* mode, bool inverting, bool locked, double previousDown,
                          double downValue, double* upStepper) {
    if (!mode) return;
    mode->RXOffset = downValue;
    if (!locked || !upStepper) return;
    const double change = downValue - previousDown;
    *upStepper += inverting ? -change : change;
    mode->TXOffset = *upStepper;
}

void applySliderMove(ModeRec* mode, bool inverting, bool locked, double sliderValue,
                     double* previousSlider) {
    if (!mode || !previousSlider) return;
    const double d = (sliderValue - *previousSlider) / 100.0;
    if (!locked) {
        mode->TXOffset += d;
    } else {
        mode->RXOffset += d;
        mode->TXOffset += inverting ? -d : d;
    }
    *previousSlider = sliderValue;
}

void setFullDopplerTuning(SiteRec* site, bool on, RadioUi* ui) {
    if (site) storeSwitch(&site->fullDopplerTuning, prefkeys::kFullDopplerTuning, on, ui);
}

void setListenForBeacon(SiteRec* site, bool on, RadioUi* ui) {
    if (site) storeSwitch(&site->listenForBeacon, prefkeys::kBeaconEnabled, on, ui);
}

void setVfoLocked(SiteRec* site, bool on, RadioUi* ui) {
    if (site) storeSwitch(&site->vfo_locked, prefkeys::kVfoLocked, on, ui);
}

RadioPrefsControls radioPrefsControls(int radio) {
    if (radio == kHamlibRadio) return {false, true, true};
    if (radio < 0 || radio >= kRadioCount) return {false, false, false};
    return kPrefsControls[radio];
}

}  // namespace veloran
