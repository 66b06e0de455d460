// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/HistoryModel.h"

#include "history/History.h"
#include "history/HistoryWords.h"
#include "widgets/Images.h"

#include <algorithm>
#include <limits>

namespace
{
constexpr int piece = 256; // rows; several screens

const char* const titles[HistoryModel::Columns] = {"Begin",  "Machine", "Direction", "Program", "Outcome",
                                                   "Amount", "Bytes",   "Took",      "Held"};

QString text(const TransferEntry& entry, int column)
{
    switch (column) {
    case HistoryModel::Began:
        return HistoryWords::time(entry.began);
    case HistoryModel::Machine:
        return entry.machine;
    case HistoryModel::Direction:
        return HistoryWords::direction(entry.direction);
    case HistoryModel::Program:
        return HistoryWords::program(entry);
    case HistoryModel::Outcome:
        return HistoryWords::ending(entry);
    case HistoryModel::Amount:
        return HistoryWords::amount(entry);
    case HistoryModel::Bytes:
        return HistoryWords::bytes(entry);
    case HistoryModel::Took:
        return HistoryWords::took(entry);
    default:
        return HistoryWords::held(entry.heldFor);
    }
}

bool isNumber(int column)
{
    return column >= HistoryModel::Amount;
}
} // namespace

HistoryModel::HistoryModel(History& history, QObject* parent) : QAbstractTableModel(parent), history_(history) {}

void HistoryModel::setFilter(const HistoryFilter& filter)
{
    filter_ = filter;
    reload();
}

void HistoryModel::reload()
{
    isReading_ = true;
    history_.read(this, filter_, std::numeric_limits<qint64>::max(), piece,
                  [this, question = ++question_](const QList<TransferEntry>& entries) {
                      if (question != question_) return;
                      beginResetModel();
                      isReading_ = false;
                      entries_ = entries;
                      hasMore_ = entries.size() == piece;
                      endResetModel();
                  });
}

int HistoryModel::rowOf(qint64 key) const
{
    const auto found = std::find_if(entries_.begin(), entries_.end(), [key](const auto& e) { return e.key == key; });
    return found == entries_.end() ? -1 : static_cast<int>(found - entries_.begin());
}

bool HistoryModel::canFetchMore(const QModelIndex& parent) const
{
    return !parent.isValid() && hasMore_ && !isReading_;
}

void HistoryModel::fetchMore(const QModelIndex& parent)
{
    if (!canFetchMore(parent)) return;
    isReading_ = true;
    history_.read(this, filter_, entries_.last().key, piece,
                  [this, question = question_](const QList<TransferEntry>& entries) {
                      if (question == question_) append(entries);
                  });
}

void HistoryModel::append(const QList<TransferEntry>& entries)
{
    isReading_ = false;
    hasMore_ = entries.size() == piece;
    if (entries.isEmpty()) return;
    beginInsertRows({}, rowCount(), rowCount() + static_cast<int>(entries.size()) - 1);
    entries_ += entries;
    endInsertRows();
}

int HistoryModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(entries_.size());
}

int HistoryModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : Columns;
}

QVariant HistoryModel::data(const QModelIndex& index, int role) const
{
    const auto& entry = entries_[index.row()];
    switch (role) {
    case Qt::DisplayRole:
        return text(entry, index.column());
    case Qt::TextAlignmentRole:
        return QVariant(Qt::AlignVCenter | (isNumber(index.column()) ? Qt::AlignRight : Qt::AlignLeft));
    case Qt::DecorationRole:
        if (index.column() == Direction)
            return Images::icon(entry.direction == TransferEntry::Direction::Sent ? QStringLiteral("send")
                                                                                  : QStringLiteral("receive"));
        if (index.column() == Outcome) return Images::icon(HistoryWords::image(entry.outcome));
        return {};
    case Qt::ToolTipRole:
        return index.column() == Program && !entry.path.isEmpty() ? entry.path : text(entry, index.column());
    default:
        return {};
    }
}

QVariant HistoryModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal) return {};
    if (role == Qt::DisplayRole) return QString::fromLatin1(titles[section]);
    if (role == Qt::TextAlignmentRole)
        return QVariant(Qt::AlignVCenter | (isNumber(section) ? Qt::AlignRight : Qt::AlignLeft));
    return {};
}
