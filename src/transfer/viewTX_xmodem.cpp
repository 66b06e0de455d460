// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/viewTX.h"
#include "ui_viewTX.h"

#include "config/g.h"
#include "protocol/LineFilter.h"
#include "protocol/XModemBlock.h"
#include "transfer/MachineProgress.h"

// --- Sending ---------------------------------------------------------------------------------------------------------

QByteArray viewTX::xmodemBytes(qsizetype lineStart, qsizetype lineEnd) const
{
    const LineFilter filter{ControlType::General, mc->MCSTRIPCOMMENTS, mc->MCSTRIPEMPTYLINES};
    auto text = filter.lineToSend(ui->rt1->lineText({lineStart, lineEnd}));
    return text ? g::getBytes(text->replace(u'\n', EOB)) : QByteArray();
}

void viewTX::startXModem()
{
    setEOB();
    ui->rt1->setReadOnly(true);
    booSentXModemBOF = booSentXModemEOF = booSentXModemEOT = false;
    iXModemPacketNo = 1;
    bPacket.clear();

    iTextLength = ui->rt1->textSize();
    bBuffer.clear();
    bBuffer.reserve(iTextLength + iTextLength / 16);
    for (qsizetype start = 0; start < iTextLength;) {
        const auto line = ui->rt1->lineAt(start);
        bBuffer += xmodemBytes(line.start, line.end);
        start = line.end;
    }
    xmodemSent_ = xmodemLineStart_ = xmodemLineEnd_ = xmodemLineEndSent_ = 0;
    booSentXModemEOF = bBuffer.isEmpty(); // nothing left by the filters: no block of mere spaces

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
    if (booSentXModemEOT) {
        if (mc->MCREPEAT && txState.State == TxState::txState_sending_xmodem) return startXModem();
        const bool wasCancelled = status_.entered() == TransferState::Cancelled;
        btnStop_Click();
        status_.enter(wasCancelled ? TransferState::Cancelled : TransferState::Sent);
        return refreshStatus();
    }
    if (!next && booSentXModemBOF) { // refused: the same block, number and data
        send(bPacket);
        return;
    }
    if (booSentXModemEOF) {
        send(QByteArray(1, XModemCodes::EOT));
        booSentXModemEOT = true;
        return;
    }
    booSentXModemBOF = true;
    sendNextBlock();
}

void viewTX::sendNextBlock()
{
    const QByteArray part = bBuffer.mid(xmodemSent_, XModemBlock::dataSize);
    bPacket = XModemBlock::build(iXModemPacketNo, part);
    if (status_.entered() == TransferState::WaitingForXModem) beginXModemClock();
    send(bPacket);
    iXModemPacketNo = XModemBlock::nextNumber(iXModemPacketNo);
    xmodemSent_ += part.size();
    booSentXModemEOF = xmodemSent_ >= bBuffer.size();
    followBlocks();
    if (status_.entered() == TransferState::Sending) return;
    status_.enter(TransferState::Sending);
    refreshStatus();
}

// Takes the highlight to the line that holds the last byte sent.
void viewTX::followBlocks()
{
    while (xmodemLineEndSent_ < xmodemSent_ && xmodemLineEnd_ < iTextLength) {
        const auto line = ui->rt1->lineAt(xmodemLineEnd_);
        xmodemLineStart_ = line.start;
        xmodemLineEnd_ = line.end;
        xmodemLineEndSent_ += xmodemBytes(line.start, line.end).size();
    }
    iIndexCurrentLine = xmodemLineStart_;
    ui->rt1->markLineOut({xmodemLineStart_, xmodemLineEnd_});
    if (booSentXModemEOF) movePBars();
}

// The buttons alone look as after a whole transfer.
void viewTX::noteCancelled()
{
    status_.enter(TransferState::Cancelled);
    const auto blocks = [](qsizetype bytes) { return (bytes + XModemBlock::dataSize - 1) / XModemBlock::dataSize; };
    cancelNotice_ = QStringLiteral("%1 of %2 blocks sent").arg(blocks(xmodemSent_)).arg(blocks(bBuffer.size()));
}

void viewTX::actOnXModemReplies(const QByteArray& bytes)
{
    for (const char reply : bytes) {
        switch (reply) {
        case iACK:
            status_.clock.completed(now(), xmodemSent_);
            sendXModemPacket(true);
            break;
        case XModemCodes::CAN:
            if (txState.State == TxState::txState_sending_xmodem) noteCancelled(); // several come
            booSentXModemEOT = true;
            sendXModemPacket(true);
            break;
        case iNAK:
            status_.clock.completed(now(), xmodemSent_);
            ui->boxWaitForCNC->hide();
            sendXModemPacket(false);
            break;
        default:
            break;
        }
    }
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
