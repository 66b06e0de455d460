// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

#include <atomic>
#include <optional>
#include <vector>

/// Matches the lines of two programs, each line given as a number that equal lines share. Short stretches are matched
/// so that the fewest lines are left over (Myers' algorithm, in linear space); long ones first at the lines that both
/// have just once. The effort is bounded: a stretch that takes too much of it stays unmatched. One comparison owns it.
class LineMatch
{
public:
    /// Lines as numbers from 0 to `kinds` - 1; both must outlive this object.
    LineMatch(const std::vector<int>& left, const std::vector<int>& right, int kinds,
              const std::atomic<bool>* cancelled);

    /// False if cancelled; then it knows nothing.
    bool run();

    bool isLeftMatched(std::size_t index) const { return leftMatched_[index]; }
    bool isRightMatched(std::size_t index) const { return rightMatched_[index]; }

private:
    // Lines of both, [begin, end).
    struct Stretch {
        int leftBegin;
        int leftEnd;
        int rightBegin;
        int rightEnd;
        int leftSize() const { return leftEnd - leftBegin; }
        int rightSize() const { return rightEnd - rightBegin; }
    };
    struct Pair {
        int left;
        int right;
    };
    struct Search;

    void match(Stretch stretch, int depth);
    void matchEnds(Stretch& stretch);
    bool matchAtAnchors(const Stretch& stretch, int depth);
    std::vector<Pair> linesFoundOnce(const Stretch& stretch);
    static std::vector<Pair> longestRun(const std::vector<Pair>& pairs);
    std::optional<Pair> middle(const Stretch& stretch);
    void pair(int left, int right);
    int leftAt(int index) const { return left_[static_cast<std::size_t>(index)]; }
    int rightAt(int index) const { return right_[static_cast<std::size_t>(index)]; }
    bool isCancelled() const { return cancelled_ && *cancelled_; }

    const std::vector<int>& left_;
    const std::vector<int>& right_;
    const std::atomic<bool>* const cancelled_;
    std::vector<bool> leftMatched_;
    std::vector<bool> rightMatched_;
    struct Found {
        int inLeft = 0;
        int inRight = 0;
        int rightPlace = 0;
    };
    std::vector<Found> found_; // by kind; all 0 between uses
    std::vector<int> forward_, backward_;
    qint64 effort_; // that is left: comparisons of two lines
};
