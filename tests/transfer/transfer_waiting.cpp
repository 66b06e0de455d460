// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/MessageBoxes.h"
#include "transfer/TransferRig.h"

namespace
{
const QByteArray program("G0\nG1\nG2\n");
const QByteArray onTheLine("G0\r\nG1\r\nG2\r\n");
const QByteArray startSignal("\x11"); // DC1
} // namespace

class WaitingTest : public QObject
{
    Q_OBJECT

    // A machine that waits for the control's start signal, Send pressed.
    static void startWaiting(TransferRig& rig, int flow)
    {
        rig.machine->MCWAIT = true;
        rig.machine->MCFLOW = flow;
        rig.start();
        rig.open(program);
        rig.click("btnSend");
    }

private Q_SLOTS:
    void nothingGoesOutBeforeTheStartSignal_data();
    void nothingGoesOutBeforeTheStartSignal();
    void hardwareFlowControlDoesNotWait();
    void twoStartSignalsInOneChunkDoNotDoubleTheProgram();
    void laterStartSignalsChangeNothing();
    void sendNowAndHideBox();
    void stopInTheWaitEndsTheWait();
    void stopInTheWaitDoesNotLoseTheHeader();
    void clicksDuringTheWaitDoNotChooseTheLine();
    void everyRepeatWaitsAgain();
    void continuedSendEndsTheWaitAndTurnsFlowControlOn();
    void pulledAdapterIsReportedOnce();
};

void WaitingTest::nothingGoesOutBeforeTheStartSignal_data()
{
    QTest::addColumn<int>("flow");
    QTest::newRow("no flow control") << 0;
    QTest::newRow("XON/XOFF") << 1;
}

void WaitingTest::nothingGoesOutBeforeTheStartSignal()
{
    QFETCH(int, flow);
    TransferRig rig;
    startWaiting(rig, flow);
    QVERIFY(rig.isShown("boxWaitForCNC") && rig.isShown("btnSendNow") && rig.isShown("btnStop"));
    QVERIFY(rig.text("lblWaitForMC").startsWith("Waiting for CNC Start Button"));
    QCOMPARE(rig.machine->activity, TransferActivity::Waiting);
    QVERIFY(!(rig.pty.line().c_iflag & IXON)); // the driver would swallow the start signal
    QCOMPARE(rig.readAll(), QByteArray());

    rig.holdLineAfter(rig.completions + 1);
    rig.pty.write("G11 is no start" + startSignal);
    QTRY_VERIFY(rig.isHeld());
    QVERIFY(!rig.isShown("boxWaitForCNC"));
    QCOMPARE(rig.machine->activity, TransferActivity::Sending);
    QCOMPARE(bool(rig.pty.line().c_iflag & IXON), flow == 1);
    rig.releaseLine();
    QCOMPARE(rig.readUntilIdle(), onTheLine);
}

void WaitingTest::hardwareFlowControlDoesNotWait()
{
    TransferRig rig;
    startWaiting(rig, 2);
    QVERIFY(!rig.isShown("boxWaitForCNC"));
    QCOMPARE(rig.readUntilIdle(), onTheLine);
}

void WaitingTest::twoStartSignalsInOneChunkDoNotDoubleTheProgram()
{
    TransferRig rig;
    startWaiting(rig, 0);
    rig.pty.write(startSignal + startSignal);
    QTRY_VERIFY(!rig.view->booWaitingForStartSignal);
    QCOMPARE(rig.readUntilIdle(), onTheLine);
}

void WaitingTest::laterStartSignalsChangeNothing()
{
    TransferRig rig;
    startWaiting(rig, 0);
    rig.holdLineAfter(2);
    rig.deliver(startSignal);
    QTRY_VERIFY(rig.isHeld());
    rig.deliver(startSignal + startSignal);
    rig.releaseLine();
    QCOMPARE(rig.readUntilIdle(), onTheLine);
    rig.deliver(startSignal);
    QVERIFY(!rig.view->dncRunning());
    QCOMPARE(rig.readAll(), QByteArray());
}

