// SPDX-License-Identifier: GPL-3.0-or-later
#include "e2e/Operator.h"

#include "shell/viewMC.h"

#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QTimer>

void Operator::restart()
{
    app_.reset();
    app_ = std::make_unique<AppDelegate>();
    app_->applicationDidFinishLaunching();
    window().show();
    toFront();
}

void Operator::toFront()
{
    window().activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window()));
}

void Operator::click(const QString& name, QWidget* root)
{
    auto* button = find<QAbstractButton>(name, root);
    QVERIFY2(button, qPrintable("no button " + name));
    QTest::mouseClick(button, Qt::LeftButton);
}

void Operator::press(int key, Qt::KeyboardModifiers modifiers)
{
    auto* popup = QApplication::activePopupWidget();
    QWidget* window = popup ? popup : QApplication::activeWindow();
    QVERIFY(window);
    QTest::keyClick(window->focusWidget() ? window->focusWidget() : window, static_cast<Qt::Key>(key), modifiers);
}

void Operator::choose(int machine, const QString& choice)
{
    click("btnMC", mcIconAt(machine));
    QTRY_VERIFY(isShown(choice));
    click(choice);
}

QString Operator::write(const QString& name, const QByteArray& bytes) const
{
    QFile file(files_.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) qFatal("cannot write a program");
    return file.fileName();
}

void Operator::open(int machine, const QByteArray& program)
{
    choose(machine, "btnTX");
    QTRY_VERIFY(qobject_cast<QFileDialog*>(QApplication::activeModalWidget()));
    auto* dialog = QApplication::activeModalWidget();
    auto* name = dialog->findChild<QLineEdit*>("fileNameEdit");
    // Typed keys would race with the dialog's completion, which reads folders in the background.
    if (!program.isEmpty()) name->setText(write("program.nc", program));
    QTest::keyClick(name, program.isEmpty() ? Qt::Key_Escape : Qt::Key_Return);
    QTRY_VERIFY(!QApplication::activeModalWidget());
}

void Operator::send(int machine, const QByteArray& program)
{
    open(machine, program);
    click("btnSend");
}

void Operator::answerNextMessage(const QString& button)
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

void Operator::setUp(int machine, const QString& port)
{
    choose(machine, "btnSetup");
    if (isShown("btnSetupFailed")) press(Qt::Key_Return);
    QTRY_VERIFY(isShown("cboPorts"));
    auto* edit = find<QComboBox>("cboPorts")->lineEdit();
    edit->selectAll();
    QTest::keyClicks(edit, port);
    click("btnSave");
    click("btnClose");
}
