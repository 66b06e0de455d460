// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/MessageBoxes.h"
#include "transfer/TransferRig.h"

namespace
{
const QByteArray program("G0\nG1\nG2\nG3\n");
const QByteArray onTheLine("%G0\r\nG1\r\nG2\r\nG3\r\n");
} // namespace

/// The adapter is pulled out: the operator is told calmly, and no part of the program is lost with the port.
class PortLostTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void lostPortIsReportedInEveryState_data()
    {
        QTest::addColumn<bool>("sends");
        QTest::addColumn<int>("flow");
        QTest::newRow("receiving") << false << 1;
        QTest::newRow("receiving by XModem") << false << 3;
        QTest::newRow("sending") << true << 1;
        QTest::newRow("sending by XModem") << true << 3;
    }

    void lostPortIsReportedInEveryState()
    {
        QFETCH(bool, sends);
        QFETCH(int, flow);
        TransferRig rig;
        rig.machine->MCFLOW = flow;
        rig.start(sends);
        MessageBoxes boxes("OK");
        rig.open(program);
        rig.holdLineAfter(0);
        sends ? rig.click("btnSend") : rig.view->startXModemTimer(0.01);
        rig.pty.hangUp();
        QTRY_COMPARE(rig.machine->activity, TransferActivity::PortLost);
        QVERIFY(!rig.view->dncRunning() && !rig.isShown("boxWaitForCNC"));
        QVERIFY(!rig.view->tmrXModemTimer.isActive());
        QVERIFY(!rig.port.isOpen()); // the system can give the name to the adapter again
        QCOMPARE(boxes.texts, QStringList());
        if (!sends) return;
        rig.click("btnSend"); // the adapter is not back
        QVERIFY(boxes.texts.size() == 1 && !rig.view->dncRunning());
    }

    // Writes to a lost device count as complete: the program would race to its end and be shown as sent. What a stop
    // cut off is kept by the port and gone with it; no part of the program may be.
    void lostPortLosesNoPartOfTheProgram_data()
    {
        QTest::addColumn<bool>("stops");
        QTest::addColumn<bool>("waits");
        QTest::addColumn<int>("writesOut");
        QTest::addColumn<QByteArray>("rest");
        for (const bool stops : {false, true}) {
            const auto row = [stops](const char* where, bool waits, int writesOut, const QByteArray& rest) {
                QTest::addRow("%s%s", where, stops ? ", stopped" : "") << stops << waits << writesOut << rest;
            };
            row("in the wait", true, 0, onTheLine);
            row("in the header", false, 0, onTheLine);
            row("in a line", false, 3, "G2\r\nG3\r\n"); // the whole line
            row("in the trailer", false, 5, "G3\r\n\x04");
        }
    }

    void lostPortLosesNoPartOfTheProgram()
    {
        QFETCH(bool, stops);
        QFETCH(bool, waits);
        QFETCH(int, writesOut);
        QFETCH(QByteArray, rest);
        const QTemporaryDir folder;
        TransferRig rig;
        rig.machine->MCPORT = folder.filePath("adapter");
        rig.machine->MCTXSOT = "37";
        if (writesOut == 5) rig.machine->MCTXEOT = "4";
        rig.machine->MCWAIT = waits;
        rig.startWith(program);
        rig.sendUntilHeld(writesOut);
        if (stops) rig.click("btnStop");
        rig.pty.hangUp();
        QTRY_COMPARE(rig.headline(), QString("Port lost"));
        QCOMPARE(rig.details().contains("Stopped at line "), writesOut > 0);

        PtyPair again; // under the record's name, as udev gives an adapter a lasting one
        QVERIFY(QFile::link(again.devicePath(), rig.machine->MCPORT));
        rig.click("btnSend");
        if (waits) rig.click("btnSendNow");
        QCOMPARE(again.readAtLeast(rest.size()), rest);
        QTRY_COMPARE(rig.machine->activity, TransferActivity::Sent);
        again.hangUp(); // noticed again
        QTRY_COMPARE(rig.headline(), QString("Port lost"));
    }

    void lostPortForgetsThePlaceWhateverTheFlow()
    {
        const QTemporaryDir folder;
        TransferRig rig;
        rig.machine->MCPORT = folder.filePath("adapter");
        rig.startWith(program);
        rig.sendUntilHeld(3); // G2 is cut off
        rig.click("btnStop");
        rig.machine->MCFLOW = 3;
        rig.view->machineChanged();
        rig.pty.hangUp();
        QTRY_COMPARE(rig.headline(), QString("Port lost"));
        rig.machine->MCFLOW = 0;
        rig.view->machineChanged();
        QVERIFY(rig.isShown("cbo1"));
        PtyPair again;
        QVERIFY(QFile::link(again.devicePath(), rig.machine->MCPORT));
        rig.click("btnSend");
        QCOMPARE(again.readAtLeast(8), QByteArray("G2\r\nG3\r\n"));
    }

    void portThatComesBackBroken()
    {
        const QTemporaryDir folder;
        TransferRig rig;
        rig.machine->MCPORT = folder.filePath("adapter");
        rig.machine->MCWAIT = true;
        rig.startWith(program);
        rig.pty.hangUp();
        QTRY_COMPARE(rig.headline(), QString("Port lost"));
        QVERIFY(QFile::link("/dev/null", rig.machine->MCPORT));
        MessageBoxes boxes("OK");
        rig.click("btnSend");
        QVERIFY(!rig.view->dncRunning() && boxes.texts.size() == 1);
        QCOMPARE(rig.headline(), QString("Port lost"));
    }
};

QTEST_MAIN(PortLostTest)
#include "transfer_port_lost.moc"
