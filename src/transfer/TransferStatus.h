// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "config/LineSettings.h"
#include "protocol/TransferClock.h"
#include "transfer/MachineProgress.h"

#include <QString>

#include <optional>

/// Where a transfer stands, as shown to the operator.
enum class TransferState {
    Ready,
    WaitingForStart,
    WaitingForXModem,
    Sending,
    Held,
    Still, ///< under way, but the line does not move and the control has not said why
    Stopped,
    Sent,
    Cancelled,
    Unconfirmed, ///< sent, but the control has not said that it has the end
    Listening,   ///< receiving, but nothing arrives
    Receiving,
    Received,
    PortLost
};

/// What the status texts are made of.
struct TransferFacts {
    qint64 line = 0; ///< the line going out, or where a send would start; the first is 1
    qint64 lines = 0;
    qint64 bytes = 0; ///< of the program's text
    bool isFromTop = true;
    FlowControl flow = FlowControl::None;
    unsigned long baud = 0;
    double lineTime = 0; ///< ms that a send would take at the speed of the line
    int programs = 0;    ///< received one after the other
    int blocks = 0;      ///< received with XModem
    int repeats = 0;
    qint64 restartLine = 0;    ///< of a start in the middle; 0 of any other send
    qsizetype startBlocks = 0; ///< of it that are still to come
    QString added;             ///< what the line carries besides the program's text
    QString notice;            ///< stands below the rest
};

/// Names the state of a transfer and puts it into words. No window; times are ms of one monotonic clock.
class TransferStatus
{
public:
    TransferClock clock;

    /// The transfer is now in this state. Held, Still and Listening are derived, from Sending and Receiving.
    void enter(TransferState state, qint64 now)
    {
        entered_ = state;
        enteredAt_ = now;
    }
    TransferState entered() const { return entered_; }
    /// A send is under way or waits for the control.
    bool isRunning() const;
    /// How long the control has been holding the line, as the port knows it, in ms; nothing while it does not. What
    /// came before the state was entered does not count: at the end of a program many controls hold the line.
    void setHold(std::optional<qint64> heldFor, qint64 now);
    /// The control has held a send for so long that its XON may have been lost.
    bool isHoldDoubtful() const;
    /// It may be told of now: the operator has not put that off.
    bool offersSendOn() const { return isHoldDoubtful() && *heldFor_ >= offerAt_; }
    /// The operator has seen that the hold is doubtful. If it lasts another minute, it is to be told of again.
    void putOffSendOn();
    /// Bytes of a program have arrived.
    void received(qint64 now) { lastByteAt_ = now; }
    /// What was received is not in the editor any more.
    void forgetReceived() { lastByteAt_.reset(); }

    TransferState state(qint64 now) const;
    /// The state in a few words.
    QString headline(qint64 now, const TransferFacts& facts) const;
    /// How far, how much, how long. May be two lines.
    QString details(qint64 now, const TransferFacts& facts);

    static TransferActivity activity(TransferState state);
    /// The image that shows the state; each differs in shape, not in colour alone.
    static QString image(TransferState state);
    /// Its text changes as time goes by.
    static bool isLive(TransferState state);

private:
    bool isHeldByControl() const;
    static QString restartDetails(const TransferFacts& facts);
    QString sendingDetails(qint64 now, const TransferFacts& facts);
    QString receivingDetails(qint64 now, const TransferFacts& facts) const;

    TransferState entered_ = TransferState::Ready;
    std::optional<qint64> lastByteAt_;
    qint64 enteredAt_ = 0;
    std::optional<qint64> heldFor_;
    qint64 offerAt_ = 0; // ms of this hold
};
