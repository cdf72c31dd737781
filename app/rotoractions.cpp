// The rotor's actions: the steering step of each tick, hand steering, the
// rotor port and the rotor panel.

#include "app/appcontroller.h"
#include "data/settings.h"
#include "rotor/rotor.h"
#include "rotor/steering.h"

namespace veloran {

namespace {

// A position query costs a command and a reply on the rotor's line; every
// five seconds keeps the plot current without crowding the steering.
constexpr int32_t kRotorReadEveryTicks = 5;

}  // namespace

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
    switchRotorPort(&mSite, checked, mPortNames.get(), &mRotorUi);
}

void AppController::readRotorPosition() {
    const bool wanted = !services_.defaults->contains(prefkeys::kRotorReadBack) ||
                        services_.defaults->boolForKey(prefkeys::kRotorReadBack);
    if (!wanted || !mSite.rotor_enabled || mSite.rotorPortFileDescriptor < 0) {
        mRotorPositionKnown = false;
        return;
    }
    if (--mRotorReadCountdown > 0) return;
    mRotorReadCountdown = kRotorReadEveryTicks;
    double azimuth = 0, elevation = 0;
    if (GetAzEl(mSite.rotor, mSite.rotorPortFileDescriptor, &azimuth, &elevation,
                mSite.debug != 0)) {
        mRotorReadAz = azimuth;
        mRotorReadEl = elevation;
        mRotorPositionKnown = true;
    }
}

int AppController::rotorPosition(double* azimuth, double* elevation) const {
    if (!mRotorPositionKnown) return 0;
    *azimuth = mRotorReadAz;
    *elevation = mRotorReadEl;
    return 1;
}

void AppController::updateRotorPanel() {
    showRotorPanel(&mSite, &mRotorUi);
}

}  // namespace veloran
