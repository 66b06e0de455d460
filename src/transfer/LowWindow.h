// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

/// Whether a window, or a view, is so low for its text that lines of the program are worth more than space around them.
inline bool isLowWindow(const QWidget& window)
{
    constexpr int lines = 32;
    return window.height() < lines * window.fontMetrics().height();
}
