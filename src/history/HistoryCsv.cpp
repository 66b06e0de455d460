// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/HistoryCsv.h"

#include "history/HistoryWords.h"

#include <QDateTime>
#include <QStringList>

namespace
{
// Names and paths come from outside: a program called "=cmd()" must not become one.
QString harmless(const QString& text)
{
    static const QString startsFormula = QStringLiteral("=+-@\t\r");
    return !text.isEmpty() && startsFormula.contains(text.front()) ? u'\'' + text : text;
}

QString quoted(QString text)
{
    static const QString special = QStringLiteral(",\"\r\n");
    const bool needsQuotes =
        std::any_of(text.cbegin(), text.cend(), [](QChar character) { return special.contains(character); });
    return needsQuotes ? u'"' + text.replace(u'"', QLatin1String("\"\"")) + u'"' : text;
}

QByteArray line(const QStringList& fields)
{
    QStringList texts;
    for (const auto& field : fields)
        texts << quoted(field);
    return texts.join(u',').toUtf8() + "\r\n";
}

QString time(qint64 ms)
{
    return QDateTime::fromMSecsSinceEpoch(ms).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

QString seconds(qint64 ms)
{
    return QString::number(static_cast<double>(ms) / 1000, 'f', 1);
}
} // namespace

QByteArray HistoryCsv::head()
{
    return "\xEF\xBB\xBF" +
           line({QStringLiteral("Begin"), QStringLiteral("End"), QStringLiteral("Machine"), QStringLiteral("Direction"),
                 QStringLiteral("Program"), QStringLiteral("File"), QStringLiteral("Outcome"),
                 QStringLiteral("Stopped at line"), QStringLiteral("From line"), QStringLiteral("Restart"),
                 QStringLiteral("Lines"), QStringLiteral("Blocks"), QStringLiteral("Bytes"),
                 QStringLiteral("Held in all (s)"), QStringLiteral("Longest hold (s)"), QStringLiteral("SHA-256")});
}

QByteArray HistoryCsv::row(const TransferEntry& entry)
{
    const bool isBlocks = entry.unit == TransferEntry::Unit::Blocks;
    const QString count = QString::number(entry.count);
    return line({time(entry.began), time(entry.ended), harmless(entry.machine),
                 HistoryWords::direction(entry.direction), harmless(entry.program), harmless(entry.path),
                 HistoryWords::outcome(entry.outcome),
                 entry.stoppedAt > 0 ? QString::number(entry.stoppedAt) : QString(), QString::number(entry.fromLine),
                 entry.isRestart ? QStringLiteral("yes") : QString(), isBlocks ? QString() : count,
                 isBlocks ? count : QString(), QString::number(entry.bytes), seconds(entry.heldFor),
                 seconds(entry.longestHold), QString::fromLatin1(entry.sha256.toHex())});
}
