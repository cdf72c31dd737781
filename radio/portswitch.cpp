// Opening and closing the radio and gateway ports as their check boxes turn.

#include "radio/portswitch.h"

#include <cerrno>
#include <cstdio>
#include <string>

#include "data/settings.h"
#include "radio/hamlibradio.h"
#include "radio/tuning.h"
#include "serial/serial.h"

namespace veloran {

namespace {

// Closes whatever the radio descriptor stands for: a serial port or a
// Hamlib connection.
void closeRadio(SiteRec* site, bool debug) {
    if (IsHamlibRadio(site->radioPortFileDescriptor))
        CloseHamlibRadio(site->radioPortFileDescriptor);
    else
        closeSerialPort(site->radioPortFileDescriptor, debug);
    site->radioPortFileDescriptor = -1;
}

int openRadio(SiteRec* site, const char* path, bool debug) {
    if (site->radio != kHamlibRadio)
        return openSerialPort(path, site->radioBaud, site->radio, debug);
    const int baud = site->radioBaud >= 0 && site->radioBaud < kBaudTableSize
                         ? kBaudTable[site->radioBaud].bitsPerSecond
                         : 0;
    std::string why;
    const int fd = OpenHamlibRadio(site->hamlibRadioModel, path, baud, debug, &why);
    // A radio Hamlib cannot reach is worth a line whether or not debug is on.
    if (fd == -1)
        std::fprintf(stderr, "radio Hamlib model %d on %s: %s\n", site->hamlibRadioModel, path,
                     why.c_str());
    return fd;
}

const PortNameRecord* portAt(const PortNameRecord* ports, int index) {
    if (!ports || index < 0 || index >= kMaxSerialPorts || ports[index].bsdPath[0] == 0)
        return nullptr;
    return &ports[index];
}

}  // namespace

int switchRadioPort(SiteRec* site, bool checked, const PortNameRecord* ports,
                    const char* versionString, RadioUi* ui, int* openError) {
    if (openError) *openError = 0;
    if (!site) return 0;
    const bool debug = site->debug != 0;
    if (debug) std::fprintf(stderr, "connectToRadio, state : %d\n", checked ? 1 : 0);
    const char* version = versionString ? versionString : "";
    int open = 0;
    if (!checked) {
        stopRadioDriver(site);
        closeRadio(site, debug);
        site->vfo_enabled = 0;
    } else {
        if (site->radioPortFileDescriptor != -1) {
            stopRadioDriver(site);
            closeRadio(site, debug);
        }
        const PortNameRecord* port = portAt(ports, site->radioPort);
        if (!port) {
            if (ui) ui->beep();
            if (debug) std::fprintf(stderr, "No serial port found.\n");
            site->vfo_enabled = 0;
            site->radioPortFileDescriptor = -1;
            if (ui) ui->setRadioChecked(false);
        } else {
            site->radioPortFileDescriptor = openRadio(site, port->bsdPath, debug);
            if (site->radioPortFileDescriptor == -1 && openError) *openError = errno;
            if (site->radioPortFileDescriptor != -1) {
                if (debug)
                    std::fprintf(stderr, "Radio serial port %s open. v%s.\n", port->userName,
                                 version);
                site->vfo_enabled = 1;
                startRadioDriver(site);
                open = 1;
            } else {
                if (ui) ui->beep();
                if (debug)
                    std::fprintf(stderr, "Radio serial port %s open failed. v%s.\n", port->userName,
                                 version);
                site->vfo_enabled = 0;
                if (ui) ui->setRadioChecked(false);
            }
        }
    }
    if (ui) ui->storeBool(prefkeys::kVfoEnabled, site->vfo_enabled != 0);
    return open;
}

int switchGatewayPort(SiteRec* site, bool checked, const PortNameRecord* ports, RadioUi* ui,
                      int* openError) {
    if (openError) *openError = 0;
    if (!site) return 0;
    const bool debug = site->debug != 0;
    if (debug) std::fprintf(stderr, "connectToGateway, state : %d\n", checked ? 1 : 0);
    int open = 0;
    if (!checked) {
        closeSerialPort(site->gatewayPortFileDescriptor, debug);
        site->gateway_enabled = 0;
        site->gatewayPortFileDescriptor = -1;
    } else {
        if (site->gatewayPortFileDescriptor != -1) {
            closeSerialPort(site->gatewayPortFileDescriptor, debug);
            site->gatewayPortFileDescriptor = -1;
        }
        const PortNameRecord* port = portAt(ports, site->gatewayPort);
        if (!port) {
            if (ui) ui->beep();
            if (debug) std::fprintf(stderr, "No serial port found.\n");
            site->gateway_enabled = 0;
            site->gatewayPortFileDescriptor = -1;
            if (ui) ui->setGatewayChecked(false);
        } else {
            site->gatewayPortFileDescriptor =
                openSerialPort(port->bsdPath, site->gatewayBaud, site->radio, debug);
            if (site->gatewayPortFileDescriptor == -1 && openError) *openError = errno;
            if (site->gatewayPortFileDescriptor != -1) {
                if (debug) std::fprintf(stderr, "Serial port %s open.\n", port->userName);
                site->gateway_enabled = 1;
                open = 1;
            } else {
                if (ui) ui->beep();
                if (debug) std::fprintf(stderr, "Serial port %s open failed.\n", port->userName);
                site->gateway_enabled = 0;
                if (ui) ui->setGatewayChecked(false);
            }
        }
    }
    if (ui) ui->storeBool(prefkeys::kGatewayEnabled, site->gateway_enabled != 0);
    return open;
}

}  // namespace veloran
