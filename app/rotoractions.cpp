// The rotor's actions: the steering step of each tick, hand steering, the
// rotor port and the rotor panel.

#include "app/appcontroller.h"
#include "rotor/steering.h"
#include "serial/serial.h"

namespace veloran {

void AppController::RotorOutlets::beep() {
    app->services_.ui->beep();
}
void AppController::RotorOutlets::setRotorChecked(bool on) {
    app->services_.ui->setRotorChecked(on);
}
void AppController::RotorOutlets::setElevationControl(int value) {
    app->services_.ui->setElevationControl(value);
}
void AppController::RotorOutlets::setRotorPanel(const char* azimuthText,
                                                const char* elevationText) {
    app->services_.ui->setRotorPanel(azimuthText, elevationText);
}
void AppController::RotorOutlets::storeBool(const char* key, bool value) {
    app->services_.defaults->setBool(key, value);
}

void AppController::updateRotors() {
    steerRotor(&mSite, mainSatellite(), mGiveOneMinuteWarning);
}

void AppController::az_el_Moved(bool manualSwitchOn, int azimuth, int elevation) {
    moveRotorByHand(&mSite, manualSwitchOn, azimuth, elevation, mainSatellite(),
                    mGiveOneMinuteWarning, &mRotorUi);
}

void AppController::openCloseRotor(bool checked) {
    mDevices[kRotorDevice].wanted = checked;
    mDevices[kRotorDevice].said.clear();
    int error = 0;
    if (switchRotorPort(&mSite, checked, mPortNames.get(), &mRotorUi, &error) != 1 && checked) {
        sayDevice(kRotorDevice, deviceName(kRotorDevice) + ": " +
                                    (error ? serialErrorText(error) : "no serial port"));
        mDevices[kRotorDevice].nextTry = services_.clock->dateTimeUTC() + kDeviceRetrySeconds;
    }
}

void AppController::updateRotorPanel() {
    showRotorPanel(&mSite, &mRotorUi);
}

}  // namespace veloran
