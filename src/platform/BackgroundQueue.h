// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

/// Runs blocking work off the main thread. Every task starts at once on a thread of its own or on one that is idle, so
/// that any number of machines held by XOFF never keep another machine's write waiting.
namespace BackgroundQueue
{
/// Any thread; returns at once. Tasks that are posted together may run at the same time.
void post(std::function<void()> task);
} // namespace BackgroundQueue
