// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "program/ProgramCheck.h"

#include <QWidget>

#include <memory>

class ProgramChecker;
class ProgramEditor;
namespace Ui
{
class CheckLine;
}

/// The line under a program that says what the control will stumble over, with the way to each place. It only tells:
/// no send waits for it. Part of a transfer view. Main thread.
class CheckLine : public QWidget
{
    Q_OBJECT
public:
    explicit CheckLine(QWidget* parent = nullptr);
    ~CheckLine() override;

    /// To be called first, and once.
    void watch(ProgramEditor& editor);
    void setRules(const CheckRules& rules);
    /// While a transfer runs the line keeps what it says.
    void setPaused(bool isPaused);

private:
    void showReport(const CheckReport& report);
    void showBusy();
    void go(qsizetype by);
    void showFinding();
    void showText(const QString& text, const QString& image);

    std::unique_ptr<Ui::CheckLine> ui;
    ProgramEditor* editor_ = nullptr;
    ProgramChecker* checker_ = nullptr;
    CheckReport report_;
    qsizetype shown_ = -1; // of the findings; -1 until the operator goes to one
};
