// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/HistoryFile.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <QUuid>

#include <utility>

namespace
{
// SQLite's primary result codes, in the low byte of what it reports.
constexpr int busy = 5;
constexpr int corrupt = 11;
constexpr int notADatabase = 26;

TransferEntry entryOf(const QSqlQuery& row)
{
    TransferEntry entry;
    int column = 0;
    const auto next = [&] { return row.value(column++); };
    entry.key = next().toLongLong();
    entry.began = entry.key / 1000;
    entry.ended = next().toLongLong();
    entry.direction = static_cast<TransferEntry::Direction>(next().toInt());
    entry.machine = next().toString();
    entry.program = next().toString();
    entry.path = next().toString();
    entry.bytes = next().toLongLong();
    entry.sha256 = next().toByteArray();
    entry.unit = static_cast<TransferEntry::Unit>(next().toInt());
    entry.count = next().toLongLong();
    entry.fromLine = next().toLongLong();
    entry.isRestart = next().toBool();
    entry.outcome = static_cast<TransferEntry::Outcome>(next().toInt());
    entry.stoppedAt = next().toLongLong();
    entry.heldFor = next().toLongLong();
    entry.longestHold = next().toLongLong();
    return entry;
}

// A null text would be stored as NULL, which no column takes.
QString stored(const QString& text)
{
    return text.isNull() ? QStringLiteral("") : text;
}
} // namespace

HistoryFile::HistoryFile(QString path)
    : path_(std::move(path)), connection_(QUuid::createUuid().toString(QUuid::WithoutBraces))
{
}

HistoryFile::~HistoryFile()
{
    close();
}

HistoryFile::Result HistoryFile::open()
{
    close();
    const QString folder = QFileInfo(path_).absolutePath();
    if (!QDir().mkpath(folder)) {
        errorText_ = QStringLiteral("The folder %1 can't be made.").arg(folder);
        return Result::Failed;
    }
    db_ = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection_);
    db_.setDatabaseName(path_);
    if (!db_.open()) note(db_.lastError());
    setUp();
    if (result_ != Result::Ok) close();
    return std::exchange(result_, Result::Ok);
}

void HistoryFile::setUp()
{
    // Held as long as it is open: two programs could be started with different settings but the same data folder.
    run(QStringLiteral("PRAGMA locking_mode = EXCLUSIVE"));
    run(QStringLiteral("PRAGMA journal_mode = WAL"));
    run(QStringLiteral("PRAGMA synchronous = FULL"));
    const auto version = number({QStringLiteral("PRAGMA user_version"), {}});
    if (version > HistoryQuery::layoutVersion) {
        result_ = Result::Failed;
        errorText_ = QStringLiteral("%1 was written by a newer version of the program.").arg(path_);
    }
    run(QStringLiteral("BEGIN IMMEDIATE")); // takes the lock
    for (const auto& statement : HistoryQuery::layoutSince(version))
        run(statement);
    // Most damage shows here; what does not is found when it is read.
    run(QStringLiteral("SELECT * FROM entry JOIN machine ON machine.id = entry.machine ORDER BY key DESC LIMIT 1"));
    run(QStringLiteral("SELECT sum(uses) FROM program"));
    if (result_ == Result::Ok) result_ = commit();
}

void HistoryFile::close()
{
    if (!db_.isValid()) return;
    db_.close();
    db_ = {};
    QSqlDatabase::removeDatabase(connection_);
}

