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

Q_SIGNALS:
    /// This button got the keyboard focus.
    void gotFocus();
    /// The operator wants to move that many machines down the list, up if negative.
    void moveWanted(int machines);
    void deleteWanted();

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;

private:
    bool isActive_ = false;
};
