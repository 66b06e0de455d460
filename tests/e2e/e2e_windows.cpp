// SPDX-License-Identifier: GPL-3.0-or-later
#include "e2e/Operator.h"
#include "e2e/Shop.h"
#include "support/PtyPair.h"

#include "shell/frmChild.h"
#include "shell/viewMC.h"

#include <QLabel>
#include <QPointer>
#include <QTimer>

class WindowsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void portThatCannotBeOpenedCanBeSetUp();
    void undockedViewSendsAndCloses();
    void twoMachinesSendAtOnce();
    void deletingAMachineLeavesTheOthersTransferAlone();
    void runningTransferIsNotLostToASlip();
    void menuOutlivesTheQuestionThatItsChoiceRaises();
    void choosingAgainReopensTheSameDevice();
    void fileDialogGoesWithItsView_data();
    void fileDialogGoesWithItsView();

private:
    static frmChild* undockedWindow();

    QTemporaryDir dir_;
};

frmChild* WindowsTest::undockedWindow()
{
    for (auto* window : QApplication::topLevelWidgets())
        if (auto* found = qobject_cast<frmChild*>(window); found && found->isVisible()) return found;
    return nullptr;
}

void WindowsTest::portThatCannotBeOpenedCanBeSetUp()
{
    cncsim::Settings settings;
    settings.silenceMs = 300;
    cncsim::SimulatedControl control(settings);
    Shop::storeMachines({std::make_shared<MachineRecord>().get()}); // port "1", as in a fresh installation
    Operator op;
    op.choose(1, QStringLiteral("btnTX"));
    QCOMPARE(op.find<QLabel>(QStringLiteral("txtStartupError"))->text(),
             QStringLiteral("The DNC process is configured to use port 1 but the port could not be opened"));
    QVERIFY(!op.isShown(QStringLiteral("boxControls")));
    op.click(QStringLiteral("btnCancel"));
    QVERIFY(op.isShown(QStringLiteral("imgBogLogo")));

    op.setUp(1, QString::fromStdString(control.devicePath()), QStringLiteral("Auto"), 1, 0);
    op.openSend(1, Shop::writeFile(dir_, QStringLiteral("now.nc"), Shop::program(3)));
    op.click(QStringLiteral("btnSend"));
    QTRY_VERIFY(control.report().isComplete);
}

void WindowsTest::undockedViewSendsAndCloses()
{
    cncsim::Settings settings;
    settings.silenceMs = 300;
    cncsim::SimulatedControl control(settings);
    Shop::storeMachines({Shop::machineOn(control.devicePath()).get()});
    Operator op;
    op.openSend(1, Shop::writeFile(dir_, QStringLiteral("undocked.nc"), Shop::program(20)));
    op.click(QStringLiteral("btnUnDock"));
    QTRY_VERIFY(undockedWindow());
    QCOMPARE(undockedWindow()->windowTitle(), QStringLiteral("CNC1"));
    QVERIFY(op.isShown(QStringLiteral("imgBogLogo")));
    op.clickIn(undockedWindow(), QStringLiteral("btnSend"));
    QTRY_VERIFY(control.report().isComplete);
    QCOMPARE(Shop::bytesOf(control.report().program), Shop::program(20).replace("\n", "\r\n"));
    undockedWindow()->close();
    QTRY_VERIFY(!undockedWindow());
    // Its port is free again.
    op.openSend(1, {});
    QVERIFY(op.isShown(QStringLiteral("btnSend")));
}

