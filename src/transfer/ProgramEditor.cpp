// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/ProgramEditor.h"

#include "transfer/LineEnds.h"

#include <QEvent>
#include <QFontDatabase>
#include <QPalette>

#include <algorithm>

namespace
{
constexpr int lineNumberMargin = 0;
constexpr int lineOutMargin = 1;
constexpr int lineOutArrow = 0; // marker numbers
constexpr int lineOutBackground = 1;
constexpr qsizetype pieceSize = 1 << 20; // bytes converted at a time, so that a huge file is not held twice

// A colour between two others: 0 gives the first, 1 the second.
QColor between(const QColor& from, const QColor& to, double share)
{
    const auto mix = [share](int a, int b) { return static_cast<int>(a + (b - a) * share); };
    return {mix(from.red(), to.red()), mix(from.green(), to.green()), mix(from.blue(), to.blue())};
}
} // namespace

ProgramEditor::ProgramEditor(QWidget* parent) : QsciScintilla(parent)
{
    setUtf8(true);
    setEolMode(EolUnix);
    setWrapMode(WrapNone);
    setAcceptDrops(false);
    viewport()->setAcceptDrops(false);
    ask(SCI_SETPASTECONVERTENDINGS, 1);
    ask(SCI_SETSCROLLWIDTHTRACKING, 1);
    ask(SCI_SETSCROLLWIDTH, 1);
    // The line going out stays clear of the window's edges, so that the operator sees what comes next.
    ask(SCI_SETYCARETPOLICY, CARET_SLOP | CARET_STRICT | CARET_EVEN, 4);
    setMarginType(lineNumberMargin, NumberMargin);
    setMarginType(lineOutMargin, SymbolMargin);
    setMarginWidth(lineOutMargin, 16);
    setMarginMarkerMask(lineOutMargin, 1 << lineOutArrow);
    markerDefine(RightArrow, lineOutArrow);
    markerDefine(Background, lineOutBackground);
    connect(this, &QsciScintilla::linesChanged, this,
            [this] { setMarginWidth(lineNumberMargin, QString(QStringLiteral("0%1")).arg(std::max(lines(), 1000))); });
    setMarginWidth(lineNumberMargin, QStringLiteral("01000"));
    setUpLook();
}

void ProgramEditor::setUpLook()
{
    const QPalette colours = palette();
    const QColor paper = colours.color(QPalette::Base);
    const QColor ink = colours.color(QPalette::Text);
    const QColor accent = colours.color(QPalette::Highlight);
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setMarginsFont(font());
    setPaper(paper);
    setColor(ink);
    setCaretForegroundColor(ink);
    setSelectionBackgroundColor(between(paper, accent, 0.35));
    resetSelectionForegroundColor();
    setMarginsBackgroundColor(between(paper, ink, 0.06));
    setMarginsForegroundColor(between(paper, ink, 0.55));
    setMarkerBackgroundColor(accent, lineOutArrow);
    setMarkerForegroundColor(accent, lineOutArrow);
    setMarkerBackgroundColor(between(paper, accent, 0.25), lineOutBackground);
}

qsizetype ProgramEditor::ask(unsigned message, qsizetype first, qsizetype second) const
{
    return SendScintilla(message, static_cast<unsigned long>(first), static_cast<long>(second));
}

qsizetype ProgramEditor::textSize() const
{
    return ask(SCI_GETLENGTH);
}

qsizetype ProgramEditor::caret() const
{
    return ask(SCI_GETCURRENTPOS);
}

ProgramEditor::Line ProgramEditor::lineAt(qsizetype position) const
{
    const qsizetype number = ask(SCI_LINEFROMPOSITION, position);
    const qsizetype start = ask(SCI_POSITIONFROMLINE, number);
    return {start, start + ask(SCI_LINELENGTH, number)};
}

qsizetype ProgramEditor::lineNumber(qsizetype position) const
{
    return ask(SCI_LINEFROMPOSITION, position) + 1;
}

