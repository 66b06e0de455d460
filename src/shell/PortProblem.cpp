// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/PortProblem.h"

QString PortProblem::likelyCause(const Attempt& attempt)
{
    if (attempt.path.isEmpty()) return QStringLiteral("No port has been chosen for this machine yet.");
    switch (attempt.failure.error) {
    case PortError::Missing:
        return QStringLiteral("There is no such port now. Is the adapter plugged in? Setup lists the ports present.");
    case PortError::NoPermission:
        return QStringLiteral("You have no permission to use this port. Add yourself to the group that has "
                              "it (usually \"dialout\") and log in again.");
    case PortError::InUse:
        return QStringLiteral("The port is in use by another program or by another machine's view. Close it there, "
                              "then try again.");
    case PortError::Closing:
        return QStringLiteral("The adapter's driver is still closing this port. Try again in a few seconds.");
    case PortError::NotASerialPort:
        return QStringLiteral("This is not a serial port.");
    case PortError::NoSuchSpeed:
        return QStringLiteral("No port can do %1 baud. Choose another speed, here in Setup and at the control.")
            .arg(attempt.speed);
    case PortError::SettingsRefused:
        return QStringLiteral("The port does not take these line settings, most likely the speed.");
    case PortError::SpeedNotTaken:
        return QStringLiteral("The adapter cannot do %1 baud. Choose another speed, here in Setup and at the control, "
                              "or use another adapter.")
            .arg(attempt.speed);
    case PortError::StopBitsNotTaken:
        return QStringLiteral("The adapter cannot do this number of stop bits. Choose the other, here in Setup and at "
                              "the control, or use another adapter.");
    case PortError::RtsCtsNotTaken:
        return QStringLiteral("The adapter cannot switch RTS/CTS as this machine's flow control needs it. Choose "
                              "another flow control, here in Setup and at the control, or use another adapter.");
    case PortError::None:
    case PortError::Other:
        break;
    }
    return QStringLiteral("The system reports: %1.").arg(attempt.failure.systemText);
}