void WindowsTest::twoMachinesSendAtOnce()
{
    cncsim::Settings settings;
    settings.framing.type = cncsim::ControlType::Fanuc;
    settings.xonXoff = true;
    settings.readRate = 20000;
    cncsim::SimulatedControl one(settings);
    cncsim::SimulatedControl two(settings);
    const auto first = Shop::machineOn(one.devicePath(), QStringLiteral("Fanuc"));
    const auto second = Shop::machineOn(two.devicePath(), QStringLiteral("Fanuc"));
    Shop::storeMachines({first.get(), second.get()});
    Operator op;
    op.openSend(1, Shop::writeFile(dir_, QStringLiteral("one.nc"), Shop::program(900)));
    op.click(QStringLiteral("btnSend"));
    op.openSend(2, Shop::writeFile(dir_, QStringLiteral("two.nc"), "(TWO)\n" + Shop::program(800)));
    op.click(QStringLiteral("btnSend"));
    QTRY_VERIFY_WITH_TIMEOUT(one.report().isComplete && two.report().isComplete, 20000);
    QCOMPARE(Shop::bytesOf(one.report().program), Shop::program(900).replace("\n", "\r\n"));
    QCOMPARE(Shop::bytesOf(two.report().program), "(TWO)\r\n" + Shop::program(800).replace("\n", "\r\n"));
}

void WindowsTest::deletingAMachineLeavesTheOthersTransferAlone()
{
    cncsim::Settings settings;
    settings.framing.type = cncsim::ControlType::Fanuc;
    settings.xonXoff = true;
    settings.readRate = 20000;
    cncsim::SimulatedControl one({});
    cncsim::SimulatedControl two(settings);
    const auto first = Shop::machineOn(one.devicePath());
    const auto second = Shop::machineOn(two.devicePath(), QStringLiteral("Fanuc"));
    second->MCNAME = QStringLiteral("CNC2");
    Shop::storeMachines({first.get(), second.get()});
    Operator op;
    op.openSend(2, Shop::writeFile(dir_, QStringLiteral("two.nc"), Shop::program(1500)));
    op.click(QStringLiteral("btnSend"));
    op.click(QStringLiteral("btnUnDock"));
    op.answerNextMessage(QStringLiteral("Delete"));
    op.clickIn(mcIconAt(1), QStringLiteral("btnDeleteIcon"));
    QCOMPARE(g::mcIcons.size(), 2);
    QCOMPARE(mcIconAt(1)->MCNAME, QStringLiteral("CNC2"));
    QCOMPARE(undockedWindow()->iIndex, 1);
    QTRY_VERIFY_WITH_TIMEOUT(two.report().isComplete, 20000);
    QCOMPARE(Shop::bytesOf(two.report().program), Shop::program(1500).replace("\n", "\r\n"));
    QVERIFY(one.report().received.empty());
    QTRY_VERIFY(op.isShown(QStringLiteral("btnSend")));
    undockedWindow()->close();
    QTRY_VERIFY(!undockedWindow());
}

void WindowsTest::runningTransferIsNotLostToASlip()
{
    PtyPair line; // nobody reads: the transfer stays under way
    Shop::storeMachines({Shop::machineOn(line.devicePath().toStdString()).get()});
    Operator op;
    op.openSend(1, Shop::writeFile(dir_, QStringLiteral("slip.nc"), Shop::program(20000)));
    op.click(QStringLiteral("btnSend"));
    const QString question = QStringLiteral("CNC1 is transferring a program\n\nStop the transfer?");

    op.answerNextMessage(QStringLiteral("Cancel"));
    op.click(QStringLiteral("btnClose"));
    QCOMPARE(op.lastMessage, question);
    QVERIFY(op.isShown(QStringLiteral("btnStop")));

    op.answerNextMessage(QStringLiteral("Cancel"));
    op.choose(1, QStringLiteral("btnSetup"));
    QCOMPARE(op.lastMessage, question);
    QVERIFY(op.isShown(QStringLiteral("btnStop")));

    op.answerNextMessage(QStringLiteral("Cancel"));
    QVERIFY(!op.window().close());
    QCOMPARE(op.lastMessage, question);
    QVERIFY(op.isShown(QStringLiteral("btnStop")));

    op.answerNextMessage(QStringLiteral("Stop"));
    op.click(QStringLiteral("btnClose"));
    QTRY_VERIFY(op.isShown(QStringLiteral("imgBogLogo")));
}

