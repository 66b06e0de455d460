// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/viewTX.h"
#include "ui_viewTX.h"

#include "config/g.h"
#include "protocol/LineEnds.h"
#include "protocol/XModemCodes.h"
#include "transfer/ProgramFile.h"
#include "widgets/FileDialogs.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QUrl>

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
        record_.receivedXModem(*mc, bytes);
        return carryOut(xmodemReceive_.take(bytes));
    }
    record_.receivedText(*mc, bytes, ui->txtPath->text());
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
    status_.received(now(), bytes);
    if (status_.entered() != TransferState::Receiving) enter(TransferState::Receiving);
    refreshStatusLater();
}

void viewTX::btnSave_Click()
{
    auto* dialog = FileDialogs::make(this, QStringLiteral("Save program"), programFolder());
    dialog->setObjectName(QStringLiteral("saveDialog"));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setLabelText(QFileDialog::Accept, QStringLiteral("Save File"));
    connect(dialog, &QFileDialog::fileSelected, this, &viewTX::saveFile);
    dialog->open();
}

void viewTX::saveFile(const QString& path)
{
    const QString error = ProgramFile::write(path, ui->rt1->wholeText());
    if (error.isEmpty()) {
        lastFolder_ = QFileInfo(path).absolutePath();
        return;
    }
    // The file is named in this printed form because operators' notes and calls for help quote it so.
    g::msgBox(QStringLiteral("Could not save file Optional(%1)\r\r%2").arg(QUrl::fromLocalFile(path).toString(), error),
              QStringLiteral("OK"), {});
}
