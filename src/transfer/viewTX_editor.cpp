// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/viewTX.h"
#include "ui_viewTX.h"

#include "config/g.h"
#include "transfer/MachineProgress.h"
#include "widgets/FileDialogs.h"
#include "widgets/Images.h"

#include <QDropEvent>
#include <QEvent>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QMimeData>

#include <algorithm>
#include <cmath>

QString viewTX::waitForStart()
{
    return QStringLiteral(
        "Waiting for CNC Start Button\r\rIf you don't want to use the 'wait' option in future you can "
        "disable it in DNC Setup.");
}

namespace
{
// The editor's positions are 32-bit and a byte above 127 takes two of them.
constexpr qint64 largestFile = 1'000'000'000;
} // namespace

void viewTX::viewDidLoad()
{
    ui->btnFont->hide();
    ui->btnStep->hide();
    ui->btnRewind->installEventFilter(this);
    ui->btnNew->setIcon(Images::icon(QStringLiteral("new")));
    ui->btnFolder->setIcon(Images::icon(QStringLiteral("open")));
    ui->btnSave->setIcon(Images::icon(QStringLiteral("save")));
    ui->btnSend->setIcon(Images::icon(QStringLiteral("send")));
    ui->btnStop->setIcon(Images::icon(QStringLiteral("stop")));
    ui->btnRewind->setIcon(Images::icon(QStringLiteral("rewind")));
    ui->btnHideWaitBox->setIcon(Images::icon(QStringLiteral("close")));
    ui->btnSendNow->setIcon(Images::icon(QStringLiteral("sendnow")));
    ui->cbo1->setCurrentIndex(0);
    setDncRunning(false);
    setPBarsHidden(true);
    setTextLocked(false);
    ui->lblWaitForMC->setText(waitForStart().replace(u'\r', u'\n'));
    ui->boxWaitForCNC->hide();
    setUpFonts();
    showProgramName();
}

void viewTX::btnNew_Click()
{
    ui->rt1->clearProgram();
    ui->txtPath->clear();
    nextLine_ = 0;
    resume_.reset();
    xmodemReceive_.forgetProgram();
    showProgramName();
    readyAgain();
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

// Path of the one file, empty when it can't be opened now.
QString viewTX::droppedFile(const QDropEvent& event) const
{
    const auto urls = event.mimeData()->urls();
    if (!booModeTX || !ui->btnFolder->isEnabled() || urls.size() != 1) return {};
    if (!(event.possibleActions() & Qt::CopyAction)) return {}; // after a move, the file would be gone
    const QString path = urls.first().toLocalFile();
    return QFileInfo(path).isFile() ? path : QString();
}

void viewTX::dragEnterEvent(QDragEnterEvent* event)
{
    if (droppedFile(*event).isEmpty()) return;
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void viewTX::dropEvent(QDropEvent* event)
{
    const QString path = droppedFile(*event); // asked again: a transfer may have started since
    if (path.isEmpty()) return;
    event->setDropAction(Qt::CopyAction);
    event->accept();
    openFile(path);
}

void viewTX::openFile(const QString& path)
{
    QFile file(path);
    // Pipes and devices have no end that a read could come to.
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) return;
    if (file.size() > largestFile) {
        g::msgBox(QStringLiteral("The file is too large for the editor\r\r%1").arg(path), QStringLiteral("OK"), {});
        return;
    }
    const QString kept = ui->lblWaitForMC->text();
    showWaitBox(QStringLiteral("DOS File! Auto converting text to 'Mac' format\n\nPlease wait"), false);
    ui->boxWaitForCNC->repaint(); // a large file keeps the event loop busy
    const QByteArray bytes = file.readAll();
    const bool isWhole = file.error() == QFileDevice::NoError;
    if (isWhole) ui->rt1->setProgram(bytes);
    ui->lblWaitForMC->setText(kept);
    ui->boxWaitForCNC->hide();
    ui->btnSendNow->setHidden(isXModem());
    if (!isWhole) return;
    ui->txtPath->setText(path);
    lastFolder_ = QFileInfo(path).absolutePath();
    btnRewind_Click();
    setTextLocked(true);
    showProgramName();
    refreshStatus();
}

void viewTX::btnLock_Click()
{
    setTextLocked(!textLocked());
}

void viewTX::btnFont_Click() {}

void viewTX::setTextLocked(bool locked)
{
    ui->btnLock->setIcon(Images::icon(locked ? QStringLiteral("locked") : QStringLiteral("unlocked")));
    const auto keys = ui->btnLock->shortcut();
    ui->btnLock->setText(locked ? QStringLiteral("Unlock") : QStringLiteral("Lock"));
    ui->btnLock->setShortcut(keys); // a new text takes it away
    ui->btnLock->setAccessibleDescription(locked ? QStringLiteral("Locked") : QStringLiteral("Unlocked"));
    vTextLocked = locked;
    applyLock();
}

void viewTX::applyLock()
{
    // A running transfer owns the text: an edit would shift the lines that have not gone out yet.
    const bool open = !vTextLocked && !dncRunning();
    ui->btnNew->setEnabled(open);
    ui->btnFolder->setEnabled(open);
    ui->rt1->setReadOnly(!open);
    ui->rt1->setCaretHeld(dncRunning());
    ui->cbo1->setEnabled(!dncRunning());
}

void viewTX::setComboHidden(bool hidden)
{
    ui->cbo1->setHidden(hidden);
}

void viewTX::setPBarsHidden(bool hidden)
{
    ui->boxPBOuter->setHidden(hidden);
    ui->txtPCent->setHidden(hidden);
    icon().setPBarHidden(hidden);
    if (hidden) return;
    icon().setPBarValue(0);
    showPercent(0);
}

double viewTX::getNumLines() const
{
    return ui->rt1->lines();
}

void viewTX::movePBars()
{
    const double unit = std::max(icon().pBarMaximum() / 100.0, 0.1);
    const double percent = static_cast<double>(iIndexCurrentLine) / unit;
    const bool isAllOut = isXModem() ? xmodemSend_.isAllSent() : txEOF;
    icon().setPBarValue(unit * percent);
    showPercent(isAllOut ? 100 : percent);
}

void viewTX::showPercent(double percent)
{
    percent_ = percent;
    const auto* outer = ui->boxPBOuter;
    ui->boxPBInner->resize(static_cast<int>(outer->width() / 100.0 * std::min(percent, 100.0)), outer->height());
    if (std::abs(percent) < 9e18) ui->txtPCent->setText(QString::number(std::floor(percent), 'f', 0) + u'%');
}

void viewTX::showWaitBox(const QString& text, bool canSendNow)
{
    ui->lblWaitForMC->setText(QString(text).replace(u'\r', u'\n'));
    ui->btnSendNow->setHidden(!canSendNow);
    ui->boxWaitForCNC->show();
}

bool viewTX::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == ui->boxPBOuter && event->type() == QEvent::Resize) showPercent(percent_);
    // The second half of a double click on Stop, which stands where Rewind comes up (and not Send: that would send
    // on). It would take the place away where to continue.
    if (watched == ui->btnRewind && event->type() == QEvent::MouseButtonDblClick) return true;
    return QWidget::eventFilter(watched, event);
}
