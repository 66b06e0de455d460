// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

/// What a machine's settings amount to, in an operator's words.
namespace LineSummary
{
struct Line {
    qint64 baud = 0;
    qint64 dataFormat = 0; ///< 0: 8 bits, no parity; 1: 7 bits, no parity; 2: 7 bits, even parity
    qint64 stopBits = 1;
    qint64 flow = 0; ///< 0 none, 1 XON/XOFF, 2 RTS/CTS, 3 XModem
};

/// "9600 baud, 7 data bits, even parity, 1 stop bit, XON/XOFF": as the port is opened, which may differ from the
/// settings.
QString describe(const Line& line);

/// "% CR LF (25 0D 0A)"; runs of one byte are counted, a long text is cut. Empty for no bytes.
QString describe(const QByteArray& bytes);
} // namespace LineSummary