QString HistoryFile::setAside()
{
    close();
    const QFileInfo file(path_);
    const QString stem = file.dir().filePath(
        QStringLiteral("%1-damaged-%2")
            .arg(file.completeBaseName(), QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"))));
    QString aside = stem + u'.' + file.suffix();
    for (int number = 2; QFileInfo::exists(aside); ++number)
        aside = QStringLiteral("%1-%2.%3").arg(stem, QString::number(number), file.suffix());
    // What has not got into the file yet goes with it: it must not be taken for a part of the new one.
    QFile::rename(path_ + QStringLiteral("-wal"), aside + QStringLiteral("-wal"));
    if (!QFile::rename(path_, aside)) {
        errorText_ = QStringLiteral("%1 is damaged and can't be renamed.").arg(path_);
        return {};
    }
    return aside;
}

HistoryFile::Result HistoryFile::add(const std::deque<TransferEntry>& entries)
{
    run(QStringLiteral("BEGIN IMMEDIATE"));
    for (const auto& entry : entries)
        insert(entry);
    return commit();
}

void HistoryFile::insert(const TransferEntry& entry)
{
    run({QStringLiteral("INSERT OR IGNORE INTO machine (name) VALUES (?)"), {stored(entry.machine)}});
    run({QStringLiteral("INSERT OR IGNORE INTO program (name, path) VALUES (?, ?)"),
         {stored(entry.program), stored(entry.path)}});
    // Two machines may begin in the same millisecond.
    const qint64 first = entry.began * 1000;
    const qint64 free = number({QStringLiteral("SELECT coalesce(max(key) + 1, ?) FROM entry WHERE key BETWEEN ? AND ?"),
                                {first, first, first + 999}});
    for (qint64 key = free; result_ == Result::Ok; ++key) {
        const auto added =
            run({QStringLiteral("INSERT OR IGNORE INTO entry (key, ended, direction, machine, program, bytes, sha256, "
                                "unit, count, from_line, restarted, outcome, stopped_at, held, longest_hold) VALUES "
                                "(?, ?, ?, "
                                "(SELECT id FROM machine WHERE name = ?), (SELECT id FROM program WHERE name = ? AND "
                                "path = ?), ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
                 {key, entry.ended, static_cast<int>(entry.direction), stored(entry.machine), stored(entry.program),
                  stored(entry.path), entry.bytes, entry.sha256.isNull() ? QByteArray("") : entry.sha256,
                  static_cast<int>(entry.unit), entry.count, entry.fromLine, entry.isRestart,
                  static_cast<int>(entry.outcome), entry.stoppedAt, entry.heldFor, entry.longestHold}});
        if (added.numRowsAffected() > 0) return;
    }
}

HistoryQuery::Text HistoryFile::textOf(const HistoryFilter& filter)
{
    if (filter.program.isEmpty()) return HistoryQuery::Text::Frequent;
    const auto uses = number(HistoryQuery::programUses(filter));
    return uses <= HistoryQuery::mostRareUses ? HistoryQuery::Text::Rare : HistoryQuery::Text::Frequent;
}

HistoryFile::Result HistoryFile::read(const HistoryFilter& filter, qint64 before, int most,
                                      QList<TransferEntry>& entries)
{
    auto rows = run(HistoryQuery::page(filter, textOf(filter), before, most));
    while (rows.next())
        entries << entryOf(rows);
    note(rows.lastError()); // a damaged page shows only when its turn comes
    return std::exchange(result_, Result::Ok);
}

HistoryFile::Result HistoryFile::count(const HistoryFilter& filter, int most, qint64& number)
{
    number = this->number(HistoryQuery::count(filter, textOf(filter), most));
    return std::exchange(result_, Result::Ok);
}

HistoryFile::Result HistoryFile::machines(QStringList& names)
{
    auto rows = run(QStringLiteral("SELECT name FROM machine WHERE EXISTS (SELECT 1 FROM entry WHERE "
                                   "entry.machine = machine.id) ORDER BY name COLLATE NOCASE"));
    while (rows.next())
        names << rows.value(0).toString();
    note(rows.lastError());
    return std::exchange(result_, Result::Ok);
}

HistoryFile::Result HistoryFile::countBefore(qint64 time, int most, qint64& number)
{
    number = this->number(
        {QStringLiteral("SELECT count(*) FROM (SELECT key FROM entry WHERE key < ? LIMIT ?)"), {time * 1000, most}});
    return std::exchange(result_, Result::Ok);
}

HistoryFile::Result HistoryFile::remove(qint64 before, int most, int& removed)
{
    run(QStringLiteral("BEGIN IMMEDIATE"));
    removed = run({QStringLiteral("DELETE FROM entry WHERE key IN (SELECT key FROM entry WHERE key < ? "
                                  "ORDER BY key LIMIT ?)"),
                   {before * 1000, most}})
                  .numRowsAffected();
    return commit();
}

HistoryFile::Result HistoryFile::keptDays(int& days)
{
    auto row = run(QStringLiteral("SELECT value FROM setting WHERE name = 'kept_days'"));
    days = row.next() ? row.value(0).toInt() : defaultKeptDays;
    note(row.lastError());
    return std::exchange(result_, Result::Ok);
}

HistoryFile::Result HistoryFile::setKeptDays(int days)
{
    run(QStringLiteral("BEGIN IMMEDIATE"));
    run({QStringLiteral("INSERT OR REPLACE INTO setting (name, value) VALUES ('kept_days', ?)"), {days}});
    return commit();
}

QSqlQuery HistoryFile::run(const HistoryQuery::Sql& sql)
{
    QSqlQuery query(db_);
    if (result_ != Result::Ok) return query;
    query.setForwardOnly(true);
    bool isDone = query.prepare(sql.text);
    for (const auto& value : sql.values)
        query.addBindValue(value);
    isDone = isDone && query.exec();
    if (!isDone) note(query.lastError());
    return query;
}

qint64 HistoryFile::number(const HistoryQuery::Sql& sql)
{
    auto row = run(sql);
    const qint64 number = row.next() ? row.value(0).toLongLong() : 0;
    note(row.lastError());
    return number;
}

void HistoryFile::note(const QSqlError& error)
{
    if (!error.isValid() || result_ != Result::Ok) return;
    const int code = error.nativeErrorCode().toInt() & 0xFF;
    result_ = code == corrupt || code == notADatabase ? Result::Damaged : Result::Failed;
    errorText_ = error.databaseText().isEmpty() ? error.driverText() : error.databaseText();
    if (code == busy) errorText_ = QStringLiteral("Another program is using it.");
}

// Ends the transaction, if there is one, and the call.
HistoryFile::Result HistoryFile::commit()
{
    run(QStringLiteral("COMMIT"));
    const auto result = std::exchange(result_, Result::Ok);
    if (result != Result::Ok) {
        const QString why = errorText_;
        run(QStringLiteral("ROLLBACK")); // fails where SQLite has done so itself
        result_ = Result::Ok;
        errorText_ = why;
    }
    return result;
}
