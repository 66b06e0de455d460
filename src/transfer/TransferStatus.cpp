// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/TransferStatus.h"

#include "config/TransferWords.h"

#include <algorithm>
#include <iterator>

using TransferWords::number;

namespace
{
// At the slowest speeds a tick of the port brings a byte or two; beyond this nothing is arriving.
constexpr qint64 quietTime = 2000;      // ms
constexpr qint64 doubtfulHold = 60'000; // ms; a long cut can take as long, so the operator decides
constexpr qint64 shownHold = 1000;      // ms; shorter ones are the pace of a control in drip feed
const QString dot = QStringLiteral("  \u00B7  ");

struct Look {
    TransferState state;
    TransferActivity activity;
    const char* image;
    const char* headline; // none where it says more
};
constexpr Look looks[] = {
    {TransferState::Ready, TransferActivity::Idle, "state-ready", nullptr},
    {TransferState::WaitingForStart, TransferActivity::Waiting, "state-waiting", "Waiting for the start signal"},
    {TransferState::WaitingForXModem, TransferActivity::Waiting, "state-waiting",
     "Waiting for the control's first request"},
    {TransferState::Sending, TransferActivity::Sending, "send", "Sending"},
    {TransferState::Held, TransferActivity::Held, "state-held", "Held by the control"},
    {TransferState::Still, TransferActivity::Still, "state-waiting", nullptr},
    {TransferState::Stopped, TransferActivity::Stopped, "stop", nullptr},
    {TransferState::Sent, TransferActivity::Sent, "state-done", nullptr},
    {TransferState::Cancelled, TransferActivity::Stopped, "stop", nullptr},
    {TransferState::Unconfirmed, TransferActivity::Unconfirmed, "warning", "Sent; the control did not confirm the end"},
    {TransferState::Listening, TransferActivity::Listening, "state-waiting", "Waiting for bytes"},
    {TransferState::Receiving, TransferActivity::Receiving, "receive", "Receiving"},
    {TransferState::Received, TransferActivity::Received, "state-done", nullptr},
    {TransferState::PortLost, TransferActivity::PortLost, "state-lost", "Port lost"},
};

const Look& lookOf(TransferState state)
{
    return *std::find_if(std::begin(looks), std::end(looks), [state](const Look& l) { return l.state == state; });
}

QString programSize(const TransferFacts& facts)
{
    return TransferWords::count(facts.lines, "line") + QStringLiteral(", ") + TransferWords::count(facts.bytes, "byte");
}

// Several programs are one text in the editor.
QString receivedSize(const TransferFacts& facts)
{
    const QString size = programSize(facts);
    return facts.programs > 1 ? TransferWords::count(facts.programs, "program") + QStringLiteral(", ") + size : size;
}
} // namespace

bool TransferStatus::isRunning() const
{
    return entered_ == TransferState::WaitingForStart || entered_ == TransferState::WaitingForXModem ||
           entered_ == TransferState::Sending;
}

void TransferStatus::setHold(std::optional<qint64> heldFor, qint64 now)
{
    heldFor_ = heldFor ? std::min(*heldFor, now - enteredAt_) : heldFor;
    if (!isHoldDoubtful()) offerAt_ = 0; // the next hold is another one
}

bool TransferStatus::isHeldByControl() const
{
    return heldFor_ && *heldFor_ >= shownHold;
}

bool TransferStatus::isHoldDoubtful() const
{
    return entered_ == TransferState::Sending && heldFor_ && *heldFor_ >= doubtfulHold;
}

void TransferStatus::putOffSendOn()
{
    if (isHoldDoubtful()) offerAt_ = *heldFor_ + doubtfulHold;
}

TransferState TransferStatus::state(qint64 now) const
{
    if (entered_ == TransferState::Sending && isHeldByControl()) return TransferState::Held;
    if (entered_ == TransferState::Sending && clock.isHeld(now)) return TransferState::Still;
    if (entered_ == TransferState::Receiving && (!lastByteAt_ || now - *lastByteAt_ >= quietTime))
        return TransferState::Listening;
    return entered_;
}

QString TransferStatus::headline(qint64 now, const TransferFacts& facts) const
{
    const auto current = state(now);
    if (const char* text = lookOf(current).headline) return QString::fromLatin1(text);
    switch (current) {
    case TransferState::Still:
        return facts.flow == FlowControl::XModem ? QStringLiteral("Waiting for the control's answer")
                                                 : QStringLiteral("Nothing moves: the line takes no bytes");
    case TransferState::Stopped:
        return QStringLiteral("Stopped at line %1, Send %2")
            .arg(number(facts.line), facts.flow == FlowControl::XModem ? QStringLiteral("starts again from the top")
                                                                       : QStringLiteral("continues there"));
    case TransferState::Sent:
        return QStringLiteral("Sent: %1, %2 in %3")
            .arg(TransferWords::count(facts.lines, "line"), TransferWords::count(clock.bytesSent(), "byte"),
                 TransferWords::clockTime(clock.elapsed(now)));
    case TransferState::Cancelled:
        return QStringLiteral("Cancelled by the control at line %1").arg(number(facts.line));
    case TransferState::Received:
        return QStringLiteral("Received: %1").arg(receivedSize(facts));
    default:
        return facts.bytes > 0 ? QStringLiteral("Ready to send") : QStringLiteral("No program yet");
    }
}

