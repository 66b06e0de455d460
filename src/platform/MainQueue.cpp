// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/MainQueue.h"

#include <QCoreApplication>

#include <deque>
#include <mutex>
#include <utility>

namespace
{
constexpr int mostAtOnce = 64; // items of one event: the window answers between two events

struct Queue {
    std::mutex mutex;
    std::deque<std::function<void()>> work;
    QCoreApplication* application = nullptr; // only while it can be woken
    bool isWoken = false;                    // an event is on its way to run()

    void wake();
    void run();
};

Queue& queue()
{
    // Never destroyed: a background write may still report while the process ends.
    static Queue* const instance = new Queue;
    return *instance;
}

void Queue::wake()
{
    if (!application || isWoken) return;
    isWoken = true;
    QMetaObject::invokeMethod(
        application, [] { queue().run(); }, Qt::QueuedConnection);
}

// While an item runs, an event for those behind it is on its way: an item that opens a message box runs an event loop
// of its own, and the work of other machines has to reach that loop. The event is posted from here: GLib's dispatcher
// would not look again for one that was already waiting.
void Queue::run()
{
    std::unique_lock lock(mutex);
    isWoken = false;
    for (int count = 0; count < mostAtOnce && !work.empty(); ++count) {
        auto item = std::move(work.front());
        work.pop_front();
        if (!work.empty()) wake();
        lock.unlock();
        item();
        item = nullptr; // what it held may have work to do at its end
        lock.lock();
    }
    if (!work.empty()) wake();
}
} // namespace

void MainQueue::attachToMainThread()
{
    auto& q = queue();
    const std::lock_guard lock(q.mutex);
    if (q.application) return;
    q.application = QCoreApplication::instance();
    // Before the event loop is destroyed: a post from another thread must not find it half gone.
    qAddPostRoutine([] {
        const std::lock_guard atTheEnd(queue().mutex);
        queue().application = nullptr;
        queue().isWoken = false;
    });
    if (!q.work.empty()) q.wake();
}

void MainQueue::post(std::function<void()> work)
{
    auto& q = queue();
    const std::lock_guard lock(q.mutex);
    q.work.push_back(std::move(work));
    q.wake();
}
