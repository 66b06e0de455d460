// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QProcess>

/// A message bus of the test's own. To be made before there is an application, which may connect at once.
class PrivateBus
{
public:
    /// The address goes into that environment variable: DBUS_SESSION_BUS_ADDRESS or DBUS_SYSTEM_BUS_ADDRESS.
    explicit PrivateBus(const char* variable)
    {
        // The system's own rules would let nobody on its bus.
        daemon_.start(QStringLiteral("dbus-daemon"), {QStringLiteral("--session"), QStringLiteral("--print-address")});
        if (!daemon_.waitForReadyRead()) qFatal("no message bus");
        qputenv(variable, daemon_.readLine().trimmed());
    }
    ~PrivateBus()
    {
        daemon_.terminate();
        daemon_.waitForFinished();
    }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

private:
    QProcess daemon_;
};
