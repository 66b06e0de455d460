// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/HistoryFilter.h"
#include "history/HistoryQuery.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStringList>

#include <deque>

/// The file that holds the history, an SQLite database. Nobody else can use it while it is open. For one thread only,
/// the one that opens it; its owner is the history's keeper.
///
/// Each change is on the disk, whole, before the call returns, or the file is as it was.
class HistoryFile
{
public:
    enum class Result {
        Ok,
        Damaged, ///< what is in the file makes no sense
        Failed,  ///< the system does not allow it; errorText() says why
    };
    static constexpr int defaultKeptDays = 730;

    explicit HistoryFile(QString path);
    ~HistoryFile();
    HistoryFile(const HistoryFile&) = delete;
    HistoryFile& operator=(const HistoryFile&) = delete;

    /// Makes folder and file where they are missing.
    Result open();
    bool isOpen() const { return db_.isOpen(); }
    void close();
    /// Closes the file and gives it another name, which is returned; empty if that fails.
    QString setAside();
    QString errorText() const { return errorText_; }

    /// Adds all or none of them. Keys are given out here.
    Result add(const std::deque<TransferEntry>& entries);
    /// Appends up to `most` entries before that key, newest first.
    Result read(const HistoryFilter& filter, qint64 before, int most, QList<TransferEntry>& entries);
    /// The number of entries, but no more than `most`.
    Result count(const HistoryFilter& filter, int most, qint64& number);
    /// The names of all machines with entries, in alphabetical order.
    Result machines(QStringList& names);
    /// How many began before that time (ms since 1970), but no more than `most`.
    Result countBefore(qint64 time, int most, qint64& number);
    /// Deletes up to `most` entries that began before that time (ms since 1970), the oldest first.
    Result remove(qint64 before, int most, int& removed);

    /// For how many days entries are kept; 0 is for ever.
    Result keptDays(int& days);
    Result setKeptDays(int days);

private:
    void setUp();
    void insert(const TransferEntry& entry);
    HistoryQuery::Text textOf(const HistoryFilter& filter);
    QSqlQuery run(const HistoryQuery::Sql& sql);
    QSqlQuery run(const QString& text) { return run(HistoryQuery::Sql{text, {}}); }
    qint64 number(const HistoryQuery::Sql& sql);
    void note(const QSqlError& error);
    Result commit();

    const QString path_;
    const QString connection_;
    QSqlDatabase db_;
    Result result_ = Result::Ok; // of the call under way: after a failure its further statements do nothing
    QString errorText_;
};
