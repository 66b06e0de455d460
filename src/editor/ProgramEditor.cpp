// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/ProgramEditor.h"

#include "editor/FileText.h"
#include "editor/GCodeColouring.h"

#include <QAccessible>

#include <algorithm>

namespace
{
constexpr qsizetype pieceSize = 1 << 20; // bytes converted at a time, so that a huge file is not held twice
constexpr QByteArrayView byteOrderMark("\xEF\xBB\xBF"); // of UTF-8; not part of the program text
// In ms, while lines go out. Drawing is most of the work of a transfer, and no line of any machine goes out meanwhile.
constexpr int markInterval = 150;
constexpr int slowMarkInterval = 250; // where no eye can follow the mark, or the view is not on the screen
constexpr int linesToFollow = 4;      // from one mark to the next
} // namespace

qsizetype ProgramEditor::scintilla(unsigned message, qsizetype first, qsizetype second) const
{
    return SendScintilla(message, static_cast<unsigned long>(first), static_cast<long>(second));
}

qsizetype ProgramEditor::textSize() const
{
    return scintilla(SCI_GETLENGTH);
}

qsizetype ProgramEditor::caret() const
{
    return scintilla(SCI_GETCURRENTPOS);
}

ProgramEditor::Line ProgramEditor::lineAt(qsizetype position) const
{
    const qsizetype number = scintilla(SCI_LINEFROMPOSITION, position);
    const qsizetype start = scintilla(SCI_POSITIONFROMLINE, number);
    return {start, start + scintilla(SCI_LINELENGTH, number)};
}

int ProgramEditor::lineNumber(qsizetype position) const
{
    return static_cast<int>(scintilla(SCI_LINEFROMPOSITION, position)) + 1;
}

ProgramEditor::Line ProgramEditor::lineNumbered(int number) const
{
    return lineAt(scintilla(SCI_POSITIONFROMLINE, number - 1));
}

