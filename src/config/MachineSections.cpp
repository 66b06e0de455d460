// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/MachineSections.h"

#include "config/MachineRecord.h"

namespace
{
QString headerOf(const MachineRecord& machine)
{
    return QStringLiteral("[%1]").arg(machine.MCNAME);
}
} // namespace

QString MachineSections::write(const std::vector<const MachineRecord*>& machines,
                               const std::function<QStringList(const MachineRecord&)>& linesOf)
{
    QString text;
    bool isEmpty = true;
    for (const auto* machine : machines) {
        const QStringList lines = linesOf(*machine);
        text += headerOf(*machine) + u'\n';
        for (const auto& line : lines)
            text += line + u'\n';
        isEmpty = isEmpty && lines.isEmpty();
    }
    return isEmpty ? QString() : text;
}

void MachineSections::read(const QString& text, const std::vector<MachineRecord*>& machines,
                           const std::function<void(MachineRecord&, const QString&)>& take)
{
    auto next = machines.begin();
    MachineRecord* current = nullptr;
    for (const auto& line : text.split(u'\n')) {
        if (line.startsWith(u'[')) {
            if (next == machines.end()) return;
            current = *next++;
            if (headerOf(*current) != line) current = nullptr;
        } else if (current && !line.isEmpty()) {
            take(*current, line);
        }
    }
}
