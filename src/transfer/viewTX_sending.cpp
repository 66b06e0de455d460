// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/viewTX.h"
#include "ui_viewTX.h"

#include "config/g.h"
#include "protocol/Framing.h"
#include "protocol/LineFilter.h"
#include "transfer/MachineProgress.h"

int viewTX::selectedStart() const
{
    return ui->cbo1->currentIndex();
}

bool viewTX::underWay() const
{
    return dncRunning() && txState.State != TxState::txState_idle;
}

void viewTX::btnSend_Click()
{
    iTextLength = ui->rt1->textSize();
    if (iTextLength <= 0) {
        g::msgBox(QStringLiteral("Can not send an empty file\r\rOpen folder and select a file to send to the CNC"),
                  QStringLiteral("OK"), {});
        return;
    }
    if (!portIsBack()) return portLost();
    txEOF = false;
    txState.State = TxState::txState_idle;
    setDncRunning(true);
    icon().setPBarMaximum(static_cast<double>(iTextLength));
    if (selectedStart() == fromTheTop) {
        btnRewind_Click();
    } else {
        nextLine_ = ui->rt1->caret();
        // However the caret was moved: what a stop cut off belongs to the place of that stop alone.
        if (resume_ && resume_->nextLine != nextLine_) resume_.reset();
    }
    setPBarsHidden(false);
    if (resume_ && resume_->state != TxState::txState_idle) movePBars();
    if (mc->MCWAIT && (mc->MCFLOW == 0 || mc->MCFLOW == 1)) {
        // The start signal is the XON byte: with flow control on, the driver would swallow it.
        if (!sp->setFlow(0)) return portLost();
        booWaitingForStartSignal = true;
        showWaitBox(waitForStart(), true);
        if (!resume_) status_.clock = {};
        status_.enter(TransferState::WaitingForStart);
        refreshStatus();
        return;
    }
    beginSend();
}

void viewTX::btnSendNow()
{
    beginSend();
}

void viewTX::btnHideWaitBox()
{
    ui->boxWaitForCNC->hide();
}

void viewTX::beginSend()
{
    if (underWay()) return; // a second start signal must not start the program twice
    ui->boxWaitForCNC->hide();
    if (isXModem()) return startXModem();
    if (mc->MCFLOW == 1 && !sp->setFlow(1)) return portLost();
    booWaitingForStartSignal = false;
    setComboHidden(true);
    const bool isRest = selectedStart() != fromTheTop && resume_ && resume_->state != TxState::txState_idle;
    isRest ? status_.clock.resume(now()) : beginClock();
    status_.enter(TransferState::Sending);
    refreshStatus();
    selectedStart() == fromTheTop ? sendHeader() : continueSend();
}

void viewTX::sendHeader()
{
    const auto type = Framing::controlType(mc->MCMODE);
    if (type == ControlType::Okuma) doneOkumaNulls = false;
    txState.State = TxState::txState_sending_header;
    send(Framing::header(type, SOT, EOB));
}

void viewTX::continueSend()
{
    if (!resume_) return sendLine();
    if (resume_->state == TxState::txState_idle) {
        resume_.reset();
        return sendHeader();
    }
    // What the stop cut off goes out first; its completion then leads on as if there had been no stop.
    txState.State = resume_->state;
    txEOF = resume_->txEOF;
    resume_.reset();
    sp->sendBytes(sp->takeUnsentBytes());
}

void viewTX::sendLine()
{
    txState.State = TxState::txState_sending_body;
    if (!dncRunning()) return;

    const auto type = Framing::controlType(mc->MCMODE);
    const LineFilter filter{type, mc->MCSTRIPCOMMENTS, mc->MCSTRIPEMPTYLINES};
    std::optional<QString> text;
    ProgramEditor::Line line;
    do {
        line = ui->rt1->lineAt(nextLine_);
        nextLine_ = line.end;
        text = filter.lineToSend(ui->rt1->lineText(line));
        txEOF = line.end >= iTextLength;
    } while (!text && !txEOF);

    iIndexCurrentLine = line.start;
    QString out;
    if (text) {
        out = text->replace(u'\n', EOB);
        if (type == ControlType::Okuma && !doneOkumaNulls) {
            out.prepend(g::nulls(Framing::leaderLength));
            doneOkumaNulls = true;
        }
    }
    // Also when nothing is left to send: the completion leads on to the trailer.
    send(g::getBytes(out));
    ui->rt1->markLineOut(line); // the progress bars move with the mark, but are full at once
    if (txEOF) movePBars();
}

void viewTX::sendTrailer()
{
    send(Framing::trailer(Framing::controlType(mc->MCMODE), EOT, EOB));
}

void viewTX::TxOnComm()
{
    if (!dncRunning() || booWaitingForStartSignal) return;        // reported late, after a stop
    if (txState.State == TxState::txState_sending_xmodem) return; // the control's replies drive XModem
    status_.clock.completed(now(), nextLine_);
    if (!txEOF) return sendLine();
    if (txState.State == TxState::txState_sending_body) {
        txState.State = TxState::txState_sending_trailer;
        sendTrailer();
    } else if (txState.State == TxState::txState_sending_trailer) {
        endedByItself();
    }
}

void viewTX::endedByItself()
{
    setDncRunning(false);
    txState.State = TxState::txState_idle;
    btnStop_Click();
    ui->rt1->moveCaretTo(nextLine_); // the mark may lag a little behind
    ui->cbo1->setCurrentIndex(fromTheTop);
    status_.clock.stop(now());
    status_.enter(TransferState::Sent);
    refreshStatus();
    if (mc->MCREPEAT) btnSend_Click();
}

void viewTX::btnStop_Click()
{
    const bool ownsCaret = dncRunning() && !isXModem();
    if (underWay()) {
        movePBars(); // the mark, and the bars with it, may lag a little behind
        if (ownsCaret) resume_ = ResumePoint{txState.State, txEOF, nextLine_};
    }
    // Stopped in the wait, nothing has gone out: the header is still to come.
    if (ownsCaret && booWaitingForStartSignal && selectedStart() == fromTheTop) resume_ = ResumePoint{};
    if (dncRunning()) {
        status_.clock.stop(now());
        status_.enter(TransferState::Stopped);
    }
    ui->boxWaitForCNC->hide();
    setDncRunning(false);
    if (!isXModem()) {
        setComboHidden(false);
        if (selectedStart() == fromTheTop) ui->cbo1->setCurrentIndex(fromTheCaret);
    }
    booWaitingForStartSignal = false;
    txState.State = TxState::txState_idle;
    xmodemSend_.stop();
    sp->stopButtonPressed = true;
    if (ownsCaret) ui->rt1->moveCaretTo(nextLine_); // clicks during wait and transfer may have taken it elsewhere
    ui->rt1->clearLineOut();
    refreshStatus();
}

void viewTX::btnRewind_Click()
{
    ui->rt1->clearLineOut();
    ui->rt1->moveCaretTo(0);
    nextLine_ = 0;
    resume_.reset();
    sp->discardCutOff(); // the rest of a block must not come in front of the next program
    txSOF = true;
    txEOF = false;
    setPBarsHidden(true);
    if (!isXModem()) setComboHidden(false);
    ui->cbo1->setCurrentIndex(fromTheTop);
    readyAgain();
}
