// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "editor/FindBar.h"
#include "editor/ProgramSearch.h"

class QAction;
class QMenu;

/// What the operator does with the program besides typing: finding, going to a line, zooming, and the editor's
/// menu. Its shortcuts work in the whole window of `view` while that is shown; `view` owns it.
class EditorActions : public QObject
{
    Q_OBJECT
public:
    EditorActions(QWidget* view, ProgramEditor* editor, FindBar* bar);

    /// Shows these at the end of the menu, too.
    void addToMenu(const QList<QAction*>& actions) { furtherActions_ += actions; }

private:
    QAction* add(const QString& text, const QList<QKeySequence>& keys, void (EditorActions::*handler)());
    void find();
    void findNext() { search(SearchDirection::Forward); }
    void findPrevious() { search(SearchDirection::Backward); }
    void findTyped();
    void goToLine();
    void leave();
    void zoomIn() { editor_->zoomIn(); }
    void zoomOut() { editor_->zoomOut(); }
    void zoomReset() { editor_->zoomTo(0); }
    void search(SearchDirection direction);
    ProgramEditor::Line place() const;
    void showFound(ProgramEditor::Line match, bool wrapped);
    void showMenu(const QPoint& at);
    void addEditing(QMenu* menu);

    QWidget* view_;
    ProgramEditor* editor_;
    FindBar* bar_;
    ProgramSearch* search_;
    QAction* find_;
    QAction* goToLine_;
    QList<QAction*> furtherActions_;
};
