// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/HistoryFilter.h"

#include <QAbstractTableModel>
#include <QFont>
#include <QList>

class History;

/// The history as rows of a table, newest first. Reads a piece at a time, as the operator scrolls: a history of a
/// million transfers takes no more memory and time than a short one. Main thread; a page owns it.
class HistoryModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column { Began, Machine, Direction, Program, Outcome, Amount, Bytes, Took, Held, Columns };

    /// `history` outlives this object. Empty until the first filter is set.
    explicit HistoryModel(History& history, QObject* parent = nullptr);

    /// The rows stay as they are until the first piece of the new ones is there; then comes `modelReset`.
    void setFilter(const HistoryFilter& filter);
    const HistoryFilter& filter() const { return filter_; }
    /// Reads again from the newest.
    void reload();
    const TransferEntry& entry(int row) const { return entries_[row]; }
    /// The row of that entry, -1 if it has not been read.
    int rowOf(qint64 key) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    bool canFetchMore(const QModelIndex& parent) const override;
    void fetchMore(const QModelIndex& parent) override;

private:
    void append(const QList<TransferEntry>& entries);

    History& history_;
    HistoryFilter filter_;
    QList<TransferEntry> entries_;
    bool hasMore_ = false;
    bool isReading_ = false;
    int question_ = 0; // answers to earlier ones are not wanted any more
};
