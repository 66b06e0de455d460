// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/RecentPrograms.h"

#include <algorithm>

namespace
{
constexpr qsizetype kept = 10;

// A machine's name stands in front of its paths. These are absolute, so no path looks like it.
QString headerOf(const MachineRecord& machine)
{
    return QStringLiteral("[%1]").arg(machine.MCNAME);
}
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
    QString text;
    bool isEmpty = true;
    for (const auto* machine : machines) {
        text += headerOf(*machine) + u'\n';
        for (const auto& path : machine->recentPrograms)
            text += path + u'\n';
        isEmpty = isEmpty && machine->recentPrograms.isEmpty();
    }
    return isEmpty ? QString() : text;
}

void RecentPrograms::read(const QString& text, const std::vector<MachineRecord*>& machines)
{
    auto next = machines.begin();
    MachineRecord* current = nullptr;
    for (const auto& line : text.split(u'\n')) {
        if (line.startsWith(u'[')) {
            if (next == machines.end()) return;
            current = *next++;
            if (headerOf(*current) != line) current = nullptr;
        } else if (current && line.startsWith(u'/') && current->recentPrograms.size() < kept) {
            current->recentPrograms.append(line);
        }
    }
}
