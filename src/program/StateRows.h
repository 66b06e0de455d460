// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "program/ProgramState.h"

#include <QString>

/// One line of what a view shows of a state.
struct StateRow {
    QString name;       ///< "Plane", "X"
    QString text;       ///< as written: "G17", "X40.5"; of an axis also why its place is not known
    qsizetype line = 0; ///< that says so
    bool isSure = true;
};

/// All that is said in a state, in the order in which an operator reads it back: modal codes, cycle, tool, values,
/// axes.
QList<StateRow> stateRows(const ProgramState& state);
