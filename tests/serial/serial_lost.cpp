// SPDX-License-Identifier: GPL-3.0-or-later
#include "serial/OpenPort.h"

#include <QSignalSpy>
#include <QTest>

class LostTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void unpluggedAdapterIsToldOnce_data();
    void unpluggedAdapterIsToldOnce();
    void quietLineIsNotLost();
    void lossIsToldBeforeTheWriteCountsAsComplete();
    void reopenedPortTellsAgain();
    void portMayDieWhileItTells();
};

void LostTest::unpluggedAdapterIsToldOnce_data()
{
    QTest::addColumn<int>("flow");
    QTest::newRow("no flow control") << 0;
    QTest::newRow("XON/XOFF") << 1;
    QTest::newRow("RTS/CTS") << 2;
    QTest::newRow("XModem") << 3;
}

void LostTest::unpluggedAdapterIsToldOnce()
{
    QFETCH(int, flow);
    OpenPort line(flow);
    QSignalSpy lost(line.port.get(), &serialPort::lost);
    line.control.hangUp();
    QTRY_COMPARE(lost.size(), 1);
    for (int tick = 0; tick < 10; ++tick)
        line.port->tmrRx_Tick();
    QCOMPARE(lost.size(), 1);
    QCOMPARE(line.rxCount, 0); // nothing was received
    QVERIFY(line.port->isOpen());
    QCOMPARE(line.port->Close(), -1);
}

void LostTest::quietLineIsNotLost()
{
    OpenPort line;
    QSignalSpy lost(line.port.get(), &serialPort::lost);
    for (int tick = 0; tick < 100; ++tick)
        line.port->tmrRx_Tick();
    line.control.write("A");
    QTRY_COMPARE(line.rxCount, 1);
    line.port->Close();
    line.port->tmrRx_Tick();
    QCOMPARE(lost.size(), 0);
}

void LostTest::lossIsToldBeforeTheWriteCountsAsComplete()
{
    OpenPort line;
    line.port->tmrRxTimer.stop(); // the write meets it first
    int completedWhenTold = -1;
    connect(line.port.get(), &serialPort::lost, this, [&] { completedWhenTold = line.txCount; });
    line.control.hangUp();
    line.port->sendBytes("G0 X1\r\n");
    QTRY_COMPARE(line.txCount, 1); // nobody could act on a write's error: it counts as complete
    QCOMPARE(completedWhenTold, 0);
}

void LostTest::reopenedPortTellsAgain()
{
    OpenPort line;
    QSignalSpy lost(line.port.get(), &serialPort::lost);
    line.control.hangUp();
    QTRY_COMPARE(lost.size(), 1);
    line.port->Close();
    PtyPair again;
    QVERIFY(line.port->Open(again.devicePath()) >= 0);
    again.hangUp();
    QTRY_COMPARE(lost.size(), 2);
}

void LostTest::portMayDieWhileItTells()
{
    for (const bool writes : {false, true}) {
        OpenPort line;
        bool isTold = false;
        connect(line.port.get(), &serialPort::lost, this, [&] {
            isTold = true;
            line.port.reset();
        });
        if (writes) line.port->tmrRxTimer.stop();
        line.control.hangUp();
        if (writes) line.port->sendBytes("A");
        QTRY_VERIFY(isTold);
    }
}

QTEST_GUILESS_MAIN(LostTest)
#include "serial_lost.moc"
