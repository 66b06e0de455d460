// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/DifferenceMarks.h"

#include "editor/EditorColours.h"

#include <QEvent>

#include <algorithm>
#include <array>

using Side = Comparison::Side;

namespace
{
constexpr int signMargin = 1; // where the line going out has its arrow: here none goes out

// Markers; the editor's own are 0 and 1. Of several colours the last one shows.
constexpr int changedSign = 2;
constexpr int onlyHereSign = 3;
constexpr int missingSign = 4;
constexpr int changedColour = 5;
constexpr int onlyHereColour = 6;
constexpr int currentColour = 7;

constexpr unsigned bit(int marker)
{
    return 1U << static_cast<unsigned>(marker);
}
constexpr unsigned signs = bit(changedSign) | bit(onlyHereSign) | bit(missingSign);
constexpr unsigned all = signs | bit(changedColour) | bit(onlyHereColour) | bit(currentColour);
} // namespace

DifferenceMarks::DifferenceMarks(QsciScintilla* editor, Side side) : QObject(editor), editor_(editor), side_(side)
{
    editor->setMarginMarkerMask(signMargin, static_cast<int>(signs));
    editor->markerDefine(QsciScintilla::LeftRectangle, changedSign);
    editor->markerDefine(QsciScintilla::Plus, onlyHereSign);
    editor->markerDefine(QsciScintilla::Minus, missingSign);
    for (const int colour : {changedColour, onlyHereColour, currentColour})
        editor->markerDefine(QsciScintilla::Background, colour);
    setColours();
    editor->installEventFilter(this);
    editor->viewport()->installEventFilter(this);
}

void DifferenceMarks::setColours()
{
    const EditorColours colours(editor_->palette());
    for (const int sign : {changedSign, onlyHereSign, missingSign}) {
        editor_->setMarkerForegroundColor(colours.ink, sign);
        editor_->setMarkerBackgroundColor(colours.ink, sign);
    }
    editor_->setMarkerBackgroundColor(colours.match, changedColour);
    editor_->setMarkerBackgroundColor(colours.added, onlyHereColour);
    editor_->setMarkerBackgroundColor(colours.selection, currentColour);
}

void DifferenceMarks::show(std::shared_ptr<const Comparison> comparison)
{
    comparison_ = std::move(comparison);
    setCurrent(-1);
}

void DifferenceMarks::setCurrent(qsizetype index)
{
    current_ = index;
    editor_->viewport()->update();
}

bool DifferenceMarks::eventFilter(QObject* watched, QEvent* event)
{
    // The type comes first: an editor that is being destroyed sends events, too, and has no viewport any more.
    if (event->type() == QEvent::Paint && watched == editor_->viewport()) markVisible();
    if (event->type() == QEvent::PaletteChange && watched == editor_) setColours();
    return QObject::eventFilter(watched, event);
}

void DifferenceMarks::markVisible()
{
    const auto scintilla = [this](unsigned message, long place = 0) {
        return editor_->SendScintilla(message, static_cast<unsigned long>(place));
    };
    const long first = scintilla(QsciScintilla::SCI_GETFIRSTVISIBLELINE);
    const long last = first + scintilla(QsciScintilla::SCI_LINESONSCREEN) + 1;
    for (long shown = first; shown <= last; ++shown) {
        const auto line = static_cast<int>(scintilla(QsciScintilla::SCI_DOCLINEFROMVISIBLE, shown));
        if (line >= editor_->lines()) return;
        const unsigned wanted = marksFor(line + 1);
        const unsigned old = editor_->markersAtLine(line) & all;
        for (int marker = changedSign; marker <= currentColour; ++marker) {
            if ((old & ~wanted & bit(marker)) != 0) editor_->markerDelete(line, marker);
            if ((wanted & ~old & bit(marker)) != 0) editor_->markerAdd(line, marker);
        }
    }
}

unsigned DifferenceMarks::marksFor(qsizetype line) const
{
    if (!comparison_) return 0;
    const qsizetype index = comparison_->lastUpTo(side_, line);
    const auto& differences = comparison_->differences();
    const bool isLastLine = line == editor_->lines();
    if (isLastLine && index + 1 < differences.size()) return bit(missingSign); // behind the end
    if (index < 0) return 0;
    const auto& here = differences[index].on(side_);
    const auto& there = differences[index].on(side_ == Side::Left ? Side::Right : Side::Left);
    if (here.count == 0) return line == here.first ? bit(missingSign) : 0;
    if (line >= here.first + here.count) return 0;
    const unsigned marks =
        there.count == 0 ? bit(onlyHereSign) | bit(onlyHereColour) : bit(changedSign) | bit(changedColour);
    return index == current_ ? marks | bit(currentColour) : marks;
}
