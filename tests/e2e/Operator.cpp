// SPDX-License-Identifier: GPL-3.0-or-later
#include "e2e/Operator.h"

#include "config/g.h"
#include "shell/viewChild.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QTimer>

Operator::Operator()
{
    restart();
}

Operator::~Operator()
{
    g::msgBoxParent = nullptr;
}

void Operator::restart()
{
    app_.reset();
    app_ = std::make_unique<AppDelegate>();
    app_->applicationDidFinishLaunching();
    window().show();
    QVERIFY(QTest::qWaitForWindowExposed(&window()));
}

bool Operator::isShown(const QString& name)
{
    return find<QWidget>(name) != nullptr;
}

void Operator::click(const QString& name)
{
    auto* button = find<QAbstractButton>(name);
    QVERIFY2(button, qPrintable(QStringLiteral("no button ") + name));
    QTest::mouseClick(button, Qt::LeftButton);
}

void Operator::clickIn(QWidget* root, const QString& name)
{
    auto* button = findIn<QAbstractButton>(root, name);
    QVERIFY2(button, qPrintable(QStringLiteral("no button ") + name));
    QTest::mouseClick(button, Qt::LeftButton);
}

QWidget* Operator::child(int machine)
{
    return childViewAt(machine);
}

void Operator::choose(int machine, const QString& choice)
{
    clickIn(dynamic_cast<QWidget*>(g::mcIcons[machine].get()), QStringLiteral("btnMC"));
    QTRY_VERIFY(isShown(choice));
    click(choice);
}

void Operator::openSend(int machine, const QString& path)
{
    choose(machine, QStringLiteral("btnTX"));
    answerFileDialog(path);
}

void Operator::answerFileDialog(const QString& path)
{
    QTRY_VERIFY(qobject_cast<QFileDialog*>(QApplication::activeModalWidget()));
    auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
    auto* name = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    if (path.isEmpty()) {
        QTest::keyClick(dialog, Qt::Key_Escape);
    } else {
        name->setText(
            path); // typed keys would race with the dialog's completion, which reads folders in the background
        QTest::keyClick(name, Qt::Key_Return);
    }
    QTRY_VERIFY(!QApplication::activeModalWidget());
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

void Operator::setUp(int machine, const QString& port, const QString& mode, int flow, int dataFormat, bool wait)
{
    choose(machine, QStringLiteral("btnSetup"));
    if (isShown(QStringLiteral("btnSetupFailed"))) click(QStringLiteral("btnSetupFailed"));
    QTRY_VERIFY(isShown(QStringLiteral("cboPorts")));
    const auto typeInto = [this](const QString& box, const QString& text) {
        auto* edit = find<QComboBox>(box)->lineEdit();
        edit->selectAll();
        QTest::keyClicks(edit, text);
    };
    typeInto(QStringLiteral("cboPorts"), port);
    typeInto(QStringLiteral("cboMode"), mode);
    find<QComboBox>(QStringLiteral("cboFlow"))->setCurrentIndex(flow);
    find<QComboBox>(QStringLiteral("cboDBPar"))->setCurrentIndex(dataFormat);
    auto* waitBox = find<QCheckBox>(QStringLiteral("chkWaitXOn"));
    if (waitBox->isChecked() != wait) QTest::keyClick(waitBox, Qt::Key_Space);
    click(QStringLiteral("btnSave"));
    if (child(machine)->isVisible()) click(QStringLiteral("btnClose"));
}
