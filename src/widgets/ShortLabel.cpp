// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/ShortLabel.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

QSize ShortLabel::minimumSizeHint() const
{
    return {fontMetrics().averageCharWidth() * 4, QLabel::minimumSizeHint().height()};
}

QString ShortLabel::shownText() const
{
    const QString shown = fontMetrics().elidedText(text(), elideMode_, contentsRect().width());
    return shown != text() && shown.size() < least_ ? QString() : shown;
}

void ShortLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    style()->drawItemText(&painter, contentsRect(), static_cast<int>(alignment()), palette(), isEnabled(), shownText(),
                          foregroundRole());
}

bool ShortLabel::event(QEvent* event)
{
    const bool isCut = shownText() != text();
    if (event->type() != QEvent::ToolTip || !isCut || !toolTip().isEmpty()) return QLabel::event(event);
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), text(), this);
    return true;
}