QString ProgramEditor::lineText(Line line) const
{
    const auto text = view(line);
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

std::string_view ProgramEditor::view(Line range) const
{
    // Not the pointer to the whole text: for that, the editor first moves the text into one piece.
    if (range.end <= range.start) return {};
    const auto* text =
        reinterpret_cast<const char*>(scintilla(SCI_GETRANGEPOINTER, range.start, range.end - range.start));
    return {text, static_cast<std::size_t>(range.end - range.start)};
}

QByteArray ProgramEditor::wholeText() const
{
    const auto text = view({0, textSize()});
    return {text.data(), static_cast<qsizetype>(text.size())};
}

ProgramEditor::Line ProgramEditor::selection() const
{
    return {scintilla(SCI_GETSELECTIONSTART), scintilla(SCI_GETSELECTIONEND)};
}

qsizetype ProgramEditor::firstVisible() const
{
    return scintilla(SCI_POSITIONFROMLINE, scintilla(SCI_DOCLINEFROMVISIBLE, scintilla(SCI_GETFIRSTVISIBLELINE)));
}

template <typename Change> void ProgramEditor::changeText(Undo undo, Change change)
{
    const bool wasReadOnly = isReadOnly();
    const qsizetype notices = scintilla(SCI_GETMODEVENTMASK);
    scintilla(SCI_SETREADONLY, 0);
    scintilla(SCI_SETUNDOCOLLECTION, undo == Undo::Records);
    // At each notice of a change the library counts all characters before it, for assistive technology.
    scintilla(SCI_SETMODEVENTMASK, 0);
    change();
    scintilla(SCI_SETMODEVENTMASK, notices);
    if (undo == Undo::StartsAnew) {
        scintilla(SCI_EMPTYUNDOBUFFER);
        scintilla(SCI_SETSAVEPOINT); // tells it, as emptying does not
    }
    scintilla(SCI_SETUNDOCOLLECTION, 1);
    scintilla(SCI_SETREADONLY, wasReadOnly);
    Q_EMIT linesChanged();
    Q_EMIT textChanged();
}

void ProgramEditor::setProgram(const QByteArray& fileBytes)
{
    clearLineOut();
    hasUnsavedBytes_ = false;
    QByteArrayView program(fileBytes);
    if (program.startsWith(byteOrderMark)) program = program.sliced(byteOrderMark.size());
    changeText(Undo::StartsAnew, [&] {
        scintilla(SCI_CLEARALL);
        scintilla(SCI_ALLOCATE, program.size() + 1);
        FileText fileText;
        for (qsizetype at = 0; at < program.size(); at += pieceSize) {
            const auto piece = fileText.convert(program.constData() + at, std::min(pieceSize, program.size() - at));
            SendScintilla(SCI_APPENDTEXT, static_cast<uintptr_t>(piece.size()), piece.constData());
        }
    });
    moveCaretTo(0);
}

void ProgramEditor::copyProgram(const ProgramEditor& other)
{
    clearLineOut();
    hasUnsavedBytes_ = false;
    const auto text = other.view({0, other.textSize()});
    changeText(Undo::StartsAnew, [&] {
        scintilla(SCI_CLEARALL);
        scintilla(SCI_ALLOCATE, static_cast<qsizetype>(text.size()) + 1);
        SendScintilla(SCI_APPENDTEXT, static_cast<uintptr_t>(text.size()), text.data());
    });
    moveCaretTo(0);
}

void ProgramEditor::clearProgram()
{
    clearLineOut();
    changeText(Undo::Records, [this] { scintilla(SCI_CLEARALL); });
}

void ProgramEditor::appendReceived(const QByteArray& bytes)
{
    const bool atEnd = isEndInSight(scintilla(SCI_LINESONSCREEN));
    const QByteArray text = QString::fromLatin1(bytes).toUtf8();
    hasUnsavedBytes_ = true;
    // At the end, where it moves nothing that undo knows the place of.
    changeText(Undo::Ignores,
               [&] { SendScintilla(SCI_APPENDTEXT, static_cast<uintptr_t>(text.size()), text.constData()); });
    if (!atEnd) return;
    scintilla(SCI_SETEMPTYSELECTION, textSize());
    scintilla(SCI_SCROLLTOEND);
}

// Of the text, were so many lines shown. Counted in lines: the scroll bar's range is updated later. A horizontal scroll
// bar may hide the last line.
bool ProgramEditor::isEndInSight(qsizetype lines) const
{
    return scintilla(SCI_GETFIRSTVISIBLELINE) + lines + 1 >= scintilla(SCI_GETLINECOUNT);
}

bool ProgramEditor::isUnsaved() const
{
    return textSize() > 0 && (hasUnsavedBytes_ || isModified());
}

void ProgramEditor::setSaved()
{
    hasUnsavedBytes_ = false;
    scintilla(SCI_SETSAVEPOINT);
}

void ProgramEditor::moveCaretTo(qsizetype position)
{
    select({position, position});
}

// The caret goes to the end. Does not scroll where laying out the line would take too long.
void ProgramEditor::select(Line line)
{
    if (isShown()) {
        scintilla(SCI_SETSEL, line.start, line.end);
    } else {
        scintilla(SCI_SETSELECTION, line.end, line.start);
    }
}

bool ProgramEditor::isShown() const
{
    return colouring_->unshownLine() == 0;
}

// Lines may go out faster than anyone can read them: showing each would cost more than sending it.
void ProgramEditor::markLineOut(Line line)
{
    lineToMark_ = line;
    if (!markPause_.isActive()) showLineOut();
}

void ProgramEditor::showLineOut()
{
    if (!lineToMark_) return;
    const Line line = *lineToMark_;
    const int lineBefore = lineOut_;
    clearLineOut();
    lineOut_ = static_cast<int>(scintilla(SCI_LINEFROMPOSITION, line.start));
    const bool isFollowed = isVisible() && lineOut_ - lineBefore <= linesToFollow;
    markPause_.start(isFollowed ? markInterval : slowMarkInterval);
    markerAdd(lineOut_, lineOutArrow);
    markerAdd(lineOut_, lineOutBackground);
    // Not selected: each selection is given to the X server, which takes away what was selected in another program.
    scintilla(SCI_SETEMPTYSELECTION, line.end);
    const bool isElsewhere = isCaretHeld() && shownPlace_.end > 0; // the operator looks at another place
    if (!isElsewhere) bringLineOutInSight(lineBefore < 0);
    Q_EMIT lineOutShown();
}

// While lines go out, the text stands still and the mark wanders down it. A text that scrolls with every mark is hard
// to read, and drawing it anew each time takes more of the processor than all else of a transfer.
void ProgramEditor::bringLineOutInSight(bool isFirst)
{
    const auto rows = scintilla(SCI_LINESONSCREEN);
    const auto ahead = std::min<qsizetype>(linesAhead, rows / 2);
    const auto top = scintilla(SCI_GETFIRSTVISIBLELINE);
    if (lineOut_ < top || lineOut_ >= top + rows - ahead) scintilla(SCI_SETFIRSTVISIBLELINE, lineOut_ - ahead);
    if (isFirst) scintilla(SCI_SETXOFFSET, 0); // the beginnings of the blocks
}

void ProgramEditor::clearLineOut()
{
    lineToMark_.reset();
    if (lineOut_ < 0) return;
    markerDelete(lineOut_);
    lineOut_ = -1;
}

void ProgramEditor::setCaretHeld(bool held)
{
    if (held != caretHeld_) leavePlace();
    caretHeld_ = held;
    setCaretLineVisible(!held); // could be taken for the mark of the line going out
}

void ProgramEditor::markPlace(Line place)
{
    leavePlace();
    shownPlace_ = place;
    scintilla(SCI_SETINDICATORCURRENT, placeIndicator);
    scintilla(SCI_INDICATORFILLRANGE, place.start, place.end - place.start);
    scintilla(SCI_SCROLLRANGE, place.end, place.start);
}

void ProgramEditor::leavePlace()
{
    if (shownPlace_.end == 0) return;
    scintilla(SCI_SETINDICATORCURRENT, placeIndicator);
    scintilla(SCI_INDICATORCLEARRANGE, 0, textSize());
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
