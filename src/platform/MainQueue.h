// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

/// The way back to the main thread for background work.
namespace MainQueue
{
/// Makes posted work run on the calling thread's event loop from now on. Call once on the main thread after the
/// application object exists; further calls do nothing while that object lives.
void attachToMainThread();

/// Queues `work` to run on the main thread, in the order of posting. Any thread; returns at once.
void post(std::function<void()> work);
} // namespace MainQueue
