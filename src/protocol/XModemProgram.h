// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "protocol/LineFilter.h"
#include "protocol/ProgramText.h"

#include <QByteArray>

/// A program as the bytes that XModem sends, and the line that a byte belongs to. Keeps only its current place in the
/// program, so a long program costs no more memory than its bytes.
class XModemProgram
{
public:
    /// The bytes of all lines that the filter lets through, "\n" made the end of block (in characters).
    QByteArray begin(const ProgramText& text, const LineFilter& filter, const QString& endOfBlock);
    /// Moves on to the line that holds the last of so many bytes; never back. The text is the one of begin.
    ProgramText::Line follow(const ProgramText& text, qsizetype sent);
    ProgramText::Line line() const { return line_; } ///< the last one that follow has reached

private:
    QByteArray lineBytes(const ProgramText& text, ProgramText::Line line) const;

    LineFilter filter_;
    QString endOfBlock_;
    ProgramText::Line line_;
    qsizetype lineEndSent_ = 0; // where line_ ends in the bytes
};
