// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

#include <functional>
#include <vector>

struct MachineRecord;

/// What is remembered for each machine beside the settings text: lines in the order of the machines, below the name of
/// each. The name has to fit, so that after a change by hand no machine gets what was another's.
namespace MachineSections
{
/// The text for these machines, in order; empty if none has a line. No line begins with "[".
QString write(const std::vector<const MachineRecord*>& machines,
              const std::function<QStringList(const MachineRecord&)>& linesOf);
/// Gives each machine its lines, in order. Any text is accepted; a machine that has another name now, or another place,
/// gets none.
void read(const QString& text, const std::vector<MachineRecord*>& machines,
          const std::function<void(MachineRecord&, const QString& line)>& take);
} // namespace MachineSections
