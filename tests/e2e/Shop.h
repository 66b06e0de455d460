// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "config/g.h"
#include "config/SettingsText.h"
#include "platform/Preferences.h"

/// A shop for tests: stored settings, programs, and what of them should reach the control.
namespace Shop
{
/// A machine on that device: XON/XOFF, 8 bits.
inline std::shared_ptr<MachineRecord> machineOn(const QString& device, const QString& mode = "Auto")
{
    auto machine = std::make_shared<MachineRecord>();
    machine->MCPORT = device;
    machine->MCMODE = mode;
    machine->MCBAUD = 115200; // no byte goes out faster than the line carries it
    return machine;
}

/// Stores settings with these machines, as an earlier run of the program would have left them.
inline void store(const std::vector<std::shared_ptr<MachineRecord>>& machines)
{
    std::vector<const MachineRecord*> records;
    for (const auto& machine : machines)
        records.push_back(machine.get());
    Preferences::setString("Varnock", SettingsText::write(records));
    Preferences::setString("VarnockRecentPrograms", {});
    Preferences::setString("VarnockReceiveToFiles", {});
}

/// A program of that many numbered blocks, with LF line ends.
inline QByteArray program(int blocks)
{
    QByteArray text;
    for (int n = 1; n <= blocks; ++n)
        text += "N" + QByteArray::number(n * 10) + " G01 X" + QByteArray::number(n) + ".5 F200\n";
    return text;
}

inline QByteArray onWire(QByteArray program)
{
    return program.replace("\n", "\r\n");
}
} // namespace Shop
