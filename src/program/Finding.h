// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// What a check of a program before it is sent can find. The first ones belong to single lines, in the order of their
/// bits in LineCheck.
enum class FindingKind {
    QuestionMark, ///< characters that no control knows: they leave as "?"
    SmallLetters,
    ForeignSign, ///< not in the ISO code of the control
    TooLong,
    OpenComment,
    DoubledWord,
    NoNumber,
    NestedComment, ///< stripping leaves a part of it

    PercentMissing,
    PercentDoubled, ///< by the machine's start or end string
    PercentInside,
    TextAfterPercent,
    NumberMissing, ///< O
    NumberDoubled,
    EndMissing,
};
inline constexpr int lineFindingKindCount = 8;
inline constexpr int findingKindCount = 15;

enum class Severity {
    Note,    ///< works as it is on many controls
    Warning, ///< the control will probably stop, or do something else
};

struct Finding {
    FindingKind kind = FindingKind::QuestionMark;
    Severity severity = Severity::Note;
    qsizetype line = 0; ///< from 1; 0 for the program as a whole
    QString text;       ///< one plain sentence
};
