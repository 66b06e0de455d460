// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/TransferPanel.h"
#include "ui_viewTX.h"

#include "transfer/LowWindow.h"
#include "widgets/CompactRow.h"
#include "widgets/Images.h"
#include "widgets/Reasons.h"
#include "widgets/TextLook.h"

#include <QEvent>
#include <QKeyEvent>

#include <algorithm>
#include <cmath>

namespace
{
QString waitForStartText()
{
    return QStringLiteral(
        "Waiting for CNC Start Button\n\nIf you don't want to use the 'wait' option in future you can "
        "disable it in DNC Setup.");
}

constexpr int headingImage = 24, stateImage = 32; // pixels, as in the form
constexpr int nameCharacters = 24;                // of a file name that the path field has room for
constexpr int noticeCharacters = 60;              // of the wait box when its buttons stand beside the text
constexpr int restartCharacters =
    64; // of a view that has room for the button; a narrower one has the menu and the keys

void showRestartButton(Ui::viewTX& ui, const QWidget& view)
{
    const bool hasRoom = view.width() >= restartCharacters * view.fontMetrics().averageCharWidth();
    ui.btnRestart->setHidden(!ui.actRestart->isVisible() || !hasRoom);
    ui.boxTxButtons->setMinimumWidth(ui.buttonLayout->minimumSize().width());
}
} // namespace

TransferPanel::TransferPanel(QWidget& view, Ui::viewTX& ui) : view_(view), ui_(ui) {}

void TransferPanel::setUp()
{
    ui_.btnFont->hide();
    ui_.btnStep->hide();
    ui_.btnNew->setIcon(Images::icon(QStringLiteral("new")));
    ui_.btnFolder->setIcon(Images::icon(QStringLiteral("open")));
    ui_.btnCompare->setIcon(Images::icon(QStringLiteral("compare")));
    ui_.btnSave->setIcon(Images::icon(QStringLiteral("save")));
    ui_.btnSend->setIcon(Images::icon(QStringLiteral("send")));
    ui_.btnStop->setIcon(Images::icon(QStringLiteral("stop")));
    ui_.btnRewind->setIcon(Images::icon(QStringLiteral("rewind")));
    ui_.actRestart->setIcon(Images::icon(QStringLiteral("restart")));
    ui_.btnHideWaitBox->setIcon(Images::icon(QStringLiteral("close")));
    ui_.btnSendNow->setIcon(Images::icon(QStringLiteral("sendnow")));
    Images::showIn(*ui_.imgWait, QStringLiteral("state-waiting"), stateImage);
    ui_.lblWaitForMC->setText(waitForStartText());
    ui_.boxWaitForCNC->hide();
    ui_.btnSend->installEventFilter(this);
    ui_.btnRewind->installEventFilter(this);
    ui_.boxPBOuter->installEventFilter(this);
    view_.installEventFilter(this);
    TextLook::dim(*ui_.lblMcParas);
    setUpFonts();
    setUpRows();
    TextLook::dim(*ui_.lblSaved);
    showProgramPath({});
    showSaved({});
}

// Relative to the desktop's font, whatever its size.
void TransferPanel::setUpFonts()
{
    const auto scaled = [this](double factor) {
        QFont font = view_.font();
        font.setPointSizeF(font.pointSizeF() * factor);
        font.setBold(true);
        return font;
    };
    ui_.txtTXorRX->setFont(scaled(1));
    ui_.lblTransferState->setFont(scaled(1.2));
}

