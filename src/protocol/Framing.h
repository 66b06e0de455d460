// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

/// How a control expects a program to be framed on the line.
enum class ControlType { General, Fanuc, Okuma };

namespace Framing
{
/// From the machine's mode name, whatever its case. Any other name is General.
ControlType controlType(const QString& mode);

/// Bytes that open a program for this control type; sot and eob already in characters.
QByteArray header(ControlType type, const QString& sot, const QString& eob);

/// Bytes that close a program; eot and eob already in characters.
QByteArray trailer(ControlType type, const QString& eot, const QString& eob);

/// NUL characters of a tape leader.
inline constexpr int leaderLength = 20;

// Tape reader codes of ISO 646: DC2 starts the tape, DC4 stops it.
inline constexpr char tapeStart = 18;
inline constexpr char tapeStop = 20;
} // namespace Framing
