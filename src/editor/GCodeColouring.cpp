// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/GCodeColouring.h"

#include <Qsci/qsciscintilla.h>

#include <QLocale>

#include <algorithm>

namespace
{
constexpr int noteStyle = GCode::styleCount;
} // namespace

GCodeColouring::GCodeColouring(QsciScintilla* editor) : QObject(editor), editor_(editor)
{
    ask(QsciScintilla::SCI_SETLEXER, QsciScintilla::SCLEX_CONTAINER);
    connect(editor, &QsciScintilla::SCN_STYLENEEDED, this, &GCodeColouring::styleUpTo);
}

qsizetype GCodeColouring::ask(unsigned message, qsizetype first, qsizetype second) const
{
    return editor_->SendScintilla(message, static_cast<unsigned long>(first), static_cast<long>(second));
}

void GCodeColouring::setColours(const EditorColours& colours)
{
    const auto paint = [this](int style, const QColor& text, const QColor& ground) {
        editor_->SendScintilla(QsciScintilla::SCI_STYLESETFORE, static_cast<unsigned long>(style), text);
        editor_->SendScintilla(QsciScintilla::SCI_STYLESETBACK, static_cast<unsigned long>(style), ground);
    };
    for (int style = 0; style < GCode::styleCount; ++style)
        paint(style, colours.text[static_cast<std::size_t>(style)], colours.paper);
    paint(noteStyle, colours.lineNumber, colours.margin);
    ask(QsciScintilla::SCI_STYLESETVISIBLE, static_cast<int>(GCodeStyle::Hidden), 0);
}

void GCodeColouring::beforePaint()
{
    // The editor believes that all before the last styled place is styled. Nothing above the window need be.
    const qsizetype line = ask(QsciScintilla::SCI_DOCLINEFROMVISIBLE, ask(QsciScintilla::SCI_GETFIRSTVISIBLELINE));
    ask(QsciScintilla::SCI_STARTSTYLING, ask(QsciScintilla::SCI_POSITIONFROMLINE, line));
}

void GCodeColouring::styleUpTo(qsizetype end)
{
    const qsizetype last = ask(QsciScintilla::SCI_LINEFROMPOSITION, end);
    qsizetype line = ask(QsciScintilla::SCI_LINEFROMPOSITION, ask(QsciScintilla::SCI_GETENDSTYLED));
    // Asked for more than a window's worth, for instance by a jump: what is painted is asked for again.
    line = std::max(line, last - 2 * ask(QsciScintilla::SCI_LINESONSCREEN) - 2);
    for (; line <= last; ++line)
        styleLine(line);
}

void GCodeColouring::styleLine(qsizetype number)
{
    const qsizetype start = ask(QsciScintilla::SCI_POSITIONFROMLINE, number);
    const qsizetype size = shownEnd(start, ask(QsciScintilla::SCI_LINELENGTH, number)) - start;
    if (size <= 0) return;
    const auto* text = reinterpret_cast<const char*>(ask(QsciScintilla::SCI_GETRANGEPOINTER, start, size));
    styles_.resize(size);
    GCode::styleLine({text, static_cast<std::size_t>(size)}, styles_.data());
    ask(QsciScintilla::SCI_STARTSTYLING, start);
    editor_->SendScintilla(QsciScintilla::SCI_SETSTYLINGEX, static_cast<uintptr_t>(size), styles_.constData());
}

qsizetype GCodeColouring::shownEnd(qsizetype start, qsizetype length) const
{
    if (length <= longestShown) return start + length;
    return ask(QsciScintilla::SCI_POSITIONBEFORE, start + longestShown + 1); // not within a character
}

void GCodeColouring::hideTail(qsizetype line, qsizetype length)
{
    const qsizetype start = ask(QsciScintilla::SCI_POSITIONFROMLINE, line);
    const qsizetype shown = shownEnd(start, length);
    ask(QsciScintilla::SCI_STARTSTYLING, shown);
    ask(QsciScintilla::SCI_SETSTYLING, start + length - shown, static_cast<int>(GCodeStyle::Hidden));
    const QLocale locale;
    editor_->annotate(
        static_cast<int>(line),
        QStringLiteral("This line is too long to show: the first %1 of %2 characters. It is sent and saved whole.")
            .arg(locale.toString(shown - start), locale.toString(length)),
        noteStyle);
    noted_ = true;
}

void GCodeColouring::hideLongTails()
{
    if (noted_) ask(QsciScintilla::SCI_ANNOTATIONCLEARALL);
    noted_ = false;
    unshownLine_ = 0;
    // A line that is too long holds at least one of these places: no need to look at each line.
    const qsizetype size = ask(QsciScintilla::SCI_GETLENGTH);
    for (qsizetype place = longestShown; place < size; place += longestShown) {
        const qsizetype line = ask(QsciScintilla::SCI_LINEFROMPOSITION, place);
        const qsizetype length = ask(QsciScintilla::SCI_LINELENGTH, line);
        if (length > longestHidden) {
            unshownLine_ = length;
            return;
        }
        if (length <= longestShown) continue;
        hideTail(line, length);
        place = std::max(place, ask(QsciScintilla::SCI_POSITIONFROMLINE, line) + length - 1);
    }
    if (noted_) ask(QsciScintilla::SCI_ANNOTATIONSETVISIBLE, QsciScintilla::ANNOTATION_STANDARD);
}
