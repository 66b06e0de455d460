// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/MainQueue.h"

#include <QCoreApplication>
#include <QPointer>
#include <QSocketNotifier>

#include <array>
#include <deque>
#include <fcntl.h>
#include <mutex>
#include <unistd.h>
#include <utility>

namespace
{
// A pipe wakes the event loop; a byte in it stands for "there is work".
struct Queue {
    std::mutex mutex;
    std::deque<std::function<void()>> work;
    std::array<int, 2> wakePipe{-1, -1};
    QPointer<QSocketNotifier> notifier;

    Queue()
    {
        if (::pipe(wakePipe.data()) != 0) qFatal("no pipe for the main queue");
        for (const int fd : wakePipe) {
            ::fcntl(fd, F_SETFL, O_NONBLOCK);
            ::fcntl(fd, F_SETFD, FD_CLOEXEC);
        }
    }

    void wake() const
    {
        const char wakeUp = 0;
        // A full pipe is no failure: the loop has wake-ups enough.
        [[maybe_unused]] const auto written = ::write(wakePipe[1], &wakeUp, 1);
    }

    // One item per wake-up: one that opens a message box runs an event loop of its own, and the work of other machines
    // behind it must reach that loop.
    void run()
    {
        std::function<void()> item;
        {
            const std::lock_guard lock(mutex);
            std::array<char, 64> wakeUps;
            while (::read(wakePipe[0], wakeUps.data(), wakeUps.size()) > 0) {
            }
            if (work.empty()) return;
            item = std::move(work.front());
            work.pop_front();
            if (!work.empty()) wake();
        }
        item();
    }
};

Queue& queue()
{
    // Never destroyed: a background write may still report while the process ends.
    static Queue* const instance = new Queue;
    return *instance;
}
} // namespace

void MainQueue::attachToMainThread()
{
    auto& q = queue();
    if (q.notifier) return;
    q.notifier = new QSocketNotifier(q.wakePipe[0], QSocketNotifier::Read, QCoreApplication::instance());
    QObject::connect(q.notifier, &QSocketNotifier::activated, q.notifier, [&q] { q.run(); });
}

void MainQueue::post(std::function<void()> work)
{
    auto& q = queue();
    const std::lock_guard lock(q.mutex);
    q.work.push_back(std::move(work));
    if (q.work.size() == 1) q.wake();
}
