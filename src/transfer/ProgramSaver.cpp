// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/ProgramSaver.h"

#include "platform/MainQueue.h"
#include "protocol/ReceivedText.h"

#include <QPointer>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace
{
constexpr std::chrono::milliseconds unnoticed(300);
} // namespace

struct ProgramSaver::Shared {
    std::mutex mutex;
    std::condition_variable changed;
    int underWay = 0;
    QList<Answer> answers; // not delivered yet
};

ProgramSaver::ProgramSaver(QObject* parent) : QObject(parent), shared_(std::make_shared<Shared>())
{
    MainQueue::attachToMainThread();
}

ProgramSaver::~ProgramSaver() = default;

void ProgramSaver::save(int number, const KeptFiles::Order& order, bool isXModem)
{
    {
        const std::lock_guard lock(shared_->mutex);
        ++shared_->underWay;
    }
    queue_.post([number, order = KeptFiles::Order(order), isXModem, shared = shared_, self = QPointer(this)]() mutable {
        order.bytes = isXModem ? ReceivedText::ofXModem(order.bytes) : ReceivedText::ofTape(order.bytes);
        const Answer answer{number, KeptFiles::save(order), order.bytes.count('\n'), order.bytes.size()};
        const std::lock_guard lock(shared->mutex);
        --shared->underWay;
        shared->answers << answer;
        shared->changed.notify_all();
        MainQueue::post([self = std::move(self)] {
            if (self) self->deliver();
        });
    });
}

void ProgramSaver::settle()
{
    {
        std::unique_lock lock(shared_->mutex);
        shared_->changed.wait_for(lock, unnoticed, [this] { return shared_->underWay == 0; });
    }
    deliver();
}

void ProgramSaver::deliver()
{
    QList<Answer> answers;
    {
        const std::lock_guard lock(shared_->mutex);
        answers = std::exchange(shared_->answers, {});
    }
    for (const auto& answer : answers)
        Q_EMIT answered(answer);
}
