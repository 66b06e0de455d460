// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "program/Comparison.h"

#include <QByteArrayView>

#include <atomic>
#include <optional>

struct CompareRules {
    bool blockNumbersCount = false; ///< N words at the head of a block
};

namespace ProgramCompare
{
/// The differences of two programs in the order of their lines, or nothing if `cancelled` turned true meanwhile.
/// Blanks, line ends, empty lines, NULs and the codes DC1 to DC4 don't count. The fewest lines differ that can, except
/// in long programs; where two long stretches have little in common, they are one difference. Any thread.
std::optional<Comparison> compare(QByteArrayView left, QByteArrayView right, const CompareRules& rules,
                                  const std::atomic<bool>* cancelled = nullptr);
} // namespace ProgramCompare
