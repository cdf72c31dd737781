// Rotor steering: target, park, flip, hand steering, the rotor port switch
// and the rotor panel.

#include "rotor/steering.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <string>

#include "data/settings.h"
#include "rotor/hamlibrotor.h"
#include "rotor/rotor.h"
#include "serial/serial.h"

namespace veloran {

namespace {

// The elevation control is a circle: 0 is the zenith, 270 the near horizon,
// 90 the far horizon reached over the top; 91..269 lie below the ground.
constexpr int kElevationControlZenith = 90;    // v <= 90: elevation v + 90
constexpr int kElevationControlHorizon = 270;  // v >= 270: elevation v - 270

const PortNameRecord* portAt(const PortNameRecord* ports, int index) {
    if (!ports || index < 0 || index >= kMaxSerialPorts || ports[index].bsdPath[0] == 0)
        return nullptr;
    return &ports[index];
}

void panelLine(char* out, size_t size, const char* label, double value) {
    if (!out || size == 0) return;
    char number[32];  // a rotor angle; larger values do not fit and print nothing
    const auto result =
        std::to_chars(number, number + sizeof number - 1, value, std::chars_format::fixed, 2);
    *result.ptr = 0;
    std::snprintf(out, size, "%s%s", label, result.ec == std::errc() ? number : "");
}

}  // namespace

bool rotorFlipped(const SiteRec* site) {
    return site && site->deadSpotCrossed && site->deadSpotState != 0 && rotorIsAzEl(site->rotor);
}

int rotorTarget(const SiteRec* site, const SatRec* sat, bool oneMinuteWarning, double* azimuth,
                double* elevation) {
    if (!site || !sat || !azimuth || !elevation || site->rotor_manual) return 0;
    if (!sat->AOS && site->park && !oneMinuteWarning) {
        *azimuth = site->siteParkAz;
        *elevation = site->siteParkEl;
    } else if (rotorFlipped(site)) {
        // Over the top: the antenna looks back across the elevation axis, so
        // the azimuth rotator turns half a circle less and never reaches the
        // end stop while the satellite crosses the dead spot.
        const double az = sat->azimuthDegs;
        *azimuth = (az <= 180.0 ? az + 180.0 : az - 180.0) + site->siteAzOffset;
        *elevation = 180.0 - sat->elevationDegs + site->siteElOffset;
    } else {
        // Also the pre-positioning before AOS: the satellite is still below
        // the horizon and the send path holds the elevation at 0.
        *azimuth = sat->azimuthDegs + site->siteAzOffset;
        *elevation = sat->elevationDegs + site->siteElOffset;
    }
    return 1;
}

int steerRotor(SiteRec* site, const SatRec* sat, bool oneMinuteWarning) {
    double az = 0.0;
    double el = 0.0;
    if (!rotorTarget(site, sat, oneMinuteWarning, &az, &el)) return 0;
    site->rotor_az = az;
    site->rotor_el = el;
    if (!site->rotor_enabled) return 0;
    return SendAzEl(site->rotor, site->rotorPortFileDescriptor, az, el, site->debug != 0);
}

void moveRotorByHand(SiteRec* site, bool manual, int azimuthControl, int elevationControl,
                     const SatRec* sat, bool oneMinuteWarning, RotorUi* ui) {
    if (!site) return;
    site->rotor_manual = manual ? 1 : 0;
    if (ui) ui->storeBool(prefkeys::kRotorManual, manual);
    if (!manual) {
        steerRotor(site, sat, oneMinuteWarning);
        return;
    }
    site->rotor_az = azimuthControl;
    if (elevationControl <= kElevationControlZenith) {
        site->rotor_el = elevationControl + 90;
    } else if (elevationControl >= kElevationControlHorizon) {
        site->rotor_el = elevationControl - 270;
    } else {
        if (ui) ui->beep();
        site->rotor_el = 0;
        if (ui) ui->setElevationControl(kElevationControlHorizon);
    }
    if (site->rotor_enabled) {
        SendAzEl(site->rotor, site->rotorPortFileDescriptor, site->rotor_az, site->rotor_el,
                 site->debug != 0);
    }
}

// Closes whatever the rotor descriptor stands for: a serial port or a Hamlib
// connection.
void closeRotor(SiteRec* site, bool debug) {
    if (IsHamlibRotor(site->rotorPortFileDescriptor))
        CloseHamlibRotor(site->rotorPortFileDescriptor);
    else
        closeSerialPort(site->rotorPortFileDescriptor, debug);
    site->rotorPortFileDescriptor = -1;
}

int openRotor(SiteRec* site, const char* path, bool debug) {
    if (site->rotor != kHamlibRotor)
        return openSerialPort(path, site->rotorBaud, site->radio, debug);
    const int baud = site->rotorBaud >= 0 && site->rotorBaud < kBaudTableSize
                         ? kBaudTable[site->rotorBaud].bitsPerSecond
                         : 0;
    std::string why;
    const int fd = OpenHamlibRotor(site->hamlibRotorModel, path, baud, debug, &why);
    if (fd == -1)
        std::fprintf(stderr, "rotor Hamlib model %d on %s: %s\n", site->hamlibRotorModel, path,
                     why.c_str());
    return fd;
}

int switchRotorPort(SiteRec* site, bool checked, const PortNameRecord* ports, RotorUi* ui,
                    int* openError) {
    if (openError) *openError = 0;
    if (!site) return 0;
    const bool debug = site->debug != 0;
    if (debug) std::fprintf(stderr, "connectToRotor, state : %d\n", checked ? 1 : 0);
    int open = 0;
    if (!checked) {
        stopRotorDriver(site->rotor, site->rotorPortFileDescriptor, debug);
        closeRotor(site, debug);
        site->rotor_enabled = 0;
    } else {
        if (site->rotorPortFileDescriptor != -1) {
            stopRotorDriver(site->rotor, site->rotorPortFileDescriptor, debug);
            closeRotor(site, debug);
        }
        const PortNameRecord* port = portAt(ports, site->rotorPort);
        if (!port) {
            if (ui) ui->beep();
            if (debug) std::fprintf(stderr, "No serial port found.\n");
            site->rotor_enabled = 0;
            site->rotorPortFileDescriptor = -1;
            if (ui) ui->setRotorChecked(false);
        } else {
            site->rotorPortFileDescriptor = openRotor(site, port->bsdPath, debug);
            if (site->rotorPortFileDescriptor == -1 && openError) *openError = errno;
            if (site->rotorPortFileDescriptor != -1) {
                if (debug) std::fprintf(stderr, "Serial port %s open.\n", port->userName);
                site->rotor_enabled = 1;
                startRotorDriver(site->rotor, site->rotorPortFileDescriptor, debug);
                open = 1;
            } else {
                if (ui) ui->beep();
                if (debug) std::fprintf(stderr, "Serial port %s open failed.\n", port->userName);
                site->rotor_enabled = 0;
                if (ui) ui->setRotorChecked(false);
            }
        }
    }
    if (ui) ui->storeBool(prefkeys::kRotorEnabled, site->rotor_enabled != 0);
    return open;
}

void rotorPanelTexts(const SiteRec* site, char* azimuthText, size_t azimuthSize,
                     char* elevationText, size_t elevationSize) {
    if (!site) return;
    panelLine(azimuthText, azimuthSize, "Azimuth: ", site->rotor_az);
    panelLine(elevationText, elevationSize, "Elevation: ", site->rotor_el);
}

void showRotorPanel(const SiteRec* site, RotorUi* ui) {
    if (!site || !ui) return;
    char az[64];
    char el[64];
    rotorPanelTexts(site, az, sizeof az, el, sizeof el);
    ui->setRotorPanel(az, el);
}

}  // namespace veloran
