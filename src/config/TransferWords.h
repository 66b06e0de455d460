// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Times and counts in words.
namespace TransferWords
{
/// With thousands separated.
QString number(qint64 value);
/// "1 line", "20,000 lines"
QString count(qint64 value, const char* singular);
/// "0:51", "12:03", "1:02:03"
QString clockTime(qint64 ms);
/// Rounded as an estimate deserves: "a few seconds", "about 40 s", "about 12 min", "about 2 h 10 min"
QString about(double ms);
/// "12 s", "3 min", "1 h 5 min"
QString ago(qint64 ms);
} // namespace TransferWords
