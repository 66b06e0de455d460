// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/TransferRig.h"

/// On a line whose driver buffers what it sends, as a UART's does and a pseudo-terminal's does not.
class UartTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    // What the driver still holds of a block belongs to a send that is continued; in front of another program's header
    // it would be machined.
    void restOfAStoppedBlock_data()
    {
        QTest::addColumn<bool>("rewinds");
        QTest::newRow("goes out when the send is continued") << false;
        QTest::newRow("does not come before the next program") << true;
    }

    void restOfAStoppedBlock()
    {
        QFETCH(bool, rewinds);
        const QByteArray program = "A" + QByteArray(400, 'a') + "\nB" + QByteArray(400, 'b') + "\nM30\n";
        TransferRig rig;
        rig.machine->MCBAUD = 9600;
        rig.machine->MCTXEOB = "LF";
        rig.startWith(program);
        rig.click("btnSend");
        QByteArray got;
        QTRY_VERIFY((got += rig.pty.read()).size() > 20);
        rig.click("btnStop");
        if (rewinds) rig.click("btnRewind");
        rig.click("btnSend");
        got += rig.readUntilIdle();
        const auto cut = got.lastIndexOf('A');
        QCOMPARE(got.mid(cut), program);
        QCOMPARE(cut > 0, rewinds);
        QVERIFY2(cut < 200, got.left(cut).constData()); // it had gone out before the stop
    }

    // A repeat that starts by itself must not cut off the one before, whose end the driver still holds.
    void repeatKeepsTheEndOfTheProgram()
    {
        TransferRig rig;
        rig.machine->MCBAUD = 9600;
        rig.machine->MCTXEOB = "LF";
        rig.machine->MCTXEOT = "4";
        rig.machine->MCREPEAT = true;
        rig.startWith("A" + QByteArray(50, 'a') + '\n');
        rig.click("btnSend");
        const QByteArray once = "A" + QByteArray(50, 'a') + "\n\4";
        QVERIFY(rig.pty.readAtLeast(3 * once.size()).startsWith(once.repeated(3)));
        rig.click("btnStop");
    }

    // The driver reports success and keeps the old speed; the control would hear noise.
    void speedThatTheChipCannotDoIsRefused()
    {
        const PtyPair pty;
        serialPort port;
        port.Speed = 230400;
        QCOMPARE(port.Open(pty.devicePath()), -1);
        QCOMPARE(port.openError, PortError::SpeedNotTaken);
        port.Speed = 115200;
        QVERIFY(port.Open(pty.devicePath()) >= 0 && port.openError == PortError::None);
    }
};

QTEST_MAIN(UartTest)
#include "transfer_uart.moc"
