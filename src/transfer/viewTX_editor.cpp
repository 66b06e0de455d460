// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/viewTX.h"
#include "ui_viewTX.h"

#include "config/g.h"
#include "config/RecentPrograms.h"
#include "transfer/MachineProgress.h"
#include "transfer/ProgramFile.h"
#include "widgets/FileDialogs.h"

#include <QFileDialog>
#include <QFileInfo>

#include <algorithm>

void viewTX::btnNew_Click()
{
    record();
    ui->rt1->clearProgram();
    panel_.showProgramPath({});
    xmodemReceive_.forgetProgram();
    btnRewind_Click(); // no rest of the old program may go out before the next one
}

void viewTX::btnFolder_Click()
{
    auto* dialog = FileDialogs::make(this, QStringLiteral("Open program"), programFolder());
    dialog->setObjectName(QStringLiteral("openDialog"));
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setOption(QFileDialog::ReadOnly);
    dialog->setLabelText(QFileDialog::Accept, QStringLiteral("SelectFile"));
    connect(dialog, &QFileDialog::fileSelected, this, &viewTX::openFile);
    dialog->open();
}

QString viewTX::programFolder() const
{
    return mc->MCOUTDIR.isEmpty() ? lastFolder_ : mc->MCOUTDIR;
}

void viewTX::openFile(const QString& path)
{
    if (status_.isRunning() || !ProgramFile::isReadable(path)) return;
    if (ProgramFile::isTooLarge(path)) {
        g::msgBox(QStringLiteral("The file is too large for the editor\r\r%1").arg(path), QStringLiteral("OK"), {});
        return;
    }
    bool isOpen = false;
    const auto convert = [&] {
        const auto bytes = ProgramFile::read(path);
        isOpen = bytes.has_value();
        if (isOpen) ui->rt1->setProgram(*bytes);
    };
    panel_.whileConverting(convert, !isXModem());
    if (!isOpen) return;
    panel_.showProgramPath(path);
    lastFolder_ = QFileInfo(path).absolutePath();
    RecentPrograms::add(*mc, path);
    g::saveRecentPrograms();
    btnRewind_Click();
    setTextLocked(true);
    if (booModeTX) ui->btnSend->setFocus(); // Enter starts it
}

void viewTX::btnLock_Click()
{
    setTextLocked(!textLocked());
}

void viewTX::setTextLocked(bool locked)
{
    vTextLocked = locked;
    panel_.showLock(locked, status_.isRunning());
}

void viewTX::setComboHidden(bool hidden)
{
    ui->cbo1->setHidden(hidden);
}

void viewTX::setPBarsHidden(bool hidden)
{
    panel_.setProgressHidden(hidden);
    progress().setPBarHidden(hidden);
    if (hidden) return;
    progress().setPBarValue(0);
    panel_.showPercent(0);
}

double viewTX::getNumLines() const
{
    return ui->rt1->lines();
}

void viewTX::movePBars()
{
    const double unit = std::max(progress().pBarMaximum() / 100.0, 0.1);
    const double percent = static_cast<double>(iIndexCurrentLine()) / unit;
    progress().setPBarValue(unit * percent);
    panel_.showPercent((sendsXModem_ ? booSentXModemEOF() : txEOF()) ? 100 : percent);
}

// The operator chose another program or place, so the result of the last transfer is no longer shown.
void viewTX::readyAgain()
{
    if (!booModeTX) status_.forgetReceived();
    if (status_.isRunning() || status_.entered() == TransferState::PortLost) return refreshStatus();
    if (booModeTX) setPBarsHidden(true);
    const auto ready = booModeTX ? TransferState::Ready : TransferState::Listening;
    if (status_.entered() == ready) return refreshStatus();
    enter(ready);
}
