// The serial ports found on the machine: the items of the port pop-ups.
#pragma once

#include <string>

namespace veloran {

constexpr int kMaxSerialPorts = 64;

// One serial port; an empty bsdPath means no port at that index.
struct PortNameRecord {
    char bsdPath[1024];   // the device path to open
    char userName[1024];  // the name shown in the port pop-ups
};

// Where serial devices are discovered; the desktop application's Qt port
// list implements this too. Fills at most `maxPorts` records, in a stable
// order, and returns how many.
struct SerialPortList {
    virtual ~SerialPortList() = default;
    virtual int findPorts(PortNameRecord* ports, int maxPorts) = 0;
};

// Scans /dev/serial/by-id, then /dev/ttyUSB*, /dev/ttyACM* and /dev/ttyS*
// (each group sorted by name; a by-id link hides the device it points at).
// `root` replaces "/dev" for tests.
struct DevSerialPortList : SerialPortList {
    explicit DevSerialPortList(const char* root = "/dev") : root_(root) {}
    int findPorts(PortNameRecord* ports, int maxPorts) override;

  private:
    const char* root_;
};

// Clears all 64 records, then fills them from `list`, logging each when debug
// is on. Returns the number found.
int countSerialPorts(SerialPortList* list, PortNameRecord* ports, bool debug);

// A path the user typed (a pseudo-terminal, a symlink): its index when it is
// already listed, else it takes the first free record. -1 when the table is
// full or the path is empty or too long.
int addTypedPort(PortNameRecord* ports, const char* path);

// The path to save for `path`: a /dev/serial/by-id link (under `root`) that
// points at the same device when there is one, since ttyUSB numbers change
// with the order of plugging in; else `path` itself.
std::string stablePortPath(const char* path, const char* root = "/dev");

// The index of the record for `path`: the same path, or another path of the
// same device (a link and its target). -1 when none is listed.
int findPortByPath(const PortNameRecord* ports, const char* path);

// A saved path that is not there now: it takes a record of its own (shown as
// "PATH (missing)"), never the place of another port, so that the device is
// opened by that path once it is plugged in. Its index, -1 when full.
int addMissingPort(PortNameRecord* ports, const char* path);

}  // namespace veloran
