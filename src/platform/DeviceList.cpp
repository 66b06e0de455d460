// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DeviceList.h"

#include <QSerialPortInfo>

std::optional<QStringList> DeviceList::serialDevices()
{
    QStringList paths;
    const auto ports = QSerialPortInfo::availablePorts();
    for (const auto& port : ports) {
        const QString path = port.systemLocation();
        if (path.startsWith(QLatin1String("/dev/tty."))) continue; // macOS: the dial-in twin
        paths.append(path);
    }
    return paths;
}
