// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/EditorActions.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QInputDialog>
#include <QMenu>
#include <QMimeData>

EditorActions::EditorActions(QWidget* view, ProgramEditor* editor, FindBar* bar)
    : QObject(view), view_(view), editor_(editor), bar_(bar), search_(new ProgramSearch(editor))
{
    find_ = add(QStringLiteral("&Find..."), {QKeySequence::Find}, &EditorActions::find);
    goToLine_ = add(QStringLiteral("&Go to line..."), {Qt::CTRL | Qt::Key_G}, &EditorActions::goToLine);
    add(QStringLiteral("Find next"), {Qt::Key_F3}, &EditorActions::findNext);
    add(QStringLiteral("Find previous"), {Qt::SHIFT | Qt::Key_F3}, &EditorActions::findPrevious);
    add(QStringLiteral("Larger"), {Qt::CTRL | Qt::Key_Plus, Qt::CTRL | Qt::Key_Equal}, &EditorActions::zoomIn);
    add(QStringLiteral("Smaller"), {Qt::CTRL | Qt::Key_Minus}, &EditorActions::zoomOut);
    add(QStringLiteral("Normal size"), {Qt::CTRL | Qt::Key_0}, &EditorActions::zoomReset);
    add(QStringLiteral("Follow the transfer"), {Qt::Key_Escape}, &EditorActions::leave)
        ->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    connect(bar, &FindBar::textEdited, this, &EditorActions::findTyped);
    connect(bar, &FindBar::nextWanted, this, &EditorActions::findNext);
    connect(bar, &FindBar::previousWanted, this, &EditorActions::findPrevious);
    connect(bar, &FindBar::closeWanted, this, &EditorActions::leave);
    connect(search_, &ProgramSearch::found, this, &EditorActions::showFound);
    connect(search_, &ProgramSearch::notFound, this, [this] { bar_->showOutcome(FindBar::Outcome::NotFound); });
    connect(editor, &QWidget::customContextMenuRequested, this, &EditorActions::showMenu);
}

QAction* EditorActions::add(const QString& text, const QList<QKeySequence>& keys, void (EditorActions::*handler)())
{
    auto* action = new QAction(text, this);
    action->setShortcuts(keys);
    connect(action, &QAction::triggered, this, handler);
    view_->addAction(action);
    return action;
}

// Where the operator is: the selection or, while a transfer owns the caret, the place found last or the first visible
// line.
ProgramEditor::Line EditorActions::place() const
{
    if (!editor_->isCaretHeld()) return editor_->selection();
    if (editor_->shownPlace().end > 0) return editor_->shownPlace();
    return {editor_->firstVisible(), editor_->firstVisible()};
}

void EditorActions::find()
{
    QString selected;
    if (!editor_->isCaretHeld() && editor_->isShown()) selected = editor_->lineText(editor_->selection());
    bar_->open(selected.contains(u'\n') ? QString() : selected);
}

void EditorActions::search(SearchDirection direction)
{
    if (bar_->text().isEmpty()) return find();
    const auto [start, end] = place();
    search_->start(bar_->text(), direction, direction == SearchDirection::Forward ? end : start);
}

void EditorActions::findTyped()
{
    search_->cancel();
    if (bar_->text().isEmpty()) return bar_->showOutcome(FindBar::Outcome::None);
    search_->start(bar_->text(), SearchDirection::Forward, place().start);
}

void EditorActions::showFound(ProgramEditor::Line match, bool wrapped)
{
    editor_->showPlace(match);
    bar_->showOutcome(wrapped ? FindBar::Outcome::Wrapped : FindBar::Outcome::Found);
}

void EditorActions::leave()
{
    search_->cancel();
    editor_->leavePlace();
    if (bar_->isHidden()) return;
    bar_->hide();
    editor_->setFocus();
}

void EditorActions::goToLine()
{
    // Not exec(): the dialog must be destroyed with its view when the machine's view is replaced.
    auto* dialog = new QInputDialog(view_);
    dialog->setObjectName(QStringLiteral("goToLineDialog"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(QStringLiteral("Go to line"));
    dialog->setInputMode(QInputDialog::IntInput);
    dialog->setIntRange(1, editor_->lines());
    dialog->setIntValue(editor_->lineNumber(place().start));
    dialog->setLabelText(QStringLiteral("Line, 1 to %1:").arg(editor_->lines()));
    dialog->setOkButtonText(QStringLiteral("Go"));
    connect(dialog, &QInputDialog::intValueSelected, this, [this](int number) {
        const auto line = editor_->lineNumbered(number);
        editor_->showPlace(editor_->isCaretHeld() ? line : ProgramEditor::Line{line.start, line.start});
        editor_->setFocus();
    });
    dialog->open();
}

void EditorActions::showMenu(const QPoint& at)
{
    auto* menu = new QMenu(editor_);
    menu->setObjectName(QStringLiteral("editorMenu"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    addEditing(menu);
    menu->addSeparator();
    menu->addActions({find_, goToLine_});
    menu->addSeparator();
    menu->addActions(furtherActions_);
    menu->popup(editor_->mapToGlobal(at));
}

void EditorActions::addEditing(QMenu* menu)
{
    const bool editable = !editor_->isReadOnly() && editor_->isShown();
    const auto addItem = [&](const QString& text, QKeySequence::StandardKey key, bool enabled, auto handler) {
        auto* item = menu->addAction(text, editor_, handler);
        item->setShortcut(key); // only displayed: the editor handles the key itself
        item->setShortcutContext(Qt::WidgetShortcut);
        item->setEnabled(enabled);
    };
    // Not hasSelectedText(): the library updates that only when it paints.
    const bool hasSelection = editor_->selection().start < editor_->selection().end;
    const auto* clipboard = QApplication::clipboard()->mimeData();
    addItem(QStringLiteral("&Undo"), QKeySequence::Undo, editable && editor_->isUndoAvailable(), &ProgramEditor::undo);
    addItem(QStringLiteral("&Redo"), QKeySequence::Redo, editable && editor_->isRedoAvailable(), &ProgramEditor::redo);
    menu->addSeparator();
    addItem(QStringLiteral("Cu&t"), QKeySequence::Cut, editable && hasSelection, &ProgramEditor::cut);
    addItem(QStringLiteral("&Copy"), QKeySequence::Copy, hasSelection, &ProgramEditor::copy);
    addItem(QStringLiteral("&Paste"), QKeySequence::Paste, editable && clipboard && clipboard->hasText(),
            &ProgramEditor::paste);
    menu->addSeparator();
    // While lines go out, the selection marks the line going out.
    addItem(QStringLiteral("Select &all"), QKeySequence::SelectAll, !editor_->isCaretHeld(),
            [this] { editor_->selectAll(); });
}
