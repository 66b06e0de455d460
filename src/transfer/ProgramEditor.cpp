// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/ProgramEditor.h"

#include "transfer/EditorAccess.h"
#include "transfer/EditorColours.h"
#include "transfer/GCodeColouring.h"
#include "transfer/LineEnds.h"

#include <Qsci/qscicommandset.h>

#include <QAccessible>
#include <QEvent>
#include <QFontDatabase>
#include <QInputMethodEvent>
#include <QLocale>
#include <QPainter>

#include <algorithm>
#include <array>

namespace
{
constexpr int lineNumberMargin = 0;
constexpr int lineOutMargin = 1;
constexpr int lineOutArrow = 0; // marker numbers
constexpr int lineOutBackground = 1;
constexpr qsizetype pieceSize = 1 << 20; // bytes converted at a time, so that a huge file is not held twice

constexpr int placeIndicator = 8; // the first that is not kept for lexers

// The keys of the editor. The library knows more, some of them also ours (Ctrl+L cuts a line), some that change a
// program by a slip without showing (Insert).
constexpr std::array keptCommands{QsciCommand::LineDown,       QsciCommand::LineDownExtend,
                                  QsciCommand::LineUp,         QsciCommand::LineUpExtend,
                                  QsciCommand::LineScrollDown, QsciCommand::LineScrollUp,
                                  QsciCommand::CharLeft,       QsciCommand::CharLeftExtend,
                                  QsciCommand::CharRight,      QsciCommand::CharRightExtend,
                                  QsciCommand::WordLeft,       QsciCommand::WordLeftExtend,
                                  QsciCommand::WordRight,      QsciCommand::WordRightExtend,
                                  QsciCommand::VCHome,         QsciCommand::VCHomeExtend,
                                  QsciCommand::LineEnd,        QsciCommand::LineEndExtend,
                                  QsciCommand::DocumentStart,  QsciCommand::DocumentStartExtend,
                                  QsciCommand::DocumentEnd,    QsciCommand::DocumentEndExtend,
                                  QsciCommand::PageUp,         QsciCommand::PageUpExtend,
                                  QsciCommand::PageDown,       QsciCommand::PageDownExtend,
                                  QsciCommand::Delete,         QsciCommand::DeleteBack,
                                  QsciCommand::DeleteWordLeft, QsciCommand::DeleteWordRight,
                                  QsciCommand::Newline,        QsciCommand::Undo,
                                  QsciCommand::Redo,           QsciCommand::SelectionCut,
                                  QsciCommand::SelectionCopy,  QsciCommand::Paste,
                                  QsciCommand::SelectAll};
} // namespace

ProgramEditor::ProgramEditor(QWidget* parent) : QsciScintilla(parent), colouring_(new GCodeColouring(this))
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
    ask(SCI_INDICSETSTYLE, placeIndicator, INDIC_FULLBOX);
    ask(SCI_INDICSETUNDER, placeIndicator, 1);
    ask(SCI_INDICSETALPHA, placeIndicator, 255);
    ask(SCI_INDICSETOUTLINEALPHA, placeIndicator, 255);
    setContextMenuPolicy(Qt::CustomContextMenu);
    setUpKeys();
    setUpLook();
    connect(this, &QsciScintilla::linesChanged, this, &ProgramEditor::fitLineNumbers);
    connect(this, &QsciScintilla::SCN_ZOOM, this, &ProgramEditor::fitLineNumbers);
    connect(this, &QsciScintilla::textChanged, colouring_, &GCodeColouring::hideLongTails);
    connect(this, &QsciScintilla::SCN_UPDATEUI, this, &ProgramEditor::tellCaret);
    EditorAccess::install();
}

void ProgramEditor::setUpKeys()
{
    for (auto* command : standardCommands()->commands()) {
        if (std::find(keptCommands.begin(), keptCommands.end(), command->command()) != keptCommands.end()) continue;
        command->setKey(0);
        command->setAlternateKey(0);
    }
}

void ProgramEditor::setUpLook()
{
    const EditorColours colours(palette());
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setMarginsFont(font());
    setPaper(colours.paper);
    setColor(colours.ink);
    setCaretForegroundColor(colours.ink);
    setSelectionBackgroundColor(colours.selection);
    resetSelectionForegroundColor();
    setMarginsBackgroundColor(colours.margin);
    setMarginsForegroundColor(colours.lineNumber);
    setMarkerBackgroundColor(colours.accent, lineOutArrow);
    setMarkerForegroundColor(colours.accent, lineOutArrow);
    setMarkerBackgroundColor(colours.lineOut, lineOutBackground);
    SendScintilla(SCI_INDICSETFORE, placeIndicator, colours.match);
    colouring_->setColours(colours);
    fitLineNumbers();
}

