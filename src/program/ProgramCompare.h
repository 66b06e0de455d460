// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArrayView>
#include <QList>

#include <atomic>
#include <optional>

/// A stretch of two programs that is not the same. Lines are numbered from 1. Where a program has no line of it, its
/// count is 0, and `first` is the line in front of which the other's lines would stand (one more than the last at the
/// end).
struct Difference {
    qsizetype leftFirst = 1;
    qsizetype leftCount = 0;
    qsizetype rightFirst = 1;
    qsizetype rightCount = 0;
};

struct CompareRules {
    bool blockNumbersCount = false; ///< N words at the head of a block
};

namespace ProgramCompare
{
/// The differences of two programs in the order of their lines, or nothing if `cancelled` turned true meanwhile.
/// Blanks, line ends, empty lines, NULs and the codes DC1 to DC4 don't count. The fewest lines differ that can, except
/// in long programs; where two long stretches have little in common, they are one difference. Any thread.
std::optional<QList<Difference>> compare(QByteArrayView left, QByteArrayView right, const CompareRules& rules,
                                         const std::atomic<bool>* cancelled = nullptr);
} // namespace ProgramCompare
