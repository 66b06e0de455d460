// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/WorkerThread.h"

#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <mutex>
#include <utility>

namespace
{
// Handlers run in the reverse order of their registration, among the destructors of static objects: this one runs
// first.
void keepStaticObjects()
{
#ifdef __GLIBC__
    ::on_exit(
        [](int code, void*) {
            std::fflush(nullptr);
            std::_Exit(code);
        },
        nullptr);
#else
    std::atexit([] {
        std::fflush(nullptr);
        std::_Exit(EXIT_SUCCESS);
    });
#endif
}
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

WorkerThread::WorkerThread(std::chrono::milliseconds patience)
    : state_(std::make_shared<State>()), patience_(patience), thread_([state = state_] { state->run(); })
{
}

WorkerThread::~WorkerThread()
{
    std::unique_lock lock(state_->mutex);
    state_->isEnding = true;
    state_->changed.notify_all();
    const bool hasEnded = state_->changed.wait_for(lock, patience_, [this] { return state_->hasEnded; });
    lock.unlock();
    if (hasEnded) {
        thread_.join();
    } else {
        thread_.detach();
        keepStaticObjects();
    }
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
