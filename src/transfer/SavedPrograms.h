// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "transfer/ProgramSaver.h"
#include "transfer/TransferRecord.h"

#include <QTimer>
#include <QWidget>

#include <memory>
#include <vector>

class ProgramEditor;
class QTreeWidgetItem;
namespace Ui
{
class SavedPrograms;
}

/// The programs that a receive view has saved by itself: the choice to do so, a row for each program and what can be
/// done with it. Part of a transfer view, whose editor it leaves alone. Main thread.
class SavedPrograms : public QWidget
{
    Q_OBJECT
public:
    explicit SavedPrograms(QWidget* parent = nullptr);
    ~SavedPrograms() override;

    /// To be called first, and once. The editor is told when all that it has received is in files.
    void watch(ProgramEditor& editor);
    /// Whose record says how to save.
    void follow(const std::shared_ptr<MachineRecord>& machine);

    bool isOn() const; ///< programs are saved
    /// A program has ended: it is saved, or only recorded.
    void take(const TransferRecord::Received& received);
    /// Bytes have arrived and are in the editor. `isUnderWay`: of a program that has not ended.
    void arrived(bool isUnderWay);
    /// What is in the editor is saved otherwise or no longer there.
    void textKept();
    /// The editor's text was put away; what is in no file yet is now only here.
    void textDropped();
    /// Of that, something still is.
    bool hasUnsaved() const;
    /// Tries to save it. Returns whether nothing is left.
    bool saveUnsaved();
    /// Waits a moment for what is being saved.
    void settle() { saver_->settle(); }
    /// The view ends: nothing more is saved, what is being saved is recorded now.
    void end();

Q_SIGNALS:
    /// So long that the program under way has ended.
    void silent();
    /// What the history keeps of a program is complete.
    void recorded(const TransferEntry& entry);
    void openWanted(const QString& path);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    enum class State { Saving, Saved, Same, Failed };
    struct Program {
        TransferEntry record;
        KeptFiles::Order order; // with its bytes until they are in the file
        bool isXModem = false;
        bool isNotClosed = false;
        bool isRecorded = false;
        bool isOnlyHere = false;
        State state = State::Saving;
        ProgramSaver::Answer answer;
        QTreeWidgetItem* row = nullptr;
    };

    void choose(bool isOn);
    void changeSettings();
    void storeSettings();
    void showSettings();
    void save(Program& program);
    void tryAgain();
    bool isOutdated(const Program& program) const;
    static void renameAsOlder(Program& program);
    void note(const ProgramSaver::Answer& answer);
    void recordOnce(Program& program);
    void tellEditor();
    void startSilence();
    // In SavedPrograms_list.cpp
    void setUpLook();
    void addRow(Program& program);
    void showRow(const Program& program);
    void showFailures();
    void showActions();
    void fitList();
    const Program* chosen() const;
    void open();
    void compare();
    void showInFolder();

    std::unique_ptr<Ui::SavedPrograms> ui;
    ProgramEditor* editor_ = nullptr;
    std::shared_ptr<MachineRecord> machine_;
    ProgramSaver* saver_;
    std::vector<std::unique_ptr<Program>> programs_;
    std::size_t kept_ = 0;   // of them concern nobody's text any more
    bool isMissing_ = false; // the editor's text has a program that was not to be saved
    bool isUnderWay_ = false;
    bool isEnding_ = false;
    QTimer silence_;
};
