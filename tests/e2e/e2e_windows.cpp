// SPDX-License-Identifier: GPL-3.0-or-later
#include "e2e/Operator.h"
#include "e2e/Shop.h"
#include "support/PtyPair.h"

#include "shell/frmChild.h"
#include "shell/MachineButton.h"

#include <QPointer>

#include <sys/file.h>

/// Keys, windows, adding and deleting machines, and the end of the program.
class WindowsTest : public QObject
{
    Q_OBJECT
    static frmChild* undocked()
    {
        for (auto* window : QApplication::topLevelWidgets())
            if (auto* found = qobject_cast<frmChild*>(window); found && found->isVisible()) return found;
        return nullptr;
    }

    const QByteArray program_ = Shop::program(1500); // more than a line holds that nobody reads
    const QByteArray onWire_ = Shop::onWire(program_);

private Q_SLOTS:
    void sendsStopsAndContinuesWithKeysAlone()
    {
        PtyPair first, second;
        const auto machine = Shop::machineOn(second.devicePath());
        machine->MCWAIT = true;
        Shop::store({Shop::machineOn(first.devicePath()), machine});
        Operator op;
        const auto focused = [&op](int index) { return op.window().focusWidget() == mcIconAt(index)->button(); };
        for (int tabs = 0; tabs < 20 && !focused(1); ++tabs)
            op.press(Qt::Key_Tab);
        for (const auto key :
             {Qt::Key_Down, Qt::Key_Down, Qt::Key_Up, Qt::Key_End}) // the list ends with the second machine
            op.press(key);
        QVERIFY(focused(2));
        op.answerNextMessage("Cancel");
        op.press(Qt::Key_Delete);
        QVERIFY(op.lastMessage.startsWith("Delete") && g::mcIcons.size() == 3);
        op.toFront();
        op.press(Qt::Key_Return);
        QTRY_VERIFY(QApplication::activePopupWidget());
        op.press(Qt::Key_S);
        QTRY_VERIFY(qobject_cast<QFileDialog*>(QApplication::activeWindow()));
        QTest::keyClicks(QApplication::activeWindow()->focusWidget(), op.write(program_));
        op.press(Qt::Key_Return);
        QTRY_VERIFY(!QApplication::activeModalWidget() &&
                    !QApplication::activePopupWidget()); // the list of completions has closed, too
        op.toFront();

        op.press(Qt::Key_S, Qt::AltModifier);
        QTRY_VERIFY(op.isShown("btnSendNow"));
        QCOMPARE(second.read(), QByteArray());
        op.press(Qt::Key_N, Qt::AltModifier);
        QByteArray received = second.readAtLeast(3000);
        op.press(Qt::Key_T, Qt::AltModifier);
        QTRY_VERIFY(op.isShown("btnSend"));
        QVERIFY(received.size() < onWire_.size());
        g::mcIcons[2]->MCWAIT = false;
        op.press(Qt::Key_S, Qt::AltModifier);
        received += second.readAtLeast(onWire_.size() - received.size(), 30000);
        QCOMPARE(received, onWire_);
        QCOMPARE(first.read(), QByteArray());
        QTRY_VERIFY(op.isShown("btnSend"));
        op.press(Qt::Key_W, Qt::ControlModifier);
        QTRY_VERIFY(!op.isShown("rt1"));
        QTRY_COMPARE(::flock(second.slave(), LOCK_EX | LOCK_NB), 0); // the port is free for another program
    }

