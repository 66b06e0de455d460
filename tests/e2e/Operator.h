// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/AppDelegate.h"

#include <QAbstractButton>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

/// Uses the program as an operator does: real clicks and keys on the real windows, found by their names.
class Operator
{
public:
    /// Starts the program as main() does, with the settings that are stored.
    Operator() { restart(); }
    /// Ends the program and starts it anew.
    void restart();
    QMainWindow& window() { return *app_->window(); }
    /// What a window manager does when a dialog goes.
    void toFront();
    AppDelegate& app() { return *app_; }

    /// The visible widget of that name below `root`, or in any window; none when it is not there.
    template <typename Widget = QWidget> static Widget* find(const QString& name, QWidget* root = nullptr);
    static bool isShown(const QString& name) { return find(name); }
    static void click(const QString& name, QWidget* root = nullptr);
    /// A key that goes where the focus is.
    static void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

    /// Clicks the machine's icon and then that button of its menu: "btnTX", "btnRX", "btnSetup" or "btnCloseMenu".
    void choose(int machine, const QString& choice);
    /// Chooses Send and opens a file that holds this program; nothing cancels the dialog.
    void open(int machine, const QByteArray& program);
    void send(int machine, const QByteArray& program);
    /// Presses that button in the next message box; its text is kept in lastMessage.
    void answerNextMessage(const QString& button);
    QString lastMessage;
    /// Gives the machine that port through the form.
    void setUp(int machine, const QString& port);

    QString write(const QString& name, const QByteArray& bytes) const;

private:
    QTemporaryDir files_;
    std::unique_ptr<AppDelegate> app_;
};

template <typename Widget> Widget* Operator::find(const QString& name, QWidget* root)
{
    for (auto* top : root ? QWidgetList{root} : QApplication::topLevelWidgets())
        for (auto* widget : top->findChildren<Widget*>(name))
            if (widget->isVisible()) return widget;
    return nullptr;
}
