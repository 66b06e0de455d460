// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "program/ProgramState.h"

#include <QString>

/// A block that a start in the middle of a program sends first. Proposed, never sent by itself: the operator sees it
/// with where it comes from, changes or refuses it.
struct StartBlock {
    enum class Moves {
        Nothing,
        Changer, ///< the tool changer or the turret
        Axes,
    };
    QByteArray text;
    QList<qsizetype> lines; ///< of the program that say so; empty for what only makes the start safe
    Moves moves = Moves::Nothing;
    bool isSure = true; ///< see InForce
};

/// What the operator has to read before he starts there: one plain sentence.
struct StartWarning {
    QString text;
    qsizetype line = 0; ///< of the program, 0 for none in particular
};

struct Restart {
    QList<StartWarning> warnings;
    QList<StartBlock> blocks; ///< in the order in which they are sent; empty when no start is possible here

    /// The blocks as lines, each closed by "\n".
    QByteArray text() const;
};

/// False where the state can't be brought back by blocks: inside a contour, in most cycles, in turned
/// coordinates, with a shifted zero point whose place is not in the program.
bool canStart(const ProgramState& state);

/// The blocks that bring a control to the state: what moves nothing first, then tool and spindle, coolant, the clear
/// place, the approach, the depth, and the feed last. An axis whose place is not known is warned of and not moved.
Restart proposeRestart(const ProgramState& state);
