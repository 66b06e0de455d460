// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// A program as a send reads it: line by line, without copying the whole. Positions count in whatever unit the program
/// is kept in. It must not change while a send is under way.
class ProgramText
{
public:
    /// A line with the line end that closes it: [start, end).
    struct Line {
        qsizetype start = 0;
        qsizetype end = 0;
    };

    virtual ~ProgramText() = default;
    virtual qsizetype size() const = 0;
    /// The line that holds the position; behind the line end that closes a text, an empty one.
    virtual Line lineAt(qsizetype position) const = 0;
    virtual QString lineText(Line line) const = 0;
};
