// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/viewTX.h"
#include "ui_viewTX.h"

#include "protocol/LineFilter.h"
#include "protocol/XModemBlock.h"
#include "protocol/XModemCodes.h"

namespace
{
void answer(serialPort& port, XModemReceive::Reply reply)
{
    switch (reply) {
    case XModemReceive::Reply::Ack:
        return port.sendByte(XModemCodes::ACK);
    case XModemReceive::Reply::MarkedNak:
        return port.sendByte(XModemCodes::NAK);
    case XModemReceive::Reply::PlainNak:
        return port.sendBytes(QByteArray(1, XModemCodes::NAK)); // sendByte would mark it
    }
}
} // namespace

// --- Sending ---------------------------------------------------------------------------------------------------------

void viewTX::startXModem()
{
    setEOB();
    const LineFilter filter{ControlType::General, mc->MCSTRIPCOMMENTS, mc->MCSTRIPEMPTYLINES};
    xmodemSend_.begin(xmodemProgram_.begin(program_, filter, EOB),
                      mc->MCXMODEM0 ? XModemBlock::Numbers::From0 : XModemBlock::Numbers::From1);
    sendsXModem_ = true;
    notice_.clear();
    ui->rt1->clearLineOut();
    setPBarsHidden(false);
    movePBars();
    status_.clock = {};
    enter(TransferState::WaitingForXModem);
}

void viewTX::sendXModemPacket(bool next)
{
    status_.clock.completed(now(), xmodemSend_.sent());
    carryOut(xmodemSend_.take(next ? XModemCodes::ACK : XModemCodes::NAK));
}

void viewTX::carryOut(const XModemSend::Step& step)
{
    if (step.ending) {
        if (*step.ending == XModemSend::Ending::Unconfirmed) return end(Ending::Unconfirmed);
        const auto ending = *step.ending == XModemSend::Ending::Sent ? Ending::Finished : Ending::Cancelled;
        if (!mc->MCREPEAT) return end(ending);
        record(ending);
        return startXModem();
    }
    if (step.bytes.isEmpty()) return;
    if (status_.entered() == TransferState::WaitingForXModem) {
        auto planned = plannedSend(0);
        planned.to = xmodemSend_.program().size();
        planned.bytesPerUnit = static_cast<double>(XModemBlock::size) / XModemBlock::dataSize;
        status_.clock.begin(now(), planned);
        firstLine_ = 1;
        enter(TransferState::Sending);
    }
    write(step.bytes);
    if (xmodemSend_.state() == XModemSend::State::Block) showBlockOut();
}

// The highlight goes with the blocks, to the line that holds the last byte sent.
void viewTX::showBlockOut()
{
    const auto line = xmodemProgram_.follow(program_, xmodemSend_.sent());
    ui->rt1->markLineOut({line.start, line.end});
    if (xmodemSend_.isAllSent()) movePBars();
}

// --- Receiving -------------------------------------------------------------------------------------------------------

void viewTX::startXModemTimer(double interval)
{
    tmrXModemTimer.start(static_cast<int>(interval * 1000));
}

void viewTX::tmrXModem_Tick()
{
    if (!booModeTX) return carryOut(xmodemReceive_.tick());
    const auto step = xmodemSend_.tick();
    if (step.ending) return carryOut(step);
    if (step.bytes.isEmpty()) return;
    record_.sent(step.bytes);
    sp->sendBytes(step.bytes); // past the clock: the wait that it shows goes on
}

void viewTX::carryOut(const XModemReceive::Step& step)
{
    for (const auto reply : step.replies)
        answer(*sp, reply);
    if (step.isWhole) enter(TransferState::Received);
    if (!step.program.isEmpty()) {
        record_.receivedBlock(step.program);
        appendReceived(step.program);
    }
    if (step.isWhole) record(Ending::Finished);
    if (step.isCancelled) record(Ending::Cancelled);
    refreshStatus();
}
