// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MainQueue.h"
#include "platform/OrderedQueue.h"

#include <atomic>
#include <memory>
#include <utility>

/// Works something out in the background for its owner, who wants the latest answer only: what was asked for before is
/// cancelled and its answer dropped, as is everything when the owner goes. Main thread.
class LatestWork
{
public:
    LatestWork() { MainQueue::attachToMainThread(); }
    ~LatestWork() { cancel(); }
    LatestWork(const LatestWork&) = delete;
    LatestWork& operator=(const LatestWork&) = delete;

    /// `work(const std::atomic<bool>& cancelled)` runs on another thread and returns an optional, empty once it has
    /// seen that it is cancelled. `done(answer)` runs on the main thread.
    template <typename Work, typename Done> void start(Work work, Done done)
    {
        cancel();
        cancelled_ = std::make_shared<std::atomic<bool>>(false);
        queue_.post([work = std::move(work), done = std::move(done), cancelled = cancelled_] {
            if (*cancelled) return;
            auto answer = work(*cancelled);
            if (!answer) return;
            MainQueue::post([done, answer = *std::move(answer), cancelled] {
                if (!*cancelled) done(answer);
            });
        });
    }
    void cancel()
    {
        if (cancelled_) *cancelled_ = true;
    }

private:
    OrderedQueue queue_;
    std::shared_ptr<std::atomic<bool>> cancelled_; // of the latest work
};
