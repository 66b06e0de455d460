// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/HistoryKeeper.h"

#include <QDateTime>

#include <utility>

namespace
{
constexpr std::size_t mostUnwritten = 10'000; // entries; some days of a busy shop
constexpr int removedAtOnce = 2'000;          // a few milliseconds' work: transfers that end meanwhile wait for it
constexpr qint64 msPerDay = 24LL * 60 * 60 * 1000;
} // namespace

HistoryKeeper::HistoryKeeper(const QString& path, std::function<void(const QString&)> tell)
    : file_(path), tell_(std::move(tell))
{
}

void HistoryKeeper::add(const TransferEntry& entry)
{
    unwritten_.push_back(entry);
    if (unwritten_.size() > mostUnwritten) unwritten_.pop_front();
    if (attempt([this](HistoryFile& file) { return file.add(unwritten_); })) unwritten_.clear();
}

QList<TransferEntry> HistoryKeeper::read(const HistoryFilter& filter, qint64 before, int most)
{
    QList<TransferEntry> entries;
    attempt([&](HistoryFile& file) {
        entries.clear();
        return file.read(filter, before, most, entries);
    });
    return entries;
}

qint64 HistoryKeeper::count(const HistoryFilter& filter, int most)
{
    qint64 number = 0;
    attempt([&](HistoryFile& file) { return file.count(filter, most, number); });
    return number;
}

QStringList HistoryKeeper::machines()
{
    QStringList names;
    attempt([&](HistoryFile& file) {
        names.clear();
        return file.machines(names);
    });
    return names;
}

int HistoryKeeper::keptDays()
{
    int days = HistoryFile::defaultKeptDays;
    attempt([&](HistoryFile& file) { return file.keptDays(days); });
    return days;
}

void HistoryKeeper::setKeptDays(int days)
{
    attempt([days](HistoryFile& file) { return file.setKeptDays(days); });
}

bool HistoryKeeper::removeOld(qint64 now)
{
    int removed = 0;
    const bool isDone = attempt([&](HistoryFile& file) {
        int days = 0; // unless it is known how long, nothing is deleted
        const auto result = file.keptDays(days);
        if (result != HistoryFile::Result::Ok || days <= 0) return result;
        return file.remove(now - days * msPerDay, removedAtOnce, removed);
    });
    return isDone && removed == removedAtOnce;
}

qint64 HistoryKeeper::countOlderThan(int days, qint64 now, int most)
{
    qint64 number = 0;
    if (days > 0) attempt([&](HistoryFile& file) { return file.countBefore(now - days * msPerDay, most, number); });
    return number;
}

// Opens the file where that is needed. If it turns out to be damaged, does it again with a new one.
bool HistoryKeeper::attempt(const std::function<HistoryFile::Result(HistoryFile&)>& work)
{
    using Result = HistoryFile::Result;
    for (bool isNew = false;; isNew = true) {
        auto result = file_.isOpen() ? Result::Ok : file_.open();
        if (result == Result::Ok) result = work(file_);
        if (result == Result::Ok) return true;
        if (result == Result::Damaged && !isNew && renew()) continue;
        tellFailure();
        file_.close(); // the next time may find it in order again
        return false;
    }
}

bool HistoryKeeper::renew()
{
    const QString aside = file_.setAside();
    if (aside.isEmpty()) return false;
    tell_(QStringLiteral("The history of transfers was damaged\r\rIt is now %1, and a new history has been begun. "
                         "Transfers are not affected.")
              .arg(aside));
    return true;
}

void HistoryKeeper::tellFailure()
{
    if (std::exchange(isFailureTold_, true)) return;
    tell_(QStringLiteral("The history of transfers can't be kept\r\r%1\r\rTransfers are not affected.")
              .arg(file_.errorText()));
}
