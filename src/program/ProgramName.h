// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <string_view>

class QDateTime;

/// The file name for a program that has none.
namespace ProgramName
{
constexpr std::size_t searchedText = 4096; ///< bytes; a number further down names a subprogram, not the file

/// The O number with which the text begins, as it stands there: "O1234", also from ":1234". Leaders, percent signs,
/// comments and empty lines may come before it. Empty without one.
QString number(std::string_view text);
/// "O1234.nc"; without a number the machine's name and the time, "Lathe 2026-11-24 14-05-09.nc". Characters that no
/// file system takes become "-".
QString proposed(std::string_view text, const QString& machine, const QDateTime& now);
/// For a program that is saved without anybody seeing the name first: from its O number, from the file head that it
/// begins with ("$SHAFT.MIN%"), from its first comment, or as proposed() does. The suffix, ".nc", follows unless the
/// head has one. Always a name in the folder itself, visible, and with room for an ending.
QString ofReceived(std::string_view text, const QString& machine, const QDateTime& now, const QString& suffix);
} // namespace ProgramName
