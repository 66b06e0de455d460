// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <functional>

/// The desktop's file manager.
namespace ShowInFolder
{
/// Asks it to show the file, selected in its folder. Where there is none that can, calls `otherwise`, later. Returns at
/// once. Main thread.
void show(const QString& path, std::function<void()> otherwise);
} // namespace ShowInFolder
