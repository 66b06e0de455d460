// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "protocol/LineFilter.h"
#include "protocol/ProgramText.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

/// Sends a program as plain text, paced by the port: bytes go out, and each completed write brings the next ones.
/// Touches neither port nor clock.
///
///     Idle ──prepare──> Waiting ──begin, from the top──> Header ──written──> Lines
///                       Waiting ──begin, from the caret──> Lines ──written, lines left──> Lines
///                       Waiting ──begin, in the middle──> Header ──written──> StartBlocks ──written──> Lines
///                       Waiting ──begin, continued──> where the stop was: Header, StartBlocks, Lines or Trailer
///     Lines ──written, none left──> Trailer ──written──> Idle, sent; with repeat Waiting, from the top
///     any ──stop, lose──> Idle
class PlainSend
{
public:
    /// In the order in which a send passes through them; compared by it.
    enum class State {
        Idle,
        Waiting, ///< prepared; begin starts it
        Header,
        StartBlocks, ///< that a start in the middle of a program sends before its lines
        Lines,
        Trailer,
    };

    /// What of a machine's settings makes the bytes of a send.
    struct Setup {
        LineFilter filter; ///< with the control type
        QString startOfTransfer;
        QString endOfBlock;
        QString endOfTransfer;
        bool repeats = false; ///< again from the top when all is out
    };

    /// What follows from a completed write.
    struct Step {
        std::optional<QByteArray> bytes; ///< to be written even when empty: their completion leads on
        bool isSent = false;             ///< the whole program is out, trailer included
    };

    /// Where to start again when the port was lost, with all that it held.
    enum class Restart {
        Unchanged, ///< nothing was under way: wherever the operator wants
        FromTop,
        FromNext,
        FromStartBlocks, ///< not all of them are out: the line at next() is not to be sent without them
        FromLineOut,     ///< nobody knows how much of this line has arrived; next() is its start
    };

    /// The program outlives this object and does not change between prepare and the end of a send.
    explicit PlainSend(const ProgramText& program) : program_(program) {}

    /// From the first line; what a stop cut off is forgotten.
    void prepareFromTop(const Setup& setup);
    /// From the line at `caret`. Continues the stopped send if that is where it would go on.
    void prepareFromCaret(const Setup& setup, qsizetype caret);
    /// From the line at `position`, in the middle: header, these blocks (each closed by "\n"), then the program from
    /// there.
    void prepareRestart(const Setup& setup, qsizetype position, const QStringList& startBlocks);
    /// Starts what was prepared and returns the first bytes to write. `cutOff` is what the stop kept from the port: a
    /// continued send begins with it, any other ignores it.
    QByteArray begin(const QByteArray& cutOff);
    /// Call when a write has completed; returns what to write next. Nothing after a stop, however late the completion
    /// is reported.
    Step written();
    /// Stops and keeps the place, so that a send from there continues without a byte lost or doubled.
    void stop();
    /// The port is gone. Nothing can be continued after that.
    Restart lose();
    /// The caret or the text was changed: a stopped send can't be continued any more. Nothing while a send is under
    /// way.
    void forgetPlace();
    /// No send is under way, and the first line is the next one.
    void rewind();

    State state() const { return state_; }
    /// The next begin continues a stopped send.
    bool willContinue() const { return place_ && place_->reached > State::Waiting; }
    /// Where the line that goes out next begins.
    qsizetype next() const { return next_; }
    /// The line handed over last; empty, where the send starts, before the first.
    ProgramText::Line lineOut() const { return line_; }
    bool isLastLineOut() const { return next_ > 0 && next_ >= program_.size(); }
    /// Where the send began or is to begin in the middle, with start blocks; nothing of any other.
    std::optional<qsizetype> restartedAt() const { return restartedAt_; }
    /// Start blocks that have not been handed over yet.
    qsizetype startBlocksLeft() const { return place_ ? place_->startBlocks.size() : startBlocks_.size(); }
    /// Stopped before all start blocks were out: the lines that follow must not go out without them.
    bool isStoppedInStart() const { return restartedAt_ && place_ && place_->reached < State::Lines; }
    /// Number of the copy that is prepared, under way or was last; the first is 1.
    int copy() const { return copy_; }
    /// The leader that an Okuma control wants before the first line is still to come.
    bool isLeaderDue() const { return isLeaderDue_; }

private:
    // Where begin goes on. Without a place it starts with the line at the caret.
    struct Place {
        State reached; // Waiting: the header is still to come
        qsizetype next;
        QStringList startBlocks = {}; // still to come
    };

    void prepare(const std::optional<Place>& place, qsizetype next);
    bool isAllOut() const { return startBlocks_.isEmpty() && next_ >= program_.size(); }
    QString takeLine();
    QByteArray nextLine();

    const ProgramText& program_;
    Setup setup_;
    State state_ = State::Idle;
    std::optional<Place> place_;
    QStringList startBlocks_; // of the send under way, still to come
    std::optional<qsizetype> restartedAt_;
    qsizetype next_ = 0;
    ProgramText::Line line_;
    bool isLeaderDue_ = true;
    int copy_ = 1;
};
