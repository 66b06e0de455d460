// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/viewTX.h"
#include "ui_viewTX.h"

#include "config/g.h"
#include "config/LineSettings.h"
#include "config/NotificationNames.h"
#include "config/TransferWords.h"
#include "transfer/MachineProgress.h"
#include "transfer/RestartPage.h"
#include "transfer/XModemWords.h"

#include <QTime>

#include <map>

namespace
{
// Items of cbo1.
constexpr int fromTheTop = 0;
constexpr int fromTheCaret = 1;
} // namespace

bool viewTX::startsFromTop() const
{
    return ui->cbo1->currentIndex() == fromTheTop;
}

void viewTX::btnSend_Click()
{
    startSend([this](const PlainSend::Setup& setup) {
        if (isXModem() || startsFromTop()) btnRewind_Click();
        if (isXModem()) return;
        if (startsFromTop())
            plain_.prepareFromTop(setup);
        else
            plain_.prepareFromCaret(setup, ui->rt1->caret());
    });
}

void viewTX::btnRestart_Click()
{
    if (status_.isRunning() || program_.size() <= 0) return;
    RestartPage::closeAll(*this);
    auto* page = new RestartPage(*mc, *ui->rt1, this);
    connect(page, &RestartPage::sendWanted, this, [this](qsizetype position, const QStringList& blocks) {
        startSend([&](const PlainSend::Setup& setup) {
            sp->discardCutOff(); // it belongs to a send that is not continued
            plain_.prepareRestart(setup, position, blocks);
            ui->rt1->moveCaretTo(position);
            ui->cbo1->setCurrentIndex(fromTheCaret);
        });
    });
    page->show();
}

// For a send of either kind; `prepare` says from where.
void viewTX::startSend(const std::function<void(const PlainSend::Setup&)>& prepare)
{
    if (program_.size() <= 0) {
        g::msgBox(QStringLiteral("Can not send an empty file\r\rOpen folder and select a file to send to the CNC"),
                  QStringLiteral("OK"), {});
        return;
    }
    if (status_.entered() == TransferState::PortLost && !openAgain()) return;
    sp->tmrRx_Tick(); // what came before is no start signal; and a port that is gone shows
    if (status_.entered() == TransferState::PortLost || !sp->restoreLine()) return tellPortLost();
    progress().setPBarMaximum(static_cast<double>(program_.size()));
    const LineFilter filter{Framing::controlType(mc->MCMODE), mc->MCSTRIPCOMMENTS, mc->MCSTRIPEMPTYLINES};
    prepare({filter, SOT, EOB, EOT, mc->MCREPEAT});
    if (isXModem()) return beginSend();
    sendsXModem_ = false;
    waitOrBegin();
}

void viewTX::waitOrBegin()
{
    setPBarsHidden(false);
    if (plain_.willContinue()) movePBars();
    const bool canWait = mc->MCFLOW == 0 || mc->MCFLOW == 1; // none or XON/XOFF
    if (!mc->MCWAIT || !canWait) return beginSend();
    // The start signal is the XON byte: with flow control on, it would not get here.
    if (!sp->setFlow(0)) return tellPortLost();
    if (!plain_.willContinue()) status_.clock = {};
    enter(TransferState::WaitingForStart);
}

void viewTX::btnSendNow()
{
    if (status_.isHoldDoubtful()) {
        const qint64 heldFor = sp->heldFor().value_or(0); // the send may go on and be held anew behind the question
        const QString question =
            QStringLiteral("Send on to %1?\r\rIf its buffer is still full, it loses what is sent now.");
        if (g::msgBox(question.arg(mc->MCNAME), QStringLiteral("Send on"), QStringLiteral("Cancel")))
            sp->sendOn(heldFor);
        return refreshStatus();
    }
    begin(QStringLiteral("started with Send now"));
}

void viewTX::btnHideWaitBox()
{
    panel_.hideWaitBox();
    status_.putOffSendOn();
    refreshStatus();
}

void viewTX::beginSend()
{
    begin(QStringLiteral("started"));
}

void viewTX::begin(const QString& how)
{
    if (isXModem() && xmodemSend_.state() == XModemSend::State::Idle) return startXModem();
    if (!booWaitingForStartSignal()) return; // a second start signal must not start the program twice
    // The wait may have been long.
    if (!sp->restoreLine()) return tellPortLost();
    if (flowControl(mc->MCFLOW) == FlowControl::XonXoff && !sp->setFlow(1)) return tellPortLost();
    const QString started = plain_.willContinue() ? QStringLiteral("continued") : how;
    const QString time = QTime::currentTime().toString(QStringLiteral("HH:mm:ss"));
    notice_ = mc->MCREPEAT ? QStringLiteral("Copy %1, %2 at %3").arg(QString::number(plain_.copy()), started, time)
                           : QString();
    if (plain_.willContinue()) {
        status_.clock.resume(now());
        enter(TransferState::Sending);
        // The clock counted these bytes when they were first handed to the port.
        const QByteArray first = plain_.begin(sp->takeUnsentBytes());
        record_.sent(first);
        return sp->sendBytes(first);
    }
    status_.clock.begin(now(), plannedSend(plain_.next()));
    firstLine_ = ui->rt1->lineNumber(plain_.next());
    enter(TransferState::Sending);
    write(plain_.begin({}));
    showLineOut();
}

