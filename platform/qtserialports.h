// The serial ports the machine has, from Qt's serial-port enumeration.
#pragma once

#include "serial/portlist.h"

namespace veloran {

// Up to maxPorts ports sorted by device path, so that a port keeps its index
// from one start to the next while the same adapters are plugged in.
struct QtSerialPortList : SerialPortList {
    int findPorts(PortNameRecord* ports, int maxPorts) override;
};

}  // namespace veloran