void ProgramEditor::fitLineNumbers()
{
    setMarginWidth(lineNumberMargin, QString(QStringLiteral("0%1")).arg(std::max(lines(), 1000)));
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

std::string_view ProgramEditor::view() const
{
    const auto* text = static_cast<const char*>(SendScintillaPtrResult(SCI_GETCHARACTERPOINTER));
    return {text, static_cast<std::size_t>(textSize())};
}

QByteArray ProgramEditor::wholeText() const
{
    const auto text = view();
    return {text.data(), static_cast<qsizetype>(text.size())};
}

ProgramEditor::Line ProgramEditor::selection() const
{
    return {ask(SCI_GETSELECTIONSTART), ask(SCI_GETSELECTIONEND)};
}

qsizetype ProgramEditor::firstVisible() const
{
    return ask(SCI_POSITIONFROMLINE, ask(SCI_DOCLINEFROMVISIBLE, ask(SCI_GETFIRSTVISIBLELINE)));
}

template <typename Change> void ProgramEditor::changeText(Change change)
{
    const bool wasReadOnly = isReadOnly();
    const qsizetype notices = ask(SCI_GETMODEVENTMASK);
    ask(SCI_SETREADONLY, 0);
    ask(SCI_SETUNDOCOLLECTION, 0);
    // The library answers each notice of a change by counting all characters before it, for assistive technology.
    ask(SCI_SETMODEVENTMASK, 0);
    change();
    ask(SCI_SETMODEVENTMASK, notices);
    ask(SCI_EMPTYUNDOBUFFER);
    ask(SCI_SETUNDOCOLLECTION, 1);
    ask(SCI_SETREADONLY, wasReadOnly);
    Q_EMIT linesChanged();
    Q_EMIT textChanged();
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
    select({position, position});
}

// The caret goes to the end. Without scrolling where laying out the line would take too long.
void ProgramEditor::select(Line line)
{
    if (isShown()) {
        ask(SCI_SETSEL, line.start, line.end);
    } else {
        ask(SCI_SETSELECTION, line.end, line.start);
    }
}

bool ProgramEditor::isShown() const
{
    return colouring_->unshownLine() == 0;
}

void ProgramEditor::markLineOut(Line line)
{
    clearLineOut();
    lineOut_ = static_cast<int>(ask(SCI_LINEFROMPOSITION, line.start));
    markerAdd(lineOut_, lineOutArrow);
    markerAdd(lineOut_, lineOutBackground);
    // Without scrolling when the operator looks at another place.
    if (isCaretHeld() && shownPlace_.end > 0)
        ask(SCI_SETSELECTION, line.end, line.start);
    else
        select(line);
}

void ProgramEditor::clearLineOut()
{
    if (lineOut_ < 0) return;
    markerDelete(lineOut_);
    lineOut_ = -1;
}

template <typename Handle> void ProgramEditor::watch(Handle handle)
{
    if (!isShown()) return; // not blindly
    const qsizetype caretBefore = caret();
    const qsizetype sizeBefore = textSize();
    handle();
    if (caret() != caretBefore || textSize() != sizeBefore) Q_EMIT operatorTouched();
}

void ProgramEditor::setCaretHeld(bool held)
{
    if (held != caretHeld_) leavePlace();
    caretHeld_ = held;
}

void ProgramEditor::showPlace(Line place)
{
    if (!caretHeld_) return watch([&] { select(place); });
    leavePlace();
    shownPlace_ = place;
    ask(SCI_SETINDICATORCURRENT, placeIndicator);
    ask(SCI_INDICATORFILLRANGE, place.start, place.end - place.start);
    ask(SCI_SCROLLRANGE, place.end, place.start);
}

void ProgramEditor::leavePlace()
{
    ask(SCI_SETINDICATORCURRENT, placeIndicator);
    ask(SCI_INDICATORCLEARRANGE, 0, textSize());
    shownPlace_ = {};
}

void ProgramEditor::tellCaret(int updated)
{
    if (!(updated & SC_UPDATE_SELECTION) || !QAccessible::isActive()) return;
    auto* access = QAccessible::queryAccessibleInterface(this);
    if (!access || !access->textInterface()) return;
    QAccessibleTextCursorEvent event(this, access->textInterface()->cursorPosition());
    QAccessible::updateAccessibility(&event);
}

void ProgramEditor::keyPressEvent(QKeyEvent* event)
{
    watch([&] { QsciScintilla::keyPressEvent(event); });
}

void ProgramEditor::inputMethodEvent(QInputMethodEvent* event)
{
    // No way of typing brings in a CR: it would be a line end that no end of block takes the place of.
    QInputMethodEvent typed(event->preeditString(), event->attributes());
    typed.setCommitString(QString(event->commitString()).remove(u'\r'), event->replacementStart(),
                          event->replacementLength());
    watch([&] { QsciScintilla::inputMethodEvent(&typed); });
    event->setAccepted(typed.isAccepted());
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

void ProgramEditor::paintEvent(QPaintEvent* event)
{
    if (!isShown()) return paintNotice();
    colouring_->beforePaint();
    QsciScintilla::paintEvent(event);
}

void ProgramEditor::paintNotice()
{
    constexpr int space = 24;
    const EditorColours colours(palette());
    QPainter painter(viewport());
    painter.fillRect(viewport()->rect(), colours.paper);
    painter.setPen(colours.ink);
    painter.drawText(viewport()->rect().adjusted(space, space, -space, -space), Qt::AlignCenter | Qt::TextWordWrap,
                     QStringLiteral("This program has a line of %1 characters, which is too long to show.\n"
                                    "It can be sent and saved as it is.")
                         .arg(QLocale().toString(colouring_->unshownLine())));
}
