// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/HistoryFilter.h"

#include <QString>
#include <QStringList>
#include <QVariantList>

/// The history in SQL: how it is laid out in its file, and what is asked of it. Pure text; knows no connection.
namespace HistoryQuery
{
struct Sql {
    QString text;
    QVariantList values; ///< for its question marks
};

inline constexpr qint64 layoutVersion = 2;
/// What makes a history of that version one of the present version; 0 is an empty file.
QStringList layoutSince(qint64 version);

/// How many transfers have a program that the filter's text matches; says whether it is a `Rare` text.
Sql programUses(const HistoryFilter& filter);

/// A text that few transfers match is looked up by program, one that many match is compared transfer by transfer. The
/// other way round either would read the whole file.
enum class Text { Rare, Frequent };
inline constexpr qint64 mostRareUses = 200'000;

/// Up to `most` transfers before that key, newest first, in the columns that `entry` reads.
Sql page(const HistoryFilter& filter, Text text, qint64 before, int most);
/// The number of transfers, but no more than `most`.
Sql count(const HistoryFilter& filter, Text text, int most);
} // namespace HistoryQuery
