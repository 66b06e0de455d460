// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/PortWords.h"

#include "config/LineWords.h"

#include <QFileInfo>

using LineWords::portName;

QString PortWords::adapter(const QString& path, const DeviceNames& names)
{
    const auto device = names.device(path);
    if (device.path == path) return device.inWords();
    const QString now = QStringLiteral("now %1").arg(portName(device.path));
    return device.isKnown() ? QStringLiteral("%1, %2").arg(device.inWords(), now) : now;
}

QString PortWords::sharedWith(const QString& path, const MachineRecord& machine, const g::McIcons& machines)
{
    if (!QFileInfo::exists(path)) return {};
    const QString bare = DeviceNames::bareName(path);
    for (const auto& other : machines.mid(1)) {
        if (other.get() == &machine || other->MCPORT == path || DeviceNames::bareName(other->MCPORT) != bare) continue;
        return QStringLiteral("%1 has the same port by another name, %2.").arg(other->MCNAME, portName(other->MCPORT));
    }
    return {};
}
