// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "config/ChildView.h"
#include "serial/serialPort.h"
#include "transfer/OpenWork.h"
#include "transfer/TransferHost.h"

#include <QPointer>
#include <QWidget>

#include <memory>

class frmChild;
class viewSetup;
class viewTX;
namespace Ui
{
class viewChild;
}

/// The place of one machine's working view, docked in the main window or in a window of its own. Owns the machine's
/// port.
class viewChild : public QWidget, public ChildView, public TransferHost
{
    Q_OBJECT
public:
    enum Mode { SetupMode = 0, SendMode = 1, ReceiveMode = 2 };

    explicit viewChild(QWidget* parent = nullptr);
    ~viewChild() override;

    int iMcIndex = 0;
    const std::unique_ptr<serialPort> sp = std::make_unique<serialPort>();
    serialPort& machinePort() override { return *sp; }

    /// Opens the machine's port and loads the working view; a port that cannot be opened shows why and what to do. A
    /// send view then opens `program` or, if that is empty, asks for one.
    void startMode(int mode, int mcIndex, const QString& program = {});
    /// Loads the setup form without trying the port: a new machine has none yet.
    void startSetup(int mcIndex);
    /// Follows a machine whose record has changed.
    void machineChanged(int mcIndex);
    /// Follows a machine to another place of the list. A transfer takes no notice.
    void machineMoved(int mcIndex);

    void btnUnDock_Click();
    void btnClose_Click();
    void btnCancel_Click();
    void btnTryAgain_Click();

    /// What would be lost if the view ended now.
    OpenWork openWork() const;
    /// Saves what can be saved: a program to its file, the setup to the record. False if it failed or was cancelled.
    bool save();
    /// Whether the view may end. Asks the operator if that would lose something, and saves it if he wants that.
    bool mayEnd();
    /// Ends the view without asking: transfer, port, window.
    void end();
    bool isLoaded() const { return isLoaded_; }
    /// A working view is there, not only the page that tells why the port did not open.
    bool isWorking() const { return vtx || vSet; }
    bool isUndocked() const;
    /// Brings an undocked view's window to the front.
    void bringUp();
    /// An undocked view is in the main window again, whose layout has it already. A transfer goes on.
    void docked();
    /// Moves the keyboard focus to where the operator goes on in the working view.
    void takeFocus();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void loadSetup();
    void loadTransfer(bool send);
    void configurePort();
    void showTitle();
    void placeHeading();
    void showStartupError(bool shown);

    std::unique_ptr<Ui::viewChild> ui;
    QPointer<frmChild> frm;
    viewTX* vtx = nullptr;
    viewSetup* vSet = nullptr;
    bool isLoaded_ = false; // between startMode and end
    int mode_ = SetupMode;
    QString program_; // what startMode was given
};

/// The child view of that machine; null for an index outside the list.
viewChild* childViewAt(qsizetype mcIndex);
