// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/ProgramEditor.h"

#include <QInputMethodEvent>

template <typename Handle> void ProgramEditor::watch(Handle handle)
{
    if (!isShown()) return; // no input to text that the operator cannot see
    const qsizetype caretBefore = caret();
    const qsizetype sizeBefore = textSize();
    handle();
    if (caret() != caretBefore || textSize() != sizeBefore) Q_EMIT operatorTouched();
}

void ProgramEditor::showPlace(Line place)
{
    if (!caretHeld_) return watch([&] { select(place); });
    markPlace(place);
}

void ProgramEditor::keyPressEvent(QKeyEvent* event)
{
    watch([&] { QsciScintilla::keyPressEvent(event); });
}

void ProgramEditor::undo()
{
    watch([this] { QsciScintilla::undo(); });
}

void ProgramEditor::redo()
{
    watch([this] { QsciScintilla::redo(); });
}

void ProgramEditor::cut()
{
    watch([this] { QsciScintilla::cut(); });
}

void ProgramEditor::paste()
{
    watch([this] { QsciScintilla::paste(); });
}

void ProgramEditor::selectAll(bool select)
{
    watch([this, select] { QsciScintilla::selectAll(select); });
}

void ProgramEditor::inputMethodEvent(QInputMethodEvent* event)
{
    // No input method may insert a CR: the machine's end of block would not replace it.
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
