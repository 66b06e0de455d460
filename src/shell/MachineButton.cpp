// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/MachineButton.h"

#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>

#include <limits>

namespace
{
constexpr double radius = 8;
constexpr double barWidth = 4;
constexpr double outlineWidth = 2;
constexpr int activeTint = 48, hoverTint = 20, pressedTint = 72; // alpha of the highlight colour, of 255
constexpr int toTheEnd = std::numeric_limits<int>::max() / 2;
} // namespace

MachineButton::MachineButton(QWidget* parent) : QToolButton(parent)
{
    setAttribute(Qt::WA_Hover);
}

void MachineButton::setActive(bool active)
{
    isActive_ = active;
    update();
}

void MachineButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF card = QRectF(rect()).adjusted(1, 1, -1, -1);
    QPainterPath shape;
    shape.addRoundedRect(card, radius, radius);

    const QColor accent = palette().color(QPalette::Highlight);
    QColor tint = accent;
    tint.setAlpha(isDown() ? pressedTint : isActive_ ? activeTint : underMouse() ? hoverTint : 0);
    painter.fillPath(shape, tint);
    if (isActive_) {
        painter.setClipPath(shape);
        painter.fillRect(QRectF(card.left(), card.top(), barWidth, card.height()), accent);
        painter.setClipping(false);
    }
    if (hasFocus()) {
        painter.setPen(QPen(accent, outlineWidth));
        painter.drawPath(shape);
    }
}

void MachineButton::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Up:
        Q_EMIT moveWanted(-1);
        return;
    case Qt::Key_Down:
        Q_EMIT moveWanted(1);
        return;
    case Qt::Key_Home:
        Q_EMIT moveWanted(-toTheEnd);
        return;
    case Qt::Key_End:
        Q_EMIT moveWanted(toTheEnd);
        return;
    case Qt::Key_Delete:
        Q_EMIT deleteWanted();
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        click();
        return;
    default:
        QToolButton::keyPressEvent(event);
    }
}

void MachineButton::focusInEvent(QFocusEvent* event)
{
    QToolButton::focusInEvent(event);
    Q_EMIT gotFocus();
}
