// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DeviceNames.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace
{
QHash<QString, QString> linksIn(const QString& folder)
{
    QHash<QString, QString> links;
    const auto entries = QDir(folder).entryInfoList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    for (const auto& entry : entries) {
        const QString device = entry.canonicalFilePath();
        // Of a socket's two names the first: the second has the USB version in it.
        if (!device.isEmpty() && !links.contains(device)) links.insert(device, entry.absoluteFilePath());
    }
    return links;
}
} // namespace

DeviceNames::DeviceNames(const DeviceSources& sources)
    : devices_(sources.present().value_or(QList<SerialDevice>())), byId_(linksIn(sources.byId)),
      byPath_(linksIn(sources.byPath))
{
}

// Without a serial number, or with one that a maker gives to all, every adapter of a kind has the same name: it leads
// to whichever came last.
bool DeviceNames::hasOwnId(const SerialDevice& device) const
{
    if (device.serial.isEmpty() || !byId_.contains(bareName(device.path))) return false;
    return std::none_of(devices_.begin(), devices_.end(), [&](const SerialDevice& other) {
        return other.isSameKind(device) && other.serial == device.serial && !byId_.contains(bareName(other.path));
    });
}

QString DeviceNames::lastingName(const QString& path) const
{
    const QString bare = bareName(path);
    return hasOwnId(device(path)) ? byId_.value(bare) : byPath_.value(bare);
}

QStringList DeviceNames::lastingFirst(const QStringList& paths) const
{
    QStringList names;
    for (const auto& path : paths) {
        const QString name = lastingName(path);
        if (!name.isEmpty() && !names.contains(name)) names.append(name);
    }
    return names + paths;
}

SerialDevice DeviceNames::device(const QString& path) const
{
    const QString bare = bareName(path);
    const auto found = std::find_if(devices_.begin(), devices_.end(),
                                    [&](const SerialDevice& device) { return bareName(device.path) == bare; });
    return found == devices_.end() ? SerialDevice{bare} : *found;
}

bool DeviceNames::isPassedOn(const QString& path)
{
    static const QRegularExpression passedOn(QStringLiteral("^tty(USB|ACM)\\d+$"));
    return passedOn.match(QFileInfo(path).fileName()).hasMatch();
}

QString DeviceNames::bareName(const QString& path)
{
    const QString bare = QFileInfo(path).canonicalFilePath();
    return bare.isEmpty() ? path : bare;
}
