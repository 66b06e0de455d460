// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/MainQueue.h"

#include <QCoreApplication>
#include <QPointer>
#include <QSocketNotifier>

#include <array>
#include <fcntl.h>
#include <mutex>
#include <unistd.h>
#include <utility>
#include <vector>

namespace
{
// A pipe wakes the event loop; one byte stands for "there is work".
struct Queue {
    std::mutex mutex;
    std::vector<std::function<void()>> work;
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

    void run()
    {
        std::array<char, 64> wakeUps;
        while (::read(wakePipe[0], wakeUps.data(), wakeUps.size()) > 0) {
        }
        std::vector<std::function<void()>> due;
        {
            const std::lock_guard lock(mutex);
            due.swap(work);
        }
        for (auto& item : due)
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
    const bool wasEmpty = q.work.empty();
    q.work.push_back(std::move(work));
    if (wasEmpty) {
        const char wakeUp = 0;
        // A full pipe is no failure: the loop has wake-ups enough.
        [[maybe_unused]] const auto written = ::write(q.wakePipe[1], &wakeUp, 1);
    }
}
