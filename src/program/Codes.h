// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "program/Control.h"

#include <QByteArrayView>

/// What stays in force until another code of its group takes its place.
enum class ModalGroup {
    Units,
    Plane,
    Distance,
    FeedMode,
    ReturnLevel,
    PathMode,
    WorkOffset,
    CutterComp,
    ToolLength,
    Turret,
    SpindleMode,
    Motion,
    Spindle,
    Flood,
    Mist,
};
inline constexpr int modalGroupCount = 15;

/// What a G or M code does to the state of a program.
enum class Action {
    Unknown,
    Ignored,     ///< nothing that lasts; axis words are positions as usual
    Modal,       ///< takes the place of its group's code
    Data,        ///< the block's words are no positions, as in a dwell
    Lost,        ///< the axes named stand where the program does not say
    AllLost,     ///< all axes do; the block's words are no positions
    Reference,   ///< the axes named go to their reference point
    Stores,      ///< writes offsets or parameters of the control
    LocalZero,   ///< G52: shifts the zero point by what the block says
    ZeroOrLimit, ///< with S the spindle's highest speed, with axes another zero point
    OffsetByH,   ///< work offset numbered by the block's H
    Call,        ///< runs other text
    Cycle,       ///< canned cycle, repeated at each position
    CycleEnd,
    Turning,      ///< turning cycle in one block: the tool comes back to where it started
    ReturnsAfter, ///< compound cycle that comes back to where it started
    Contour,      ///< the same, over the blocks from P to Q
    ShapeBegin,   ///< the blocks that follow are a shape for such a cycle
    TransformOn,  ///< turns, scales, mirrors or tilts what follows
    TransformOff,
    ToolChange,
    CoolantOff,
    End,
};

struct Meaning {
    Action action = Action::Unknown;
    ModalGroup group = ModalGroup::Motion; ///< of Modal only
};

namespace Codes
{
/// "G54.1" is 541, "M03" is 30; -1 for what is no code number.
int number(QByteArrayView written);
/// What the code means to this control; Unknown when that is not certain.
Meaning meaning(Control control, char letter, int number);
} // namespace Codes
