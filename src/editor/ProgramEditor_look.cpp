// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/ProgramEditor.h"

#include "editor/EditorAccessibility.h"
#include "editor/EditorColours.h"
#include "editor/GCodeColouring.h"
#include "widgets/TextLook.h"

#include <QResizeEvent>
#include <Qsci/qscicommandset.h>

#include <QEvent>
#include <QLocale>
#include <QPainter>

#include <algorithm>
#include <array>

namespace
{
constexpr int lineNumberMargin = 0;
constexpr int lineOutMargin = 1;

// The keys of the editor. The library has more: some clash with ours (Ctrl+L cuts a line), some would change a program
// unnoticed by a slip (Insert).
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
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent); // every point of it is drawn by the editor
    scintilla(SCI_SETPASTECONVERTENDINGS, 1);
    scintilla(SCI_SETSCROLLWIDTHTRACKING, 1);
    scintilla(SCI_SETSCROLLWIDTH, 1);
    scintilla(SCI_SETYCARETPOLICY, CARET_SLOP | CARET_STRICT | CARET_EVEN, linesAhead);
    setMarginType(lineNumberMargin, NumberMargin);
    setMarginType(lineOutMargin, SymbolMargin);
    setMarginMarkerMask(lineOutMargin, 1 << lineOutArrow);
    markerDefine(RightArrow, lineOutArrow);
    markerDefine(Background, lineOutBackground);
    scintilla(SCI_INDICSETSTYLE, placeIndicator, INDIC_FULLBOX);
    scintilla(SCI_INDICSETUNDER, placeIndicator, 1);
    scintilla(SCI_INDICSETALPHA, placeIndicator, 255);
    scintilla(SCI_INDICSETOUTLINEALPHA, placeIndicator, 255);
    scintilla(SCI_SETCARETLINEVISIBLEALWAYS, 1);
    setCaretLineVisible(true);
    setContextMenuPolicy(Qt::CustomContextMenu);
    setUpKeys();
    setUpLook();
    connect(this, &QsciScintilla::linesChanged, this, &ProgramEditor::fitLineNumbers);
    connect(this, &QsciScintilla::SCN_ZOOM, this, &ProgramEditor::fitLineNumbers);
    connect(this, &QsciScintilla::textChanged, colouring_, &GCodeColouring::hideLongTails);
    connect(this, &QsciScintilla::SCN_UPDATEUI, this, &ProgramEditor::tellCaret);
    markPause_.setSingleShot(true);
    connect(&markPause_, &QTimer::timeout, this, &ProgramEditor::showLineOut);
    EditorAccessibility::install();
}

// What comes in below the editor takes room from it; who watched a program arrive goes on watching its end.
void ProgramEditor::resizeEvent(QResizeEvent* event)
{
    const auto before = event->oldSize().height();
    const bool wasEndInSight = before > event->size().height() && isEndInSight(before / scintilla(SCI_TEXTHEIGHT));
    QsciScintilla::resizeEvent(event);
    if (wasEndInSight && !isCaretHeld()) scintilla(SCI_SCROLLTOEND);
}

void ProgramEditor::setUpKeys()
{
    standardCommands()->find(QsciCommand::Redo)->setAlternateKey((Qt::CTRL | Qt::SHIFT | Qt::Key_Z).toCombined());
    for (auto* command : standardCommands()->commands()) {
        if (std::find(keptCommands.begin(), keptCommands.end(), command->command()) != keptCommands.end()) continue;
        command->setKey(0);
        command->setAlternateKey(0);
    }
}

void ProgramEditor::setUpLook()
{
    const EditorColours colours(palette());
    setFont(TextLook::fixedFont());
    setMarginsFont(font());
    setPaper(colours.paper);
    setColor(colours.ink);
    setCaretForegroundColor(colours.ink);
    setCaretLineBackgroundColor(colours.caretLine);
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
    setMarginWidth(lineOutMargin, fontMetrics().height()); // its arrow is as high as a line
    setMarginWidth(lineNumberMargin, QString(QStringLiteral("0%1")).arg(std::max(lines(), 1000)));
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

QSize ProgramEditor::sizeHint() const
{
    return minimumSize(); // a view gives it all that is left
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
