// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// What an operator can do about a port that does not open.
namespace PortProblem
{
/// The likely cause and the remedy in a sentence or two, from the port's path and the system's error (errno).
QString likelyCause(const QString& path, int error);
} // namespace PortProblem
