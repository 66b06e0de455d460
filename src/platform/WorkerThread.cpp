// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/WorkerThread.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

namespace
{
constexpr std::chrono::seconds patience(10); // a disk that takes longer for what is left does not answer at all
} // namespace

struct WorkerThread::State {
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::function<bool()>> tasks; // one that returns true wants to run again
    bool isEnding = false;
    bool hasEnded = false;

    void run()
    {
        std::unique_lock lock(mutex);
        while (true) {
            changed.wait(lock, [this] { return isEnding || !tasks.empty(); });
            if (tasks.empty()) break;
            auto task = std::move(tasks.front());
            tasks.pop_front();
            lock.unlock();
            const bool isUnfinished = task();
            lock.lock();
            if (isUnfinished && !isEnding) {
                tasks.push_back(std::move(task));
                continue;
            }
            lock.unlock();
            task = nullptr; // what it holds goes on this thread, and not under our lock
            lock.lock();
        }
        hasEnded = true;
        changed.notify_all();
    }
};

WorkerThread::WorkerThread() : state_(std::make_shared<State>()), thread_([state = state_] { state->run(); }) {}

WorkerThread::~WorkerThread()
{
    std::unique_lock lock(state_->mutex);
    state_->isEnding = true;
    state_->changed.notify_all();
    const bool hasEnded = state_->changed.wait_for(lock, patience, [this] { return state_->hasEnded; });
    lock.unlock();
    hasEnded ? thread_.join() : thread_.detach();
}

void WorkerThread::post(std::function<void()> task)
{
    postSteps([task = std::move(task)] {
        task();
        return false;
    });
}

void WorkerThread::postSteps(std::function<bool()> step)
{
    const std::lock_guard lock(state_->mutex);
    if (state_->isEnding) return;
    state_->tasks.push_back(std::move(step));
    state_->changed.notify_all();
}