QString ProgramEditor::lineText(Line line) const
{
    if (line.end <= line.start) return {};
    const auto* text = reinterpret_cast<const char*>(ask(SCI_GETRANGEPOINTER, line.start, line.end - line.start));
    return QString::fromUtf8(text, line.end - line.start);
}

QByteArray ProgramEditor::wholeText() const
{
    const auto* text = static_cast<const char*>(SendScintillaPtrResult(SCI_GETCHARACTERPOINTER));
    return {text, textSize()};
}

template <typename Change> void ProgramEditor::changeText(Change change)
{
    const bool wasReadOnly = isReadOnly();
    ask(SCI_SETREADONLY, 0);
    ask(SCI_SETUNDOCOLLECTION, 0);
    change();
    ask(SCI_EMPTYUNDOBUFFER);
    ask(SCI_SETUNDOCOLLECTION, 1);
    ask(SCI_SETREADONLY, wasReadOnly);
}

void ProgramEditor::setProgram(const QByteArray& fileBytes)
{
    clearProgram();
    changeText([&] {
        ask(SCI_ALLOCATE, fileBytes.size() + 1);
        LineEnds::FileToText fileToText;
        for (qsizetype at = 0; at < fileBytes.size(); at += pieceSize) {
            const auto piece =
                fileToText.convert(fileBytes.constData() + at, std::min(pieceSize, fileBytes.size() - at));
            SendScintilla(SCI_APPENDTEXT, static_cast<uintptr_t>(piece.size()), piece.constData());
        }
    });
    moveCaretTo(0);
}

void ProgramEditor::clearProgram()
{
    clearLineOut();
    changeText([this] { ask(SCI_CLEARALL); });
}

void ProgramEditor::appendReceived(const QByteArray& bytes)
{
    // Asked in lines: the scroll bar's range follows the text later. A scroll bar below may hide the last line.
    const bool atEnd = ask(SCI_GETFIRSTVISIBLELINE) + ask(SCI_LINESONSCREEN) + 1 >= ask(SCI_GETLINECOUNT);
    const QByteArray text = QString::fromLatin1(bytes).toUtf8();
    changeText([&] { SendScintilla(SCI_APPENDTEXT, static_cast<uintptr_t>(text.size()), text.constData()); });
    if (!atEnd) return;
    ask(SCI_SETEMPTYSELECTION, textSize());
    ask(SCI_SCROLLTOEND);
}

void ProgramEditor::moveCaretTo(qsizetype position)
{
    ask(SCI_GOTOPOS, position);
}

void ProgramEditor::markLineOut(Line line)
{
    clearLineOut();
    lineOut_ = static_cast<int>(ask(SCI_LINEFROMPOSITION, line.start));
    markerAdd(lineOut_, lineOutArrow);
    markerAdd(lineOut_, lineOutBackground);
    ask(SCI_SETSEL, line.start, line.end);
}

void ProgramEditor::clearLineOut()
{
    if (lineOut_ < 0) return;
    markerDelete(lineOut_);
    lineOut_ = -1;
}

template <typename Handle> void ProgramEditor::watch(Handle handle)
{
    const qsizetype caretBefore = caret();
    const qsizetype sizeBefore = textSize();
    handle();
    if (caret() != caretBefore || textSize() != sizeBefore) Q_EMIT operatorTouched();
}

void ProgramEditor::keyPressEvent(QKeyEvent* event)
{
    watch([&] { QsciScintilla::keyPressEvent(event); });
}

void ProgramEditor::inputMethodEvent(QInputMethodEvent* event)
{
    watch([&] { QsciScintilla::inputMethodEvent(event); });
}

void ProgramEditor::mousePressEvent(QMouseEvent* event)
{
    watch([&] { QsciScintilla::mousePressEvent(event); });
}

void ProgramEditor::mouseReleaseEvent(QMouseEvent* event)
{
    watch([&] { QsciScintilla::mouseReleaseEvent(event); });
}

void ProgramEditor::changeEvent(QEvent* event)
{
    QsciScintilla::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) setUpLook();
}
