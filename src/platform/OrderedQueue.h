// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <memory>

/// Runs its tasks in the background, one after another in the order of posting: however many wait, one thread is enough
/// for them. What was posted still runs after the queue is gone. Queues do not wait for each other, so that machines
/// held by XOFF never keep another machine's write waiting.
class OrderedQueue
{
public:
    OrderedQueue();

    /// Any thread; never waits for a task.
    void post(std::function<void()> task);

private:
    struct State;
    std::shared_ptr<State> state_; // shared with the thread that runs the tasks
};
