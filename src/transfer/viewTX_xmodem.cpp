// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/viewTX.h"
#include "ui_viewTX.h"

#include "protocol/LineFilter.h"
#include "protocol/XModemBlock.h"

// --- Sending ---------------------------------------------------------------------------------------------------------

void viewTX::startXModem()
{
    setEOB();
    ui->rt1->setReadOnly(true);
    iTextLength = program_.size();
    const LineFilter filter{ControlType::General, mc->MCSTRIPCOMMENTS, mc->MCSTRIPEMPTYLINES};
    xmodemSend_.begin(xmodemProgram_.begin(program_, filter, EOB));

    setPBarsHidden(false);
    ui->rt1->clearLineOut();
    iIndexCurrentLine = 0;
    movePBars();
    txState.State = TxState::txState_sending_xmodem;
    showWaitBox(QStringLiteral("Waiting for XModem start command from CNC"), false);
    status_.clock = {};
    status_.enter(TransferState::WaitingForXModem);
    refreshStatus();
}

void viewTX::sendXModemPacket(bool next)
{
    carryOut(xmodemSend_.take(next ? XModemCodes::ACK : XModemCodes::NAK));
}

void viewTX::actOnXModemReplies(const QByteArray& bytes)
{
    for (const char reply : bytes) {
        if (reply == XModemCodes::ACK || reply == XModemCodes::NAK) status_.clock.completed(now(), xmodemSend_.sent());
        if (reply == XModemCodes::NAK) ui->boxWaitForCNC->hide();
        carryOut(xmodemSend_.take(reply));
    }
}

void viewTX::carryOut(const XModemSend::Step& step)
{
    if (step.ending) return endXModem(*step.ending);
    if (step.bytes.isEmpty()) return;
    const bool isBlock = xmodemSend_.state() == XModemSend::State::Block;
    if (isBlock && status_.entered() == TransferState::WaitingForXModem) beginXModemClock();
    send(step.bytes);
    if (!isBlock) return;
    showBlockOut();
    if (status_.entered() == TransferState::Sending) return;
    status_.enter(TransferState::Sending);
    refreshStatus();
}

// The highlight goes with the blocks, to the line that holds the last byte sent.
void viewTX::showBlockOut()
{
    const auto line = xmodemProgram_.follow(program_, xmodemSend_.sent());
    iIndexCurrentLine = line.start;
    ui->rt1->markLineOut({line.start, line.end});
    if (xmodemSend_.isAllSent()) movePBars();
}

void viewTX::endXModem(XModemSend::Ending ending)
{
    if (ending == XModemSend::Ending::Cancelled) noteCancelled();
    if (mc->MCREPEAT) return startXModem();
    btnStop_Click();
    status_.enter(ending == XModemSend::Ending::Cancelled ? TransferState::Cancelled : TransferState::Sent);
    refreshStatus();
}

void viewTX::noteCancelled()
{
    const auto blocks = [](qsizetype bytes) { return (bytes + XModemBlock::dataSize - 1) / XModemBlock::dataSize; };
    cancelNotice_ = QStringLiteral("%1 of %2 blocks sent")
                        .arg(blocks(xmodemSend_.sent()))
                        .arg(blocks(xmodemSend_.program().size()));
}

// --- Receiving -------------------------------------------------------------------------------------------------------

void viewTX::startXModemTimer(double interval)
{
    tmrXModemTimer.start(static_cast<int>(interval * 1000));
}

void viewTX::tmrXModem_Tick()
{
    carryOut(xmodemReceive_.tick());
}

void viewTX::carryOut(const XModemReceive::Step& step)
{
    for (const auto answer : step.replies)
        reply(answer);
    if (step.isWhole) {
        setDncRunning(false);
        status_.enter(TransferState::Received);
    }
    if (!step.program.isEmpty()) appendReceived(step.program);
    refreshStatus();
}

void viewTX::reply(XModemReceive::Reply reply)
{
    switch (reply) {
    case XModemReceive::Reply::Ack:
        return sp->sendByte(iACK);
    case XModemReceive::Reply::MarkedNak:
        return sp->sendByte(iNAK);
    case XModemReceive::Reply::PlainNak:
        return sp->sendBytes(QByteArray(1, XModemCodes::NAK)); // sendByte would mark it
    }
}
