// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/MainQueue.h"

#include <QCoreApplication>

#include <deque>
#include <mutex>
#include <utility>

namespace
{
struct Queue {
    std::mutex mutex;
    std::deque<std::function<void()>> work;
    QCoreApplication* application = nullptr; // only while it can be woken

    void wake() const;
    void run();
};

Queue& queue()
{
    // Never destroyed: a background write may still report while the process ends.
    static Queue* const instance = new Queue;
    return *instance;
}

void Queue::wake() const
{
    if (application)
        QMetaObject::invokeMethod(
            application, [] { queue().run(); }, Qt::QueuedConnection);
}

// One item per event, and the next event is posted before the item runs: an item that opens a message box runs an event
// loop of its own, and the work of other machines behind it must reach that loop. Events that were already waiting
// would not: GLib's dispatcher does not look for them again.
void Queue::run()
{
    std::function<void()> item;
    {
        const std::lock_guard lock(mutex);
        if (work.empty()) return;
        item = std::move(work.front());
        work.pop_front();
        if (!work.empty()) wake();
    }
    item();
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
    });
    if (!q.work.empty()) q.wake();
}

void MainQueue::post(std::function<void()> work)
{
    auto& q = queue();
    const std::lock_guard lock(q.mutex);
    q.work.push_back(std::move(work));
    if (q.work.size() == 1) q.wake();
}
