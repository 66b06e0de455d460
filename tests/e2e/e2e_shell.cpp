// SPDX-License-Identifier: GPL-3.0-or-later
#include "e2e/Operator.h"
#include "e2e/Shop.h"
#include "support/PtyPair.h"

#include "shell/frmDncMenu.h"
#include "shell/MachineButton.h"
#include "shell/viewMC.h"

#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QToolButton>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

class ShellTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void panelIsWorkedByKeyboard();
    void menuIsWorkedByKeyboard_data();
    void menuIsWorkedByKeyboard();
    void arrowKeysBringHiddenMachinesIntoView();
    void scrollButtonsAreThereWhenTheyAreOfUse();
    void emptyShopSaysWhatToDo();
    void shrunkWindowComesBackWhereItWas();
    void failedPortSaysWhy_data();
    void failedPortSaysWhy();
    void failedPortIsLeftByKeyboard();

private:
    static void storeMachines(int count);
    static QWidget* menu();
};

void ShellTest::storeMachines(int count)
{
    const MachineRecord machine;
    Shop::storeMachines(std::vector<const MachineRecord*>(static_cast<std::size_t>(count), &machine));
}

QWidget* ShellTest::menu()
{
    for (auto* window : QApplication::topLevelWidgets())
        if (window->isVisible() && qobject_cast<frmDncMenu*>(window)) return window;
    return nullptr;
}

void ShellTest::panelIsWorkedByKeyboard()
{
    storeMachines(3);
    Operator op;
    op.window().activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&op.window()));
    const auto focused = [&op](int machine) { return op.window().focusWidget() == mcIconAt(machine)->button(); };
    const auto press = [&op](Qt::Key key) { QTest::keyClick(op.window().focusWidget(), key); };
    mcIconAt(1)->button()->setFocus();
    press(Qt::Key_Down);
    QVERIFY(focused(2));
    press(Qt::Key_End);
    QVERIFY(focused(3));
    press(Qt::Key_Down); // nothing further down
    QVERIFY(focused(3));
    press(Qt::Key_Up);
    QVERIFY(focused(2));
    // One Tab stop for the whole panel: the machine, its delete button, then out.
    press(Qt::Key_Tab);
    press(Qt::Key_Tab);
    QVERIFY(!mcIconAt(3)->isAncestorOf(op.window().focusWidget()));

    mcIconAt(2)->button()->setFocus();
    press(Qt::Key_Return);
    QTRY_VERIFY(menu());
    QCOMPARE(op.app().iCurrentMcIcon, 2);
    QTest::keyClick(menu(), Qt::Key_Escape);
    QTRY_VERIFY(!menu());

    op.answerNextMessage(QStringLiteral("Cancel"));
    QTest::keyClick(mcIconAt(2)->button(), Qt::Key_Delete);
    QCOMPARE(op.lastMessage, QStringLiteral("Delete the current MC Icon?"));
    QCOMPARE(g::mcIcons.size(), 4);

    op.window().activateWindow();
    QTRY_COMPARE(QApplication::activeWindow(), &op.window());
    QTest::keyClick(&op.window(), Qt::Key_N, Qt::ControlModifier | Qt::ShiftModifier);
    QTRY_COMPARE(g::mcIcons.size(), 5);
    QVERIFY(focused(4));
}

void ShellTest::menuIsWorkedByKeyboard_data()
{
    QTest::addColumn<QList<int>>("keys");
    QTest::newRow("letter") << QList<int>{Qt::Key_U};
    QTest::newRow("arrows") << QList<int>{Qt::Key_Down, Qt::Key_Down, Qt::Key_Return};
}

void ShellTest::menuIsWorkedByKeyboard()
{
    QFETCH(QList<int>, keys);
    PtyPair line;
    Shop::storeMachines({Shop::machineOn(line.devicePath().toStdString()).get()});
    Operator op;
    QTest::keyClick(mcIconAt(1)->button(), Qt::Key_Return);
    QTRY_VERIFY(menu());
    for (const int key : keys)
        QTest::keyClick(menu()->focusWidget(), static_cast<Qt::Key>(key));
    QTRY_VERIFY(!menu());
    QVERIFY(op.isShown(QStringLiteral("btnSave")));
}

void ShellTest::arrowKeysBringHiddenMachinesIntoView()
{
    storeMachines(30);
    Operator op;
    mcIconAt(1)->button()->setFocus();
    QTest::keyClick(mcIconAt(1)->button(), Qt::Key_End);
    auto* list = op.find<QScrollArea>(QStringLiteral("scrIcons"));
    QTRY_VERIFY(list->rect().contains(mcIconAt(30)->mapTo(list, mcIconAt(30)->rect().bottomRight())));
}

