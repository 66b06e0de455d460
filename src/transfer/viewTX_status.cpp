// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/viewTX.h"
#include "ui_viewTX.h"

#include "config/g.h"
#include "protocol/XModemBlock.h"
#include "transfer/MachineProgress.h"
#include "transfer/TransferWords.h"
#include "widgets/Images.h"

#include <QEvent>
#include <QFileInfo>

#include <algorithm>

namespace
{
constexpr int refreshInterval = 250; // ms

void showImage(QLabel& label, const QString& image)
{
    Images::showIn(label, image, label.minimumWidth());
}
} // namespace

qint64 viewTX::now() const
{
    return clock_.elapsed();
}

qsizetype viewTX::programLines() const
{
    // A line end that closes the text begins no further line.
    return ui->rt1->textSize() > 0 ? ui->rt1->lineNumber(ui->rt1->textSize() - 1) : 0;
}

TransferClock::Send viewTX::plainSend(qsizetype from) const
{
    TransferClock::Send send;
    send.msPerByte = TransferClock::msPerByte(sp->Speed, sp->StopBits);
    send.from = from;
    send.to = ui->rt1->textSize();
    const double size = static_cast<double>(std::max<qint64>(send.to, 1));
    const double added = static_cast<double>(programLines() * (EOB.size() - 1)); // "\n" becomes the end of block
    send.bytesPerUnit = (size + added) / size;
    return send;
}

void viewTX::beginClock()
{
    firstLine_ = ui->rt1->lineNumber(nextLine_);
    iIndexCurrentLine = nextLine_;
    status_.clock.begin(now(), plainSend(nextLine_));
}

void viewTX::beginXModemClock()
{
    firstLine_ = 1;
    auto send = plainSend(0);
    send.to = xmodemSend_.program().size();
    send.bytesPerUnit = static_cast<double>(XModemBlock::size) / XModemBlock::dataSize;
    status_.clock.begin(now(), send);
}

void viewTX::send(const QByteArray& bytes)
{
    status_.clock.wrote(now(), bytes.size());
    sp->sendBytes(bytes);
}

// The operator chose another program or place: what was told of the last transfer does not hold any more.
void viewTX::readyAgain()
{
    if (booModeTX && !dncRunning() && status_.entered() != TransferState::PortLost) {
        status_.enter(TransferState::Ready);
        setPBarsHidden(true);
    }
    if (!booModeTX) status_.forgetReceived();
    refreshStatus();
}

QString viewTX::noticeFor(TransferState state) const
{
    if (booModeTX) return state == TransferState::Cancelled ? cancelNotice_ : lostNotice_;
    return xmodemReceive_.notice();
}

TransferFacts viewTX::facts(TransferState state) const
{
    TransferFacts facts;
    facts.flow = mc->MCFLOW;
    facts.baud = sp->Speed;
    facts.bytes = ui->rt1->textSize();
    facts.lines = programLines();
    facts.blocks = xmodemReceive_.blocks();
    facts.repeats = xmodemReceive_.repeats();
    facts.notice = noticeFor(state);
    if (!booModeTX) return facts;
    facts.isFromTop = isXModem() || selectedStart() == fromTheTop;
    const bool isRunning = dncRunning();
    const bool isOut = state == TransferState::Sending || state == TransferState::Held || isXModem();
    const qsizetype next = isRunning || state == TransferState::Stopped ? nextLine_ : ui->rt1->caret();
    facts.line = ui->rt1->lineNumber(isOut ? iIndexCurrentLine : next);
    facts.line = std::min<qint64>(facts.line, std::max<qint64>(facts.lines, 1));
    if (state == TransferState::Sent) facts.lines -= firstLine_ - 1;
    facts.lineTime = TransferClock::atLineSpeed(plainSend(facts.isFromTop ? 0 : next));
    return facts;
}

