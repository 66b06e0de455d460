// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "protocol/Framing.h"

#include <QString>

#include <optional>

/// What is taken out of a program's lines on their way to the control.
struct LineFilter {
    ControlType type = ControlType::General;
    bool stripComments = false;
    bool stripEmptyLines = false;

    /// The line as it goes out, its "\n" (if it has one) kept; nothing when the line is not sent at all.
    /// With General and both flags off every line goes out unchanged.
    std::optional<QString> lineToSend(const QString& line) const;
};
