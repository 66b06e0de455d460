// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DeviceList.h"

#include <QSerialPortInfo>
#include <QStringList>

QString SerialDevice::inWords() const
{
    QStringList words = {maker, product};
    if (!serial.isEmpty()) words.append(QStringLiteral("no. %1").arg(serial));
    words.removeAll(QString());
    return words.join(u' ');
}

std::optional<QList<SerialDevice>> DeviceList::present()
{
    QList<SerialDevice> devices;
    const auto ports = QSerialPortInfo::availablePorts();
    for (const auto& port : ports) {
        const QString path = port.systemLocation();
        if (path.startsWith(QLatin1String("/dev/tty."))) continue; // macOS: the dial-in twin
        devices.append({path, port.manufacturer(), port.description(), port.serialNumber()});
    }
    return devices;
}
