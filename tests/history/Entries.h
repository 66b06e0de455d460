// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/TransferEntry.h"

#include <QDateTime>

/// Entries for tests: whole ones, of which no two are alike.
namespace Entries
{
inline qint64 at(const QDate& day, int hour = 12)
{
    return QDateTime(day, QTime(hour, 0)).toMSecsSinceEpoch();
}

inline TransferEntry make(int number, qint64 began)
{
    TransferEntry entry;
    entry.began = began;
    entry.ended = began + 60'000 + number;
    entry.direction = number % 2 ? TransferEntry::Direction::Received : TransferEntry::Direction::Sent;
    entry.machine = QStringLiteral("Mill %1").arg(number);
    entry.program = QStringLiteral("O%1.nc").arg(number);
    entry.path = QStringLiteral("/srv/Pr\u00fcfung/O%1.nc").arg(number);
    entry.bytes = 1000 + number;
    entry.sha256 = QByteArray(32, static_cast<char>(number));
    entry.unit = number % 2 ? TransferEntry::Unit::Blocks : TransferEntry::Unit::Lines;
    entry.count = 20 + number;
    entry.fromLine = 1 + number;
    entry.isRestart = number % 3 == 0;
    entry.outcome = static_cast<TransferEntry::Outcome>(number % 5);
    entry.stoppedAt = number % 5 ? 5 + number : 0;
    entry.heldFor = 300 + number;
    entry.longestHold = 200 + number;
    return entry;
}
} // namespace Entries
