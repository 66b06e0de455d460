// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "protocol/XModemBlock.h"

#include <QByteArray>

#include <optional>

/// The sending side of XModem. Touches neither port nor clock: the control's replies and the ticks of a one-second
/// timer come in, blocks go out.
///
///     Idle ──begin──> Waiting ──ACK, NAK──> Block ──ACK, bytes left──> Block
///                                           Block ──NAK──> Block, the same again
///                     Waiting, no bytes ──> End   Block ──ACK, none left──> End ──ACK──> Idle, sent
///                                           End ──NAK, silence──> End, EOT again; in the end Idle, unconfirmed
///     any but Idle ──CAN──> Idle, cancelled        any ──stop──> Idle
class XModemSend
{
public:
    enum class State {
        Idle,
        Waiting, ///< for the control's first request
        Block,   ///< a block is out, its answer is awaited
        End,     ///< EOT is out, its answer is awaited
    };
    enum class Ending {
        Sent,
        Cancelled,
        Unconfirmed, ///< every block was acknowledged, but not EOT, however often it went out
    };

    /// What follows from a reply or a tick.
    struct Step {
        QByteArray bytes;             ///< to be written; empty for none
        std::optional<Ending> ending; ///< the transfer is over
    };

    /// Makes a program ready; the control then asks for its blocks.
    void begin(QByteArray program, XModemBlock::Numbers numbers);
    /// Acts on one byte from the control. Bytes other than ACK, NAK and CAN are ignored; while idle, all are.
    Step take(char reply);
    /// Call once a second. An EOT without an answer goes out again; a block never does unless the control asks for it.
    Step tick();
    /// The operator stopped the transfer.
    void stop();

    State state() const { return state_; }
    const QByteArray& program() const { return program_; }
    /// The block last sent.
    const QByteArray& packet() const { return packet_; }
    /// Number of the block that a further ACK will bring.
    int nextNumber() const { return nextNumber_; }
    XModemBlock::Numbers numbers() const { return numbers_; }
    /// Program bytes in the blocks sent so far, and in those that the control has acknowledged.
    qsizetype sent() const { return sent_; }
    qsizetype acknowledged() const { return acknowledged_; }
    bool isAllSent() const { return sent_ >= program_.size(); }
    /// The block last sent is the one after a block 255, and the control has not acknowledged it.
    bool isAtWrap() const;
    /// Ticks without an answer from the control, while one is due.
    int silence() const { return silence_; }
    int endRepeats() const { return endRepeats_; } ///< how often EOT went out again

private:
    Step next();
    Step repeatEnd();

    State state_ = State::Idle;
    QByteArray program_;
    QByteArray packet_;
    XModemBlock::Numbers numbers_ = XModemBlock::Numbers::From1;
    int nextNumber_ = 1;
    qsizetype sent_ = 0;
    qsizetype acknowledged_ = 0;
    int silence_ = 0;
    int endRepeats_ = 0;
    int lateAnswers_ = 0; // ACKs of the program before this one that may still come
};
