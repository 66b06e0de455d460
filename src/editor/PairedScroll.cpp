// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/PairedScroll.h"

#include <QScopedValueRollback>
#include <QScrollBar>

#include <algorithm>

using Side = Comparison::Side;

namespace
{
int rowsAbove(const ProgramEditor& editor)
{
    return static_cast<int>(editor.SendScintilla(QsciScintilla::SCI_LINESONSCREEN)) / 3;
}

// Rows count lines as shown, from 0: a note below a line is a row of its own.
int rowOf(const ProgramEditor& editor, qsizetype line)
{
    return static_cast<int>(
        editor.SendScintilla(QsciScintilla::SCI_VISIBLEFROMDOCLINE, static_cast<unsigned long>(line - 1)));
}

qsizetype lineOf(const ProgramEditor& editor, int row)
{
    return editor.SendScintilla(QsciScintilla::SCI_DOCLINEFROMVISIBLE, static_cast<unsigned long>(row)) + 1;
}

void scrollTo(const ProgramEditor& editor, int row)
{
    editor.SendScintilla(QsciScintilla::SCI_SETFIRSTVISIBLELINE, static_cast<unsigned long>(std::max(row, 0)));
}
} // namespace

PairedScroll::PairedScroll(ProgramEditor* left, ProgramEditor* right) : QObject(left), left_(left), right_(right)
{
    for (const Side side : {Side::Left, Side::Right}) {
        ProgramEditor* const from = editor(side);
        ProgramEditor* const to = side == Side::Left ? right : left;
        connect(from->verticalScrollBar(), &QScrollBar::valueChanged, this, [this, side] { scrolled(side); });
        connect(from->horizontalScrollBar(), &QScrollBar::valueChanged, to, [to](int offset) {
            to->SendScintilla(QsciScintilla::SCI_SETXOFFSET, static_cast<unsigned long>(offset));
        });
        connect(from, &QsciScintilla::SCN_ZOOM, to,
                [from, to] { to->zoomTo(static_cast<int>(from->SendScintilla(QsciScintilla::SCI_GETZOOM))); });
    }
}

void PairedScroll::scrolled(Side side)
{
    if (isScrolling_) return;
    const QScopedValueRollback scrolling(isScrolling_, true);
    const ProgramEditor& from = *editor(side);
    const ProgramEditor& to = *editor(side == Side::Left ? Side::Right : Side::Left);
    const auto* bar = from.verticalScrollBar();
    if (bar->value() == 0) return scrollTo(to, 0);
    if (bar->value() == bar->maximum()) return scrollTo(to, to.verticalScrollBar()->maximum());
    const int above = rowsAbove(from);
    const qsizetype line = lineOf(from, bar->value() + above);
    scrollTo(to, rowOf(to, comparison_ ? comparison_->beside(side, line) : line) - above);
}

void PairedScroll::showDifference(const Comparison::Difference& difference)
{
    const QScopedValueRollback scrolling(isScrolling_, true);
    const int left = rowOf(*left_, difference.left.first), right = rowOf(*right_, difference.right.first);
    // At the ends of a program there are fewer rows above or below, for both.
    int above = std::min({rowsAbove(*left_), left, right});
    above =
        std::max({above, left - left_->verticalScrollBar()->maximum(), right - right_->verticalScrollBar()->maximum()});
    scrollTo(*left_, left - above);
    scrollTo(*right_, right - above);
}
