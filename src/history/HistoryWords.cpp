// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/HistoryWords.h"

#include "config/TransferWords.h"

#include <QDateTime>

#include <algorithm>
#include <iterator>

namespace
{
constexpr qint64 shownHold = 1000; // ms; a shorter one would show as 0:00

struct Look {
    TransferEntry::Outcome outcome;
    const char* words;
    const char* image;
};
constexpr Look looks[] = {
    {TransferEntry::Outcome::Finished, "Finished", "state-done"},
    {TransferEntry::Outcome::Stopped, "Stopped", "stop"},
    {TransferEntry::Outcome::Cancelled, "Cancelled by the control", "stop"},
    {TransferEntry::Outcome::Unconfirmed, "End not confirmed", "warning"},
    {TransferEntry::Outcome::PortLost, "Port lost", "state-lost"},
};

const Look& lookOf(TransferEntry::Outcome outcome)
{
    const auto* found = std::find_if(std::begin(looks), std::end(looks),
                                     [outcome](const Look& look) { return look.outcome == outcome; });
    return found == std::end(looks) ? looks[0] : *found;
}
} // namespace

QString HistoryWords::time(qint64 ms)
{
    return QDateTime::fromMSecsSinceEpoch(ms).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

QString HistoryWords::direction(TransferEntry::Direction direction)
{
    return direction == TransferEntry::Direction::Sent ? QStringLiteral("Sent") : QStringLiteral("Received");
}

QString HistoryWords::program(const TransferEntry& entry)
{
    return entry.program.isEmpty() ? QStringLiteral("(no name)") : entry.program;
}

QString HistoryWords::outcome(TransferEntry::Outcome outcome)
{
    return QString::fromLatin1(lookOf(outcome).words);
}

QString HistoryWords::ending(const TransferEntry& entry)
{
    const QString words = outcome(entry.outcome);
    if (entry.stoppedAt <= 0 || entry.outcome == TransferEntry::Outcome::Unconfirmed) return words;
    return QStringLiteral("%1 at line %2").arg(words, TransferWords::number(entry.stoppedAt));
}

QString HistoryWords::image(TransferEntry::Outcome outcome)
{
    return QString::fromLatin1(lookOf(outcome).image);
}

QString HistoryWords::amount(const TransferEntry& entry)
{
    return TransferWords::count(entry.count, entry.unit == TransferEntry::Unit::Blocks ? "block" : "line");
}

QString HistoryWords::bytes(const TransferEntry& entry)
{
    return TransferWords::number(entry.bytes);
}

QString HistoryWords::took(const TransferEntry& entry)
{
    return TransferWords::clockTime(std::max<qint64>(entry.ended - entry.began, 0));
}

QString HistoryWords::held(qint64 ms)
{
    return ms >= shownHold ? TransferWords::clockTime(ms) : QStringLiteral("\u2013");
}

QString HistoryWords::details(const TransferEntry& entry)
{
    QStringList line;
    line << QStringLiteral("Ended %1").arg(time(entry.ended));
    if (entry.isRestart || entry.fromLine > 1)
        line << QStringLiteral("%1 line %2")
                    .arg(entry.isRestart ? QStringLiteral("restart from") : QStringLiteral("from"),
                         TransferWords::number(entry.fromLine));
    if (entry.heldFor >= shownHold)
        line << QStringLiteral("held for %1 in all, %2 at the longest")
                    .arg(TransferWords::clockTime(entry.heldFor), TransferWords::clockTime(entry.longestHold));
    return QStringLiteral("%1\n%2\nSHA-256 of the bytes on the line: %3")
        .arg(entry.path.isEmpty() ? QStringLiteral("The program has no file.") : entry.path,
             line.join(QStringLiteral("  \u00B7  ")), QString::fromLatin1(entry.sha256.toHex()));
}
