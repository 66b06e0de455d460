// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>
#include <QPainter>
#include <QStyle>

/// A label of one line that shortens its text to the room there is, where a plain label would cut it off. text() is the
/// whole text, and so is the tool tip of a shortened one.
class ElidedLabel : public QLabel
{
    Q_OBJECT
public:
    using QLabel::QLabel;

    QSize minimumSizeHint() const override { return {fontMetrics().height() * 4, QLabel::minimumSizeHint().height()}; }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        const QRect room = contentsRect();
        const QString shown = fontMetrics().elidedText(text(), Qt::ElideMiddle, room.width());
        style()->drawItemText(&painter, room, static_cast<int>(alignment()), palette(), isEnabled(), shown,
                              foregroundRole());
        if (const QString tip = shown == text() ? QString() : text(); tip != toolTip()) setToolTip(tip);
    }
};
