// SPDX-License-Identifier: GPL-3.0-or-later
#include "e2e/Operator.h"
#include "e2e/Shop.h"
#include "support/PtyPair.h"

#include "shell/frmChild.h"
#include "shell/MachineButton.h"
#include "shell/viewChild.h"
#include "shell/viewMC.h"

#include <QFileDialog>
#include <QPointer>
#include <QTimer>

/// Keys, windows, machines that come and go, and the program's end.
class WindowsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void sendsStopsAndContinuesWithKeysAlone();
    void deletingAMachineLeavesTheOthersTransferAlone();
    void fileDialogGoesWithItsView_data();
    void fileDialogGoesWithItsView();
    void closingTheMainWindowEndsTheProgram_data();
    void closingTheMainWindowEndsTheProgram();

private:
    static frmChild* undocked();
};

frmChild* WindowsTest::undocked()
{
    for (auto* window : QApplication::topLevelWidgets())
        if (auto* found = qobject_cast<frmChild*>(window); found && found->isVisible()) return found;
    return nullptr;
}

void WindowsTest::sendsStopsAndContinuesWithKeysAlone()
{
    PtyPair first, second;
    const auto machine = Shop::machineOn(second.devicePath());
    machine->MCWAIT = true;
    Shop::store({Shop::machineOn(first.devicePath()), machine});
    Operator op;
    const auto focused = [&op](int index) { return op.window().focusWidget() == mcIconAt(index)->button(); };
    for (int tabs = 0; tabs < 20 && !focused(1); ++tabs)
        op.press(Qt::Key_Tab);
    for (const int key : {Qt::Key_Down, Qt::Key_Down, Qt::Key_Up, Qt::Key_End}) // two machines, no further
        op.press(key);
    QVERIFY(focused(2));
    op.answerNextMessage("Cancel");
    op.press(Qt::Key_Delete);
    op.toFront();
    QVERIFY(op.lastMessage.startsWith("Delete") && g::mcIcons.size() == 3);
    op.press(Qt::Key_Return);
    QTRY_VERIFY(QApplication::activePopupWidget());
    op.press(Qt::Key_S);
    QTRY_VERIFY(qobject_cast<QFileDialog*>(QApplication::activeWindow()));
    const QByteArray program = Shop::program(3000), expected = Shop::onWire(program);
    QTest::keyClicks(QApplication::activeWindow()->focusWidget(), op.write("part.nc", program));
    op.press(Qt::Key_Return);
    QTRY_VERIFY(!QApplication::activeModalWidget() && !QApplication::activePopupWidget()); // names on offer, too
    op.toFront();

    op.press(Qt::Key_S, Qt::AltModifier);
    QTRY_VERIFY(op.isShown("btnSendNow"));
    QCOMPARE(second.read(), QByteArray());
    op.press(Qt::Key_N, Qt::AltModifier);
    QByteArray received = second.readAtLeast(3000);
    op.press(Qt::Key_T, Qt::AltModifier);
    QTRY_VERIFY(op.isShown("btnSend"));
    QVERIFY(received.size() < expected.size());
    g::mcIcons[2]->MCWAIT = false;
    op.press(Qt::Key_S, Qt::AltModifier);
    received += second.readAtLeast(expected.size() - received.size(), 30000);
    QCOMPARE(received, expected);
    QCOMPARE(first.read(), QByteArray());
    QTRY_VERIFY(op.isShown("btnSend"));
    op.press(Qt::Key_W, Qt::ControlModifier);
    QTRY_VERIFY(!op.isShown("rt1"));
}

void WindowsTest::deletingAMachineLeavesTheOthersTransferAlone()
{
    PtyPair first, second;
    Preferences::setString("Varnock", "[END]\n"); // a shop without machines
    Operator op;
    op.click("btnAddMC");
    op.click("btnAddMC");
    op.setUp(1, first.devicePath());
    op.setUp(2, second.devicePath());
    const QByteArray program = Shop::program(1500), expected = Shop::onWire(program);
    op.send(2, program);
    op.click("btnUnDock");
    op.answerNextMessage("Delete");
    op.click("btnDeleteIcon", mcIconAt(1));
    QCOMPARE(g::mcIcons.size(), 2);
    QCOMPARE(mcIconAt(1)->MCNAME, "CNC2");
    QCOMPARE(undocked()->iIndex, 1);
    QCOMPARE(second.readAtLeast(expected.size(), 30000), expected);
    QCOMPARE(first.read(), QByteArray());
    QTRY_VERIFY(op.isShown("btnSend"));
    undocked()->close();
    QTRY_VERIFY(!undocked());
    op.restart();
    QCOMPARE(g::mcIcons.size(), 2);
    op.send(1, "M30"); // its port is free again
    QCOMPARE(second.readAtLeast(3), "M30");
}

