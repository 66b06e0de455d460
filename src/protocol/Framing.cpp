// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/Framing.h"

#include "config/g.h"

namespace
{
const QByteArray leader(Framing::leaderLength, '\0');
const QByteArray percent("%");
} // namespace

ControlType Framing::controlType(const QString& mode)
{
    const QString name = mode.toUpper();
    if (name == QLatin1String("FANUC")) return ControlType::Fanuc;
    if (name == QLatin1String("OKUMA")) return ControlType::Okuma;
    return ControlType::General;
}

QByteArray Framing::header(ControlType type, const QString& sot, const QString& eob)
{
    switch (type) {
    case ControlType::Fanuc:
        return leader + percent + g::getBytes(eob);
    case ControlType::Okuma:
        return leader + tapeStart + '\0';
    case ControlType::General:
        break;
    }
    return g::getBytes(sot);
}

QByteArray Framing::trailer(ControlType type, const QString& eot, const QString& eob)
{
    switch (type) {
    case ControlType::Fanuc:
        return percent + g::getBytes(eob);
    case ControlType::Okuma:
        return leader + tapeStop + QByteArray(5, '\0');
    case ControlType::General:
        break;
    }
    return g::getBytes(eot);
}
