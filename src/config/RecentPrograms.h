// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "config/MachineRecord.h"

#include <QString>

#include <memory>
#include <vector>

/// The programs opened last for each machine, newest first. They are stored beside the settings text, which stays as it
/// is. The lists themselves are kept in the machines' records.
namespace RecentPrograms
{
/// Puts the path at the head of the machine's list and drops the oldest.
void add(MachineRecord& machine, const QString& path);

/// The text for these machines, in order; empty if none has a program.
QString write(const std::vector<const MachineRecord*>& machines);
/// Gives each machine its list. Any text is accepted; a machine that has another name now, or another place, gets none.
void read(const QString& text, const std::vector<MachineRecord*>& machines);
} // namespace RecentPrograms