void WindowsTest::menuOutlivesTheQuestionThatItsChoiceRaises()
{
    PtyPair line; // nobody reads: the transfer stays under way
    Shop::storeMachines({Shop::machineOn(line.devicePath().toStdString()).get()});
    Operator op;
    op.openSend(1, Shop::writeFile(dir_, QStringLiteral("menu.nc"), Shop::program(20000)));
    op.click(QStringLiteral("btnSend"));
    op.clickIn(mcIconAt(1), QStringLiteral("btnMC"));
    QTRY_VERIFY(op.isShown(QStringLiteral("btnSetup")));
    const QPointer<QWidget> menu = op.find<QWidget>(QStringLiteral("btnSetup"))->window();
    bool isAlive = false;
    auto* question = new QTimer(&op.window());
    connect(question, &QTimer::timeout, question, [&, wasPosted = false]() mutable {
        if (!QApplication::activeModalWidget()) return;
        if (!wasPosted) { // an undocked window comes to the front
            wasPosted = true;
            return NotificationCenter::defaultCenter().post(QStringLiteral("childGotFocus_Event"));
        }
        question->stop();
        isAlive = menu; // its choice is still being carried out
        op.answerNextMessage(QStringLiteral("Cancel"));
    });
    question->start(1);
    op.click(QStringLiteral("btnSetup"));
    QVERIFY(isAlive);
    QVERIFY(op.isShown(QStringLiteral("btnStop")));
    QTRY_VERIFY(!menu);
    op.answerNextMessage(QStringLiteral("Stop"));
    op.click(QStringLiteral("btnClose"));
}

void WindowsTest::choosingAgainReopensTheSameDevice()
{
    PtyPair line;
    Shop::storeMachines({Shop::machineOn(line.devicePath().toStdString()).get()});
    Operator op;
    for (int round = 0; round < 10; ++round) {
        op.openSend(1, Shop::writeFile(dir_, QStringLiteral("again.nc"), Shop::program(20000)));
        QVERIFY(op.isShown(QStringLiteral("btnSend")));
        op.click(QStringLiteral("btnSend"));
        line.readAtLeast(1000);
        op.answerNextMessage(QStringLiteral("Stop"));
        op.choose(1, QStringLiteral("btnRX"));
        QVERIFY(op.isShown(QStringLiteral("lblStatus")) || op.isShown(QStringLiteral("rt1")));
        op.click(QStringLiteral("btnClose"));
    }
}

void WindowsTest::fileDialogGoesWithItsView_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<bool>("deletes");
    for (const char* button : {"btnFolder", "btnSave"}) {
        QTest::addRow("%s, chosen again", button) << QString::fromLatin1(button) << false;
        QTest::addRow("%s, machine deleted", button) << QString::fromLatin1(button) << true;
    }
}

// The dialog blocks the undocked window alone: the main window can end the view under it.
void WindowsTest::fileDialogGoesWithItsView()
{
    QFETCH(QString, button);
    QFETCH(bool, deletes);
    PtyPair line;
    Shop::storeMachines({Shop::machineOn(line.devicePath().toStdString()).get()});
    Operator op;
    op.openSend(1, {});
    op.click(QStringLiteral("btnUnDock"));
    QTRY_VERIFY(undockedWindow());
    op.clickIn(undockedWindow(), button);
    const QPointer<QWidget> dialog = QApplication::activeModalWidget();
    QVERIFY(dialog);
    if (deletes) {
        op.answerNextMessage(QStringLiteral("Delete"));
        op.clickIn(mcIconAt(1), QStringLiteral("btnDeleteIcon"));
        QCOMPARE(g::mcIcons.size(), 1);
    } else {
        op.choose(1, QStringLiteral("btnRX"));
        QVERIFY(op.isShown(QStringLiteral("btnClose")));
    }
    QTRY_VERIFY(!dialog);
    QTRY_VERIFY(!undockedWindow());
    QVERIFY(!QApplication::activeModalWidget());
}

QTEST_MAIN(WindowsTest)
#include "e2e_windows.moc"
