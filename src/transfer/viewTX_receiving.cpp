// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/viewTX.h"
#include "ui_viewTX.h"

#include "protocol/LineEnds.h"
#include "protocol/XModemCodes.h"
#include "transfer/SavedPrograms.h"

namespace
{
constexpr char DC1 = 17; // the start signal, also XON
} // namespace

void viewTX::RxOnComm()
{
    const QByteArray bytes = sp->readBytes();
    if (bytes.isEmpty()) return;
    if (booModeTX) return actOnReplies(bytes);
    if (isXModem()) {
        record_.receivedXModem(*mc, bytes, file_.path());
        return carryOut(xmodemReceive_.take(bytes));
    }
    for (const auto& received : record_.receivedText(*mc, bytes, file_.path()))
        ui->savedPrograms->take(received);
    appendReceived(LineEnds::collapseDoubled(bytes));
}

void viewTX::actOnReplies(const QByteArray& bytes)
{
    if (xmodemSend_.state() == XModemSend::State::Idle) {
        // The first start signal may find the port lost: the next must not try again.
        for (auto startSignals = bytes.count(DC1); startSignals > 0 && booWaitingForStartSignal(); --startSignals)
            begin(QStringLiteral("started by the control"));
        return;
    }
    for (const char reply : bytes) {
        if (reply == XModemCodes::ACK || reply == XModemCodes::NAK)
            sendXModemPacket(reply == XModemCodes::ACK);
        else
            carryOut(xmodemSend_.take(reply));
    }
}

void viewTX::appendReceived(const QByteArray& bytes)
{
    ui->rt1->appendReceived(bytes);
    ui->savedPrograms->arrived(record_.isProgramUnderWay());
    status_.received(now());
    if (status_.entered() != TransferState::Receiving) enter(TransferState::Receiving);
    refreshStatusLater();
}
