// The serial ports the machine has, from QSerialPortInfo.

#include "platform/qtserialports.h"

#include <QSerialPortInfo>
#include <algorithm>
#include <cstdio>

namespace veloran {

int QtSerialPortList::findPorts(PortNameRecord* ports, int maxPorts) {
    QList<QSerialPortInfo> found = QSerialPortInfo::availablePorts();
    std::sort(found.begin(), found.end(), [](const QSerialPortInfo& a, const QSerialPortInfo& b) {
        return a.systemLocation() < b.systemLocation();
    });
    int count = 0;
    for (const QSerialPortInfo& info : found) {
        if (count >= maxPorts) break;
        const QByteArray path = info.systemLocation().toLocal8Bit();
        // The pop-up shows the device name and what the adapter says it is.
        QString shown = info.portName();
        if (!info.description().isEmpty()) shown += " (" + info.description() + ")";
        const QByteArray name = shown.toUtf8();
        std::snprintf(ports[count].bsdPath, sizeof ports[count].bsdPath, "%s", path.constData());
        std::snprintf(ports[count].userName, sizeof ports[count].userName, "%s", name.constData());
        ++count;
    }
    return count;
}

}  // namespace veloran
