// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/HistoryFilter.h"
#include "platform/WorkerThread.h"

#include <QObject>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <memory>

class HistoryKeeper;

/// The history of all transfers: notes each one that views report with "transferRecorded_Event", and answers what a
/// page asks. The application owns it. Main thread; all calls return at once, since the file is read and written on a
/// thread of its own. Answers come on the main thread, in the order of the questions; after `asker` is gone they are
/// dropped.
class History : public QObject
{
    Q_OBJECT
public:
    /// In a file in that folder, which is made with the first entry if it is missing.
    explicit History(const QString& folder);
    /// Waits until everything is written.
    ~History() override;

    void add(const TransferEntry& entry);

    /// Up to `most` entries before that key, newest first.
    void read(QObject* asker, const HistoryFilter& filter, qint64 before, int most,
              std::function<void(const QList<TransferEntry>&)> answer);
    /// The number of entries, but no more than `most`.
    void count(QObject* asker, const HistoryFilter& filter, int most, std::function<void(qint64)> answer);
    /// The names of all machines with entries, in alphabetical order.
    void machines(QObject* asker, std::function<void(const QStringList&)> answer);
    /// Writes all entries that match to a file of comma-separated values. Answers with what went wrong in the system's
    /// words, empty on success.
    void exportTo(QObject* asker, const QString& path, const HistoryFilter& filter,
                  std::function<void(const QString&)> answer);

    /// For how many days entries are kept; 0 is for ever.
    void keptDays(QObject* asker, std::function<void(int)> answer);
    /// Entries that are older are deleted, now and every day.
    void setKeptDays(int days);
    /// How many entries another setting would delete, but no more than `most`.
    void countOlderThan(QObject* asker, int days, int most, std::function<void(qint64)> answer);

Q_SIGNALS:
    /// Entries have come, or old ones have been deleted.
    void changed();
    /// Something is wrong with the file. Told once, in words for the operator.
    void problem(const QString& text);

private:
    template <typename Question, typename Answer> void ask(QObject* asker, Question question, Answer answer);
    void removeOld();

    std::shared_ptr<HistoryKeeper> keeper_; // the worker's; here only to hand it to tasks
    WorkerThread worker_;
    QTimer daily_;
};
