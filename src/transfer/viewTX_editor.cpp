// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/viewTX.h"
#include "ui_viewTX.h"

#include "config/g.h"
#include "config/RecentPrograms.h"
#include "program/ProgramName.h"
#include "transfer/MachineProgress.h"
#include "transfer/ProgramFile.h"
#include "transfer/Replacing.h"
#include "transfer/SavedPrograms.h"
#include "widgets/FileDialogs.h"

#include <QFileDialog>
#include <QUrl>

#include <algorithm>

namespace
{
// As much of the program as its name is looked for in.
std::string_view headOf(const ProgramEditor& editor)
{
    return editor.view({0, std::min<qsizetype>(editor.textSize(), ProgramName::searchedText)});
}
} // namespace

void viewTX::btnNew_Click()
{
    const bool isSaved = ui->savedPrograms->isOn();
    if (!isSaved) record(); // there, the program that is coming is saved whole
    ui->savedPrograms->textDropped();
    ui->rt1->clearProgram();
    if (!booModeTX) ui->rt1->setSaved(); // what comes from now on stands alone; undo makes it all unsaved again
    file_.forget();
    panel_.showProgramPath({});
    if (!isSaved || !record_.isProgramUnderWay()) xmodemReceive_.forgetProgram();
    btnRewind_Click(); // no rest of the old program may go out before the next one
}

void viewTX::btnFolder_Click()
{
    auto* dialog = file_.openDialog(*mc);
    // Not at fileSelected: the dialog would still stand behind a question.
    connect(dialog, &QDialog::accepted, this,
            [this, dialog] { Replacing::openFile(*this, FileDialogs::chosenFile(*dialog)); });
    dialog->open();
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
    ui->savedPrograms->textKept();
    file_.opened(*mc, path);
    panel_.showProgramPath(path);
    RecentPrograms::add(*mc, path);
    g::saveRecentPrograms();
    btnRewind_Click();
    setTextLocked(true);
    if (booModeTX) ui->btnSend->setFocus(); // Enter starts it
}

void viewTX::btnSave_Click()
{
    auto* dialog = file_.saveDialog(*mc, headOf(*ui->rt1));
    connect(dialog, &QFileDialog::fileSelected, this, &viewTX::saveFile);
    dialog->open();
}

bool viewTX::save()
{
    if (!ui->savedPrograms->saveUnsaved()) return false;
    if (!ui->rt1->isUnsaved()) return true;
    // What has come since is another program than the one in that file.
    if (!file_.path().isEmpty() && !ui->rt1->hasUnsavedBytes()) return saveFile(file_.path());
    QString chosen;
    auto* dialog = file_.saveDialog(*mc, headOf(*ui->rt1));
    connect(dialog, &QFileDialog::fileSelected, this, [&chosen](const QString& path) { chosen = path; });
    dialog->exec();
    // Only now: what arrived while the dialog was open is saved, too.
    return !chosen.isEmpty() && saveFile(chosen);
}

bool viewTX::saveFile(const QString& path)
{
    const QString error = ProgramFile::write(path, ui->rt1->wholeText());
    if (!error.isEmpty()) {
        // The file is named in this printed form because operators' notes and calls for help quote it so.
        g::msgBox(
            QStringLiteral("Could not save file Optional(%1)\r\r%2").arg(QUrl::fromLocalFile(path).toString(), error),
            QStringLiteral("OK"), {});
        return false;
    }
    ui->rt1->setSaved();
    ui->savedPrograms->textKept();
    file_.saved(*mc, path);
    panel_.showProgramPath(path);
    refreshStatus();
    return true;
}

OpenWork viewTX::openWork() const
{
    ui->savedPrograms->settle();
    OpenWork work;
    work.program = file_.name();
    if (ui->rt1->isUnsaved() || ui->savedPrograms->hasUnsaved()) work.unsaved = OpenWork::Unsaved::Program;
    if (status_.isRunning()) {
        work.transfer = OpenWork::Transfer::Running;
    } else if (status_.state(now()) == TransferState::Receiving ||
               (ui->savedPrograms->isOn() && record_.isProgramUnderWay())) {
        work.transfer = OpenWork::Transfer::Arriving;
    } else if (booModeTX && !isXModem() && plain_.willContinue()) {
        work.transfer = OpenWork::Transfer::Stopped;
        work.line = ui->rt1->lineNumber(plain_.next());
    }
    return work;
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
    if (!booModeTX) {
        status_.forgetReceived();
        record_.forgetPrograms();
    }
    if (status_.isRunning() || status_.entered() == TransferState::PortLost) return refreshStatus();
    if (booModeTX) setPBarsHidden(true);
    const auto ready = booModeTX ? TransferState::Ready : TransferState::Listening;
    if (status_.entered() == ready) return refreshStatus();
    enter(ready);
}
