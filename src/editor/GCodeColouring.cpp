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
    scintilla(QsciScintilla::SCI_SETLEXER, QsciScintilla::SCLEX_CONTAINER);
    connect(editor, &QsciScintilla::SCN_STYLENEEDED, this, &GCodeColouring::styleUpTo);
}

qsizetype GCodeColouring::scintilla(unsigned message, qsizetype first, qsizetype second) const
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
    scintilla(QsciScintilla::SCI_STYLESETVISIBLE, static_cast<int>(GCodeStyle::Hidden), 0);
}

void GCodeColouring::beforePaint()
{
    // The editor takes everything before the last styled position as styled. Nothing above the window needs to be.
    const qsizetype line =
        scintilla(QsciScintilla::SCI_DOCLINEFROMVISIBLE, scintilla(QsciScintilla::SCI_GETFIRSTVISIBLELINE));
    scintilla(QsciScintilla::SCI_STARTSTYLING, scintilla(QsciScintilla::SCI_POSITIONFROMLINE, line));
}

void GCodeColouring::styleUpTo(qsizetype end)
{
    const qsizetype last = scintilla(QsciScintilla::SCI_LINEFROMPOSITION, end);
    qsizetype line = scintilla(QsciScintilla::SCI_LINEFROMPOSITION, scintilla(QsciScintilla::SCI_GETENDSTYLED));
    // More than a window's worth, for instance after a jump, can wait: what is painted is asked for again.
    line = std::max(line, last - 2 * scintilla(QsciScintilla::SCI_LINESONSCREEN) - 2);
    for (; line <= last; ++line)
        styleLine(line);
}

void GCodeColouring::styleLine(qsizetype number)
{
    const qsizetype start = scintilla(QsciScintilla::SCI_POSITIONFROMLINE, number);
    const qsizetype size = shownEnd(start, scintilla(QsciScintilla::SCI_LINELENGTH, number)) - start;
    if (size <= 0) return;
    const auto* text = reinterpret_cast<const char*>(scintilla(QsciScintilla::SCI_GETRANGEPOINTER, start, size));
    styles_.resize(size);
    GCode::styleLine({text, static_cast<std::size_t>(size)}, styles_.data());
    scintilla(QsciScintilla::SCI_STARTSTYLING, start);
    editor_->SendScintilla(QsciScintilla::SCI_SETSTYLINGEX, static_cast<uintptr_t>(size), styles_.constData());
}

qsizetype GCodeColouring::shownEnd(qsizetype start, qsizetype length) const
{
    if (length <= longestShown) return start + length;
    return scintilla(QsciScintilla::SCI_POSITIONBEFORE, start + longestShown + 1); // not inside a character
}

void GCodeColouring::hideTail(qsizetype line, qsizetype length)
{
    const qsizetype start = scintilla(QsciScintilla::SCI_POSITIONFROMLINE, line);
    const qsizetype shown = shownEnd(start, length);
    scintilla(QsciScintilla::SCI_STARTSTYLING, shown);
    scintilla(QsciScintilla::SCI_SETSTYLING, start + length - shown, static_cast<int>(GCodeStyle::Hidden));
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
    if (noted_) scintilla(QsciScintilla::SCI_ANNOTATIONCLEARALL);
    noted_ = false;
    unshownLine_ = 0;
    // A line that is too long covers at least one of these positions: no need to look at each line.
    const qsizetype size = scintilla(QsciScintilla::SCI_GETLENGTH);
    for (qsizetype place = longestShown; place < size; place += longestShown) {
        const qsizetype line = scintilla(QsciScintilla::SCI_LINEFROMPOSITION, place);
        const qsizetype length = scintilla(QsciScintilla::SCI_LINELENGTH, line);
        if (length > longestHidden) {
            unshownLine_ = length;
            return;
        }
        if (length <= longestShown) continue;
        hideTail(line, length);
        place = std::max(place, scintilla(QsciScintilla::SCI_POSITIONFROMLINE, line) + length - 1);
    }
    if (noted_) scintilla(QsciScintilla::SCI_ANNOTATIONSETVISIBLE, QsciScintilla::ANNOTATION_STANDARD);
}
