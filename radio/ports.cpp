// Serial port discovery and the radio and gateway port switches.

#include "radio/ports.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "radio/serial.h"
#include "radio/tuning.h"

namespace veloran {

namespace {

namespace fs = std::filesystem;

void copyBounded(char* dst, const std::string& src) {
    const size_t n = std::min(src.size(), sizeof(PortNameRecord::bsdPath) - 1);
    std::memcpy(dst, src.data(), n);
    dst[n] = 0;
}

std::vector<fs::path> sortedEntries(const fs::path& folder, const char* prefix) {
    std::vector<fs::path> found;
    std::error_code ec;
    for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
        const std::string name = it->path().filename().string();
        if (prefix && name.rfind(prefix, 0) != 0) continue;
        found.push_back(it->path());
    }
    std::sort(found.begin(), found.end());
    return found;
}

const PortNameRecord* portAt(const PortNameRecord* ports, int index) {
    if (!ports || index < 0 || index >= kMaxSerialPorts || ports[index].bsdPath[0] == 0)
        return nullptr;
    return &ports[index];
}

}  // namespace

int DevSerialPortList::findPorts(PortNameRecord* ports, int maxPorts) {
    if (!ports || maxPorts <= 0) return 0;
    const fs::path root(root_);
    std::vector<std::string> seenTargets;
    int count = 0;
    auto add = [&](const fs::path& path, const std::string& name) {
        if (count >= maxPorts) return;
        std::error_code ec;
        const fs::path target = fs::weakly_canonical(path, ec);
        const std::string key = ec ? path.string() : target.string();
        if (std::find(seenTargets.begin(), seenTargets.end(), key) != seenTargets.end()) return;
        seenTargets.push_back(key);
        copyBounded(ports[count].bsdPath, path.string());
        copyBounded(ports[count].userName, name);
        ++count;
    };
    // The by-id names carry the adapter's make and serial number, the most
    // useful thing to show; they are links to the ttyUSB/ttyACM nodes.
    for (const fs::path& p : sortedEntries(root / "serial" / "by-id", nullptr))
        add(p, p.filename().string());
    for (const char* prefix : {"ttyUSB", "ttyACM", "ttyS"}) {
        for (const fs::path& p : sortedEntries(root, prefix)) add(p, p.filename().string());
    }
    return count;
}

int countSerialPorts(SerialPortList* list, PortNameRecord* ports, bool debug) {
    if (!ports) return 0;
    for (int i = 0; i < kMaxSerialPorts; ++i) {
        ports[i].bsdPath[0] = 0;
        ports[i].userName[0] = 0;
    }
    if (!list) return 0;
    const int found = std::clamp(list->findPorts(ports, kMaxSerialPorts), 0, kMaxSerialPorts);
    for (int i = 0; i < found; ++i) {
        ports[i].bsdPath[sizeof ports[i].bsdPath - 1] = 0;
        ports[i].userName[sizeof ports[i].userName - 1] = 0;
        if (debug) {
            std::fprintf(stderr, "BSD path: %s\n", ports[i].bsdPath);
            std::fprintf(stderr, "User Name: %s\t", ports[i].userName);
        }
    }
    return found;
}

int addTypedPort(PortNameRecord* ports, const char* path) {
    if (!ports || !path || path[0] == 0 || std::strlen(path) >= sizeof(PortNameRecord::bsdPath))
        return -1;
    for (int i = 0; i < kMaxSerialPorts; ++i) {
        if (std::strcmp(ports[i].bsdPath, path) == 0) return i;
    }
    for (int i = 0; i < kMaxSerialPorts; ++i) {
        if (ports[i].bsdPath[0] != 0) continue;
        copyBounded(ports[i].bsdPath, path);
        copyBounded(ports[i].userName, path);
        return i;
    }
    return -1;
}

int switchRadioPort(SiteRec* site, bool checked, const PortNameRecord* ports,
                    const char* versionString, RadioUi* ui) {
    if (!site) return 0;
    const bool debug = site->debug != 0;
    if (debug) std::fprintf(stderr, "connectToRadio, state : %d\n", checked ? 1 : 0);
    const char* version = versionString ? versionString : "";
    int open = 0;
    if (!checked) {
        stopRadioDriver(site);
        closeSerialPort(site->radioPortFileDescriptor, debug);
        site->vfo_enabled = 0;
        site->radioPortFileDescriptor = -1;
    } else {
        if (site->radioPortFileDescriptor != -1) {
            stopRadioDriver(site);
            closeSerialPort(site->radioPortFileDescriptor, debug);
            site->radioPortFileDescriptor = -1;
        }
        const PortNameRecord* port = portAt(ports, site->radioPort);
        if (!port) {
            if (ui) ui->beep();
            if (debug) std::fprintf(stderr, "No serial port found.\n");
            site->vfo_enabled = 0;
            site->radioPortFileDescriptor = -1;
            if (ui) ui->setRadioChecked(false);
        } else {
            site->radioPortFileDescriptor =
                openSerialPort(port->bsdPath, site->radioBaud, site->radio, debug);
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
    if (ui) ui->storeBool("vfo_enabled", site->vfo_enabled != 0);
    return open;
}

int switchGatewayPort(SiteRec* site, bool checked, const PortNameRecord* ports, RadioUi* ui) {
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
    if (ui) ui->storeBool("gateway_enabled", site->gateway_enabled != 0);
    return open;
}

}  // namespace veloran