void viewTX::TxOnComm()
{
    // XModem is driven by the control's replies, and a completion may be reported late, after a stop.
    if (plain_.state() <= PlainSend::State::Waiting) return;
    status_.clock.completed(now(), plain_.next());
    const auto step = plain_.written();
    if (step.bytes) write(*step.bytes);
    showLineOut();
    if (!step.isSent) return;
    if (!booWaitingForStartSignal()) return end(Ending::Finished);
    record(Ending::Finished);
    showRewound();
    waitOrBegin();
}

void viewTX::showLineOut()
{
    if (plain_.state() != PlainSend::State::Lines) return;
    const auto line = plain_.lineOut();
    ui->rt1->markLineOut({line.start, line.end}); // the progress bars move with the mark, but are full at once
    if (plain_.isLastLineOut()) movePBars();
}

void viewTX::btnStop_Click()
{
    if (status_.isRunning()) return end(Ending::Stopped);
    enter(status_.entered()); // puts the buttons right
}

// Every transfer ends here.
void viewTX::end(Ending ending)
{
    if (ending == Ending::PortLost && status_.entered() == TransferState::PortLost) return;
    if (status_.entered() == TransferState::Sending) movePBars(); // the mark, and the bars with it, may lag behind
    notice_.clear();
    if (ending != Ending::Finished) sp->stopButtonPressed = true; // a finished one may still have EOT to write
    record_.leaveLine(sp->holdTimes(), sp->unsentCount());
    stopMachines(ending);
    ui->rt1->clearLineOut();
    status_.clock.stop(now());
    if (ending == Ending::PortLost) sp->Close(); // the system can then give its name to the adapter when it comes back
    static const std::map<Ending, TransferState> states = {{Ending::Stopped, TransferState::Stopped},
                                                           {Ending::Finished, TransferState::Sent},
                                                           {Ending::Cancelled, TransferState::Cancelled},
                                                           {Ending::Unconfirmed, TransferState::Unconfirmed},
                                                           {Ending::PortLost, TransferState::PortLost}};
    enter(states.at(ending));
    record(ending);
}

void viewTX::stopMachines(Ending ending)
{
    xmodemSend_.stop();
    if (ending == Ending::Cancelled) notice_ = XModemWords::cancelled(xmodemSend_);
    if (ending == Ending::Unconfirmed) notice_ = XModemWords::unconfirmed();
    // The bytes that a stop cut off went with the port, so a stopped send of text can't be continued.
    if (ending == Ending::PortLost) return showRestart(plain_.lose());
    if (sendsXModem_) return;
    if (ending == Ending::Stopped) {
        plain_.stop();
        return showRestart(PlainSend::Restart::FromNext);
    }
    ui->rt1->moveCaretTo(program_.size());
    ui->cbo1->setCurrentIndex(fromTheTop);
}

// Leaves caret and selector where the next send starts.
void viewTX::showRestart(PlainSend::Restart restart)
{
    if (restart == PlainSend::Restart::Unchanged) return;
    const bool isWhole = restart == PlainSend::Restart::FromTop || restart == PlainSend::Restart::FromStartBlocks;
    ui->cbo1->setCurrentIndex(isWhole ? fromTheTop : fromTheCaret);
    ui->rt1->moveCaretTo(plain_.next()); // clicks during the transfer may have taken it elsewhere
    if (restart == PlainSend::Restart::FromLineOut) {
        ui->portReturn->noteCut();
        notice_ = QStringLiteral("Stopped at line %1. See at the control what has arrived before you continue.")
                      .arg(TransferWords::number(ui->rt1->lineNumber(plain_.next())));
    }
    if (restart == PlainSend::Restart::FromStartBlocks)
        notice_ = QStringLiteral("Not all start blocks of line %1 were sent. Choose \"Send from here\" again.")
                      .arg(TransferWords::number(ui->rt1->lineNumber(plain_.next())));
}

void viewTX::btnRewind_Click()
{
    if (status_.isRunning()) return;
    plain_.rewind();
    sp->discardCutOff(); // the rest of a block must not come in front of the next program
    showRewound();
    setPBarsHidden(true);
    readyAgain();
}

void viewTX::showRewound()
{
    ui->rt1->clearLineOut();
    ui->rt1->moveCaretTo(0);
    ui->cbo1->setCurrentIndex(fromTheTop);
    txSOF = true;
}

void viewTX::tellPortLost()
{
    end(Ending::PortLost);
    g::msgBox(QStringLiteral("The port %1 of %2 no longer answers\r\rCheck the adapter and choose Send again")
                  .arg(mc->port(), mc->MCNAME),
              QStringLiteral("OK"), {});
}

// The lost port, where its adapter is now. Another adapter at its path may lead to another machine: nothing is opened.
bool viewTX::openAgain()
{
    const auto found = ui->portReturn->look();
    if (found.kind == AdapterSearch::Found::Kind::Other) {
        g::msgBox(ui->portReturn->text(), QStringLiteral("OK"), {});
        return false;
    }
    // Something may be at the path that the system cannot name yet.
    if (found.kind == AdapterSearch::Found::Kind::Missing || sp->Open(found.path) < 0) {
        tellPortLost();
        return false;
    }
    const bool isMoved = found.path != mc->port();
    if (ui->portReturn->isPathToBeKept()) {
        mc->MCPORT = found.path;
        g::saveAllMcSettings();
    }
    mc->portNow = found.path == mc->MCPORT ? QString() : found.path;
    ui->portReturn->opened(found.path);
    ui->lineLamps->watch(*sp);
    enter(booModeTX ? TransferState::Ready : TransferState::Listening);
    if (!isMoved) return true;
    machineChanged();
    nc->post(Notifications::setupSaveButton_Click, nullptr, {{Notifications::machineIndex, mc->MCINDEX}});
    return true;
}
