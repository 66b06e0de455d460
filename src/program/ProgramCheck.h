// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "program/LineCheck.h"

#include <array>
#include <atomic>
#include <functional>
#include <vector>

/// What a check has found: the first of it in words, and how much there is.
struct CheckReport {
    static constexpr qsizetype mostFindings = 1000;

    QList<Finding> findings; ///< by line, those of the whole program first
    /// Lines with a finding of a kind; of the kinds that belong to the whole program, findings.
    std::array<qsizetype, findingKindCount> counts{};
    qsizetype total = 0; ///< of counts; greater than the number of findings when some are left out
};

/// Checks a program before it is sent; never keeps it from being sent. Remembers two bytes for each line, so that after
/// a change only the changed lines are looked at. Has no text of its own; belongs to one thread at a time.
class ProgramCheck
{
public:
    /// Gives a line, numbered from 1, without its end.
    using LineText = std::function<QByteArray(qsizetype number)>;

    explicit ProgramCheck(const CheckRules& rules) : lines_(rules) {}

    /// Looks at every line. False if `cancelled` turned true meanwhile; then it knows nothing.
    bool checkAll(QByteArrayView text, const std::atomic<bool>* cancelled = nullptr);
    /// After a change: `removed` lines from `first` on (from 1) are now those of `text`, which is without the end of
    /// its last line. At least one line stands in the place of others, if only an empty one.
    void replaceLines(qsizetype first, qsizetype removed, QByteArrayView text);

    /// As the editor counts: a text that ends with a line end has an empty line behind it.
    qsizetype lineCount() const { return static_cast<qsizetype>(marks_.size()); }
    CheckReport report(const LineText& lineText);

    /// All at once, for a text that does not change; nothing when cancelled.
    static std::optional<CheckReport> check(QByteArrayView text, const CheckRules& rules,
                                            const std::atomic<bool>* cancelled = nullptr);

private:
    using Marks = LineCheck::Marks;

    void checkPercents(CheckReport& report) const;
    void checkPercentsKept(CheckReport& report, bool atHead, bool atTail) const;
    void checkNumbers(CheckReport& report, const LineText& lineText);
    void checkEnds(CheckReport& report) const;
    qsizetype next(qsizetype from, Marks marks) const; // line with one of the marks, from 1; 0 if there is none
    qsizetype last(Marks marks) const;

    LineCheck lines_;
    std::vector<Marks> marks_ = {0};
    std::array<qsizetype, lineFindingKindCount> counts_{};
};
