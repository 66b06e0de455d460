// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/LineWords.h"

#include <QStringList>

namespace
{
QString formatName(DataFormat format, qint64 stopBits)
{
    const bool isEven = format == DataFormat::SevenBitsEven;
    return QStringLiteral("%1 data bits, %2 parity, %3 stop bit%4")
        .arg(format == DataFormat::EightBits ? 8 : 7)
        .arg(isEven ? QStringLiteral("even") : QStringLiteral("no"))
        .arg(stopBits)
        .arg(stopBits == 1 ? QString() : QStringLiteral("s"));
}

QString shortFormat(DataFormat format)
{
    switch (format) {
    case DataFormat::SevenBits:
        return QStringLiteral("n,7,");
    case DataFormat::SevenBitsEven:
        return QStringLiteral("e,7,");
    default:
        return QStringLiteral("n,8,");
    }
}
} // namespace

QString LineWords::portName(const QString& path)
{
    const QLatin1String folder("/dev/");
    return path.startsWith(folder) ? path.mid(folder.size()) : path;
}

QString LineWords::flow(FlowControl flow)
{
    switch (flow) {
    case FlowControl::XonXoff:
        return QStringLiteral("XON/XOFF");
    case FlowControl::RtsCts:
        return QStringLiteral("RTS/CTS");
    case FlowControl::XModem:
        return QStringLiteral("XModem");
    default:
        return QStringLiteral("No flow control");
    }
}

QString LineWords::line(const MachineRecord& mc)
{
    const QString port = portName(mc.port());
    return QStringList{port.isEmpty() ? QStringLiteral("No port") : port, QStringLiteral("%1 baud").arg(mc.MCBAUD),
                       formatName(dataFormat(mc.MCDBPAR), mc.MCSBITS), flow(flowControl(mc.MCFLOW))}
        .join(QStringLiteral("  \u00B7  "));
}

QString LineWords::shortLine(const MachineRecord& mc)
{
    if (mc.port().isEmpty()) return QStringLiteral("NONE");
    return portName(mc.port()) + u',' + QString::number(mc.MCBAUD) + u',' + shortFormat(dataFormat(mc.MCDBPAR)) +
           QString::number(mc.MCSBITS) + QStringLiteral("\r\n") + flow(flowControl(mc.MCFLOW));
}

QString LineWords::openedLine(const Line& line)
{
    QString flowName = flow(line.flow);
    if (flowName.startsWith(QLatin1String("No "))) flowName.front() = u'n'; // in mid-sentence
    const auto format = line.flow == FlowControl::XModem ? DataFormat::EightBits : line.dataFormat;
    return QStringList{QStringLiteral("%1 baud").arg(line.baud), formatName(format, line.stopBits == 2 ? 2 : 1),
                       flowName}
        .join(QStringLiteral(", "));
}
