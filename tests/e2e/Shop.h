// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "config/g.h"
#include "config/SettingsText.h"
#include "platform/Preferences.h"
#include "simulator/SimulatedControl.h"

#include <QFile>
#include <QTemporaryDir>

/// A shop for tests: stored settings, program files and what a control should get of them.
namespace Shop
{
inline QByteArray bytesOf(const std::string& text)
{
    return QByteArray::fromStdString(text);
}

/// Stores settings with these machines, as an earlier run of the program would have left them.
inline void storeMachines(const std::vector<const MachineRecord*>& machines)
{
    Preferences::setString(QStringLiteral("Varnock"), SettingsText::write(machines));
}

inline void forgetMachines()
{
    Preferences::setString(QStringLiteral("Varnock"), QStringLiteral("[END]\n"));
}

/// A machine on that device: 9600 baud, XON/XOFF, 8 bits.
inline std::shared_ptr<MachineRecord> machineOn(const std::string& device, const QString& mode = QStringLiteral("Auto"))
{
    auto machine = std::make_shared<MachineRecord>();
    machine->MCPORT = QString::fromStdString(device);
    machine->MCMODE = mode;
    machine->MCBAUD = 9600;
    return machine;
}

/// A program of that many numbered blocks, with LF line ends.
inline QByteArray program(int blocks)
{
    QByteArray text;
    for (int n = 1; n <= blocks; ++n)
        text += "N" + QByteArray::number(n * 10) + " G01 X" + QByteArray::number(n) + ".5 F200\n";
    return text;
}

inline QString writeFile(const QTemporaryDir& dir, const QString& name, const QByteArray& bytes)
{
    const QString path = dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
    return path;
}
} // namespace Shop
