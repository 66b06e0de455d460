// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/BackgroundQueue.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace
{
constexpr std::chrono::seconds idleLife{30};

struct Pool {
    std::mutex mutex;
    std::condition_variable workCame;
    std::deque<std::function<void()>> tasks;
    std::size_t idle = 0;

    void serve()
    {
        std::unique_lock lock(mutex);
        while (true) {
            ++idle;
            const bool hasWork = workCame.wait_for(lock, idleLife, [this] { return !tasks.empty(); });
            --idle;
            if (!hasWork) return;
            auto task = std::move(tasks.front());
            tasks.pop_front();
            lock.unlock();
            task();
            task = nullptr; // what the task holds is released outside the lock
            lock.lock();
        }
    }
};

Pool& pool()
{
    // Never destroyed: a thread may still be in a driver call while the process ends.
    static Pool* const instance = new Pool;
    return *instance;
}
} // namespace

void BackgroundQueue::post(std::function<void()> task)
{
    auto& p = pool();
    const std::lock_guard lock(p.mutex);
    p.tasks.push_back(std::move(task));
    if (p.tasks.size() > p.idle) {
        std::thread([&p] { p.serve(); }).detach();
    } else {
        p.workCame.notify_one();
    }
}
