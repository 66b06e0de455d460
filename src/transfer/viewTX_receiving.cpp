// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/viewTX.h"
#include "ui_viewTX.h"

#include "config/g.h"
#include "protocol/LineEnds.h"
#include "widgets/FileDialogs.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QSaveFile>
#include <QUrl>

namespace
{
constexpr char DC1 = 17; // the start signal, also XON

// A full disk takes a part first; only the write after that says why.
bool writeAll(QSaveFile& file, const QByteArray& bytes)
{
    for (qsizetype at = 0; at < bytes.size();) {
        const auto written = file.write(bytes.constData() + at, bytes.size() - at);
        if (written <= 0) return false;
        at += written;
    }
    return true;
}
} // namespace

void viewTX::RxOnComm()
{
    const QByteArray bytes = sp->readBytes();
    if (bytes.isEmpty()) return;
    if (booModeTX && txState.State == TxState::txState_sending_xmodem) return actOnXModemReplies(bytes);
    if (booModeTX) {
        if (!booWaitingForStartSignal) return;
        // The first one may find the port lost: the next must not try again.
        for (auto startSignals = bytes.count(DC1); startSignals > 0 && booWaitingForStartSignal; --startSignals)
            beginSend();
        return;
    }
    if (isXModem()) return carryOut(xmodemReceive_.take(bytes));
    appendReceived(LineEnds::collapseDoubled(bytes));
}

void viewTX::appendReceived(const QByteArray& bytes)
{
    ui->rt1->appendReceived(bytes);
    status_.received(now());
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
    QSaveFile file(path);
    const QByteArray text = ui->rt1->wholeText();
    // Unbuffered: a disk that is full only when a buffer is written at the end would go unnoticed.
    const bool isSaved =
        file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && writeAll(file, text) && file.commit();
    if (isSaved) {
        lastFolder_ = QFileInfo(path).absolutePath();
        return;
    }
    // The file is named in this printed form because operators' notes and calls for help quote it so.
    g::msgBox(QStringLiteral("Could not save file Optional(%1)\r\r%2")
                  .arg(QUrl::fromLocalFile(path).toString(), file.errorString()),
              QStringLiteral("OK"), {});
}
