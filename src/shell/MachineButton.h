// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QToolButton>

/// The face of a machine's icon: a card that shows by its shape whether the machine is active (a bar at its left), has
/// the keyboard focus (an outline) or is under the pointer. Its texts are labels on top of it.
class MachineButton : public QToolButton
{
    Q_OBJECT
public:
    explicit MachineButton(QWidget* parent = nullptr);

    void setActive(bool active);
    /// Shows that what is held over the card can be dropped there.
    void setDropTarget(bool isTarget);

Q_SIGNALS:
    /// This button got the keyboard focus.
    void gotFocus();
    /// The operator wants to move that many machines down the list, up if negative.
    void moveWanted(int machines);
    void pageWanted(int pages);
    /// This machine is to go that many machines down the list, up if negative.
    void orderWanted(int machines);
    /// A letter or digit: a machine whose name begins so is wanted.
    void typed(const QString& text);
    void deleteWanted();
    void menuWanted(const QPoint& place);
    /// The pointer drags this card and is at that place of the screen.
    void dragged(const QPoint& pointer);
    void dropped();
    void dragCancelled();

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    bool movesCard(const QKeyEvent& event);
    void cancelDrag();

    bool isActive_ = false;
    bool isDropTarget_ = false;
    bool isDragged_ = false;
    QPoint pressedAt_;
};
