// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/AppDelegate.h"
#include "shell/viewMC.h"
#include "support/Required.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <memory>

/// Uses the program as an operator does: real clicks and keys on real windows and controls, found by name.
class Operator
{
public:
    /// Starts the program as main() does, with the stored settings.
    Operator() { restart(); }
    QMainWindow& window() { return *app_->window(); }
    AppDelegate& delegate() { return *app_; }

    /// Ends the program and starts it again.
    void restart()
    {
        app_.reset();
        app_ = std::make_unique<AppDelegate>();
        app_->applicationDidFinishLaunching();
        window().show();
        toFront();
    }

    /// What a window manager does when a dialog closes.
    void toFront()
    {
        window().activateWindow();
        require(QTest::qWaitForWindowActive(&window()), "the main window does not become active");
    }

    /// The visible widget of that name below `root`, or in any window; null if there is none.
    template <typename Widget = QWidget> static Widget* find(const QString& name, QWidget* root = nullptr)
    {
        for (auto* top : root ? QWidgetList{root} : QApplication::topLevelWidgets())
            for (auto* widget : top->findChildren<Widget*>(name))
                if (widget->isVisible()) return widget;
        return nullptr;
    }
    static bool isShown(const QString& name) { return find(name); }

    static void click(const QString& name, QWidget* root = nullptr)
    {
        auto* button = find<QAbstractButton>(name, root);
        require(button, "no button " + name);
        QTest::mouseClick(button, Qt::LeftButton);
    }

    /// Presses a key where the focus is.
    static void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        auto* popup = QApplication::activePopupWidget();
        QWidget* window = popup ? popup : QApplication::activeWindow();
        require(window, "no window for a key");
        QTest::keyClick(window->focusWidget() ? window->focusWidget() : window, key, modifiers);
    }

    /// Clicks the machine's icon and then that button of its menu: "btnTX", "btnRX", "btnSetup" or "btnCloseMenu".
    static void choose(int machine, const QString& choice)
    {
        click("btnMC", mcIconAt(machine));
        requireSoon([&] { return isShown(choice); }, "the menu has no " + choice);
        click(choice);
    }

    /// Where the programs to open are.
    QString programPath() const { return files_.filePath("program.nc"); }

    /// The path of a file that holds this program.
    QString write(const QByteArray& program) const
    {
        QFile file(programPath());
        if (!file.open(QIODevice::WriteOnly) || file.write(program) != program.size()) qFatal("cannot write a program");
        return file.fileName();
    }

    /// Chooses Send and opens a file that holds this program; an empty one cancels the dialog.
    void open(int machine, const QByteArray& program) const
    {
        choose(machine, "btnTX");
        const auto dialog = [] { return qobject_cast<QFileDialog*>(QApplication::activeModalWidget()); };
        requireSoon([&] { return dialog(); }, "no file dialog", 20000);
        auto* name = dialog()->findChild<QLineEdit*>("fileNameEdit");
        // Typed keys would race with the dialog's completion, which reads folders in the background.
        if (!program.isEmpty()) name->setText(write(program));
        QTest::keyClick(name, program.isEmpty() ? Qt::Key_Escape : Qt::Key_Return);
        requireSoon([] { return !QApplication::activeModalWidget(); }, "the file dialog stays", 20000);
    }

    void send(int machine, const QByteArray& program) const
    {
        open(machine, program);
        click("btnSend");
    }

    /// Presses that button in the next message box; its text is kept in lastMessage.
    void answerNextMessage(const QString& button)
    {
        lastMessage.clear();
        auto* poll = new QTimer(&window());
        QObject::connect(poll, &QTimer::timeout, poll, [this, poll, button] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!box) return;
            poll->stop(); // it may outlive this message's event loop, and must not answer the next one
            poll->deleteLater();
            lastMessage = box->text();
            for (auto* choice : box->buttons())
                if (choice->text().remove(u'&') == button) QTest::mouseClick(choice, Qt::LeftButton);
        });
        poll->start(5);
    }
    QString lastMessage;

    /// Sets the machine's port in the setup form.
    static void setUp(int machine, const QString& port)
    {
        choose(machine, "btnSetup");
        if (isShown("btnSetupFailed")) press(Qt::Key_Return);
        setPort(port);
        click("btnClose");
    }

    /// Sets the port in the setup form that is open.
    static void setPort(const QString& port)
    {
        auto* edit = find<QComboBox>("cboPorts")->lineEdit();
        edit->selectAll();
        QTest::keyClicks(edit, port);
        find<QComboBox>("cboBaud")->setCurrentText("115200"); // a slow line would only take longer
        click("btnSave");
    }

private:
    QTemporaryDir files_;
    std::unique_ptr<AppDelegate> app_;
};
