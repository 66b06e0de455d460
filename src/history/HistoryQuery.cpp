// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/HistoryQuery.h"

#include <limits>

namespace
{
// The key of a transfer is its beginning in microseconds, so that the table itself is in the order of time. Each index
// ends with it, too: what it finds comes out newest first, without sorting.
const QStringList firstLayout = {
    QStringLiteral("CREATE TABLE setting (name TEXT PRIMARY KEY, value INTEGER NOT NULL) WITHOUT ROWID"),
    QStringLiteral("CREATE TABLE machine (id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE)"),
    QStringLiteral("CREATE TABLE program (id INTEGER PRIMARY KEY, name TEXT NOT NULL, path TEXT NOT NULL, "
                   "uses INTEGER NOT NULL DEFAULT 0, UNIQUE (path, name))"),
    QStringLiteral("CREATE TABLE entry (key INTEGER PRIMARY KEY, ended INTEGER NOT NULL, direction INTEGER NOT NULL, "
                   "machine INTEGER NOT NULL, program INTEGER NOT NULL, bytes INTEGER NOT NULL, sha256 BLOB NOT NULL, "
                   "unit INTEGER NOT NULL, count INTEGER NOT NULL, from_line INTEGER NOT NULL, "
                   "outcome INTEGER NOT NULL, stopped_at INTEGER NOT NULL, held INTEGER NOT NULL, "
                   "longest_hold INTEGER NOT NULL)"),
    QStringLiteral("CREATE INDEX entry_machine ON entry (machine)"),
    QStringLiteral("CREATE INDEX entry_outcome ON entry (outcome)"),
    QStringLiteral("CREATE INDEX entry_machine_outcome ON entry (machine, outcome)"),
    QStringLiteral("CREATE INDEX entry_program ON entry (program, machine, outcome)"),
    QStringLiteral("CREATE TRIGGER entry_added AFTER INSERT ON entry BEGIN "
                   "UPDATE program SET uses = uses + 1 WHERE id = new.program; END"),
    QStringLiteral("CREATE TRIGGER entry_removed AFTER DELETE ON entry BEGIN "
                   "UPDATE program SET uses = uses - 1 WHERE id = old.program; "
                   "DELETE FROM program WHERE id = old.program AND uses = 0; END"),
};

const QString restarts = QStringLiteral("ALTER TABLE entry ADD COLUMN restarted INTEGER NOT NULL DEFAULT 0");

// The path ends with the name, where there is one.
const QString programMatches = QStringLiteral("CASE path WHEN '' THEN name ELSE path END LIKE ? ESCAPE '\\'");

QString pattern(QString text)
{
    for (const char special : {'\\', '%', '_'})
        text.replace(QLatin1Char(special), QString(u'\\') + QLatin1Char(special));
    return u'%' + text + u'%';
}

qint64 keyAt(const QDate& day)
{
    return day.startOfDay().toMSecsSinceEpoch() * 1000;
}

HistoryQuery::Sql keys(const HistoryFilter& filter, HistoryQuery::Text text, qint64 before, int most)
{
    QString where = QStringLiteral("key < ?");
    QVariantList values = {filter.to.isValid() ? std::min(before, keyAt(filter.to.addDays(1))) : before};
    const auto add = [&](const QString& condition, const QVariant& value) {
        where += QStringLiteral(" AND ") + condition;
        values << value;
    };
    const bool isRare = !filter.program.isEmpty() && text == HistoryQuery::Text::Rare;
    if (filter.from.isValid()) add(QStringLiteral("key >= ?"), keyAt(filter.from));
    if (!filter.machine.isEmpty())
        add(QStringLiteral("machine = (SELECT id FROM machine WHERE name = ?)"), filter.machine);
    if (filter.outcome) add(QStringLiteral("outcome = ?"), static_cast<int>(*filter.outcome));
    if (isRare)
        add(QStringLiteral("program IN (SELECT id FROM program WHERE %1)").arg(programMatches),
            pattern(filter.program));
    if (!filter.program.isEmpty() && !isRare)
        add(QStringLiteral("EXISTS (SELECT 1 FROM program WHERE id = entry.program AND %1)").arg(programMatches),
            pattern(filter.program));
    values << most;
    return {QStringLiteral("SELECT key FROM entry %1 WHERE %2 ORDER BY key DESC LIMIT ?")
                .arg(isRare ? QStringLiteral("INDEXED BY entry_program") : QString(), where),
            values};
}
} // namespace

QStringList HistoryQuery::layoutSince(qint64 version)
{
    QStringList statements;
    if (version < 1) statements << firstLayout;
    if (version < 2) statements << restarts << QStringLiteral("PRAGMA user_version = %1").arg(layoutVersion);
    return statements;
}

HistoryQuery::Sql HistoryQuery::programUses(const HistoryFilter& filter)
{
    return {QStringLiteral("SELECT coalesce(sum(uses), 0) FROM program WHERE %1").arg(programMatches),
            {pattern(filter.program)}};
}

HistoryQuery::Sql HistoryQuery::page(const HistoryFilter& filter, Text text, qint64 before, int most)
{
    const auto found = keys(filter, text, before, most);
    // CROSS JOIN keeps SQLite from starting with another table.
    return {QStringLiteral("SELECT e.key, e.ended, e.direction, m.name, p.name, p.path, e.bytes, e.sha256, e.unit, "
                           "e.count, e.from_line, e.restarted, e.outcome, e.stopped_at, e.held, e.longest_hold "
                           "FROM (%1) k CROSS JOIN entry e ON e.key = k.key "
                           "CROSS JOIN machine m ON m.id = e.machine CROSS JOIN program p ON p.id = e.program "
                           "ORDER BY e.key DESC")
                .arg(found.text),
            found.values};
}

HistoryQuery::Sql HistoryQuery::count(const HistoryFilter& filter, Text text, int most)
{
    const auto found = keys(filter, text, std::numeric_limits<qint64>::max(), most);
    // Their order does not matter here.
    return {QStringLiteral("SELECT count(*) FROM (%1)")
                .arg(QString(found.text).remove(QLatin1String("ORDER BY key DESC "))),
            found.values};
}
