// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/TransferEntry.h"

/// Transfers of the history in an operator's words.
namespace HistoryWords
{
/// "2026-11-25 18:40:12", local time
QString time(qint64 ms);
QString direction(TransferEntry::Direction direction);
/// Its name, or that it has none.
QString program(const TransferEntry& entry);
QString outcome(TransferEntry::Outcome outcome);
/// The outcome and where: "Stopped at line 120".
QString ending(const TransferEntry& entry);
/// The image that shows the outcome; each differs in shape, not in colour alone.
QString image(TransferEntry::Outcome outcome);
/// "1,200 lines", "12 blocks"
QString amount(const TransferEntry& entry);
QString bytes(const TransferEntry& entry);
/// From its beginning to its end: "0:51"
QString took(const TransferEntry& entry);
/// A dash if it was not held.
QString held(qint64 ms);
/// What the columns of a table leave out, one a line.
QString details(const TransferEntry& entry);
} // namespace HistoryWords
