// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/ProgramSearch.h"

#include <algorithm>
#include <functional>

namespace
{
// ASCII only: the text is UTF-8, and a control knows no other letters.
char folded(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c & ~0x20) : c;
}

struct FoldedHash {
    std::size_t operator()(char c) const { return static_cast<unsigned char>(folded(c)); }
};
struct FoldedEqual {
    bool operator()(char a, char b) const { return folded(a) == folded(b); }
};

// Index of the first match within [first, last), -1 without one.
template <typename Text, typename Pattern>
qsizetype firstMatch(Text first, Text last, Pattern patternFirst, Pattern patternLast)
{
    const auto at = std::search(
        first, last, std::boyer_moore_horspool_searcher(patternFirst, patternLast, FoldedHash{}, FoldedEqual{}));
    return at == last ? -1 : at - first;
}
} // namespace

ProgramSearch::ProgramSearch(ProgramEditor* editor) : QObject(editor), editor_(editor)
{
    timer_.setInterval(0);
    connect(&timer_, &QTimer::timeout, this, &ProgramSearch::searchSlice);
    connect(editor, &QsciScintilla::textChanged, this, &ProgramSearch::cancel);
}

void ProgramSearch::start(const QString& text, SearchDirection direction, qsizetype from)
{
    pattern_ = text.toUtf8();
    direction_ = direction;
    remaining_ = editor_->textSize();
    next_ = std::clamp<qsizetype>(from, 0, remaining_);
    wrapped_ = false;
    timer_.start();
    qsizetype searched = 0;
    while (timer_.isActive() && searched < sliceSize) // a short program is done at once
        searched += searchSlice();
}

// Returns how much of the program it looked at.
qsizetype ProgramSearch::searchSlice()
{
    const qsizetype size = editor_->textSize();
    const bool forward = direction_ == SearchDirection::Forward;
    if (next_ == (forward ? size : 0)) {
        wrapped_ = true;
        next_ = forward ? 0 : size;
    }
    const qsizetype span = std::min({sliceSize, remaining_, forward ? size - next_ : next_});
    const qsizetype start = forward ? next_ : next_ - span;
    const qsizetype end = std::min(start + span + pattern_.size() - 1, size); // a match may reach into the next slice
    const qsizetype at = pattern_.isEmpty() ? -1 : forward ? findForward(start, end) : findBackward(start, end);
    remaining_ -= span;
    next_ = forward ? start + span : start;
    if (at >= 0) {
        timer_.stop();
        Q_EMIT found({at, at + pattern_.size()}, wrapped_);
    } else if (remaining_ <= 0 || pattern_.isEmpty()) {
        timer_.stop();
        Q_EMIT notFound();
    }
    return span;
}

qsizetype ProgramSearch::findForward(qsizetype from, qsizetype end) const
{
    const auto text = editor_->view({from, end});
    const qsizetype at = firstMatch(text.begin(), text.end(), pattern_.begin(), pattern_.end());
    return at < 0 ? -1 : from + at;
}

qsizetype ProgramSearch::findBackward(qsizetype from, qsizetype end) const
{
    const auto text = editor_->view({from, end});
    const qsizetype at = firstMatch(text.rbegin(), text.rend(), pattern_.rbegin(), pattern_.rend());
    return at < 0 ? -1 : end - at - pattern_.size();
}
