// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/MessageBoxes.h"
#include "transfer/TransferClock.h"
#include "transfer/TransferRig.h"

#include <QFile>

namespace
{
const QByteArray program("O1\nG1 X1\nG2 X2\nM30\n");
const QByteArray onTheLine("O1\r\nG1 X1\r\nG2 X2\r\nM30\r\n");
} // namespace

/// What the operator reads in the view and at the icon, and what becomes of a port that is lost.
class StatusTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void heldLineIsToldApartFromARunningOne()
    {
        TransferRig rig;
        rig.machine->MCFLOW = 1;
        rig.startWith(program);
        rig.sendUntilHeld(2); // the second line does not go out
        QCOMPARE(rig.headline(), QString("Sending"));
        QTRY_COMPARE(rig.headline(), QString("Held by the control"));
        QCOMPARE(rig.machine->activity, TransferActivity::Held);
        QVERIFY2(rig.details().startsWith(QString::fromUtf8("Line 2 of 4 · 4 bytes")), qPrintable(rig.details()));
        for (int stops = 0; stops < 2; ++stops) {
            rig.click("btnStop");
            QCOMPARE(rig.headline(), QString("Stopped at line 3, Send continues there"));
            rig.click("btnSend");
        }
        rig.releaseLine();
        rig.readUntilIdle();
        QVERIFY2(rig.headline().startsWith("Sent: 4 lines, 23 bytes in 0:0"), qPrintable(rig.headline()));
    }

    void lostPortIsToldInEveryState()
    {
        for (const bool sends : {false, true})
            for (const int flow : {1, 3}) {
                TransferRig rig;
                rig.machine->MCFLOW = flow;
                rig.start(sends);
                MessageBoxes boxes("OK");
                rig.open(program);
                rig.holdLineAfter(0);
                sends ? rig.click("btnSend") : rig.view->startXModemTimer(0.01);
                rig.pty.hangUp();
                QTRY_COMPARE(rig.machine->activity, TransferActivity::PortLost);
                QCOMPARE(rig.headline(), QString("Port lost"));
                QVERIFY(!rig.view->dncRunning() && !rig.isShown("boxWaitForCNC"));
                QVERIFY(!rig.view->tmrXModemTimer.isActive());
                QVERIFY(!rig.port.isOpen()); // the system can give the name to the adapter again
                QCOMPARE(boxes.texts, QStringList());
                if (!sends) continue;
                rig.click("btnSend"); // the adapter is not back
                QVERIFY(boxes.texts.size() == 1 && !rig.view->dncRunning());
            }
    }

    // Writes to a lost device count as complete: the program would race to its end and be told as sent. The port keeps
    // what a stop cut off; with the port that is gone, and no part of the program may go with it.
    void lostPortTakesNothingOfTheProgramAway_data()
    {
        QTest::addColumn<bool>("waits");
        QTest::addColumn<int>("writesOut");
        QTest::addColumn<QByteArray>("rest");
        QTest::newRow("in the wait") << true << 0 << "%\r\n" + onTheLine;
        QTest::newRow("in the header") << false << 0 << "%\r\n" + onTheLine;
        QTest::newRow("in a line") << false << 3 << QByteArray("G2 X2\r\nM30\r\n"); // the whole line
        QTest::newRow("in the trailer") << false << 5 << QByteArray("M30\r\n\x04");
    }

    void lostPortTakesNothingOfTheProgramAway()
    {
        QFETCH(bool, waits);
        QFETCH(int, writesOut);
        QFETCH(QByteArray, rest);
        for (const bool stops : {false, true}) {
            const QTemporaryDir folder;
            TransferRig rig;
            rig.machine->MCPORT = folder.filePath("adapter");
            rig.machine->MCTXSOT = "37,13,10";
            if (writesOut == 5) rig.machine->MCTXEOT = "4";
            rig.machine->MCWAIT = waits;
            rig.startWith(program);
            rig.sendUntilHeld(writesOut);
            if (stops) rig.click("btnStop");
            rig.pty.hangUp();
            QTRY_COMPARE(rig.headline(), QString("Port lost"));
            QCOMPARE(rig.details().contains("Stopped at line "), writesOut > 0);

            PtyPair again; // by the name that the record has, as udev gives an adapter a lasting one
            QVERIFY(QFile::link(again.devicePath(), rig.machine->MCPORT));
            rig.click("btnSend");
            if (waits) rig.click("btnSendNow");
            QCOMPARE(again.readAtLeast(rest.size()), rest);
            QTRY_COMPARE(rig.machine->activity, TransferActivity::Sent);
            again.hangUp(); // noticed again
            QTRY_COMPARE(rig.headline(), QString("Port lost"));
        }
    }

    void holdIsMeasuredByBytesAndSpeed()
    {
        const auto check = [](unsigned long baud, int bytes, int notHeld, int held) {
            TransferClock clock;
            clock.begin(5, {TransferClock::msPerByte(baud, 1), 1, 0, 1000});
            QVERIFY(!clock.isHeld(100'000'000)); // nothing is being written
            clock.wrote(5, bytes);
            QVERIFY(!clock.isHeld(5 + notHeld) && clock.isHeld(5 + held));
            clock.completed(5 + held, 30);
            QVERIFY(!clock.isHeld(5 + held));
            clock.wrote(5 + held, 1); // waits until the one before has left the line
            QVERIFY(!clock.isHeld(5 + held + notHeld));
            clock.stop(6 + held);
            QVERIFY(!clock.isHeld(100'000'000)); // the operator's stop is no hold
        };
        check(115200, 30, 900, 1100);
        check(110, 100, 10'500, 13'000);
        check(9600, 1'000'000, 1'100'000, 1'400'000);
        check(0, 100, 900, 1100); // a speed that nobody knows
    }
};

QTEST_MAIN(StatusTest)
#include "transfer_status.moc"
