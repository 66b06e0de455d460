// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

/// The receiving side of XModem. Touches neither port nor clock: bytes and the ticks of a one-second timer come in,
/// replies and the program's bytes go out.
///
///     Between ──SOH──> InBlock                     Between ──EOT──> Between, the program is whole
///     InBlock ──132 bytes, good──> Between
///     InBlock ──132 bytes, wrong sum──> Refused    Refused ──EOT alone, after a pause──> Between, whole
///     InBlock ──silence──> Stalled                 Stalled ──EOT alone──> Between, whole
///     Refused, Stalled ──SOH──> InBlock            any but InBlock ──CAN CAN──> Between, cancelled
class XModemReceive
{
public:
    enum class State {
        Between, ///< no block is under way; before the first one, too
        InBlock,
        Refused, ///< the block's sum was wrong; its repeat has not begun
        Stalled, ///< the block stayed incomplete and was dropped; its repeat has not begun
    };

    enum class Reply {
        Ack,
        MarkedNak, ///< with the parity bit, as controls know it
        PlainNak,  ///< for peers that know only plain 8-bit XModem and ignore the marked one
    };

    /// What follows from bytes or a tick.
    struct Step {
        QList<Reply> replies;     ///< in the order in which they go out
        QByteArray program;       ///< to be added to the program, padding included
        bool isWhole = false;     ///< the sender has said that the program is complete
        bool isCancelled = false; ///< the sender has given it up
    };

    /// Takes what has arrived since the last call. A block has to end with it: what follows a block in the same call
    /// spoils it, since a sender waits for the answer.
    Step take(const QByteArray& bytes);
    /// Call once a second.
    Step tick();
    /// The program received so far is no longer in the editor; its counts and notices are dropped.
    void forgetProgram();

    State state() const { return state_; }
    /// The block as gathered so far.
    const QByteArray& packet() const { return packet_; }
    /// Ticks since the last gathered byte or the last poll.
    int silence() const { return silence_; }

    int blocks() const { return blocks_; } ///< taken since forgetProgram(), repeats not counted
    /// Of them, those of the program under way, or of the last one that has ended.
    int programBlocks() const { return programBlocks_; }
    int repeats() const { return repeats_; }
    /// What the operator has to know about missing and repeated blocks, one a line; empty when all is well.
    QString notice() const;

private:
    void gather(char byte);
    bool isEndBelieved(const QByteArray& bytes) const;
    void finishBlock(Step& step);
    void noteNumber(int number);
    void noteCancel();
    void forgetSender();
    void poll(Step& step);
    bool hasMissedBlock() const;

    State state_ = State::Between;
    QByteArray packet_;
    int silence_ = 0;

    // What has come since the last block; shows whether the sender is waiting for us.
    bool isOpened_ = false; // the first SOH of this program has come
    int noise_ = 0;         // bytes that belong to no block
    bool isQuiet_ = true;   // none has come since the last tick
    int polls_ = 0;         // in a row, without an answer

    int blocks_ = 0;
    int programBlocks_ = 0;
    int repeats_ = 0;
    int lastNumber_ = -1;
    QString missing_;
    QString repeated_;
};
