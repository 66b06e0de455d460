// SPDX-License-Identifier: GPL-3.0-or-later
#include "program/LineMatch.h"

#include <algorithm>
#include <cstdlib>

namespace
{
constexpr int longStretch = 1000; // lines of both; shorter ones are matched in a millisecond, whatever stands in them
constexpr int deepestAnchors = 16;
constexpr qint64 effortForAll = 50'000'000; // enough for any two programs of some thousand lines
constexpr qint64 effortForLine = 100;
} // namespace

LineMatch::LineMatch(const std::vector<int>& left, const std::vector<int>& right, int kinds,
                     const std::atomic<bool>* cancelled)
    : left_(left), right_(right), cancelled_(cancelled), leftMatched_(left.size()), rightMatched_(right.size()),
      found_(static_cast<std::size_t>(kinds)),
      effort_(effortForAll + effortForLine * static_cast<qint64>(left.size() + right.size()))
{
}

bool LineMatch::run()
{
    match({0, static_cast<int>(left_.size()), 0, static_cast<int>(right_.size())}, 0);
    return !isCancelled();
}

void LineMatch::match(Stretch stretch, int depth)
{
    matchEnds(stretch);
    if (stretch.leftSize() == 0 || stretch.rightSize() == 0 || isCancelled()) return;
    const bool isLong = stretch.leftSize() + stretch.rightSize() > longStretch;
    if (isLong && depth < deepestAnchors && matchAtAnchors(stretch, depth)) return;
    const auto at = middle(stretch);
    if (!at) return;
    match({stretch.leftBegin, at->left, stretch.rightBegin, at->right}, depth + 1);
    match({at->left, stretch.leftEnd, at->right, stretch.rightEnd}, depth + 1);
}

// What both begin and end with.
void LineMatch::matchEnds(Stretch& stretch)
{
    auto& [leftBegin, leftEnd, rightBegin, rightEnd] = stretch;
    while (leftBegin < leftEnd && rightBegin < rightEnd && leftAt(leftBegin) == rightAt(rightBegin))
        pair(leftBegin++, rightBegin++);
    while (leftBegin < leftEnd && rightBegin < rightEnd && leftAt(leftEnd - 1) == rightAt(rightEnd - 1))
        pair(--leftEnd, --rightEnd);
}

void LineMatch::pair(int left, int right)
{
    leftMatched_[static_cast<std::size_t>(left)] = true;
    rightMatched_[static_cast<std::size_t>(right)] = true;
}

bool LineMatch::matchAtAnchors(const Stretch& stretch, int depth)
{
    const auto anchors = longestRun(linesFoundOnce(stretch));
    Stretch gap = stretch;
    for (const auto& [left, right] : anchors) {
        gap.leftEnd = left;
        gap.rightEnd = right;
        match(gap, depth + 1);
        pair(left, right);
        gap.leftBegin = left + 1;
        gap.rightBegin = right + 1;
    }
    if (anchors.empty()) return false;
    gap.leftEnd = stretch.leftEnd;
    gap.rightEnd = stretch.rightEnd;
    match(gap, depth + 1);
    return true;
}

// Lines that stand just once in either side of the stretch, in the left one's order.
std::vector<LineMatch::Pair> LineMatch::linesFoundOnce(const Stretch& stretch)
{
    const auto found = [this](int kind) -> Found& { return found_[static_cast<std::size_t>(kind)]; };
    for (int left = stretch.leftBegin; left < stretch.leftEnd; ++left)
        ++found(leftAt(left)).inLeft;
    for (int right = stretch.rightBegin; right < stretch.rightEnd; ++right) {
        ++found(rightAt(right)).inRight;
        found(rightAt(right)).rightPlace = right;
    }
    std::vector<Pair> pairs;
    for (int left = stretch.leftBegin; left < stretch.leftEnd; ++left) {
        const Found& line = found(leftAt(left));
        if (line.inLeft == 1 && line.inRight == 1) pairs.push_back({left, line.rightPlace});
    }
    for (int left = stretch.leftBegin; left < stretch.leftEnd; ++left)
        found(leftAt(left)) = {};
    for (int right = stretch.rightBegin; right < stretch.rightEnd; ++right)
        found(rightAt(right)) = {};
    return pairs;
}

// The most of the pairs that stand in the same order on both sides.
std::vector<LineMatch::Pair> LineMatch::longestRun(const std::vector<Pair>& pairs)
{
    constexpr std::size_t none = static_cast<std::size_t>(-1);
    std::vector<std::size_t> lasts; // of the runs of each length, the one that ends first on the right
    std::vector<std::size_t> before(pairs.size(), none);
    for (std::size_t index = 0; index < pairs.size(); ++index) {
        const auto place = std::lower_bound(lasts.begin(), lasts.end(), pairs[index].right,
                                            [&](std::size_t last, int right) { return pairs[last].right < right; });
        if (place != lasts.begin()) before[index] = *(place - 1);
        if (place == lasts.end())
            lasts.push_back(index);
        else
            *place = index;
    }
    std::vector<Pair> run;
    for (std::size_t index = lasts.empty() ? none : lasts.back(); index != none; index = before[index])
        run.push_back(pairs[index]);
    std::reverse(run.begin(), run.end());
    return run;
}

