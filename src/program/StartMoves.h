// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "program/Restart.h"

/// What a start block that the operator has written may move. In doubt it moves.
StartBlock::Moves movesOf(QByteArrayView block);