void viewTX::refreshStatus()
{
    const auto state = status_.state(now());
    const auto current = facts(state);
    ui->lblTransferState->setText(status_.headline(now(), current));
    ui->lblStatus->setText(status_.details(now(), current));
    if (shownState_ != state) {
        shownState_ = state;
        showImage(*ui->imgTransferState, TransferStatus::image(state));
        icon().showActivity(TransferStatus::activity(state));
    }
    if (!TransferStatus::isLive(state))
        tmrStatus_.stop();
    else if (!tmrStatus_.isActive())
        tmrStatus_.start(refreshInterval);
}

// Soon, and once for however many changes come until then.
void viewTX::refreshStatusLater()
{
    if (!tmrStatus_.isActive()) tmrStatus_.start(refreshInterval);
}

void viewTX::showMachine()
{
    ui->lblMachine->setText(mc->MCNAME);
    ui->lblLine->setText(TransferWords::line(*mc));
    ui->lblMcParas->setText(machineSummary().replace(QLatin1String("\r\n"), QStringLiteral("  \u00B7  ")));
}

// Relative to the desktop's font, whatever its size.
void viewTX::setUpFonts()
{
    const auto scaled = [this](double factor) {
        QFont scaledFont = font();
        scaledFont.setPointSizeF(scaledFont.pointSizeF() * factor);
        scaledFont.setBold(true);
        return scaledFont;
    };
    ui->lblMachine->setFont(scaled(1.6));
    ui->lblTransferState->setFont(scaled(1.2));
    ui->lblProgram->setFont(scaled(1));
}

void viewTX::showPictures()
{
    showImage(*ui->imgCell, booModeTX ? QStringLiteral("send") : QStringLiteral("receive"));
    showImage(*ui->imgWait, QStringLiteral("state-waiting"));
    refreshStatus();
}

void viewTX::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange) setUpFonts();
}

void viewTX::showProgramName()
{
    const QString name = QFileInfo(ui->txtPath->text()).fileName();
    ui->lblProgram->setText(name);
    ui->lblProgram->setHidden(name.isEmpty());
    ui->txtPath->setToolTip(ui->txtPath->text());
}

// The adapter was unplugged. Told in the view and the icon, without a message that would stop the other machines'
// operator; the transfer ends where it can be taken up again.
void viewTX::portVanished()
{
    if (status_.entered() == TransferState::PortLost) return;
    lostNotice_.clear();
    const bool isRunning = dncRunning();
    if (isRunning || resume_) {
        // A stop may have come before; what it cut off went with the port.
        const int reached = resume_ ? resume_->state : txState.State;
        const bool isFromTop = isRunning && selectedStart() == fromTheTop;
        const bool hasNoLinesOut = reached == TxState::txState_sending_header || resume_;
        if (isRunning) btnStop_Click();
        if (reached == TxState::txState_sending_body || reached == TxState::txState_sending_trailer)
            goBackToLineOut();
        else if (isFromTop || hasNoLinesOut)
            ui->cbo1->setCurrentIndex(fromTheTop);
        resume_.reset();
    }
    tmrXModemTimer.stop();
    sp->Close();
    status_.enter(TransferState::PortLost);
    refreshStatus();
}

// How much of this line reached the control nobody knows, so its rest is not sent on its own.
void viewTX::goBackToLineOut()
{
    nextLine_ = iIndexCurrentLine;
    ui->rt1->moveCaretTo(nextLine_);
    ui->cbo1->setCurrentIndex(fromTheCaret);
    lostNotice_ = QStringLiteral("Stopped at line %1. See at the control what has arrived before you continue.")
                      .arg(TransferWords::number(ui->rt1->lineNumber(nextLine_)));
}

void viewTX::portLost()
{
    portVanished();
    g::msgBox(QStringLiteral("The port %1 of %2 no longer answers\r\rCheck the adapter and choose Send again")
                  .arg(mc->MCPORT, mc->MCNAME),
              QStringLiteral("OK"), {});
}

bool viewTX::portIsBack()
{
    if (status_.entered() != TransferState::PortLost) return true;
    if (sp->Open(mc->MCPORT) < 0) return false;
    lostNotice_.clear();
    return true;
}
