// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "config/MachineRecord.h"
#include "platform/LatestWork.h"
#include "program/Restart.h"

#include <QDialog>
#include <QStringList>

#include <memory>

class ProgramEditor;
namespace Ui
{
class RestartPage;
}

/// Where a start in the middle of a program is looked over before it is sent: what the program has put in force above
/// the line, what to beware of, and the blocks that go out first. Sends and changes nothing itself. Belongs to a
/// transfer view and closes when the program changes. Main thread.
class RestartPage : public QDialog
{
    Q_OBJECT
public:
    /// The editor outlives the page. Begins with the line at the caret.
    RestartPage(const MachineRecord& machine, ProgramEditor& editor, QWidget* parent);
    ~RestartPage() override;

    /// Those of a view, if it has one.
    static void closeAll(const QWidget& view);

Q_SIGNALS:
    /// From the line at that position of the program, after these blocks, each closed by "\n".
    void sendWanted(qsizetype position, const QStringList& blocks);

private:
    void setUpChoices(const MachineRecord& machine);
    void read();
    void showFound(const ProgramState& state);
    void fitWarnings();
    void showWarnings(const QList<StartWarning>& warnings);
    void addState(const QString& name, const QString& text, qsizetype line, bool isSure);
    void showState(const ProgramState& state);
    void showPlan();
    void showLine(qsizetype line);
    int line() const;

    std::unique_ptr<Ui::RestartPage> ui;
    ProgramEditor& editor_;
    bool canStart_ = false;
    qsizetype clearLine_ = 0;
    LatestWork work_;
};
