// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DeviceList.h"

#include <QHash>
#include <QStringList>

#include <functional>

/// Where the names of serial devices come from.
struct DeviceSources {
    QString byId = QStringLiteral("/dev/serial/by-id");     ///< folder of links that are named after the adapters
    QString byPath = QStringLiteral("/dev/serial/by-path"); ///< the same, named after the sockets they are plugged into
    std::function<std::optional<QList<SerialDevice>>()> present = DeviceList::present;
};

/// The serial devices present at one moment, under all their names. A bare name such as /dev/ttyUSB0 goes to whichever
/// adapter comes first; a lasting name stays with its adapter, or at least with its socket. Any thread.
class DeviceNames
{
public:
    explicit DeviceNames(const DeviceSources& sources);

    /// The name of the device of that path that outlasts a restart; empty if it has none, or is not there.
    QString lastingName(const QString& path) const;
    /// The lasting names of these devices, and then their bare ones, as given.
    QStringList lastingFirst(const QStringList& paths) const;
    /// The device of that path, whatever the name; of one that the system does not list, its bare name alone.
    SerialDevice device(const QString& path) const;
    const QList<SerialDevice>& devices() const { return devices_; }

    /// A name that the system gives by turns to one adapter and another.
    static bool isPassedOn(const QString& path);
    /// The bare name behind a path; the path itself if nothing is there.
    static QString bareName(const QString& path);

private:
    bool hasOwnId(const SerialDevice& device) const;

    QList<SerialDevice> devices_;
    QHash<QString, QString> byId_, byPath_; // links by the bare names that they lead to
};
