// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <vector>

struct MachineRecord;

/// How a machine's receive view saves by itself what comes. Stored beside the settings text, which stays as it is.
struct ReceiveToFiles {
    bool isOn = false;
    QString folder; ///< empty for the machine's program folder
    QString suffix = QStringLiteral(".nc");
    int silence = 10; ///< s without a byte that end a program which the control has not closed; 1 to 3600
    int copies = 20;  ///< older files of the same name that are kept; 1 to 999

    bool operator==(const ReceiveToFiles&) const = default;

    /// The folder in which the machine's programs are saved; empty if there is none yet.
    static QString folderOf(const MachineRecord& machine);
    /// The text for these machines, in order; empty if all are as at first.
    static QString write(const std::vector<const MachineRecord*>& machines);
    /// Any text is accepted. A machine that has another name now, or another place, gets nothing.
    static void read(const QString& text, const std::vector<MachineRecord*>& machines);
};
