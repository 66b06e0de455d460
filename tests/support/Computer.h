// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DeviceNames.h"
#include "support/Required.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

/// An adapter in a socket of a computer.
struct Plugged {
    QString name;         ///< bare
    QString kind, serial; ///< nothing is known of the adapter where the kind is empty
    QString id, path;     ///< its lasting names; it may lack either
    QString line = {};    ///< the pseudo-terminal that it is; without one it is nothing that can be opened
};
using Plugs = QList<Plugged>;

/// The folder /dev of a computer, with the names that the system gives to adapters.
class Computer
{
public:
    DeviceSources sources() const
    {
        return {dir_.filePath("by-id"), dir_.filePath("by-path"), [this] { return std::optional(devices_); }};
    }
    /// "dev/...", "by-id/..." or "by-path/..."
    QString file(const QString& name) const { return dir_.filePath(name); }

    /// From now on these are plugged in, and no others.
    void plug(const Plugs& plugs)
    {
        devices_.clear();
        for (const char* folder : {"by-id", "by-path", "dev"}) {
            QDir(file(folder)).removeRecursively();
            require(QDir().mkpath(file(folder)), "no folder");
        }
        for (const auto& plug : plugs) {
            const QString device = file("dev/" + plug.name);
            require(plug.line.isEmpty() ? QFile(device).open(QIODevice::WriteOnly) : QFile::link(plug.line, device),
                    "no device");
            if (!plug.kind.isEmpty())
                devices_.append({plug.line.isEmpty() ? device : plug.line, plug.kind, "UART", plug.serial});
            if (!plug.id.isEmpty()) QFile::link("../dev/" + plug.name, file("by-id/" + plug.id));
            if (!plug.path.isEmpty()) QFile::link("../dev/" + plug.name, file("by-path/" + plug.path));
        }
    }

private:
    const QTemporaryDir dir_;
    QList<SerialDevice> devices_;
};
