// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "program/ProgramCompare.h"

#include <QByteArray>

#include <vector>

/// The lines of a program as a comparison sees them: without what does not count, and only those of which something is
/// left. Owned by one comparison.
class ComparedLines
{
public:
    /// Ends early, with the lines up to there, when `cancelled` turns true.
    ComparedLines(QByteArrayView text, const CompareRules& rules, const std::atomic<bool>* cancelled);

    qsizetype count() const { return static_cast<qsizetype>(lines_.size()); }
    /// What counts of the line.
    QByteArrayView at(qsizetype index) const;
    /// Its number in the text, from 1; for the index behind the last, one more than the text has lines.
    qsizetype number(qsizetype index) const;

private:
    struct Line {
        qsizetype end;    // in counting_
        qsizetype number; // in the text
    };

    void add(QByteArrayView line, const CompareRules& rules);

    QByteArray counting_; // what counts, line after line
    std::vector<Line> lines_;
    qsizetype textLines_ = 0;
};
