// SPDX-License-Identifier: GPL-3.0-or-later
#include "program/StateRows.h"

namespace
{
// In the order of ModalGroup.
const std::array<QString, modalGroupCount> groupNames{
    QStringLiteral("Unit"),        QStringLiteral("Plane"),        QStringLiteral("Distance mode"),
    QStringLiteral("Feed mode"),   QStringLiteral("Return level"), QStringLiteral("Path mode"),
    QStringLiteral("Work offset"), QStringLiteral("Compensation"), QStringLiteral("Tool length"),
    QStringLiteral("Turret"),      QStringLiteral("Speed mode"),   QStringLiteral("Motion"),
    QStringLiteral("Spindle"),     QStringLiteral("Coolant"),      QStringLiteral("Coolant mist")};

QString placeOf(char letter, const AxisPosition& axis)
{
    const QString cause = QString::fromUtf8(axis.cause);
    switch (axis.status) {
    case AxisPosition::Status::Known:
        return QLatin1Char(letter) + QString::fromUtf8(axis.text);
    case AxisPosition::Status::AtReference:
        return QStringLiteral("at the reference point (%1)").arg(cause);
    case AxisPosition::Status::Unknown:
        return QStringLiteral("not known (%1)").arg(cause);
    case AxisPosition::Status::Unsaid:
        break;
    }
    return {};
}
} // namespace

QList<StateRow> stateRows(const ProgramState& state)
{
    QList<StateRow> rows;
    const auto add = [&rows](const QString& name, const InForce& word) {
        if (!word.isSaid()) return;
        const QString text = word.text.isEmpty() ? QStringLiteral("not said") : QString::fromUtf8(word.text);
        rows.append({name, text, word.line, word.isSure && word.isPlain});
    };
    for (std::size_t group = 0; group < groupNames.size(); ++group)
        add(groupNames[group], state.modal[group]);
    add(QStringLiteral("Zero point"), state.localZero);
    add(QStringLiteral("Transformation"), state.transform);
    InForce cycle = state.cycle;
    if (!state.cycleWords.isEmpty()) cycle.text += ' ' + state.cycleWords;
    add(QStringLiteral("Cycle"), cycle);
    add(QStringLiteral("Tool"), state.tool);
    add(QStringLiteral("Next tool"), state.nextTool);
    add(QStringLiteral("Length number"), state.lengthNumber);
    add(QStringLiteral("Radius number"), state.radiusNumber);
    add(QStringLiteral("Speed"), state.speed);
    add(QStringLiteral("Speed limit"), state.speedLimit);
    add(QStringLiteral("Feed"), state.feed);
    for (int index = 0; index < Axes::count; ++index) {
        const auto& axis = state.axes[static_cast<std::size_t>(index)];
        if (axis.status == AxisPosition::Status::Unsaid) continue;
        const char letter = Axes::letters[index];
        rows.append({QString(QLatin1Char(letter)), placeOf(letter, axis), axis.line, axis.isKnown()});
    }
    return rows;
}
