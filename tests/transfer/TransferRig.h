// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "config/ChildView.h"
#include "config/MachineRecord.h"
#include "support/PtyPair.h"
#include "transfer/MachineProgress.h"
#include "transfer/ProgramEditor.h"
#include "transfer/TransferHost.h"
#include "transfer/viewTX.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QTemporaryDir>
#include <QTest>

/// A machine as its icon carries it; keeps what the icon would show.
struct RigMachine : MachineRecord, MachineProgress {
    double pBarMaximum() const override { return maximum; }
    void setPBarMaximum(double newMaximum) override { maximum = newMaximum; }
    void setPBarValue(double newValue) override { value = newValue; }
    void setPBarHidden(bool newHidden) override { hidden = newHidden; }
    void showActivity(TransferActivity newActivity) override { activity = newActivity; }

    double maximum = 0;
    double value = 0;
    bool hidden = true;
    TransferActivity activity = TransferActivity::Idle;
};

/// The place of the machine's view, with its open port.
struct RigChild : ChildView, TransferHost {
    std::shared_ptr<serialPort> machinePort() override { return port; }
    std::shared_ptr<serialPort> port = std::make_shared<serialPort>();
};

/// One machine with its transfer view, shown, and the control at the other end of the line. Set the record up, then
/// start.
class TransferRig
{
public:
    TransferRig();
    ~TransferRig();
    void start(bool send = true);
    /// Starts with a program file of these bytes open in the active window.
    void startWith(const QByteArray& program);
    void open(const QByteArray& program);
    /// Sends until that many writes have gone out, the header being the first; the next is cut off.
    void sendUntilHeld(int writes);
    void click(const char* button);
    void chooseStart(int item) { find<QComboBox>("cbo1")->setCurrentIndex(item); } // 0 from the top, 1 from the caret
    int chosenStart() const { return find<QComboBox>("cbo1")->currentIndex(); }

    template <typename Widget> Widget* find(const char* name) const { return view->findChild<Widget*>(name); }
    bool isShown(const char* name) const { return find<QWidget>(name)->isVisible(); }
    QString text(const char* label) const { return find<QLabel>(label)->text(); }
    QString headline() const { return text("lblTransferState"); }
    QString details() const { return text("lblStatus").simplified(); }

    /// Plays a control that reads all the time until the transfer has ended; returns all that the line carried.
    QByteArray readUntilIdle();
    /// What the line has carried and not yet delivered, up to this moment. Not while the view sends, nor
    /// between a stop and the send that continues it: the cut-off rest would be given up.
    QByteArray readAll();
    /// Delivers these bytes to the view as one chunk.
    void deliver(const QByteArray& chunk);

    /// The line takes nothing from here on, as if the control had sent XOFF.
    void holdLine();
    void releaseLine();
    /// Holds the line when that many writes have gone out since the start.
    void holdLineAfter(int count) { holdAfter_ = count; }
    bool isHeld() const { return held_; }

    PtyPair pty;
    std::shared_ptr<RigMachine> machine = std::make_shared<RigMachine>();
    std::shared_ptr<RigChild> child = std::make_shared<RigChild>();
    std::unique_ptr<viewTX> view;
    ProgramEditor* editor = nullptr;
    int completions = 0;

private:
    QObject observer_;
    QTemporaryDir folder_;
    int holdAfter_ = -1;
    bool held_ = false;
};
