// The radio panel's and the gateway's actions: the ports, tuning, the trim
// steppers and slider, the tuning switches, and the panel's texts.

#include <cstdio>
#include <cstring>

#include "app/appcontroller.h"
#include "radio/portswitch.h"
#include "radio/tuning.h"
#include "serial/serial.h"

namespace veloran {

void AppController::RadioOutlets::beep() {
    app->services_.ui->beep();
}
void AppController::RadioOutlets::setRadioChecked(bool on) {
    app->services_.ui->setRadioChecked(on);
}
void AppController::RadioOutlets::setGatewayChecked(bool on) {
    app->services_.ui->setGatewayChecked(on);
}
void AppController::RadioOutlets::setSMeter(int level) {
    app->services_.ui->setSMeter(level);
}
void AppController::RadioOutlets::storeBool(const char* key, bool value) {
    app->services_.defaults->setBool(key, value);
}

void AppController::openCloseRadio(bool checked) {
    mDevices[kRadioDevice].wanted = checked;
    mDevices[kRadioDevice].said.clear();
    int error = 0;
    // At start-up the first tick tunes the radio for the main satellite, once
    // the options have chosen it and every port is open; tuning here too
    // would tune (and announce) a satellite that may not be the one worked.
    if (switchRadioPort(&mSite, checked, mPortNames.get(), services_.versionString.c_str(),
                        &mRadioUi, &error) == 1) {
        if (!mFirstTimeMainTimerTask) HandleNewSatellite();
    } else if (checked) {
        sayDevice(kRadioDevice, deviceName(kRadioDevice) + ": " +
                                    (error ? serialErrorText(error) : "no serial port"));
        mDevices[kRadioDevice].nextTry = services_.clock->dateTimeUTC() + kDeviceRetrySeconds;
    }
}

void AppController::openCloseGateway(bool checked) {
    mDevices[kGatewayDevice].wanted = checked;
    mDevices[kGatewayDevice].said.clear();
    int error = 0;
    if (switchGatewayPort(&mSite, checked, mPortNames.get(), &mRadioUi, &error) != 1 && checked) {
        sayDevice(kGatewayDevice, deviceName(kGatewayDevice) + ": " +
                                      (error ? serialErrorText(error) : "no serial port"));
        mDevices[kGatewayDevice].nextTry = services_.clock->dateTimeUTC() + kDeviceRetrySeconds;
    }
    publishAnnouncementSettings();
}

int AppController::addTypedPort(const char* path) {
    const int index = veloran::addTypedPort(mPortNames.get(), path);
    if (index >= 0) {
        std::vector<std::string> names;
        for (int i = 0; i < kMaxSerialPorts && mPortNames[i].bsdPath[0] != '\0'; ++i)
            names.emplace_back(mPortNames[i].userName);
        services_.ui->setSerialPortItems(names);
    }
    return index;
}

void AppController::updateVFO(int force) {
    if (veloran::updateVFO(&mVFO, &mSite, mainSatellite(), BPSatRec.get(), force != 0, &mRadioUi) ==
        0)
        radioFailed();
}

void AppController::displaySatName() {
    const SatRec* sat = mainSatellite();
    if (sat != nullptr) services_.ui->setRadioPanelTitle(std::string("Veloran: ") + sat->name);
}

void AppController::updateVFOPanel() {
    char up[32], down[32], upTrim[32] = "0.00000", downTrim[32] = "0.00000", upLine[48],
                           downLine[48];
    formatFreq(mVFO.up, up, sizeof up);
    formatFreq(mVFO.down, down, sizeof down);
    if (const ModeRec* mode = SelectedMode(mainSatellite())) {
        std::snprintf(upTrim, sizeof upTrim, "%01.5f", mode->TXOffset);
        std::snprintf(downTrim, sizeof downTrim, "%01.5f", mode->RXOffset);
    }
    std::snprintf(upLine, sizeof upLine, "Uplink: %03.5f", mVFO.up);
    std::snprintf(downLine, sizeof downLine, "Downlink: %03.5f", mVFO.down);
    services_.ui->setVfoPanel(up, down, upTrim, downTrim, upLine, downLine);
}

void AppController::updateRadioPrefsPanel() {
    const RadioPrefsControls controls = radioPrefsControls(mSite.radio);
    services_.ui->setRadioPrefsControls(controls.icomAddress, controls.sMeter,
                                        controls.dialTracking);
}

void AppController::showTrimsAndFrequencies() {
    services_.ui->setTrimSteppers(mUplinkStepper, mDownlinkStepper);
    updateVFO(0);
    updateVFOPanel();
    mSaveTweaksLater = true;
}

void AppController::uplinkClicked(double value) {
    ModeRec* mode = SelectedMode(mainSatellite());
    if (mode == nullptr) return;
    applyUplinkStepper(mode, mVFO.inverting != 0, mSite.vfo_locked != 0, mUplinkStepper, value,
                       &mDownlinkStepper);
    mUplinkStepper = value;
    showTrimsAndFrequencies();
}

void AppController::downlinkClicked(double value) {
    ModeRec* mode = SelectedMode(mainSatellite());
    if (mode == nullptr) return;
    applyDownlinkStepper(mode, mVFO.inverting != 0, mSite.vfo_locked != 0, mDownlinkStepper, value,
                         &mUplinkStepper);
    mDownlinkStepper = value;
    showTrimsAndFrequencies();
}

void AppController::vfoSliderMoved(double value) {
    ModeRec* mode = SelectedMode(mainSatellite());
    if (mode == nullptr) return;
    applySliderMove(mode, mVFO.inverting != 0, mSite.vfo_locked != 0, value, &lastPosition);
    showTrimsAndFrequencies();
}

void AppController::fullDopplerTuningChanged(bool on) {
    setFullDopplerTuning(&mSite, on, &mRadioUi);
}

void AppController::vfoLockChanged(bool on) {
    setVfoLocked(&mSite, on, &mRadioUi);
}

void AppController::beaconChanged(bool on) {
    setListenForBeacon(&mSite, on, &mRadioUi);
    updateVFO(1);
}

void AppController::radioDriverChanged(int index) {
    mSite.radio = index;
    updateRadioPrefsPanel();
}

}  // namespace veloran
