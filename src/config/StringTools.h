// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include <optional>

/// Text operations that count in characters as a reader sees them (grapheme clusters): CR LF is one character, and so
/// is a letter with its accents. Positions and lengths are in these characters.
namespace StringTools
{
qsizetype length(const QString& text);
/// Position of the first occurrence, or -1.
qsizetype indexOf(const QString& text, const QString& part);
/// From the position to the end; a position at or past the end gives the empty text, a negative one the whole text.
QString subString(const QString& text, qsizetype from);
/// That many characters from the position, clamped to the text.
QString subString(const QString& text, qsizetype from, qsizetype length);
QString ssubString(const QString& text, qsizetype from, qsizetype length);
QString strReplace(const QString& text, const QString& part, const QString& with);
/// Filled with `with` up to `length` characters; a text that is long enough stays as it is.
QString padLeft(const QString& text, qsizetype length, const QString& with);
QString padRight(const QString& text, qsizetype length, const QString& with);
/// The character at the position; empty outside the text.
QString character(const QString& text, qsizetype at);
/// The first Unicode scalar of a character; an unpaired surrogate half counts as 65533. 0 for an empty text.
char32_t unicodeValue(const QString& character);
/// The first unit of a character's UTF-8 and UTF-16 forms, under the same two rules.
quint8 utf8Value(const QString& character);
char16_t utf16Value(const QString& character);

QString ToString(qint64 value);
QString ToString(bool value); ///< "true" or "false"

/// The decimal integer that the text holds: optional sign and digits only, within 64 bits.
std::optional<qint64> parseInteger(const QString& text);

/// The text as a list of its characters.
QStringList characters(const QString& text);
} // namespace StringTools
