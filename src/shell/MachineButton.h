// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QToolButton>

/// The face of a machine's icon: a card that shows by its shape whether the machine is active (a bar at its left), has
/// the keyboard (an outline) or is under the pointer. What it says is in labels that lie over it.
class MachineButton : public QToolButton
{
    Q_OBJECT
public:
    explicit MachineButton(QWidget* parent = nullptr);

    void setActive(bool active);

Q_SIGNALS:
    /// The keyboard came to this button.
    void gotFocus();
    /// The operator wants to go that many machines on, up where negative.
    void moveWanted(int machines);
    void deleteWanted();

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;

private:
    bool isActive_ = false;
};
