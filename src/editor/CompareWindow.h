// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "editor/ProgramEditor.h"
#include "platform/WorkerThread.h"
#include "program/Comparison.h"

#include <QDialog>

#include <atomic>
#include <memory>

class DifferenceMarks;
class PairedScroll;
namespace Ui
{
class CompareWindow;
}

/// Shows two programs side by side with what differs between them. Has copies of both; neither can be changed here.
/// Deletes itself when closed. Main thread only; the comparison runs on a thread of its own.
class CompareWindow : public QDialog
{
    Q_OBJECT
public:
    /// The program in `editor`, which the operator knows as `name`, and the bytes of a file.
    CompareWindow(const ProgramEditor& editor, const QString& name, const QByteArray& fileBytes, const QString& path,
                  QWidget* parent);
    struct File {
        QByteArray bytes;
        QString path;
    };
    CompareWindow(const File& left, const File& right, QWidget* parent);
    ~CompareWindow() override;

private:
    using Side = Comparison::Side;

    explicit CompareWindow(QWidget* parent);
    void showTitle(const QString& left, const File& right);
    void setUp(ProgramEditor* editor, Side side);
    void compare();
    void showResult(std::shared_ptr<const Comparison> comparison);
    void goTo(qsizetype index);
    void goNext() { goTo(current_ + 1); }
    void goPrevious() { goTo(isAtCurrent_ ? current_ - 1 : current_); }
    void caretMoved(const ProgramEditor* editor, Side side);
    void showPlace();

    std::unique_ptr<Ui::CompareWindow> ui;
    PairedScroll* scroll_ = nullptr;
    QList<DifferenceMarks*> marks_;
    std::shared_ptr<const Comparison> comparison_; // none while it is being made
    qsizetype current_ = -1;                       // the last difference at or above the operator's place
    bool isAtCurrent_ = false;                     // and not somewhere below it
    std::shared_ptr<std::atomic<bool>> cancelled_ = std::make_shared<std::atomic<bool>>(false);
    WorkerThread worker_; // last: it ends before what its tasks use
};
