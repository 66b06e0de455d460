// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <optional>

/// The sending side of XModem. Touches neither port nor clock: the control's replies come in, blocks go out.
///
///     Idle ──begin──> Waiting ──ACK, NAK──> Block ──ACK, bytes left──> Block
///                                           Block ──NAK──> Block, the same again
///                     Waiting, no bytes ──> End   Block ──ACK, none left──> End ──ACK, NAK──> Idle, sent
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
    enum class Ending { Sent, Cancelled };

    /// What follows from a reply.
    struct Step {
        QByteArray bytes;             ///< to be written; empty for none
        std::optional<Ending> ending; ///< the transfer is over
    };

    /// Makes a program ready; the control then asks for its blocks.
    void begin(QByteArray program);
    /// Acts on one byte from the control. Bytes other than ACK, NAK and CAN are ignored; while idle, all are.
    Step take(char reply);
    /// The operator stopped the transfer.
    void stop() { state_ = State::Idle; }

    State state() const { return state_; }
    const QByteArray& program() const { return program_; }
    /// The block last sent.
    const QByteArray& packet() const { return packet_; }
    /// Number of the block that a further ACK will bring.
    int nextNumber() const { return nextNumber_; }
    /// Program bytes in the blocks sent so far, and in those that the control has acknowledged.
    qsizetype sent() const { return sent_; }
    qsizetype acknowledged() const { return acknowledged_; }
    bool isAllSent() const { return sent_ >= program_.size(); }

private:
    Step next();

    State state_ = State::Idle;
    QByteArray program_;
    QByteArray packet_;
    int nextNumber_ = 1;
    qsizetype sent_ = 0;
    qsizetype acknowledged_ = 0;
};