void ShellTest::scrollButtonsAreThereWhenTheyAreOfUse()
{
    storeMachines(1);
    Operator op;
    QTRY_VERIFY(!op.isShown(QStringLiteral("btnUp")) && !op.isShown(QStringLiteral("btnDn")));
    for (int n = 0; n < 30; ++n)
        op.click(QStringLiteral("btnAddMC"));
    QTRY_VERIFY(op.isShown(QStringLiteral("btnUp")) && op.isShown(QStringLiteral("btnDn")));
    QTRY_VERIFY_WITH_TIMEOUT(!op.find<QToolButton>(QStringLiteral("btnDn"))->isEnabled(), 20000);
    QVERIFY(op.find<QToolButton>(QStringLiteral("btnUp"))->isEnabled());
}

void ShellTest::emptyShopSaysWhatToDo()
{
    Shop::forgetMachines();
    Operator op;
    const auto says = [&op](const char* words) {
        return op.find<QLabel>(QStringLiteral("lblHint"))->text().contains(QLatin1String(words));
    };
    QVERIFY(says("Add machine"));
    op.click(QStringLiteral("btnAddMC"));
    QVERIFY(!says("Add machine"));
    op.answerNextMessage(QStringLiteral("Delete"));
    op.clickIn(mcIconAt(1), QStringLiteral("btnDeleteIcon"));
    QVERIFY(says("Add machine"));
}

void ShellTest::shrunkWindowComesBackWhereItWas()
{
    storeMachines(2);
    Operator op;
    const QRect whole = op.window().geometry();
    const int strip = op.find<QWidget>(QStringLiteral("menuStrip"))->width();
    op.click(QStringLiteral("btnExpand"));
    QTRY_COMPARE(op.window().width(), strip);
    QVERIFY(!op.isShown(QStringLiteral("boxChildContainer")));
    QVERIFY(mcIconAt(2)->isVisible());
    op.click(QStringLiteral("btnExpand"));
    QTRY_COMPARE(op.window().geometry(), whole);
    // Also when the operator turns back half-way, and when a choice needs the room.
    op.click(QStringLiteral("btnExpand"));
    op.click(QStringLiteral("btnExpand"));
    QTRY_COMPARE(op.window().geometry(), whole);
    op.click(QStringLiteral("btnExpand"));
    QTRY_COMPARE(op.window().width(), strip);
    op.choose(1, QStringLiteral("btnSetup"));
    QTRY_COMPARE(op.window().geometry(), whole);
    QVERIFY(op.isShown(QStringLiteral("btnSetupFailed")));
}

void ShellTest::failedPortSaysWhy_data()
{
    QTest::addColumn<QString>("port");
    QTest::addColumn<qint64>("baud");
    QTest::addColumn<bool>("held");
    QTest::addColumn<QString>("cause");
    QTest::newRow("unplugged") << "/dev/ttyNOT0" << qint64{9600} << false << "plugged in";
    QTest::newRow("a file") << "/etc/hostname" << qint64{9600} << false << "not a serial port";
    QTest::newRow("held by another program") << "" << qint64{9600} << true << "in use by another program";
    QTest::newRow("no such speed") << "" << qint64{12345} << false << "speed";
}

void ShellTest::failedPortSaysWhy()
{
    QFETCH(QString, port);
    QFETCH(qint64, baud);
    QFETCH(bool, held);
    QFETCH(QString, cause);
    PtyPair line;
    if (port.isEmpty()) port = line.devicePath();
    const int other = held ? ::open(port.toLocal8Bit().constData(), O_RDWR | O_NOCTTY) : -1;
    if (held) QCOMPARE(::flock(other, LOCK_EX), 0);
    Shop::storeMachines({Shop::machineOn(port.toStdString()).get()});
    Operator op;
    g::mcIcons[1]->MCBAUD = baud;
    op.choose(1, QStringLiteral("btnRX"));
    const QString said = op.find<QLabel>(QStringLiteral("lblLikelyCause"))->text();
    QVERIFY2(said.contains(cause), qPrintable(said));
    if (held) ::close(other);
}

void ShellTest::failedPortIsLeftByKeyboard()
{
    storeMachines(1);
    Operator op;
    op.choose(1, QStringLiteral("btnRX"));
    QTest::keyClick(op.find<QPushButton>(QStringLiteral("btnSetupFailed")), Qt::Key_Escape);
    QVERIFY(!op.isShown(QStringLiteral("txtStartupError")));
    op.choose(1, QStringLiteral("btnRX"));
    QTest::keyClick(op.find<QPushButton>(QStringLiteral("btnSetupFailed")), Qt::Key_Return);
    QVERIFY(op.isShown(QStringLiteral("btnSave")));
}

QTEST_MAIN(ShellTest)
#include "e2e_shell.moc"
