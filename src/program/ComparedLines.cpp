// SPDX-License-Identifier: GPL-3.0-or-later
#include "program/ComparedLines.h"

#include "program/Characters.h"
#include "program/Lines.h"

#include <algorithm>
#include <array>
#include <utility>

namespace
{
// All but blanks and what stands on a tape beside the program: leader, punch and reader codes, rub-outs. Every other
// code counts: a control may stumble over it.
constexpr auto counting = [] {
    constexpr unsigned char firstDeviceControl = 0x11, lastDeviceControl = 0x14, rubOut = 0x7F;
    std::array<bool, 256> counts{};
    for (unsigned code = 1; code < counts.size(); ++code)
        counts[code] =
            code != ' ' && code != '\t' && code != rubOut && !(code >= firstDeviceControl && code <= lastDeviceControl);
    return counts;
}();

// Where the block number stands: at the head, or behind "/" and the number of its switch. Not a name such as NLAP1.
std::pair<qsizetype, qsizetype> blockNumber(QByteArrayView line)
{
    const auto digitsEnd = [line](qsizetype at) {
        return std::find_if_not(line.begin() + at, line.end(), Characters::isDigit) - line.begin();
    };
    const qsizetype begin = line.startsWith('/') ? digitsEnd(1) : 0;
    if (begin == line.size() || Characters::upper(line[begin]) != 'N') return {};
    const qsizetype end = digitsEnd(begin + 1);
    return end == begin + 1 ? std::pair<qsizetype, qsizetype>() : std::pair(begin, end);
}
} // namespace

ComparedLines::ComparedLines(QByteArrayView text, const CompareRules& rules, const std::atomic<bool>* cancelled)
    : counting_(text.size(), Qt::Uninitialized)
{
    constexpr qsizetype linesBetweenLooks = 4096;
    for (Lines lines(text); !lines.atEnd();) {
        if (cancelled && textLines_ % linesBetweenLooks == 0 && *cancelled) return;
        ++textLines_;
        add(lines.next(), rules);
    }
}

void ComparedLines::add(QByteArrayView line, const CompareRules& rules)
{
    const qsizetype begin = lines_.empty() ? 0 : lines_.back().end;
    char* const out = counting_.data() + begin;
    char* end =
        std::copy_if(line.begin(), line.end(), out, [](char c) { return counting[static_cast<unsigned char>(c)]; });
    if (!rules.blockNumbersCount) {
        const auto [numberBegin, numberEnd] = blockNumber({out, end});
        end = std::copy(out + numberEnd, end, out + numberBegin);
    }
    if (end != out) lines_.push_back({begin + (end - out), textLines_});
}

QByteArrayView ComparedLines::at(qsizetype index) const
{
    const qsizetype begin = index == 0 ? 0 : lines_[static_cast<std::size_t>(index - 1)].end;
    return QByteArrayView(counting_).sliced(begin, lines_[static_cast<std::size_t>(index)].end - begin);
}

qsizetype ComparedLines::number(qsizetype index) const
{
    return index == count() ? textLines_ + 1 : lines_[static_cast<std::size_t>(index)].number;
}
