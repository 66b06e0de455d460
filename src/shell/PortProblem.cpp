// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/PortProblem.h"

#include <cerrno>
#include <cstring>

QString PortProblem::likelyCause(const QString& path, int error)
{
    if (path.isEmpty()) return QStringLiteral("No port has been chosen for this machine yet.");
    switch (error) {
    case ENOENT:
    case ENODEV:
    case ENXIO:
    case ENOTDIR:
        return QStringLiteral("There is no such port now. Is the adapter plugged in? Setup lists the ports present.");
    case EACCES:
    case EPERM:
        return QStringLiteral("You have no permission to use this port. Add yourself to the group that has "
                              "it (usually \"dialout\") and log in again.");
    case EBUSY:
        return QStringLiteral("The port is in use by another program or by another machine's view. Close it there, "
                              "then try again.");
    case ENOTTY:
    case EISDIR:
        return QStringLiteral("This is not a serial port.");
    case EINVAL:
        return QStringLiteral("The port does not take these line settings, most likely the speed.");
    default:
        return QStringLiteral("The system reports: %1.").arg(QString::fromLocal8Bit(std::strerror(error)));
    }
}
