// SPDX-License-Identifier: GPL-3.0-or-later
#include "program/ProgramCompare.h"

#include "program/ComparedLines.h"
#include "program/LineMatch.h"

#include <QHash>

namespace
{
using Kinds = QHash<QByteArrayView, int>; // the number that equal lines share

std::vector<int> kindsOf(const ComparedLines& lines, Kinds& kinds, const std::atomic<bool>* cancelled)
{
    constexpr qsizetype linesBetweenLooks = 4096;
    std::vector<int> numbers;
    numbers.reserve(static_cast<std::size_t>(lines.count()));
    for (qsizetype index = 0; index < lines.count(); ++index) {
        if (cancelled && index % linesBetweenLooks == 0 && *cancelled) break;
        int& kind = kinds[lines.at(index)]; // from 1; 0 is a line that was not known
        if (kind == 0) kind = static_cast<int>(kinds.size());
        numbers.push_back(kind);
    }
    return numbers;
}

// The stretch of the text from one of the lines that are compared to another, with the empty lines between them.
Comparison::Stretch stretch(const ComparedLines& lines, qsizetype begin, qsizetype end)
{
    return {lines.number(begin), begin == end ? 0 : lines.number(end - 1) - lines.number(begin) + 1};
}
} // namespace

std::optional<Comparison> ProgramCompare::compare(QByteArrayView left, QByteArrayView right, const CompareRules& rules,
                                                  const std::atomic<bool>* cancelled)
{
    const ComparedLines leftLines(left, rules, cancelled), rightLines(right, rules, cancelled);
    Kinds kinds;
    kinds.reserve(leftLines.count());
    const auto leftKinds = kindsOf(leftLines, kinds, cancelled), rightKinds = kindsOf(rightLines, kinds, cancelled);
    if (cancelled && *cancelled) return {};
    LineMatch match(leftKinds, rightKinds, static_cast<int>(kinds.size()) + 1, cancelled);
    if (!match.run()) return {};

    Comparison comparison;
    const auto isLeftOnly = [&](qsizetype line) {
        return line < leftLines.count() && !match.isLeftMatched(static_cast<std::size_t>(line));
    };
    const auto isRightOnly = [&](qsizetype line) {
        return line < rightLines.count() && !match.isRightMatched(static_cast<std::size_t>(line));
    };
    qsizetype atLeft = 0, atRight = 0;
    while (atLeft < leftLines.count() || atRight < rightLines.count()) {
        const qsizetype leftBegin = atLeft, rightBegin = atRight;
        while (isLeftOnly(atLeft))
            ++atLeft;
        while (isRightOnly(atRight))
            ++atRight;
        if (atLeft == leftBegin && atRight == rightBegin) {
            comparison.addSame(leftLines.number(atLeft++), rightLines.number(atRight++));
            continue;
        }
        comparison.add({stretch(leftLines, leftBegin, atLeft), stretch(rightLines, rightBegin, atRight)});
    }
    return comparison;
}
