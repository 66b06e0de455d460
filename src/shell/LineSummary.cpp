// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/LineSummary.h"

#include <QStringList>

#include <array>

namespace
{
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
} // namespace

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