void WindowsTest::fileDialogGoesWithItsView_data()
{
    QTest::addColumn<bool>("deletes");
    QTest::newRow("chosen again") << false;
    QTest::newRow("machine deleted") << true;
}

// The dialog blocks the undocked window alone: the main window can end the view under it.
void WindowsTest::fileDialogGoesWithItsView()
{
    QFETCH(bool, deletes);
    PtyPair line;
    Shop::store({Shop::machineOn(line.devicePath())});
    Operator op;
    op.open(1, {});
    op.click("btnUnDock");
    QTRY_VERIFY(undocked());
    op.click("btnFolder", undocked());
    const QPointer<QWidget> dialog = QApplication::activeModalWidget();
    QVERIFY(dialog);
    if (deletes) {
        op.answerNextMessage("Delete");
        op.click("btnDeleteIcon", mcIconAt(1));
    } else {
        op.choose(1, "btnRX");
    }
    QTRY_VERIFY(!dialog && !undocked() && !QApplication::activeModalWidget());
}

void WindowsTest::closingTheMainWindowEndsTheProgram_data()
{
    QTest::addColumn<bool>("asks");
    for (const char* state : {"nothing", "failed", "setup", "ready", "dialog", "receive", "receive xmodem", "lost"})
        QTest::newRow(state) << false;
    for (const char* state : {"wait", "send", "undocked", "xmodem"})
        QTest::newRow(state) << true;
}

void WindowsTest::closingTheMainWindowEndsTheProgram()
{
    QFETCH(bool, asks);
    const QString state = QTest::currentDataTag();
    PtyPair line; // nobody reads: what is under way stays so
    const auto machine = Shop::machineOn(state == "failed" ? "1" : line.devicePath());
    machine->MCNAME = "Lathe";
    machine->MCWAIT = state == "wait";
    if (state.contains("xmodem")) machine->MCFLOW = 3;
    Shop::store({machine, std::make_shared<MachineRecord>()});
    Operator op;
    g::saveAllMcSettings();
    const auto before = Preferences::string("Varnock");
    if (state == "setup") op.choose(1, "btnSetup");
    if (state.startsWith("receive")) op.choose(1, "btnRX");
    if (state == "failed" || state == "dialog") op.choose(1, "btnTX");
    if (asks || state == "ready" || state == "lost") op.open(1, Shop::program(3000));
    if (asks || state == "lost") op.click("btnSend");
    if (state == "undocked") op.click("btnUnDock");
    if (state == "lost") line.hangUp();
    if (state == "lost") QTRY_VERIFY(op.isShown("btnSend"));
    if (asks) {
        op.answerNextMessage("Cancel");
        QVERIFY(!op.window().close());
        QVERIFY(op.lastMessage.startsWith("Lathe is transferring a program") && op.isShown("btnStop"));
        op.answerNextMessage("Stop");
    }
    QTimer::singleShot(20000, &op.app(), [] { QCoreApplication::exit(7); });
    QTimer::singleShot(1, &op.window(), &QWidget::close);
    QCOMPARE(QApplication::exec(), 0);
    QVERIFY(op.lastMessage.isEmpty() != asks && !op.window().isVisible() && !undocked());
    QCOMPARE(Preferences::string("Varnock"), before);
    op.restart();
    QVERIFY(g::mcIcons.size() == 3 && g::mcIcons[1]->MCNAME == "Lathe");
    if (state == "lost" || state == "failed") return;
    op.choose(1, "btnSetup"); // the port is free again
    QTRY_VERIFY(op.isShown("cboPorts"));
}

QTEST_MAIN(WindowsTest)
#include "e2e_windows.moc"
