// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFrame>

#include <memory>

namespace Ui
{
class frmDncMenu;
}
struct MachineRecord;

/// The small menu beside a machine's icon: Send, Receive, Setup. It goes away as soon as the operator clicks elsewhere.
class frmDncMenu : public QFrame
{
    Q_OBJECT
public:
    frmDncMenu(const MachineRecord& machine, QWidget* parent);
    ~frmDncMenu() override;

    /// Shows the menu to the right of the icon, kept on the screen.
    void showBeside(const QWidget& machineIcon);

    void btnSetup_Click();
    void btnTX_Click();
    void btnRX_Click();
    void btnCloseMenu_Click();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void choose(const QString& notification);

    std::unique_ptr<Ui::frmDncMenu> ui;
};
