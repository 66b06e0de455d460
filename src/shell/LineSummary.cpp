// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/LineSummary.h"

#include <QStringList>

#include <array>

namespace
{
constexpr int xmodem = 3;
constexpr int evenParity = 2;
constexpr int shownRuns = 16;
constexpr int countedFrom = 4; // equal bytes in a row

// ISO 646, codes 0 to 32.
constexpr std::array controlNames{"NUL", "SOH", "STX", "ETX", "EOT", "ENQ", "ACK", "BEL", "BS",  "HT",  "LF",
                                  "VT",  "FF",  "CR",  "SO",  "SI",  "DLE", "DC1", "DC2", "DC3", "DC4", "NAK",
                                  "SYN", "ETB", "CAN", "EM",  "SUB", "ESC", "FS",  "GS",  "RS",  "US",  "space"};
constexpr unsigned char DEL = 127;

QString name(unsigned char byte)
{
    if (byte < controlNames.size()) return QString::fromLatin1(controlNames[byte]);
    return byte == DEL ? QStringLiteral("DEL") : QString(QChar(byte));
}

QString hex(unsigned char byte)
{
    return QStringLiteral("%1").arg(byte, 2, 16, QLatin1Char('0')).toUpper();
}

QString flowName(qint64 flow)
{
    static const QStringList names = {QStringLiteral("no flow control"), QStringLiteral("XON/XOFF"),
                                      QStringLiteral("RTS/CTS"), QStringLiteral("XModem")};
    return names.value(static_cast<int>(flow), names.first());
}
} // namespace

QString LineSummary::describe(const Line& line)
{
    const bool isXModem = line.flow == xmodem;
    const bool hasEightBits = isXModem || line.dataFormat < 1 || line.dataFormat > evenParity;
    const bool isEven = !isXModem && line.dataFormat == evenParity;
    return QStringList{QStringLiteral("%1 baud").arg(line.baud),
                       hasEightBits ? QStringLiteral("8 data bits") : QStringLiteral("7 data bits"),
                       isEven ? QStringLiteral("even parity") : QStringLiteral("no parity"),
                       line.stopBits == 2 ? QStringLiteral("2 stop bits") : QStringLiteral("1 stop bit"),
                       flowName(line.flow)}
        .join(QStringLiteral(", "));
}

QString LineSummary::describe(const QByteArray& bytes)
{
    QStringList names, codes;
    for (qsizetype at = 0; at < bytes.size();) {
        if (names.size() == shownRuns) {
            names.append(QStringLiteral("..."));
            codes.append(QStringLiteral("..."));
            break;
        }
        const auto byte = static_cast<unsigned char>(bytes[at]);
        qsizetype run = 1;
        while (at + run < bytes.size() && bytes[at + run] == bytes[at])
            ++run;
        if (run < countedFrom) run = 1;
        const QString times = run > 1 ? QStringLiteral("%1 x ").arg(run) : QString();
        names.append(times + name(byte));
        codes.append(times + hex(byte));
        at += run;
    }
    if (names.isEmpty()) return {};
    return QStringLiteral("%1 (%2)").arg(names.join(u' '), codes.join(u' '));
}
