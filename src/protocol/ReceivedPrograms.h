// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "protocol/Framing.h"

#include <QByteArray>
#include <QList>

#include <optional>

/// Tells apart the programs that a control sends one after the other, as they arrive. Knows no line: the bytes come in.
///
/// A program ends at a line with nothing but a percent sign, at a tape stop, and where the next one begins: at a second
/// program number in a line of its own, at a percent sign with a name, on an Okuma at a file head ("$A.MIN%"). There
/// neither percent signs nor numbers end anything: subprograms follow their main program in one file.
class ReceivedPrograms
{
public:
    enum class End {
        Closed,   ///< by the control
        Missing,  ///< was to come and has not
        Unmarked, ///< cannot be seen: the program had no beginning either
    };
    struct Program {
        QByteArray bytes; ///< as they came, with what stood before the program
        End end = End::Unmarked;
    };

    /// What comes from now on comes from such a control; by XModem, a program ends only when the sender says so.
    void listenTo(ControlType type, bool isXModem);

    /// Takes what has arrived since the last call; a line may be spread over several calls. Returns the programs that
    /// have ended with it.
    QList<Program> take(const QByteArray& bytes);
    /// Nothing more comes of the program under way. Nothing if none has begun.
    std::optional<Program> end();
    /// The sender has said that the program is whole; end() is to follow.
    void close() { at_ = At::Closed; }

    bool hasText() const { return hasText_; } ///< a program is under way: more has come than leader and percent signs
    bool isClosed() const;               ///< the program under way; only the rest of its last line end may still come
    int count() const { return count_; } ///< that have begun
    void forgetCount() { count_ = hasText_ ? 1 : 0; }

private:
    enum class At { LineHead, Percent, Number, Inside, Closed };

    void takeByte(char c);
    void beginLine(char c);
    void followPercent(char c);
    void followNumber(char c);
    void endLine();
    void begin();
    void cut(qsizetype position);
    void beginAnew(const QByteArray& bytes);

    ControlType type_ = ControlType::General;
    bool isXModem_ = false;
    At at_ = At::LineHead;
    QByteArray bytes_;     // of the program under way, or before the next one
    qsizetype lineAt_ = 0; // where its last line begins
    bool hasText_ = false;
    bool isOpened_ = false; // by a percent sign, so that another one is to come
    bool isNumbered_ = false;
    bool hasDigits_ = false; // the number at the head of this line
    int count_ = 0;
    QList<Program> ended_;
};
