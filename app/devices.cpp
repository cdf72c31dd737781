// Devices lost and found: a port whose device went away is closed and said
// once; a device the user wants on is tried again every few seconds until it
// is back. Also the saved port paths, which find a device again after the
// ports were renumbered.

#include <cerrno>
#include <cstdio>
#include <string>

#include "app/appcontroller.h"
#include "radio/drivers.h"
#include "radio/hamlibradio.h"
#include "radio/portswitch.h"
#include "radio/tuning.h"
#include "rotor/hamlibrotor.h"
#include "rotor/rotor.h"
#include "rotor/steering.h"
#include "serial/serial.h"

namespace veloran {

namespace {

const char* const kPortPathKeys[3] = {prefkeys::kRadioPortPath, prefkeys::kRotorPortPath,
                                      prefkeys::kGatewayPortPath};

}  // namespace

int& AppController::deviceFd(int device) {
    if (device == kRadioDevice) return mSite.radioPortFileDescriptor;
    if (device == kRotorDevice) return mSite.rotorPortFileDescriptor;
    return mSite.gatewayPortFileDescriptor;
}

bool AppController::deviceEnabled(int device) const {
    if (device == kRadioDevice) return mSite.vfo_enabled != 0;
    if (device == kRotorDevice) return mSite.rotor_enabled != 0;
    return mSite.gateway_enabled != 0;
}

std::string AppController::deviceName(int device) const {
    std::string name;
    int port = mSite.gatewayPort;
    if (device == kRadioDevice) {
        const RadioDriver* driver = RadioDriverFor(mSite.radio);
        name = std::string("radio ") + (driver ? driver->model : "?");
        port = mSite.radioPort;
    } else if (device == kRotorDevice) {
        const char* model = rotorName(mSite.rotor);
        name = std::string("rotor ") + (model ? model : "?");
        port = mSite.rotorPort;
    } else {
        name = "gateway";
    }
    const bool listed = port >= 0 && port < kMaxSerialPorts && mPortNames[port].bsdPath[0] != 0;
    return name + " on " + (listed ? mPortNames[port].bsdPath : "no port");
}

void AppController::sayDevice(int device, const std::string& text) {
    DeviceWatch& watch = mDevices[device];
    if (text == watch.said) return;
    watch.said = text;
    services_.ui->setDeviceMessage(text);
    if (services_.log != nullptr) {
        std::fprintf(services_.log, "veloran: %s\n", text.c_str());
        std::fflush(services_.log);
    }
}

void AppController::deviceLost(int device, int error) {
    int& fd = deviceFd(device);
    if (IsHamlibRadio(fd))
        CloseHamlibRadio(fd);
    else if (IsHamlibRotor(fd))
        CloseHamlibRotor(fd);
    else
        closeSerialPort(fd, mSite.debug != 0);
    fd = -1;
    UserInterface* ui = services_.ui;
    if (device == kRadioDevice) {
        mSite.vfo_enabled = 0;
        ui->setRadioChecked(false);
    } else if (device == kRotorDevice) {
        mSite.rotor_enabled = 0;
        ui->setRotorChecked(false);
    } else {
        mSite.gateway_enabled = 0;
        ui->setGatewayChecked(false);
        publishAnnouncementSettings();
    }
    ui->beep();
    sayDevice(device, deviceName(device) + ": " + serialErrorText(error) + ", port closed");
    mDevices[device].nextTry = services_.clock->dateTimeUTC() + kDeviceRetrySeconds;
}

void AppController::radioFailed() {
    const int fd = mSite.radioPortFileDescriptor;
    const LineStatus status = deviceCallStatus(fd);
    if (status.fault == LineFault::kGone) {
        deviceLost(kRadioDevice, status.error);
        return;
    }
    const char* reason =
        status.fault == LineFault::kNone ? "no valid answer" : lineFaultText(status);
    sayDevice(kRadioDevice, deviceName(kRadioDevice) + ": " + reason);
    mDevices[kRadioDevice].nextTry = services_.clock->dateTimeUTC() + kDeviceRetrySeconds;
}

void AppController::retryDevice(int device) {
    DeviceWatch& watch = mDevices[device];
    const uint32_t now = services_.clock->dateTimeUTC();
    if (now < watch.nextTry) return;
    watch.nextTry = now + kDeviceRetrySeconds;
    int error = 0;
    bool back = false;
    if (device == kRadioDevice) {
        // Reopened even when the port stayed open (a radio that stopped
        // answering), so that what was learnt about the line starts afresh.
        if (switchRadioPort(&mSite, true, mPortNames.get(), services_.versionString.c_str(),
                            nullptr, &error) != 1) {
            sayDevice(device, deviceName(device) + ": " + serialErrorText(error));
            return;
        }
        if (veloran::updateVFO(&mVFO, &mSite, mainSatellite(), BPSatRec.get(), true, nullptr) !=
                1 ||
            !mSite.vfo_enabled) {
            mSite.vfo_enabled = 0;
            radioFailed();
            return;
        }
        services_.ui->setRadioChecked(true);
        back = true;
    } else if (device == kRotorDevice) {
        if (switchRotorPort(&mSite, true, mPortNames.get(), nullptr, &error) != 1) {
            sayDevice(device, deviceName(device) + ": " + serialErrorText(error));
            return;
        }
        services_.ui->setRotorChecked(true);
        // The antenna may have been turned by hand meanwhile: send the
        // position even if it has not changed since the port went.
        ResetRotorSendState();
        updateRotors();
        back = true;
    } else {
        if (switchGatewayPort(&mSite, true, mPortNames.get(), nullptr, &error) != 1) {
            sayDevice(device, deviceName(device) + ": " + serialErrorText(error));
            return;
        }
        services_.ui->setGatewayChecked(true);
        publishAnnouncementSettings();
        back = true;
    }
    if (back) {
        sayDevice(device, deviceName(device) + " is back");
        watch.said.clear();
    }
}

void AppController::superviseDevices() {
    for (int device = kRadioDevice; device <= kGatewayDevice; ++device) {
        const int fd = deviceFd(device);
        if (fd != -1 && serialPortLost(fd)) {
            const LineStatus status = deviceCallStatus(fd);
            deviceLost(device, status.error != 0 ? status.error : EIO);
            continue;
        }
        if (mDevices[device].wanted && !deviceEnabled(device) && mReopenDevices)
            retryDevice(device);
    }
}

void AppController::readPortPaths() {
    UserDefaults* defaults = services_.defaults;
    mReopenDevices = !defaults->contains(prefkeys::kReopenDevices) ||
                     defaults->boolForKey(prefkeys::kReopenDevices);
    int32_t* indices[3] = {&mSite.radioPort, &mSite.rotorPort, &mSite.gatewayPort};
    for (int device = kRadioDevice; device <= kGatewayDevice; ++device) {
        const std::string path = defaults->stringForKey(kPortPathKeys[device]);
        if (path.empty()) continue;
        int index = findPortByPath(mPortNames.get(), path.c_str());
        if (index < 0) index = addMissingPort(mPortNames.get(), path.c_str());
        if (index >= 0) *indices[device] = index;
    }
}

void AppController::savePortPaths() {
    const int32_t indices[3] = {mSite.radioPort, mSite.rotorPort, mSite.gatewayPort};
    for (int device = kRadioDevice; device <= kGatewayDevice; ++device) {
        const int index = indices[device];
        if (index < 0 || index >= kMaxSerialPorts || mPortNames[index].bsdPath[0] == 0) continue;
        services_.defaults->setString(kPortPathKeys[device],
                                      stablePortPath(mPortNames[index].bsdPath));
    }
}

}  // namespace veloran
