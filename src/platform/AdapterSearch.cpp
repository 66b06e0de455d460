// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/AdapterSearch.h"

#include <QFileInfo>

#include <algorithm>

namespace
{
// A new device belongs to the superuser until the system has set it up.
bool isReady(const QString& path)
{
    const QFileInfo file(path);
    return file.exists() && file.isReadable() && file.isWritable();
}
} // namespace

void AdapterSearch::remember(const QString& path, const DeviceNames& names)
{
    path_ = path;
    device_ = names.device(path);
    lasting_ = names.lastingName(path);
    twins_.clear();
}

// Makers give one serial number to many adapters, and only while one alone is plugged in does it have a name of its
// own.
void AdapterSearch::noteLoss(const DeviceNames& names)
{
    twins_.clear();
    if (device_.serial.isEmpty()) return;
    QStringList twins;
    for (const auto& device : names.devices()) {
        const bool isAlike = match(device, names.lastingName(device.path)) == Match::Same;
        if (isAlike && device.path != device_.path) twins << device.path;
    }
    twins_ = twins;
}

AdapterSearch::Match AdapterSearch::match(const SerialDevice& device, const QString& lasting) const
{
    if (!device_.isKnown()) return Match::Same; // a built-in port, say: its name is all there is
    if (!device.isKnown()) return Match::Unknown;
    if (twins_.contains(device.path)) return Match::Other;
    if (!device.isSameKind(device_) || device.serial != device_.serial) return Match::Other;
    if (device.serial.isEmpty()) return lasting == lasting_ && !lasting.isEmpty() ? Match::Same : Match::Alike;
    // Adapters with several connectors have one number for all.
    const bool hasBothNames = !lasting.isEmpty() && !lasting_.isEmpty();
    return hasBothNames && lasting != lasting_ ? Match::Other : Match::Same;
}

AdapterSearch::Found AdapterSearch::find(const DeviceNames& names) const
{
    using Kind = Found::Kind;
    auto there = Match::Unknown;
    const auto device = names.device(path_);
    if (isReady(path_)) there = match(device, names.lastingName(path_));
    if (there == Match::Same) return {Kind::Back, path_, device};
    if (there == Match::Alike) return {Kind::Alike, path_, device};
    if (const auto found = findElsewhere(names)) return *found;
    return {there == Match::Other ? Kind::Other : Kind::Missing, path_, device};
}

// Only what has a serial number can be known again in another socket.
std::optional<AdapterSearch::Found> AdapterSearch::findElsewhere(const DeviceNames& names) const
{
    if (device_.serial.isEmpty()) return {};
    std::optional<Found> found;
    for (const auto& device : names.devices()) {
        const QString lasting = names.lastingName(device.path);
        const QString path = lasting.isEmpty() ? device.path : lasting;
        if (!isReady(path) || match(device, lasting) != Match::Same) continue;
        if (found) return {}; // one of several connectors, and no name says which
        found = Found{Found::Kind::Elsewhere, path, device};
    }
    return found;
}
