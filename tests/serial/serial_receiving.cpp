// SPDX-License-Identifier: GPL-3.0-or-later
#include "serial/OpenPort.h"

#include <QTest>

#include <sys/ioctl.h>

class ReceivingTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void arrivalIsReportedOnceUntilTheBytesAreTaken();
    void everyByteArrivesAsSevenBits_data();
    void everyByteArrivesAsSevenBits();
    void longProgramArrivesWholeAndInOrder();
    void readingGoesOnWithoutWaitingForThePoll();
    void closedPortKeepsWhatArrived();
    void portMayDieInItsOwnNotification();
};

void ReceivingTest::arrivalIsReportedOnceUntilTheBytesAreTaken()
{
    OpenPort line;
    auto& port = *line.port;
    line.control.write("N10G0");
    QTRY_COMPARE(port.bytesRxBuffer, QByteArray("N10G0"));
    QCOMPARE(line.rxCount, 1);
    line.control.write("X5\r");
    QTRY_COMPARE(port.bytesRxBuffer.size(), 8);
    QCOMPARE(line.rxCount, 1);
    QCOMPARE(port.readBytes(), QByteArray("N10G0X5\r"));
    QCOMPARE(port.readBytes(), QByteArray());
    line.control.write("M30");
    QTRY_COMPARE(line.rxCount, 2);
    QCOMPARE(port.readBytes(), QByteArray("M30"));
}

void ReceivingTest::everyByteArrivesAsSevenBits_data()
{
    QTest::addColumn<int>("flow");
    QTest::addColumn<int>("parity");
    QTest::newRow("no flow control, no parity") << 0 << 0;
    QTest::newRow("no flow control, even parity") << 0 << 1;
    QTest::newRow("hardware, even parity") << 2 << 1;
    QTest::newRow("XModem") << 3 << 1;
}

void ReceivingTest::everyByteArrivesAsSevenBits()
{
    QFETCH(int, flow);
    QFETCH(int, parity);
    OpenPort line(flow, parity);
    QByteArray sent;
    QByteArray expected;
    for (int value = 0; value < 256; ++value) {
        sent += static_cast<char>(value);
        expected += static_cast<char>(value % 128);
    }
    line.control.write(sent);
    QTRY_COMPARE(line.port->bytesRxBuffer, expected);
}

void ReceivingTest::longProgramArrivesWholeAndInOrder()
{
    OpenPort line;
    QByteArray received;
    QObject reader;
    line.port->nc->addObserver(&reader, QStringLiteral("RxOnComm"), line.port.get(),
                               [&](const Notification&) { received += line.port->readBytes(); });
    QByteArray program;
    for (int number = 1; program.size() < 200'000; ++number)
        program += "N" + QByteArray::number(number) + " G01 X12.5 Y-3.75\n";
    line.control.write(program);
    QTRY_COMPARE(received.size(), program.size());
    QCOMPARE(received, program);
}

// At 115200 baud more comes in between two polls than one read takes.
void ReceivingTest::readingGoesOnWithoutWaitingForThePoll()
{
    OpenPort line;
    line.port->tmrRxTimer.stop();
    line.control.write(QByteArray(3000, 'x'));
    const auto waiting = [&] {
        int count = 0;
        return ::ioctl(line.port->hPort, FIONREAD, &count) == 0 ? count : -1;
    };
    QTRY_COMPARE(waiting(), 3000);
    line.port->tmrRx_Tick();
    QTRY_COMPARE(line.port->bytesRxBuffer.size(), 3000);
    QCOMPARE(line.rxCount, 1);
}

void ReceivingTest::closedPortKeepsWhatArrived()
{
    OpenPort line;
    line.control.write("M30");
    QTRY_COMPARE(line.port->bytesRxBuffer.size(), 3);
    line.port->Close();
    line.port->tmrRx_Tick();
    QCOMPARE(line.port->readBytes(), QByteArray("M30"));
}

// The operator's Close may run inside the handler, by way of a message box.
void ReceivingTest::portMayDieInItsOwnNotification()
{
    OpenPort line;
    QObject owner;
    line.port->nc->addObserver(&owner, QStringLiteral("RxOnComm"), line.port.get(),
                               [&](const Notification&) { line.port.reset(); });
    line.control.write(QByteArray(3000, 'x'));
    QTRY_VERIFY(!line.port);
    QTest::qWait(1); // reads that were due
}

QTEST_GUILESS_MAIN(ReceivingTest)
#include "serial_receiving.moc"
