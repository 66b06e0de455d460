// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Notices that the desktop shows outside the program's windows.
namespace DesktopNotice
{
/// Shows the notice if the desktop has a place for it; without one nothing happens. Returns at once. Main thread.
void show(const QString& heading, const QString& text);
} // namespace DesktopNotice
