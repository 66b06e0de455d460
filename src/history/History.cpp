// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/History.h"

#include "config/NotificationNames.h"
#include "history/HistoryCsv.h"
#include "history/HistoryKeeper.h"
#include "platform/MainQueue.h"
#include "platform/NotificationCenter.h"

#include <QDateTime>
#include <QDir>
#include <QPointer>
#include <QSaveFile>

#include <chrono>
#include <limits>
#include <utility>

namespace
{
constexpr int exportedAtOnce = 1'000; // entries

// Writes the entries that match, a piece a step.
class Export
{
public:
    Export(const QString& path, HistoryFilter filter) : file_(path), filter_(std::move(filter))
    {
        if (file_.open(QIODevice::WriteOnly)) write(HistoryCsv::head());
    }
    /// False when all is written or something went wrong.
    bool step(HistoryKeeper& keeper)
    {
        const auto entries = keeper.read(filter_, before_, exportedAtOnce);
        QByteArray rows;
        for (const auto& entry : entries)
            rows += HistoryCsv::row(entry);
        write(rows);
        if (!entries.isEmpty()) before_ = entries.last().key;
        const bool isUnfinished = entries.size() == exportedAtOnce && file_.error() == QFileDevice::NoError;
        if (!isUnfinished && file_.error() == QFileDevice::NoError) file_.commit();
        return isUnfinished;
    }
    QString errorText() const { return file_.error() == QFileDevice::NoError ? QString() : file_.errorString(); }

private:
    // A full disk first takes a part of the bytes; only the next write reports the error.
    void write(const QByteArray& bytes)
    {
        if (!file_.isOpen()) return;
        for (qint64 at = 0; at < bytes.size() && file_.error() == QFileDevice::NoError;) {
            const auto written = file_.write(bytes.constData() + at, bytes.size() - at);
            if (written <= 0) return;
            at += written;
        }
        file_.flush();
    }

    QSaveFile file_;
    const HistoryFilter filter_;
    qint64 before_ = std::numeric_limits<qint64>::max();
};
} // namespace

History::History(const QString& folder)
{
    MainQueue::attachToMainThread();
    const auto tell = [self = QPointer(this)](const QString& text) {
        MainQueue::post([self, text] {
            if (self) Q_EMIT self->problem(text);
        });
    };
    keeper_ = std::make_shared<HistoryKeeper>(QDir(folder).filePath(QStringLiteral("history.sqlite")), tell);
    NotificationCenter::defaultCenter().addObserver(
        this, Notifications::transferRecorded_Event, nullptr, [this](const Notification& notification) {
            add(notification.userInfo.value(Notifications::transferEntry).value<TransferEntry>());
        });
    connect(&daily_, &QTimer::timeout, this, &History::removeOld);
    daily_.start(std::chrono::hours(24));
    removeOld();
}

History::~History()
{
    worker_.post([keeper = std::exchange(keeper_, nullptr)]() mutable { keeper.reset(); });
}

void History::add(const TransferEntry& entry)
{
    worker_.post([keeper = keeper_, entry] { keeper->add(entry); });
    Q_EMIT changed();
}

// Both the question and the answer may be asked for after this object is gone, but not after `asker` is.
template <typename Question, typename Answer> void History::ask(QObject* asker, Question question, Answer answer)
{
    worker_.post([keeper = keeper_, question, answer, asker = QPointer(asker)] {
        MainQueue::post([result = question(*keeper), answer, asker] {
            if (asker) answer(result);
        });
    });
}

void History::read(QObject* asker, const HistoryFilter& filter, qint64 before, int most,
                   std::function<void(const QList<TransferEntry>&)> answer)
{
    ask(
        asker, [=](HistoryKeeper& keeper) { return keeper.read(filter, before, most); }, answer);
}

void History::count(QObject* asker, const HistoryFilter& filter, int most, std::function<void(qint64)> answer)
{
    ask(
        asker, [=](HistoryKeeper& keeper) { return keeper.count(filter, most); }, answer);
}

void History::machines(QObject* asker, std::function<void(const QStringList&)> answer)
{
    ask(
        asker, [](HistoryKeeper& keeper) { return keeper.machines(); }, answer);
}

void History::exportTo(QObject* asker, const QString& path, const HistoryFilter& filter,
                       std::function<void(const QString&)> answer)
{
    const auto made = std::make_shared<std::unique_ptr<Export>>(); // by the worker: a QSaveFile belongs to its thread
    worker_.postSteps([keeper = keeper_, made, path, filter, answer = std::move(answer), asker = QPointer(asker)] {
        if (!*made) *made = std::make_unique<Export>(path, filter);
        if ((*made)->step(*keeper)) return true;
        MainQueue::post([error = (*made)->errorText(), answer, asker] {
            if (asker) answer(error);
        });
        made->reset();
        return false;
    });
}

void History::keptDays(QObject* asker, std::function<void(int)> answer)
{
    ask(
        asker, [](HistoryKeeper& keeper) { return keeper.keptDays(); }, answer);
}

void History::setKeptDays(int days)
{
    worker_.post([keeper = keeper_, days] { keeper->setKeptDays(days); });
    removeOld();
}

void History::countOlderThan(QObject* asker, int days, int most, std::function<void(qint64)> answer)
{
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    ask(
        asker, [=](HistoryKeeper& keeper) { return keeper.countOlderThan(days, now, most); }, answer);
}

void History::removeOld()
{
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    worker_.postSteps([keeper = keeper_, now, self = QPointer(this)] {
        if (keeper->removeOld(now)) return true;
        MainQueue::post([self] {
            if (self) Q_EMIT self->changed();
        });
        return false;
    });
}
