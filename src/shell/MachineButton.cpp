// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/MachineButton.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>

#include <cstdlib>
#include <limits>

namespace
{
constexpr double radius = 8;
constexpr double barWidth = 4;
constexpr double outlineWidth = 2;
constexpr int activeTint = 48, hoverTint = 20, pressedTint = 72; // alpha of the highlight colour, of 255
constexpr int dragDistance = 20;                                 // pixels; a click on a touch screen moves, too
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

void MachineButton::setDropTarget(bool isTarget)
{
    isDropTarget_ = isTarget;
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
    tint.setAlpha(isDown() || isDropTarget_ ? pressedTint : isActive_ ? activeTint : underMouse() ? hoverTint : 0);
    painter.fillPath(shape, tint);
    if (isActive_) {
        painter.setClipPath(shape);
        painter.fillRect(QRectF(card.left(), card.top(), barWidth, card.height()), accent);
        painter.setClipping(false);
    }
    if (hasFocus() || isDropTarget_) {
        painter.setPen(QPen(accent, outlineWidth));
        painter.drawPath(shape);
    }
}

bool MachineButton::movesCard(const QKeyEvent& event)
{
    if (!event.modifiers().testFlag(Qt::AltModifier)) return false;
    if (event.key() == Qt::Key_Up) Q_EMIT orderWanted(-1);
    if (event.key() == Qt::Key_Down) Q_EMIT orderWanted(1);
    return event.key() == Qt::Key_Up || event.key() == Qt::Key_Down;
}

void MachineButton::keyPressEvent(QKeyEvent* event)
{
    if (isDragged_) {
        if (event->key() == Qt::Key_Escape) cancelDrag();
        return;
    }
    if (movesCard(*event)) return;
    switch (event->key()) {
    case Qt::Key_Up:
        return Q_EMIT moveWanted(-1);
    case Qt::Key_Down:
        return Q_EMIT moveWanted(1);
    case Qt::Key_PageUp:
        return Q_EMIT pageWanted(-1);
    case Qt::Key_PageDown:
        return Q_EMIT pageWanted(1);
    case Qt::Key_Home:
        return Q_EMIT moveWanted(-toTheEnd);
    case Qt::Key_End:
        return Q_EMIT moveWanted(toTheEnd);
    case Qt::Key_Delete:
        return Q_EMIT deleteWanted();
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return click();
    default:
        break;
    }
    const bool isPlain = !(event->modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier));
    const QString text = event->text();
    if (isPlain && !text.isEmpty() && text[0].isLetterOrNumber()) return Q_EMIT typed(text);
    QToolButton::keyPressEvent(event);
}

void MachineButton::focusInEvent(QFocusEvent* event)
{
    QToolButton::focusInEvent(event);
    Q_EMIT gotFocus();
}

void MachineButton::contextMenuEvent(QContextMenuEvent* event)
{
    Q_EMIT menuWanted(event->globalPos());
}

void MachineButton::mousePressEvent(QMouseEvent* event)
{
    pressedAt_ = event->position().toPoint();
    QToolButton::mousePressEvent(event);
}

void MachineButton::mouseMoveEvent(QMouseEvent* event)
{
    const int distance = std::abs(event->position().toPoint().y() - pressedAt_.y()); // the list goes up and down only
    if (isDown() && distance >= dragDistance) {
        isDragged_ = true;
        setDown(false);
        setCursor(Qt::ClosedHandCursor);
    }
    if (isDragged_) return Q_EMIT dragged(event->globalPosition().toPoint());
    QToolButton::mouseMoveEvent(event);
}

void MachineButton::mouseReleaseEvent(QMouseEvent* event)
{
    QToolButton::mouseReleaseEvent(event); // no click after a drag: the button is not down any more
    if (!isDragged_) return;
    isDragged_ = false;
    unsetCursor();
    Q_EMIT dropped();
}

void MachineButton::hideEvent(QHideEvent* event)
{
    if (isDragged_) cancelDrag();
    QToolButton::hideEvent(event);
}

void MachineButton::cancelDrag()
{
    isDragged_ = false;
    unsetCursor();
    Q_EMIT dragCancelled();
}
