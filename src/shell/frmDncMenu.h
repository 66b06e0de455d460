// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFrame>

#include <memory>

namespace Ui
{
class frmDncMenu;
}
struct MachineRecord;

/// The small menu beside a machine's icon: Send, Receive, Setup, and Show view or Dock while the machine has a view. It
/// goes away as soon as the operator clicks elsewhere.
class frmDncMenu : public QFrame
{
    Q_OBJECT
public:
    frmDncMenu(const MachineRecord& machine, QWidget* parent);
    ~frmDncMenu() override;

    /// What the menu offers first, so that Enter takes no view away that works.
    enum class OpenView { None, Docked, Undocked };
    void offerView(OpenView view);
    /// Shows the menu to the right of the icon, kept on the screen.
    void showBeside(const QWidget& machineIcon);

    void btnShowView_Click();
    void btnDockView_Click();
    void btnSetup_Click();
    void btnTX_Click();
    void btnRX_Click();
    void btnHistory_Click();
    void btnCloseMenu_Click();

Q_SIGNALS:
    /// The operator clicked elsewhere, at this place of the screen; the menu has closed.
    void clickedElsewhere(const QPoint& place);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    void choose(const QString& notification);

    std::unique_ptr<Ui::frmDncMenu> ui;
};
