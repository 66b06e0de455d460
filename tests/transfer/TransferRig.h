// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "config/ChildView.h"
#include "config/g.h"
#include "config/MachineRecord.h"
#include "config/NotificationNames.h"
#include "editor/ProgramEditor.h"
#include "serial/CustomObject.h"
#include "support/PtyPair.h"
#include "support/Required.h"
#include "transfer/MachineProgress.h"
#include "transfer/TransferHost.h"
#include "transfer/viewTX.h"
#include "widgets/MessageBox.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDeadlineTimer>
#include <QFile>
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

/// The container of the machine's view, with its open port.
struct RigChild : ChildView, TransferHost {
    serialPort& machinePort() override { return port; }
    serialPort port;
};

/// One machine with its transfer view, shown, and the control at the other end of the line. Set the record up, then
/// start.
class TransferRig
{
public:
    TransferRig()
    {
        machine->MCFLOW = 0;
        machine->MCBAUD = 115200;
        g::showMessage = [this](const QString& text, const QString& first, const QString& second) {
            return MessageBox::ask(view.get(), text, first, second);
        };
        g::mcIcons = {std::make_shared<MachineRecord>(), machine};
        g::mcChildViews = {std::make_shared<ChildView>(), child};
    }
    ~TransferRig()
    {
        releaseLine();
        view.reset();
        port.Close();
        g::showMessage = nullptr;
        g::mcIcons.clear();
        g::mcChildViews.clear();
    }

    void start(bool send = true)
    {
        port.Speed = static_cast<unsigned long>(machine->MCBAUD);
        port.FlowType = static_cast<int>(machine->MCFLOW);
        port.Parity = 0;
        require(port.Open(pty.devicePath()) >= 0, "the port does not open");
        // Registered before the view: it hears of a completed write before the view sends the next.
        port.nc->addObserver(&observer_, Notifications::TxOnComm, &port, [this](const Notification&) {
            if (++completions == holdAfter_) holdLine();
        });
        view = std::make_unique<viewTX>();
        view->initialize(send, 1);
        view->tmrXModemTimer.stop(); // the tests call its tick
        view->show();
        view->activateWindow();
        require(QTest::qWaitForWindowActive(view.get()), "the view does not become active");
        editor = find<ProgramEditor>("rt1");
        editor->setFocus();
    }

    /// Starts in send mode, with a program file of these bytes open.
    void startWith(const QByteArray& program)
    {
        start();
        open(program);
    }

    void open(const QByteArray& program)
    {
        QFile file(folder_.filePath("program.nc"));
        require(file.open(QIODevice::WriteOnly) && file.write(program) == program.size(), "no program file");
        file.close();
        view->openFile(file.fileName());
    }

    /// Sends until that many writes have gone out, the header being the first; the next is held.
    void sendUntilHeld(int writes)
    {
        holdLineAfter(writes);
        click("btnSend");
        requireSoon([this] { return isHeld && completions == holdAfter_; }, "the line is not held");
        QTest::qWait(0); // the view has been told and has given the next write to the port
    }

    void click(const char* button)
    {
        auto* found = find<QAbstractButton>(button);
        require(found && found->isVisible() && found->isEnabled(), QStringLiteral("cannot click %1").arg(button));
        QTest::mouseClick(found, Qt::LeftButton);
    }
    void chooseStart(int item) { find<QComboBox>("cbo1")->setCurrentIndex(item); } // 0 from the top, 1 from the caret
    int chosenStart() const { return find<QComboBox>("cbo1")->currentIndex(); }

    template <typename Widget> Widget* find(const char* name) const { return view->findChild<Widget*>(name); }
    bool isShown(const char* name) const { return find<QWidget>(name)->isVisible(); }
    QString text(const char* label) const { return find<QLabel>(label)->text(); }
    QString headline() const { return text("lblTransferState"); }
    QString details() const { return text("lblStatus").simplified(); }

    /// Plays a control that reads all the time until the transfer has ended; returns all that the line carried.
    QByteArray readUntilIdle()
    {
        QByteArray bytes;
        for (const QDeadlineTimer end(longestWait); view->dncRunning() && !end.hasExpired();)
            bytes += pty.readAtLeast(1, 1);
        return bytes + readAll();
    }

    /// All that has been sent up to now and not yet read. Not while the view sends, nor between a stop and the
    /// send that continues it: the cut-off rest would go out here.
    QByteArray readAll()
    {
        // A marker after all that was sent before, in one write with what is still unsent.
        const QByteArray marker("\x01<marker>\x02");
        const bool wasStopped = port.stopButtonPressed.exchange(true);
        const int completed = completions;
        port.sendBytes(port.takeUnsentBytes() + marker);
        QByteArray bytes;
        const QDeadlineTimer end(longestWait);
        while (!(bytes.endsWith(marker) && completions > completed) && !end.hasExpired())
            bytes += pty.readAtLeast(1, 1);
        port.stopButtonPressed = wasStopped;
        return bytes.chopped(marker.size());
    }

    /// Delivers these bytes to the view as one chunk.
    void deliver(const QByteArray& chunk)
    {
        port.bytesRxBuffer = chunk;
        port.nc->post(Notifications::RxOnComm, &port);
    }

    /// The line takes nothing after that many further writes, as if the control had sent XOFF.
    void holdLineAfter(int writes)
    {
        holdAfter_ = completions + writes;
        if (writes == 0) holdLine();
    }
    void releaseLine()
    {
        if (isHeld) ::tcflow(port.hPort, TCOON);
        isHeld = false;
    }

    PtyPair pty;
    std::shared_ptr<RigMachine> machine = std::make_shared<RigMachine>();
    std::shared_ptr<RigChild> child = std::make_shared<RigChild>();
    serialPort& port = child->port;
    std::unique_ptr<viewTX> view;
    ProgramEditor* editor = nullptr;
    int completions = 0;
    bool isHeld = false;

private:
    static constexpr int longestWait = 60'000; // ms; longer is a hang, not a slow machine

    void holdLine() { isHeld = CustomObject::ioctl_XOff(port.hPort) == 0; }

    QObject observer_;
    QTemporaryDir folder_;
    int holdAfter_ = -1;
};
