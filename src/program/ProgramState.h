// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "program/Axes.h"
#include "program/Codes.h"
#include "program/Remarks.h"

/// A word that is in force, with the line that said it.
struct InForce {
    QByteArray text;     ///< as written, without blanks; empty while nothing is said
    qsizetype line = 0;  ///< 0 while nothing is said
    bool isPlain = true; ///< false when its value is not in the program: "F#101"
    /// False when a call or a jump further down may have changed it, or it depends on block skip.
    bool isSure = true;

    bool isSaid() const { return line > 0; }
};

/// What a program has put in force above one of its lines. Lines are numbered from 1, as in the editor.
struct ProgramState {
    Control control = Control::FanucMill;
    qsizetype line = 1; ///< the first line that is not read

    std::array<InForce, modalGroupCount> modal;
    const InForce& in(ModalGroup group) const { return modal[static_cast<std::size_t>(group)]; }

    InForce feed, speed;
    InForce speedLimit;   ///< the block: "G50 S2500"
    InForce tool;         ///< on mills the T word of the last M06; its text is empty when no T came before that
    InForce nextTool;     ///< T word of a mill that no M06 has put in yet
    InForce radiusNumber; ///< D
    InForce lengthNumber; ///< H
    InForce localZero;    ///< the words of a G52: "G52 X10. Y5."; unsaid once it is taken back
    InForce transform;    ///< the code that turned, scaled, mirrored or tilted what follows

    InForce cycle;         ///< of a canned or turning cycle that goes on
    QByteArray cycleWords; ///< its R, Z, Q, P ... as written
    qsizetype cycleWordsLine = 0;
    bool hasCycleEnded = false; ///< there was one
    AxisPosition cycleStart;    ///< Z before it, where G98 returns to

    std::array<AxisPosition, Axes::count> axes;
    const AxisPosition& axis(char letter) const { return axes[static_cast<std::size_t>(Axes::indexOf(letter))]; }

    /// Where the tool went in rapid before it cut: on mills the greatest Z, on lathes the first X and Z, since the last
    /// change of tool, length, zero point or unit.
    AxisPosition clearX, clearZ;

    qsizetype contourLine = 0; ///< of the cycle whose contour holds `line`; 0 outside
    /// The last line not below `line` before which nothing is going on that makes a start hard: no cycle, contour,
    /// cutter compensation or incremental mode, and the position known. 0 if there is none.
    qsizetype clearLine = 0;

    QList<Remark> remarks; ///< by their first line
    std::array<qsizetype, remarkKindCount> remarkCounts{};
};

/// A thread is being cut, or the tool still stands at its end: not to be gone to again out of step with the spindle.
inline bool isThreading(const ProgramState& state)
{
    const QByteArray& motion = state.in(ModalGroup::Motion).text;
    const int code = motion.isEmpty() ? -1 : Codes::number(QByteArrayView(motion).sliced(1));
    return code == 320 || code == 330 || code == 340;
}
