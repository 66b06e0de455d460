// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/viewTX.h"
#include "ui_viewTX.h"

#include "protocol/Framing.h"
#include "protocol/XModemBlock.h"
#include "transfer/MachineProgress.h"
#include "transfer/SavedPrograms.h"
#include "transfer/XModemWords.h"

#include <algorithm>
#include <map>

namespace
{
constexpr int refreshInterval = 250; // ms

// What goes out besides the program, for an operator who compares the bytes sent with the file's size.
QString addedTo(const MachineRecord& mc, bool isXModem)
{
    if (isXModem) return QStringLiteral("block heads, checksums and padding");
    return Framing::controlType(mc.MCMODE) == ControlType::General ? QStringLiteral("start, end and line ends")
                                                                   : QStringLiteral("leader, header and line ends");
}

// After the port was lost: the operator's caret says from where.
PortReturn::Offer offerToSend(const ProgramEditor& editor, const TransferFacts& facts)
{
    if (facts.isFromTop) return {};
    const auto line = editor.lineNumbered(static_cast<int>(facts.line));
    const auto end = std::min(line.end, line.start + 200); // some lines are megabytes long
    return {PortReturn::Offer::Kind::Continue, facts.line, editor.lineText({line.start, end})};
}
} // namespace

qsizetype viewTX::iNumLines() const
{
    return ui->rt1->textSize() > 0 ? ui->rt1->lineNumber(ui->rt1->textSize() - 1) : 0;
}

TransferClock::Send viewTX::plannedSend(qsizetype from) const
{
    TransferClock::Send send;
    send.msPerByte = TransferClock::msPerByte(sp->Speed, sp->StopBits);
    send.from = from;
    send.to = ui->rt1->textSize();
    const double size = static_cast<double>(std::max<qint64>(send.to, 1));
    const double added = static_cast<double>(iNumLines() * (EOB.size() - 1)); // "\n" becomes the end of block
    send.bytesPerUnit = (size + added) / size;
    return send;
}

void viewTX::write(const QByteArray& bytes)
{
    status_.clock.wrote(now(), bytes.size());
    record_.sent(bytes);
    sp->sendBytes(bytes);
}

TransferFacts viewTX::facts(TransferState state) const
{
    TransferFacts facts;
    facts.flow = flowControl(mc->MCFLOW);
    facts.baud = sp->Speed;
    facts.bytes = ui->rt1->textSize();
    facts.lines = iNumLines();
    facts.programs = record_.programs();
    facts.blocks = xmodemReceive_.blocks();
    facts.repeats = xmodemReceive_.repeats();
    if (!booModeTX) {
        facts.notice = xmodemReceive_.notice();
        return facts;
    }
    const bool isSending =
        state == TransferState::Sending || state == TransferState::Held || state == TransferState::Still;
    const bool isCutShort = state == TransferState::Cancelled || state == TransferState::Unconfirmed;
    if (isSending || isCutShort || state == TransferState::PortLost) facts.notice = notice_;
    if (isSending && sendsXModem_) facts.notice = XModemWords::waiting(xmodemSend_);
    facts.isFromTop = isXModem() || startsFromTop();
    const bool isOut = isSending || sendsXModem_;
    const bool isNextSet = status_.isRunning() || state == TransferState::Stopped;
    const qsizetype next = isNextSet ? plain_.next() : ui->rt1->caret();
    facts.line = ui->rt1->lineNumber(isOut ? iIndexCurrentLine() : next);
    facts.line = std::min<qint64>(facts.line, std::max<qint64>(facts.lines, 1));
    if (state == TransferState::Sent) facts.lines -= firstLine_ - 1;
    if (!sendsXModem_ && plain_.restartedAt()) {
        facts.restartLine = ui->rt1->lineNumber(*plain_.restartedAt());
        facts.startBlocks = plain_.startBlocksLeft();
    }
    if (firstLine_ == 1 || sendsXModem_) facts.added = addedTo(*mc, sendsXModem_);
    facts.lineTime = TransferClock::atLineSpeed(plannedSend(facts.isFromTop ? 0 : next));
    return facts;
}

void viewTX::refreshStatus()
{
    if (!sp) return;         // not bound to a machine yet
    const qint64 at = now(); // one moment for all that is shown
    status_.setHold(sp->heldFor(), at);
    const bool canSendOn = status_.offersSendOn() && flowControl(mc->MCFLOW) == FlowControl::XonXoff;
    panel_.offerSendOn(canSendOn, status_.entered());
    const auto state = status_.state(at);
    const auto current = facts(state);
    panel_.showState(status_.headline(at, current), status_.details(at, current));
    panel_.showSaved(file_.note(ui->rt1->isUnsaved()));
    if (state == TransferState::PortLost)
        ui->portReturn->setOffer(booModeTX ? offerToSend(*ui->rt1, current)
                                           : PortReturn::Offer{PortReturn::Offer::Kind::Listen});
    if (shownState_ != state) {
        shownState_ = state;
        panel_.showStateImage(TransferStatus::image(state));
        progress().showActivity(TransferStatus::activity(state));
    }
    if (state == TransferState::Listening && record_.isClosed()) record();
    if (TransferStatus::isLive(state)) refreshStatusLater();
}

// For the history; nothing without a transfer under way. Without an ending, nothing more can come of what has arrived.
void viewTX::record(std::optional<Ending> ending)
{
    using Outcome = TransferRecord::Outcome;
    static const std::map<Ending, Outcome> outcomes = {{Ending::Stopped, Outcome::Stopped},
                                                       {Ending::Finished, Outcome::Finished},
                                                       {Ending::Cancelled, Outcome::Cancelled},
                                                       {Ending::Unconfirmed, Outcome::Unconfirmed},
                                                       {Ending::PortLost, Outcome::PortLost}};
    if (!record_.isUnderWay()) return;
    const bool isArriving = status_.state(now()) == TransferState::Receiving;
    if (!ending) ending = booModeTX || isXModem() || isArriving ? Ending::Stopped : Ending::Finished;
    record_.leaveLine(sp->holdTimes(), sp->unsentCount());
    TransferRecord::Result result;
    result.outcome = outcomes.at(*ending);
    result.line = *ending == Ending::Finished ? iNumLines() + 1 : facts(status_.entered()).line;
    const auto sent = xmodemSend_.acknowledged() + XModemBlock::dataSize - 1;
    result.blocks = booModeTX ? sent / XModemBlock::dataSize : xmodemReceive_.programBlocks();
    result.path = file_.path();
    if (booModeTX) return record_.end(result);
    if (const auto received = record_.endReception(result)) ui->savedPrograms->take(*received);
}

// Soon, and only once for all the changes that come until then.
void viewTX::refreshStatusLater()
{
    if (!tmrStatus_.isActive()) tmrStatus_.start(refreshInterval);
}
