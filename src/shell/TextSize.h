// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

/// Text larger than the user's own size by a share, so that headings grow with it.
namespace TextSize
{
inline void enlarge(QWidget& widget, double factor)
{
    QFont font = widget.font();
    if (font.pointSizeF() > 0) font.setPointSizeF(font.pointSizeF() * factor);
    font.setBold(true);
    widget.setFont(font);
}
} // namespace TextSize