// Myers, "An O(ND) Difference Algorithm and Its Variations", section 4b. A point (x, y) is reached when x left and y
// right lines have been gone through; its diagonal is x - y. For each diagonal is kept how far a number of steps leads,
// a step being a line of one side only. The search goes from both ends until they meet.
struct LineMatch::Search {
    static constexpr int nowhere = -1;

    std::vector<int>& reached;
    const int leftSize;
    const int rightSize;

    Search(std::vector<int>& memory, const Stretch& stretch)
        : reached(memory), leftSize(stretch.leftSize()), rightSize(stretch.rightSize())
    {
        const auto size = static_cast<std::size_t>(leftSize) + static_cast<std::size_t>(rightSize) + 3;
        if (reached.size() < size) reached.resize(size);
        at(-rightSize - 1) = at(leftSize + 1) = nowhere;
    }

    // Diagonals run from one outside each corner.
    int& at(int diagonal) const { return reached[static_cast<std::size_t>(diagonal + rightSize + 1)]; }

    // The first and the last diagonal that a number of steps can lead to: none leads outside.
    int first(int steps) const { return steps <= rightSize ? -steps : -rightSize + (steps - rightSize) % 2; }
    int last(int steps) const { return steps <= leftSize ? steps : leftSize - (steps - leftSize) % 2; }

    void begin(int steps)
    {
        if (steps + 1 <= rightSize) at(-steps - 1) = nowhere;
        if (steps + 1 <= leftSize) at(steps + 1) = nowhere;
    }

    // If the other search, which has come to x on the same diagonal (its number counted from this one's end), overlaps
    // with where this one has come to.
    bool meets(int diagonal, int x, int steps) const
    {
        return std::abs(diagonal) <= steps && at(diagonal) != nowhere && x + at(diagonal) >= leftSize;
    }

    // Where a step from one of the neighbours leads on the diagonal. A step that leaves the stretch is never one of the
    // fewest.
    int step(int diagonal, int steps)
    {
        if (steps == 0) return 0;
        const int from = at(diagonal - 1);
        const int alongLeft = from != nowhere && from < leftSize ? from + 1 : nowhere;
        const int alongRight = at(diagonal + 1);
        return std::max(alongLeft, alongRight != nowhere && alongRight - diagonal <= rightSize ? alongRight : nowhere);
    }

    // One step more on each diagonal, then past the lines that are equal. Where that meets the other search is the
    // result. Takes its comparisons from `effort`.
    template <typename Same, typename Meets>
    std::optional<Pair> advance(int steps, qint64& effort, const Same& same, const Meets& meets)
    {
        begin(steps);
        for (int diagonal = first(steps); diagonal <= last(steps); diagonal += 2) {
            --effort;
            const int start = step(diagonal, steps);
            int x = start;
            while (x != nowhere && x < leftSize && x - diagonal < rightSize && same(x, x - diagonal))
                ++x;
            at(diagonal) = x;
            effort -= x - start;
            if (x != nowhere && meets(diagonal, x)) return Pair{x, x - diagonal};
        }
        return {};
    }
};

// A point through which one of the shortest ways leads, with at least a step before and behind it; nothing when the
// search would take too long. The ends of the stretch must not match.
std::optional<LineMatch::Pair> LineMatch::middle(const Stretch& stretch)
{
    const auto [leftBegin, leftEnd, rightBegin, rightEnd] = stretch;
    Search forward(forward_, stretch), backward(backward_, stretch);
    const int corner = stretch.leftSize() - stretch.rightSize(); // the diagonal of the other end
    const bool meetsForward = corner % 2 != 0;
    const qint64 least = effort_ / 2; // no stretch takes the effort away from all that follow
    for (int steps = 0; effort_ >= least && !isCancelled(); ++steps) {
        const auto met = forward.advance(
            steps, effort_,
            [&](int left, int right) { return leftAt(leftBegin + left) == rightAt(rightBegin + right); },
            [&](int diagonal, int x) { return meetsForward && backward.meets(corner - diagonal, x, steps - 1); });
        if (met) return Pair{leftBegin + met->left, rightBegin + met->right};
        const auto metBack = backward.advance(
            steps, effort_,
            [&](int left, int right) { return leftAt(leftEnd - 1 - left) == rightAt(rightEnd - 1 - right); },
            [&](int diagonal, int x) { return !meetsForward && forward.meets(corner - diagonal, x, steps); });
        if (metBack) return Pair{leftEnd - metBack->left, rightEnd - metBack->right};
    }
    return {};
}