    void deletingAMachineLeavesOtherTransfersAlone()
    {
        PtyPair first, second;
        Preferences::setString("Varnock", ""); // a shop without machines
        Operator op;
        op.click("btnAddMC");
        op.click("btnAddMC");
        op.setUp(1, first.devicePath());
        op.setUp(2, second.devicePath());
        op.send(2, program_);
        op.click("btnUnDock");
        op.answerNextMessage("Delete");
        op.click("btnDeleteIcon", mcIconAt(1));
        QVERIFY(g::mcIcons.size() == 2 && mcIconAt(1)->MCNAME == "CNC2" && undocked()->iIndex == 1);
        op.answerNextMessage("Cancel");
        op.choose(1, "btnRX");
        QVERIFY(op.lastMessage.startsWith("CNC2 is transferring a program"));
        op.answerNextMessage("Cancel");
        undocked()->close();
        QVERIFY(undocked() && op.isShown("btnStop"));
        QCOMPARE(second.readAtLeast(onWire_.size(), 30000), onWire_);
        QTRY_VERIFY(op.isShown("btnSend"));
        undocked()->close();
        QTRY_VERIFY(!undocked());
        op.send(1, "M30"); // its port is free again
        QCOMPARE(second.readAtLeast(3), "M30");
        op.restart();
        QVERIFY(g::mcIcons.size() == 2 && g::mcIcons[1]->MCNAME == "CNC2" && first.read().isEmpty());
    }

    // The dialog blocks only the undocked window, so the main window can end the view under it.
    void fileDialogClosesWithItsView_data()
    {
        QTest::addColumn<bool>("deletes");
        QTest::newRow("another view of the machine") << false;
        QTest::newRow("the machine is deleted") << true;
    }

    void fileDialogClosesWithItsView()
    {
        QFETCH(bool, deletes);
        PtyPair line;
        Shop::store({Shop::machineOn(line.devicePath())});
        Operator op;
        op.open(1, {});
        op.click("btnUnDock");
        op.click("btnFolder", undocked());
        const QPointer<QWidget> dialog = QApplication::activeModalWidget();
        QVERIFY(dialog);
        if (deletes) op.answerNextMessage("Delete");
        deletes ? op.click("btnDeleteIcon", mcIconAt(1)) : op.choose(1, "btnRX");
        QTRY_VERIFY(!dialog && !undocked() && !QApplication::activeModalWidget());
    }

    void closingTheMainWindowEndsTheProgram_data()
    {
        QTest::addColumn<bool>("asks");
        for (const char* state : {"nothing", "failed", "setup", "ready", "dialog", "receive", "receive xmodem", "lost"})
            QTest::newRow(state) << false;
        for (const char* state : {"wait", "send", "undocked", "xmodem"})
            QTest::newRow(state) << true;
    }

    void closingTheMainWindowEndsTheProgram()
    {
        QFETCH(bool, asks);
        const QString state = QTest::currentDataTag();
        PtyPair line; // nobody reads it, so a transfer stays under way
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
        if (asks || state == "ready" || state == "lost") op.open(1, program_);
        if (asks || state == "lost") op.click("btnSend");
        if (state == "undocked") op.click("btnUnDock");
        if (state == "lost") line.hangUp();
        if (state == "lost") QTRY_VERIFY(op.isShown("btnSend"));
        op.answerNextMessage("Cancel");
        if (asks) QVERIFY(!op.window().close() && op.isShown("btnStop"));
        QCOMPARE(op.lastMessage.startsWith("Lathe is transferring a program"), asks);
        if (asks) op.answerNextMessage("Stop");
        QTimer::singleShot(20000, &op.window(), [] { QCoreApplication::exit(7); });
        QTimer::singleShot(1, &op.window(), &QWidget::close);
        QCOMPARE(QApplication::exec(), 0);
        QVERIFY(op.lastMessage.isEmpty() != asks && !op.window().isVisible() && !undocked());
        QCOMPARE(Preferences::string("Varnock"), before);
        op.restart();
        QVERIFY(g::mcIcons.size() == 3 && g::mcIcons[1]->MCNAME == "Lathe");
        if (state == "failed" || state == "lost") return;
        op.choose(1, "btnSetup"); // the port is free again
        QVERIFY(op.isShown("cboPorts"));
    }
};

QTEST_MAIN(WindowsTest)
#include "e2e_windows.moc"
