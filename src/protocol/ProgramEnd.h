// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

/// Tells apart the programs that a control punches as text, one after the other. A percent sign at the head of a line
/// closes a program that has some text; a program without it has no end that could be seen. Knows no line.
class ProgramEnd
{
public:
    /// Takes what has arrived since the last call. Returns how many of the bytes belong to this program: all, unless it
    /// is closed and the next one begins among them.
    qsizetype take(const QByteArray& bytes);

    bool hasText() const { return hasText_; } ///< more than leader, percent signs and line ends
    bool isClosed() const { return isClosed_; }
    /// It began with a percent sign, so that one is to come.
    bool isCutShort() const { return isOpened_ && !isClosed_; }

private:
    bool isAtLineHead_ = true;
    bool isOpened_ = false;
    bool hasText_ = false;
    bool isClosed_ = false;
};
