// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

/// Counts the programs in what a control has sent, as they arrive. A percent line or a tape stop ends a program, and a
/// second program number or a file head begins another. Knows no line: the bytes come in.
class ReceivedPrograms
{
public:
    /// Takes what has arrived since the last call; a line may be spread over several calls.
    void take(const QByteArray& bytes);
    /// The control has ended the program: what comes next is another.
    void end() { isOpen_ = false; }
    int count() const { return count_; } ///< that have begun

private:
    enum class At { LineStart, AfterO, Inside };

    void takeFirst(char c);
    void open();
    void openNumbered();

    At at_ = At::LineStart;
    bool isOpen_ = false;
    bool isNumbered_ = false;
    int count_ = 0;
};
