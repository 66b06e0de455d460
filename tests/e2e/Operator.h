// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/AppDelegate.h"

#include <QAbstractButton>
#include <QByteArray>
#include <QString>
#include <QTest>

#include <memory>

/// Uses the program as an operator does: real clicks and keys on the real windows, found by their names.
class Operator
{
public:
    /// Starts the program as main() does, with the settings that are stored.
    Operator();
    ~Operator();
    /// Ends the program and starts it anew.
    void restart();

    AppDelegate& app() { return *app_; }
    QMainWindow& window() { return *app_->window(); }

    /// The one visible widget of that name, in any window; fails the test when there is none.
    template <typename Widget> Widget* find(const QString& name);
    template <typename Widget> Widget* findIn(QWidget* root, const QString& name);
    bool isShown(const QString& name);
    void click(const QString& name);
    void clickIn(QWidget* root, const QString& name);

    /// Clicks the machine's icon and then the choice of its menu: "btnTX", "btnRX" or "btnSetup".
    void choose(int machine, const QString& choice);
    /// Chooses Send, or Receive, and picks nothing or that file in the dialog.
    void openSend(int machine, const QString& path);
    /// Types the path into the file dialog that is up and accepts it; an empty path cancels it.
    void answerFileDialog(const QString& path);
    /// Presses that button in the next message box; its text is kept in lastMessage.
    void answerNextMessage(const QString& button);
    QString lastMessage;
    /// The machine's child view.
    QWidget* child(int machine);

    /// Stores one machine's settings through the form.
    void setUp(int machine, const QString& port, const QString& mode, int flow, int dataFormat, bool wait = false);

private:
    std::unique_ptr<AppDelegate> app_;
};

template <typename Widget> Widget* Operator::findIn(QWidget* root, const QString& name)
{
    for (auto* widget : root->findChildren<Widget*>(name))
        if (widget->isVisible()) return widget;
    return nullptr;
}

template <typename Widget> Widget* Operator::find(const QString& name)
{
    for (auto* top : QApplication::topLevelWidgets()) {
        if (!top->isVisible()) continue;
        if (auto* found = findIn<Widget>(top, name)) return found;
    }
    return nullptr;
}
