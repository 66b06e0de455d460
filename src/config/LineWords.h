// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "config/LineSettings.h"
#include "config/MachineRecord.h"

#include <QString>

/// A machine's serial line in words, the same wherever it is shown.
namespace LineWords
{
struct Line {
    qint64 baud = 0;
    DataFormat dataFormat = DataFormat::EightBits;
    qint64 stopBits = 1;
    FlowControl flow = FlowControl::None;
};

/// The device as an operator calls it: "ttyUSB0" for "/dev/ttyUSB0". Other texts stay as they are.
QString portName(const QString& path);
/// Name of a flow control: "XON/XOFF", "No flow control".
QString flow(FlowControl flow);
/// "ttyUSB0 · 9600 baud · 7 data bits, even parity, 1 stop bit · XON/XOFF": as the record has it.
QString line(const MachineRecord& mc);
/// "ttyUSB0,9600,e,7,1", a CR LF and the flow control; "NONE" without a port.
QString shortLine(const MachineRecord& mc);
/// "9600 baud, 7 data bits, even parity, 1 stop bit, XON/XOFF": as the port is opened, which may differ from the
/// record.
QString openedLine(const Line& line);
} // namespace LineWords
