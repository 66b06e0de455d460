// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMenu>

#include <functional>

class CurrentFile;
class ProgramEditor;
struct MachineRecord;

/// The menu that compares the program in a transfer view's editor with a file. Its shortcut works in the whole window
/// of the view, which owns the menu. Main thread only.
class CompareMenu : public QMenu
{
    Q_OBJECT
public:
    /// `machine` is asked when it matters: a view may be bound to another one.
    CompareMenu(QWidget* view, const ProgramEditor& editor, const CurrentFile& file,
                std::function<const MachineRecord&()> machine);

private:
    void askForFile();
    void offerSent();
    void compareWith(const QString& path);

    QWidget* view_;
    const ProgramEditor& editor_;
    const CurrentFile& file_;
    const std::function<const MachineRecord&()> machine_;
    QAction* sent_;
};
