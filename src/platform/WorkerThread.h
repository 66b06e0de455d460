// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <thread>

/// Runs its tasks in the background, all on one thread of its own and in the order of posting: for what only one thread
/// may use, as a connection to a database. Where that does not matter, OrderedQueue is cheaper.
class WorkerThread
{
public:
    /// A disk that takes longer than that for what is left at the end does not answer at all.
    explicit WorkerThread(std::chrono::milliseconds patience = std::chrono::seconds(10));
    /// Waits until all tasks posted so far have run, but not for ever: what the operating system never ends must not
    /// keep the program from ending. What is posted from then on does not run, nor does a further step. After a wait in
    /// vain the process ends without destroying its static objects: the thread may still use them.
    ~WorkerThread();
    WorkerThread(const WorkerThread&) = delete;
    WorkerThread& operator=(const WorkerThread&) = delete;

    /// Any thread, the tasks' own as well; never waits for a task.
    void post(std::function<void()> task);
    /// For a task that takes long: a step of it is run again and again, each time behind all that was posted meanwhile,
    /// until it returns false.
    void postSteps(std::function<bool()> step);

private:
    struct State;
    const std::shared_ptr<State> state_; // shared with the thread, which may outlive this object
    const std::chrono::milliseconds patience_;
    std::thread thread_;
};
