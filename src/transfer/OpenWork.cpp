// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/OpenWork.h"

#include "config/TransferWords.h"

#include <algorithm>

namespace
{
using Transfer = OpenWork::Transfer;
using Unsaved = OpenWork::Unsaved;

constexpr std::size_t longestList = 12; // lines; a longer question would outgrow small screens

const QString cancel = QStringLiteral("Cancel");

QString heading(const QString& machine, const OpenWork& work)
{
    if (work.transfer == Transfer::Running || work.transfer == Transfer::Arriving)
        return QStringLiteral("%1 is transferring a program").arg(machine);
    if (work.unsaved == Unsaved::Setup)
        return QStringLiteral("%1: the changes in the setup are not saved").arg(machine);
    if (work.unsaved == Unsaved::Nothing) return QStringLiteral("%1: a stopped send can still continue").arg(machine);
    if (work.program.isEmpty()) return QStringLiteral("%1: the program is not saved").arg(machine);
    return QStringLiteral("%1: the changes in %2 are not saved").arg(machine, work.program);
}

QString transferDetail(const OpenWork& work)
{
    const QString start = work.program.isEmpty() ? QStringLiteral("The program") : work.program;
    switch (work.transfer) {
    case Transfer::Running:
        return start + (work.canBeSaved() ? QStringLiteral(" would not arrive whole: Save and Discard both stop it.")
                                          : QStringLiteral(" would not arrive whole."));
    case Transfer::Arriving:
        return QStringLiteral("Bytes are still arriving. What comes from now on would be lost.");
    case Transfer::Stopped:
        return start + QStringLiteral(" stopped at line %1. From there Send continues with no byte lost or sent twice; "
                                      "afterwards it could not.")
                           .arg(TransferWords::number(work.line));
    case Transfer::None:
        break;
    }
    return {};
}

QString unsavedDetail(const OpenWork& work)
{
    if (work.unsaved == Unsaved::Setup) return QStringLiteral("Without Save the setup stays as it was.");
    if (work.unsaved == Unsaved::Nothing) return {};
    return work.program.isEmpty()
               ? QStringLiteral("It exists only in this window. Without Save it is lost.")
               : QStringLiteral("What has changed in %1 exists only in this window.").arg(work.program);
}

QString inOneLine(const OpenWork& work)
{
    QStringList parts;
    const QString program = work.program.isEmpty() ? QStringLiteral("a program") : work.program;
    if (work.transfer == Transfer::Running) parts << QStringLiteral("transferring %1").arg(program);
    if (work.transfer == Transfer::Arriving) parts << QStringLiteral("receiving");
    if (work.transfer == Transfer::Stopped)
        parts << QStringLiteral("%1 stopped at line %2").arg(program, TransferWords::number(work.line));
    if (work.unsaved == Unsaved::Setup) parts << QStringLiteral("setup not saved");
    if (work.unsaved == Unsaved::Program)
        parts << (work.program.isEmpty() ? QStringLiteral("program not saved")
                                         : QStringLiteral("changes in %1 not saved").arg(work.program));
    return parts.join(QStringLiteral(", "));
}
} // namespace

MessageBox::Question OpenWorkWords::beforeEnding(const QString& machine, const OpenWork& work)
{
    QStringList details = {transferDetail(work), unsavedDetail(work)};
    details.removeAll(QString());
    MessageBox::Question question{heading(machine, work), {}, {}};
    if (work.canBeSaved()) {
        question.answers = QStringList{QStringLiteral("Save"), QStringLiteral("Discard"), cancel};
    } else if (work.transfer == Transfer::Stopped) {
        question.answers = QStringList{QStringLiteral("End the send"), cancel};
    } else {
        details << QStringLiteral("Stop the transfer?");
        question.answers = QStringList{QStringLiteral("Stop"), cancel};
    }
    question.detail = details.join(QStringLiteral("\n\n"));
    return question;
}

MessageBox::Question OpenWorkWords::beforeQuitting(const std::vector<MachineWork>& all)
{
    QStringList lines;
    for (const auto& each : all)
        lines << QStringLiteral("%1: %2").arg(each.machine, inOneLine(each.work));
    if (all.size() > longestList) {
        lines.resize(longestList - 1);
        lines << QStringLiteral("and %1 more").arg(all.size() - (longestList - 1));
    }
    MessageBox::Question question{QStringLiteral("%1 machines have open work").arg(all.size()),
                                  lines.join(QLatin1Char('\n')) + QStringLiteral("\n\nQuitting ends all of it."),
                                  {}};
    const bool canSave = std::any_of(all.begin(), all.end(), [](const auto& each) { return each.work.canBeSaved(); });
    if (canSave)
        question.answers = QStringList{QStringLiteral("Save all and quit"), QStringLiteral("Discard and quit"), cancel};
    else
        question.answers = QStringList{QStringLiteral("Stop and quit"), cancel};
    return question;
}
