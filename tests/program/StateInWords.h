// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "program/ProgramState.h"
#include "program/StateReader.h"

#include <QFile>
#include <QTest>

/// A state as one line for a table: "G21 G90 F200 X10. Y? Z@". "~" follows what is not sure, "?" an axis whose place is
/// not known, "@" one at its reference point; what is not said is left out.
inline QByteArray inWords(const ProgramState& state)
{
    QByteArrayList words;
    const auto say = [&words](const InForce& word, const QByteArray& name = {}) {
        if (word.isSaid()) words.append(name + word.text + (word.isSure && word.isPlain ? "" : "~"));
    };
    for (const InForce& word : state.modal)
        say(word);
    say(state.cycle, "cycle ");
    if (!state.cycleWords.isEmpty()) words.append(state.cycleWords);
    say(state.tool, "tool ");
    say(state.nextTool, "next ");
    for (const auto* word :
         {&state.feed, &state.speed, &state.speedLimit, &state.radiusNumber, &state.lengthNumber, &state.localZero})
        say(*word);
    for (int axis = 0; axis < Axes::count; ++axis) {
        const auto& position = state.axes[static_cast<std::size_t>(axis)];
        const QByteArray letter(1, Axes::letters[axis]);
        if (position.isKnown()) words.append(letter + position.text);
        if (position.status == AxisPosition::Status::Unknown) words.append(letter + '?');
        if (position.status == AxisPosition::Status::AtReference) words.append(letter + '@');
    }
    return words.join(' ');
}

/// The remarks in words: "3: not understood G5.1".
inline QByteArray remarksInWords(const ProgramState& state)
{
    static const char* const names[] = {"not understood", "call", "jump",      "variable",       "skip",
                                        "stores",         "zero", "transform", "another program"};
    QByteArrayList words;
    for (const auto& remark : state.remarks)
        words.append(QByteArray::number(remark.firstLine) + ": " + names[static_cast<int>(remark.kind)] + ' ' +
                     remark.text);
    return words.join(", ");
}

inline ProgramState stateAbove(qsizetype line, const QByteArray& program, Control control = Control::FanucMill)
{
    return *StateReader::above(line, program, control);
}

inline ProgramState stateAtEnd(const QByteArray& program, Control control = Control::FanucMill)
{
    return stateAbove(std::numeric_limits<qsizetype>::max(), program, control);
}

inline QByteArray sample(const QString& name)
{
    QFile file(QStringLiteral(SAMPLES "/") + name);
    if (!file.open(QIODevice::ReadOnly)) qFatal("no sample %s", qPrintable(name));
    return file.readAll();
}

/// The line of a text that begins so, numbered from 1.
inline qsizetype lineOf(const QByteArray& program, const QByteArray& start)
{
    const qsizetype at = ('\n' + program).indexOf('\n' + start);
    if (at < 0) qFatal("no line %s", start.constData());
    return program.left(at).count('\n') + 1;
}
