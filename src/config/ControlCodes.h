// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// The notations in which a machine's framing strings are set up, turned into the characters that they stand for.
namespace ControlCodes
{
/// End of block: a text with "Default" in it means CR LF; otherwise "CR" and "LF" become the control characters and
/// everything else stays as written.
QString endOfBlock(const QString& notation);

/// Start and end strings: pieces separated by commas. A piece that is a decimal byte code stands for that character,
/// any other piece for itself; "Default" anywhere means nothing is sent.
QString startOrEnd(const QString& notation);
} // namespace ControlCodes
