// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/LineWords.h"

#include <QStringList>

namespace
{
constexpr qint64 sevenBits = 1; // data formats of the record
constexpr qint64 sevenBitsEven = 2;
constexpr qint64 xmodem = 3;

QString format(qint64 dataFormat, qint64 stopBits)
{
    const bool isEven = dataFormat == sevenBitsEven;
    return QStringLiteral("%1 data bits, %2 parity, %3 stop bit%4")
        .arg(isEven || dataFormat == sevenBits ? 7 : 8)
        .arg(isEven ? QStringLiteral("even") : QStringLiteral("no"))
        .arg(stopBits)
        .arg(stopBits == 1 ? QString() : QStringLiteral("s"));
}

QString shortFormat(qint64 dataFormat)
{
    if (dataFormat == sevenBits) return QStringLiteral("n,7,");
    return dataFormat == sevenBitsEven ? QStringLiteral("e,7,") : QStringLiteral("n,8,");
}
} // namespace

QString LineWords::portName(const QString& path)
{
    const QLatin1String folder("/dev/");
    return path.startsWith(folder) ? path.mid(folder.size()) : path;
}

QString LineWords::flow(qint64 flow)
{
    switch (flow) {
    case 1:
        return QStringLiteral("XON/XOFF");
    case 2:
        return QStringLiteral("RTS/CTS");
    case xmodem:
        return QStringLiteral("XModem");
    default:
        return QStringLiteral("No flow control");
    }
}

QString LineWords::line(const MachineRecord& mc)
{
    const QString port = portName(mc.MCPORT);
    return QStringList{port.isEmpty() ? QStringLiteral("No port") : port, QStringLiteral("%1 baud").arg(mc.MCBAUD),
                       format(mc.MCDBPAR, mc.MCSBITS), flow(mc.MCFLOW)}
        .join(QStringLiteral("  \u00B7  "));
}

QString LineWords::shortLine(const MachineRecord& mc)
{
    if (mc.MCPORT.isEmpty()) return QStringLiteral("NONE");
    return portName(mc.MCPORT) + u',' + QString::number(mc.MCBAUD) + u',' + shortFormat(mc.MCDBPAR) +
           QString::number(mc.MCSBITS) + QStringLiteral("\r\n") + flow(mc.MCFLOW);
}

QString LineWords::openedLine(const Line& line)
{
    QString flowName = flow(line.flow);
    if (flowName.startsWith(QLatin1String("No "))) flowName.front() = u'n'; // in the midst of a sentence
    return QStringList{QStringLiteral("%1 baud").arg(line.baud),
                       format(line.flow == xmodem ? 0 : line.dataFormat, line.stopBits == 2 ? 2 : 1), flowName}
        .join(QStringLiteral(", "));
}
