// SPDX-License-Identifier: GPL-3.0-or-later
#include "program/Comparison.h"

#include <algorithm>

qsizetype Comparison::lastUpTo(Side side, qsizetype line) const
{
    const auto behind = std::upper_bound(
        differences_.begin(), differences_.end(), line,
        [side](qsizetype place, const Difference& difference) { return place < difference.on(side).first; });
    return behind - differences_.begin() - 1;
}

qsizetype Comparison::beside(Side side, qsizetype line) const
{
    const Side other = side == Side::Left ? Side::Right : Side::Left;
    const auto behind = std::upper_bound(pairs_.begin() + 1, pairs_.end(), line,
                                         [side](qsizetype place, const Pair& pair) { return place < pair.on(side); });
    const Pair& last = *(behind - 1);
    const qsizetype shifted = last.on(other) + line - last.on(side);
    return behind == pairs_.end() ? shifted : std::min(shifted, behind->on(other));
}

void Comparison::addSame(qsizetype left, qsizetype right)
{
    const Pair& last = pairs_.back();
    if (left - last.left != right - last.right) pairs_.push_back({left, right});
}
