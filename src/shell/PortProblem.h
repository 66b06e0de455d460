// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "serial/PortError.h"

#include <QString>

/// What an operator can do about a port that does not open.
namespace PortProblem
{
struct Attempt {
    QString path;
    unsigned long speed = 0; ///< baud
    PortFailure failure = {};
};
/// The likely cause and the remedy, in a sentence or two.
QString likelyCause(const Attempt& attempt);
} // namespace PortProblem