QString TransferStatus::details(qint64 now, const TransferFacts& facts)
{
    QString text;
    switch (state(now)) {
    case TransferState::Ready:
        if (facts.bytes == 0) return QStringLiteral("Open a program file or type one, then choose Send.");
        [[fallthrough]];
    case TransferState::WaitingForStart:
    case TransferState::WaitingForXModem:
        text = programSize(facts);
        if (!facts.isFromTop) text += dot + QStringLiteral("from line %1").arg(number(facts.line));
        if (facts.lineTime > 0)
            text +=
                dot +
                QStringLiteral("%1 at %2 baud").arg(TransferWords::about(facts.lineTime), QString::number(facts.baud));
        break;
    case TransferState::Sending:
    case TransferState::Held:
    case TransferState::Still:
        text = sendingDetails(now, facts);
        break;
    case TransferState::Stopped:
    case TransferState::Cancelled:
    case TransferState::Unconfirmed:
        text = QStringLiteral("%1 sent in %2")
                   .arg(TransferWords::count(clock.bytesSent(), "byte"), TransferWords::clockTime(clock.elapsed(now)));
        break;
    case TransferState::Sent:
        text = QStringLiteral("Send starts it again from the top.");
        if (!facts.added.isEmpty() && clock.bytesSent() > facts.bytes)
            text.prepend(
                QStringLiteral("The bytes are the program's %1 with %2.\n").arg(number(facts.bytes), facts.added));
        break;
    case TransferState::PortLost:
        text = QStringLiteral("The port no longer answers. Check the adapter, then choose Send or Receive again.");
        break;
    default:
        text = receivingDetails(now, facts);
    }
    if (facts.restartLine > 0 && state(now) != TransferState::Ready) text += u'\n' + restartDetails(facts);
    return facts.notice.isEmpty() ? text : text + u'\n' + facts.notice;
}

QString TransferStatus::restartDetails(const TransferFacts& facts)
{
    const QString text = QStringLiteral("Restart from line %1").arg(number(facts.restartLine));
    if (facts.startBlocks == 0) return text;
    return text + QStringLiteral(", %1 to go first").arg(TransferWords::count(facts.startBlocks, "start block"));
}

QString TransferStatus::sendingDetails(qint64 now, const TransferFacts& facts)
{
    QString text = QStringLiteral("Line %1 of %2").arg(number(facts.line), number(facts.lines)) + dot +
                   TransferWords::count(clock.bytesSent(), "byte") + dot +
                   TransferWords::clockTime(clock.elapsed(now)) + QStringLiteral(" elapsed");
    const auto left = clock.remaining(now);
    if (state(now) == TransferState::Held)
        text += dot + QStringLiteral("held for %1").arg(TransferWords::clockTime(*heldFor_));
    else if (state(now) == TransferState::Still)
        text += dot + QStringLiteral("waiting for %1").arg(TransferWords::clockTime(clock.waitingFor(now)));
    else if (left)
        text += dot + TransferWords::about(static_cast<double>(*left)) + QStringLiteral(" left");
    return text;
}

QString TransferStatus::receivingDetails(qint64 now, const TransferFacts& facts) const
{
    if (facts.bytes == 0 && !lastByteAt_) return QStringLiteral("Start the output at the control.");
    QString blocks;
    if (facts.flow == FlowControl::XModem) {
        blocks = TransferWords::count(facts.blocks, "block");
        if (facts.repeats > 0) blocks += QStringLiteral(", %1 repeated").arg(number(facts.repeats));
    }
    if (state(now) == TransferState::Received) return blocks; // the headline has the rest
    QString text = receivedSize(facts);
    if (!blocks.isEmpty()) text += dot + blocks;
    if (state(now) == TransferState::Listening && lastByteAt_)
        text += dot + QStringLiteral("last byte %1 ago").arg(TransferWords::ago(now - *lastByteAt_));
    return text;
}

TransferActivity TransferStatus::activity(TransferState state)
{
    return lookOf(state).activity;
}

QString TransferStatus::image(TransferState state)
{
    return QString::fromLatin1(lookOf(state).image);
}

bool TransferStatus::isLive(TransferState state)
{
    return state == TransferState::Sending || state == TransferState::Held || state == TransferState::Still ||
           state == TransferState::Listening || state == TransferState::Receiving;
}
