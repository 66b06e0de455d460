// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DeviceList.h"

#include <QSerialPortInfo>

QString DeviceList::description(const QString& path)
{
    const QSerialPortInfo port(path);
    if (port.isNull()) return {};
    QStringList words = {port.manufacturer(), port.description()};
    if (!port.serialNumber().isEmpty()) words.append(QStringLiteral("no. %1").arg(port.serialNumber()));
    words.removeAll(QString());
    return words.join(u' ');
}

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
