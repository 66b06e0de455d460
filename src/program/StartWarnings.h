// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "program/Restart.h"

/// What speaks against a start with this state, or has to be looked at first; the gravest first.
QList<StartWarning> startWarnings(const ProgramState& state);
