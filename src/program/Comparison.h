// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>

#include <vector>

/// What a comparison of two programs has found, and what it takes to show them side by side. Lines are numbered from 1.
/// A value.
class Comparison
{
public:
    enum class Side { Left, Right };

    /// Lines of one of the programs. Where it has none of them, `count` is 0, and `first` is the line in front of which
    /// the other's lines would stand (one more than the last at the end).
    struct Stretch {
        qsizetype first = 1;
        qsizetype count = 0;
    };
    struct Difference {
        Stretch left;
        Stretch right;
        const Stretch& on(Side side) const { return side == Side::Left ? left : right; }
    };

    /// In the order of the lines.
    const QList<Difference>& differences() const { return differences_; }
    /// The last difference that begins at the line or before it, by its index; -1 if there is none.
    qsizetype lastUpTo(Side side, qsizetype line) const;
    /// The line of the other program that stands beside a line of `side`.
    qsizetype beside(Side side, qsizetype line) const;

    // While it is being made, in the order of the lines.
    void add(const Difference& difference) { differences_.append(difference); }
    void addSame(qsizetype left, qsizetype right);

private:
    struct Pair {
        qsizetype left;
        qsizetype right;
        qsizetype on(Side side) const { return side == Side::Left ? left : right; }
    };

    QList<Difference> differences_;
    // Of lines that are the same; only those that are shifted against each other in another way than those before.
    std::vector<Pair> pairs_ = {{1, 1}};
};
