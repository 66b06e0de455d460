// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFrame>

#include <memory>

namespace Ui
{
class UndoBar;
}

/// The bar in the main window that offers to take the last deletion back. Knows only what it is told to show.
class UndoBar : public QFrame
{
    Q_OBJECT
public:
    explicit UndoBar(QWidget* parent = nullptr);
    ~UndoBar() override;

    /// Shows the bar for that machine.
    void offer(const QString& machine);

Q_SIGNALS:
    void undoWanted();
    /// The operator does not want any deletion back.
    void dismissed();

private:
    std::unique_ptr<Ui::UndoBar> ui;
};
