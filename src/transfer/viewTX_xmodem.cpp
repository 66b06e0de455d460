// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/viewTX.h"
#include "ui_viewTX.h"

#include "config/g.h"
#include "protocol/LineFilter.h"
#include "protocol/XModemBlock.h"
#include "transfer/MachineProgress.h"

namespace
{
constexpr char CAN = 24; // the receiver cancels

// Ticks of the one-second timer.
constexpr int pollTicks = 2;
constexpr int refusedSilence = 2;     // after a refused block, before a plain NAK
constexpr int refusedRepeat = 5;      // and between further ones
constexpr int stalledSilence = 5;     // until a block that stays incomplete is dropped
constexpr int pollsBeforePlain = 3;   // the opening ones
constexpr int pollsAfterNoise = 1;    // a block has come whose SOH was lost
constexpr int pollsAfterSilence = 30; // a minute: longer than a sender takes its time
} // namespace

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
        send(QByteArray(1, static_cast<char>(iEOT)));
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
        case CAN:
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
    ++iXModemTimeoutCounter;
    if (!booGotXModemSOH) {
        if (iXModemTimeoutCounter >= pollTicks) {
            iXModemTimeoutCounter = 0;
            ++xmodemPolls_;
            sp->sendByte(iNAK);
        } else if (!xmodemOpened_ && xmodemPolls_ >= pollsBeforePlain) {
            sendPlainNak();
        } else if (xmodemOpened_ && xmodemPolls_ >= (hasMissedBlock() ? pollsAfterNoise : pollsAfterSilence)) {
            // A plain peer waits for an answer for as long as our marked NAKs keep coming. It repeats a block that we
            // have if our ACK was lost, so it is called very late unless its block was.
            xmodemPolls_ = 0;
            xmodemNoise_ = 0;
            sendPlainNak();
        }
        return;
    }
    if (bytesXModemPacket.isEmpty()) { // the block was refused and its repeat does not come
        const int silence = iXModemTimeoutCounter - refusedSilence;
        if (silence >= 0 && silence % refusedRepeat == 0) sendPlainNak();
    } else if (iXModemTimeoutCounter >= stalledSilence) {
        bytesXModemPacket.clear();
        iXModemTimeoutCounter = 0;
        sp->sendByte(iNAK);
    }
}

// sendByte marks a NAK with a parity bit, and peers that know plain 8-bit XModem alone do not hear that one.
void viewTX::sendPlainNak()
{
    sp->sendBytes(QByteArray(1, static_cast<char>(iNAK)));
}

void viewTX::gatherXModem(const QByteArray& bytes)
{
    int cancels = 0;
    for (const char byte : bytes) {
        if (!booGotXModemSOH && byte == iEOT) {
            sp->sendByte(iACK);
            setDncRunning(false);
            status_.enter(TransferState::Received);
            refreshStatus();
            forgetSender();
        } else if (!booGotXModemSOH && byte == iSOH) {
            booGotXModemSOH = true;
            xmodemOpened_ = true;
            xmodemNoise_ = 0;
            xmodemPolls_ = 0;
            bytesXModemPacket.clear();
        } else if (!booGotXModemSOH) {
            ++xmodemNoise_;
            if (byte == CAN) ++cancels;
        }
        if (booGotXModemSOH) {
            bytesXModemPacket.append(byte);
            iXModemTimeoutCounter = 0;
        }
    }
    if (bytesXModemPacket.size() >= XModemBlock::size) finishBlock();
    if (cancels < 2) return; // one may be a damaged byte
    forgetSender();
    missingNotice_ =
        QStringLiteral("The control cancelled after block %1: the program is not whole").arg(xmodemBlocks_);
    refreshStatus();
}

// Without its SOH a block is noise, but so much of it that it can be nothing else.
bool viewTX::hasMissedBlock() const
{
    return xmodemNoise_ >= XModemBlock::dataSize;
}

// What comes next is another program.
void viewTX::forgetSender()
{
    xmodemOpened_ = false;
    xmodemNoise_ = 0;
    xmodemPolls_ = 0;
    xmodemLastNumber_ = -1;
}

void viewTX::finishBlock()
{
    if (!XModemBlock::isGood(bytesXModemPacket)) {
        // Still under way: the repeat begins with its SOH and is gathered whole from that byte.
        bytesXModemPacket.clear();
        sp->sendByte(iNAK);
        return;
    }
    sp->sendByte(iACK);
    appendReceived(XModemBlock::data(bytesXModemPacket));
    noticeNumber();
    bytesXModemPacket.clear();
    booGotXModemSOH = false;
}

// Numbers decide nothing, but a block that came twice or not at all must not go unnoticed: an EOT that noise makes up
// acknowledges the block that it stood in.
void viewTX::noticeNumber()
{
    // Bit 7 is stripped: 255 reads as 127, and 0 or 1 follows it.
    const int number = static_cast<unsigned char>(bytesXModemPacket[1]) & 0x7F;
    const bool isNext = xmodemLastNumber_ < 0
                            ? number == 1
                            : number == ((xmodemLastNumber_ + 1) & 0x7F) || (xmodemLastNumber_ == 0x7F && number == 1);
    if (number == xmodemLastNumber_) {
        ++xmodemRepeats_;
        repeatNotice_ = QStringLiteral("Block %1 came twice and stands twice in the program (%2 repeated so far)")
                            .arg(xmodemBlocks_)
                            .arg(xmodemRepeats_);
    } else {
        if (!isNext)
            missingNotice_ =
                QStringLiteral("Blocks are missing after block %1: the program is not whole").arg(xmodemBlocks_);
        ++xmodemBlocks_;
    }
    xmodemLastNumber_ = number;
    refreshStatus();
}
