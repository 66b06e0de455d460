// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/HistoryFile.h"

#include <functional>

/// Keeps the history going whatever becomes of its file: opens it when it is needed, sets a damaged one aside and
/// begins a new one, and holds what can't be written until it can. Lives on one thread, the history's.
class HistoryKeeper
{
public:
    /// `tell` is given, on the same thread, what the operator should know: once that a file was damaged, and once that
    /// the history can't be kept.
    HistoryKeeper(const QString& path, std::function<void(const QString&)> tell);

    void add(const TransferEntry& entry);
    // What can't be read is as if there were nothing.
    QList<TransferEntry> read(const HistoryFilter& filter, qint64 before, int most);
    qint64 count(const HistoryFilter& filter, int most);
    QStringList machines();
    int keptDays();
    void setKeptDays(int days);
    /// Deletes a few of the entries that are older than as long as is set. True if there may be more of them.
    bool removeOld(qint64 now);
    /// How many entries that would be with another setting, but no more than `most`.
    qint64 countOlderThan(int days, qint64 now, int most);

private:
    bool attempt(const std::function<HistoryFile::Result(HistoryFile&)>& work);
    bool renew();
    void tellFailure();

    HistoryFile file_;
    const std::function<void(const QString&)> tell_;
    std::deque<TransferEntry> unwritten_;
    bool isFailureTold_ = false;
};
