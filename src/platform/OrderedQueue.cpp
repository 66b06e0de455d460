// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/OrderedQueue.h"

#include <QThreadPool>

#include <deque>
#include <mutex>
#include <utility>

namespace
{
constexpr int room = 1024; // tasks that may be blocked at the same time; far more than a computer has serial ports

QThreadPool& threads()
{
    // Never destroyed: that would wait for a thread that is still in a driver call while the process ends.
    static QThreadPool* const pool = [] {
        auto* made = new QThreadPool;
        made->setMaxThreadCount(room);
        made->setExpiryTimeout(-1); // a thread that ended beside the process would use what is destroyed already
        return made;
    }();
    return *pool;
}
} // namespace

struct OrderedQueue::State {
    std::mutex mutex;
    std::deque<std::function<void()>> tasks;
    std::shared_ptr<State> running; // itself while there is work, since the queue may be gone before it is done

    std::shared_ptr<State> inWork()
    {
        const std::lock_guard lock(mutex);
        return running;
    }

    std::function<void()> next()
    {
        const std::lock_guard lock(mutex);
        if (tasks.empty()) {
            running.reset();
            return {};
        }
        auto task = std::move(tasks.front());
        tasks.pop_front();
        return task;
    }
};

OrderedQueue::OrderedQueue() : state_(std::make_shared<State>()) {}

void OrderedQueue::post(std::function<void()> task)
{
    const std::lock_guard lock(state_->mutex);
    state_->tasks.push_back(std::move(task));
    if (std::exchange(state_->running, state_)) return;
    // Only an address goes through the pool. All else is handed over under our own lock: the thread sanitizer sees that
    // one, but not Qt's.
    threads().start([waiting = state_.get()] {
        const auto state = waiting->inWork();
        while (const auto next = state->next())
            next();
    });
}
