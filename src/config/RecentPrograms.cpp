// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/RecentPrograms.h"

#include "config/MachineSections.h"

namespace
{
constexpr qsizetype kept = 10;
} // namespace

void RecentPrograms::add(MachineRecord& machine, const QString& path)
{
    if (!path.startsWith(u'/') || path.contains(u'\n')) return;
    auto& paths = machine.recentPrograms;
    paths.removeAll(path);
    paths.prepend(path);
    paths = paths.mid(0, kept);
}

QString RecentPrograms::write(const std::vector<const MachineRecord*>& machines)
{
    return MachineSections::write(machines, [](const MachineRecord& machine) { return machine.recentPrograms; });
}

void RecentPrograms::read(const QString& text, const std::vector<MachineRecord*>& machines)
{
    MachineSections::read(text, machines, [](MachineRecord& machine, const QString& line) {
        auto& paths = machine.recentPrograms;
        if (line.startsWith(u'/') && paths.size() < kept) paths.append(line);
    });
}