// None of them asks for more room than a small screen or large text leaves.
void TransferPanel::setUpRows()
{
    CompactRow::ofTools(*ui_.boxFile, nameCharacters);
    const auto sendRow = [this] {
        const bool hasProgress = !ui_.boxPBOuter->isHidden();
        return ui_.buttonLayout->sizeHint().width() +
               (hasProgress ? ui_.txLayout->spacing() + ui_.progressLayout->minimumSize().width() : 0);
    };
    new CompactRow(*ui_.boxTxButtons, sendRow, [this](bool isCompact) {
        ui_.txLayout->setDirection(isCompact ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
        ui_.txLayout->setStretch(1, isCompact ? 0 : 1);
        ui_.boxTxButtons->setMinimumWidth(ui_.buttonLayout->minimumSize().width());
    });
    const auto waitBox = [this] { return noticeCharacters * view_.fontMetrics().averageCharWidth(); };
    new CompactRow(*ui_.boxWaitForCNC, waitBox, [this](bool isCompact) {
        ui_.waitLayout->setDirection(isCompact ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
        ui_.waitLayout->setSpacing(isCompact ? 8 : 16);
        ui_.waitButtonLayout->setDirection(isCompact ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
        ui_.imgWait->setHidden(isCompact);
    });
}

void TransferPanel::fitHeight()
{
    const bool isLow = isLowWindow(view_);
    const int gap = isLow ? 4 : 8;
    ui_.mainLayout->setSpacing(gap);
    ui_.mainLayout->setContentsMargins(16, gap, 16, gap);
    const int buttonHeight = isLow ? 32 : 36;
    for (QWidget* control :
         std::initializer_list<QWidget*>{ui_.btnStop, ui_.btnRewind, ui_.btnSend, ui_.cbo1, ui_.btnRestart})
        control->setMinimumHeight(buttonHeight);
}

void TransferPanel::showMode(bool sends)
{
    ui_.txtTXorRX->setText(sends ? QStringLiteral("Send to CNC") : QStringLiteral("Receive"));
    Images::showIn(*ui_.imgCell, sends ? QStringLiteral("send") : QStringLiteral("receive"), headingImage);
    ui_.boxTxButtons->setHidden(!sends); // a receive view cannot send
    ui_.checkLine->setHidden(!sends);
    ui_.savedPrograms->setHidden(sends);
}

void TransferPanel::showLine(const QString& summary, const QString& line)
{
    ui_.lblMcParas->setText(QString(summary).replace(QLatin1String("\r\n"), QStringLiteral("  \u00B7  ")));
    ui_.lblMcParas->setToolTip(line);
}

void TransferPanel::showProgramPath(const QString& path)
{
    ui_.txtPath->setText(path); // its end, the file's name, is what shows
    ui_.txtPath->setToolTip(path);
}

void TransferPanel::showSaved(const QString& note)
{
    ui_.lblSaved->setText(note);
    ui_.lblSaved->setHidden(note.isEmpty());
}

void TransferPanel::showState(const QString& headline, const QString& details)
{
    ui_.lblTransferState->setText(headline);
    ui_.lblStatus->setText(details);
}

void TransferPanel::showStateImage(const QString& image)
{
    Images::showIn(*ui_.imgTransferState, image, stateImage);
}

void TransferPanel::showRunning(bool isRunning)
{
    const bool isSentByKeyboard = isRunning && ui_.btnSend->hasFocus();
    const bool isStoppedByKeyboard = !isRunning && ui_.btnStop->hasFocus();
    ui_.btnSend->setHidden(isRunning);
    ui_.btnRewind->setHidden(isRunning);
    ui_.btnStop->setHidden(!isRunning);
    if (isSentByKeyboard) ui_.btnStop->setFocus();
    if (!isStoppedByKeyboard) return;
    // A second Enter must neither send on nor rewind.
    QWidget* harmless = ui_.txtPath;
    if (!ui_.cbo1->isHidden()) harmless = ui_.cbo1;
    harmless->setFocus();
}

void TransferPanel::takeFocus()
{
    const bool isRunning = ui_.btnSend->isHidden();
    QWidget* first = ui_.btnSend;
    if (isRunning) first = ui_.rt1;
    if (ui_.boxTxButtons->isHidden()) first = ui_.btnSave;
    first->setFocus();
}

void TransferPanel::offerRestart(bool isOffered)
{
    ui_.actRestart->setVisible(isOffered); // hidden, its keys do nothing
    showRestartButton(ui_, view_);
}

void TransferPanel::showLock(bool isLocked, bool isRunning)
{
    ui_.btnLock->setIcon(Images::icon(isLocked ? QStringLiteral("locked") : QStringLiteral("unlocked")));
    const auto keys = ui_.btnLock->shortcut();
    ui_.btnLock->setText(isLocked ? QStringLiteral("Unlock") : QStringLiteral("Lock"));
    ui_.btnLock->setShortcut(keys); // a new text takes it away
    ui_.btnLock->setAccessibleDescription(isLocked ? QStringLiteral("Locked") : QStringLiteral("Unlocked"));

    // A running transfer owns the text: an edit would shift the lines that have not gone out yet.
    const bool isOpen = !isLocked && !isRunning;
    const QString reason =
        isRunning ? QStringLiteral("Stop the transfer first") : QStringLiteral("Unlock the program first (Ctrl+L)");
    Reasons::enable(*ui_.btnNew, isOpen, reason);
    Reasons::enable(*ui_.btnFolder, isOpen, reason);
    ui_.rt1->setReadOnly(!isOpen);
    ui_.rt1->setCaretHeld(isRunning);
    Reasons::enable(*ui_.cbo1, !isRunning, reason);
}

void TransferPanel::showWaitBox(TransferState state, bool canSendNow)
{
    ui_.btnSendNow->setHidden(!canSendNow);
    if (state == TransferState::WaitingForXModem)
        ui_.lblWaitForMC->setText(QStringLiteral("Waiting for XModem start command from CNC"));
    else if (state == TransferState::WaitingForStart)
        ui_.lblWaitForMC->setText(waitForStartText());
    else
        return hideWaitBox();
    ui_.boxWaitForCNC->show();
}

void TransferPanel::hideWaitBox()
{
    ui_.boxWaitForCNC->hide();
}

void TransferPanel::offerSendOn(bool isOffered, TransferState state)
{
    if (isOffered == offersSendOn_) return; // in the wait for a start the operator may have hidden the box
    offersSendOn_ = isOffered;
    ui_.btnSendNow->setText(isOffered ? QStringLiteral("Send o&n") : QStringLiteral("Send &now"));
    ui_.btnSendNow->setAccessibleName(isOffered ? QStringLiteral("Send on") : QStringLiteral("Send now"));
    if (!isOffered) return showWaitBox(state, true);
    ui_.lblWaitForMC->setText(
        QStringLiteral("The control has held the line for more than a minute.\n\nA long cut can take "
                       "that long. If the control is ready, its XON was lost: send on."));
    ui_.boxWaitForCNC->show();
}

void TransferPanel::whileConverting(const std::function<void()>& convert, bool canSendNow)
{
    const QString kept = ui_.lblWaitForMC->text();
    ui_.lblWaitForMC->setText(QStringLiteral("DOS File! Auto converting text to 'Mac' format\n\nPlease wait"));
    ui_.btnSendNow->hide();
    ui_.boxWaitForCNC->show();
    ui_.boxWaitForCNC->repaint();
    convert();
    ui_.lblWaitForMC->setText(kept);
    ui_.btnSendNow->setHidden(!canSendNow);
    hideWaitBox();
}

void TransferPanel::setProgressHidden(bool isHidden)
{
    ui_.boxPBOuter->setHidden(isHidden);
    ui_.txtPCent->setHidden(isHidden);
}

void TransferPanel::showPercent(double percent)
{
    percent_ = percent;
    const auto* outer = ui_.boxPBOuter;
    ui_.boxPBInner->resize(static_cast<int>(outer->width() / 100.0 * std::min(percent, 100.0)), outer->height());
    if (std::abs(percent) < 9e18) ui_.txtPCent->setText(QString::number(std::floor(percent), 'f', 0) + u'%');
}

// Outside a dialog Enter presses no button by itself. A key that is still held down, from the file dialog, starts
// nothing.
bool TransferPanel::sendsByEnter(const QEvent& event) const
{
    if (event.type() != QEvent::KeyPress) return false;
    const auto& press = static_cast<const QKeyEvent&>(event);
    if (press.key() != Qt::Key_Return && press.key() != Qt::Key_Enter) return false;
    if (!press.isAutoRepeat()) ui_.btnSend->click();
    return true;
}

bool TransferPanel::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == ui_.btnSend && sendsByEnter(*event)) return true;
    if (watched == &view_ && event->type() == QEvent::FontChange) setUpFonts();
    if (watched == &view_ && event->type() == QEvent::Resize) {
        fitHeight();
        showRestartButton(ui_, view_);
    }
    if (watched == ui_.boxPBOuter && event->type() == QEvent::Resize) showPercent(percent_);
    // The second click of a double click on Stop lands on Rewind, which has just come up in its place, and would throw
    // away the place where the send continues. (It does not land on Send, which would go on sending.)
    if (watched == ui_.btnRewind && event->type() == QEvent::MouseButtonDblClick) return true;
    return QObject::eventFilter(watched, event);
}