void WaitingTest::sendNowAndHideBox()
{
    TransferRig rig;
    startWaiting(rig, 1);
    rig.click("btnSendNow");
    QVERIFY(!rig.isShown("boxWaitForCNC"));
    QCOMPARE(rig.readUntilIdle(), onTheLine);

    rig.click("btnSend");
    rig.click("btnHideWaitBox");
    QVERIFY(!rig.isShown("boxWaitForCNC") && rig.view->booWaitingForStartSignal);
    rig.deliver(startSignal);
    QCOMPARE(rig.readUntilIdle(), onTheLine);
}

void WaitingTest::stopInTheWaitEndsTheWait()
{
    TransferRig rig;
    startWaiting(rig, 1);
    rig.click("btnStop");
    QVERIFY(!rig.isShown("boxWaitForCNC") && rig.isShown("btnSend"));
    rig.deliver(startSignal);
    QVERIFY(!rig.view->dncRunning());
    QCOMPARE(rig.readAll(), QByteArray());
}

void WaitingTest::stopInTheWaitDoesNotLoseTheHeader()
{
    TransferRig rig;
    rig.machine->MCTXSOT = "37,13,10";
    startWaiting(rig, 1);
    for (int stop = 0; stop < 2; ++stop) {
        rig.click("btnStop");
        rig.click("btnSend"); // waits again
        QVERIFY(rig.isShown("boxWaitForCNC"));
    }
    rig.pty.write(startSignal);
    QTRY_VERIFY(!rig.isShown("boxWaitForCNC"));
    QCOMPARE(rig.readUntilIdle(), "%\r\n" + onTheLine);
}

void WaitingTest::clicksDuringTheWaitDoNotChooseTheLine()
{
    TransferRig rig;
    startWaiting(rig, 0);
    QTest::keyClick(rig.editor, Qt::Key_End, Qt::ControlModifier);
    rig.deliver(startSignal);
    QCOMPARE(rig.readUntilIdle(), onTheLine);

    // A line that a stop cut off and the place behind it outlast a wait that is given up.
    rig.holdLineAfter(rig.completions + 2);
    rig.click("btnSend");
    rig.deliver(startSignal);
    QTRY_VERIFY(rig.isHeld());
    rig.click("btnStop");
    rig.releaseLine();
    rig.click("btnSend");
    QTest::keyClick(rig.editor, Qt::Key_End, Qt::ControlModifier);
    rig.click("btnStop");
    rig.click("btnSend");
    rig.deliver(startSignal);
    QCOMPARE(rig.readUntilIdle(), onTheLine);
}

void WaitingTest::everyRepeatWaitsAgain()
{
    TransferRig rig;
    rig.machine->MCREPEAT = true;
    startWaiting(rig, 0);
    for (int transfer = 0; transfer < 2; ++transfer) {
        rig.deliver(startSignal);
        QCOMPARE(rig.pty.readAtLeast(onTheLine.size()), onTheLine);
        QTRY_VERIFY(rig.view->booWaitingForStartSignal);
        QCOMPARE(rig.readAll(), QByteArray());
    }
}

void WaitingTest::continuedSendEndsTheWaitAndTurnsFlowControlOn()
{
    TransferRig rig;
    startWaiting(rig, 1);
    rig.click("btnStop");
    rig.editor->moveCaretTo(3); // the second line
    rig.chooseStart(1);
    rig.click("btnSend");
    QVERIFY(rig.view->booWaitingForStartSignal);
    rig.deliver(startSignal + startSignal);
    QVERIFY(!rig.view->booWaitingForStartSignal);
    QVERIFY(rig.pty.line().c_iflag & IXON);
    QCOMPARE(rig.readUntilIdle(), QByteArray("G1\r\nG2\r\n"));
}

void WaitingTest::pulledAdapterIsReportedOnce()
{
    TransferRig rig;
    startWaiting(rig, 1);
    rig.pty.hangUp();
    MessageBoxes boxes("OK");
    rig.deliver(startSignal + startSignal);
    QCOMPARE(boxes.texts.size(), 1);
    QVERIFY(boxes.texts[0].contains("Mill"));
    QCOMPARE(rig.machine->activity, TransferActivity::PortLost);
    QVERIFY(rig.isShown("btnSend") && !rig.isShown("boxWaitForCNC"));
}

QTEST_MAIN(WaitingTest)
#include "transfer_waiting.moc"
