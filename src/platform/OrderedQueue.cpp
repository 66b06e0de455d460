// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/OrderedQueue.h"

#include "platform/BackgroundQueue.h"

#include <deque>
#include <mutex>
#include <utility>

struct OrderedQueue::State {
    std::mutex mutex;
    std::deque<std::function<void()>> tasks;
    bool isRunning = false;

    std::function<void()> next()
    {
        const std::lock_guard lock(mutex);
        isRunning = !tasks.empty();
        if (!isRunning) return {};
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
    if (std::exchange(state_->isRunning, true)) return;
    BackgroundQueue::post([state = state_] {
        while (const auto next = state->next())
            next();
    });
}
