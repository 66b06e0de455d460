// SPDX-License-Identifier: GPL-3.0-or-later
// The bytes on the line, both ways. Whatever is stopped, continued or closed, each byte goes out once, and only to its
// own machine.
#include "serial/OpenPort.h"

#include <QRandomGenerator>

#include <array>
#include <sys/ioctl.h>
#include <unistd.h>

namespace
{
bool hasUnread(const OpenPort& line)
{
    int waiting = 0;
    return ::ioctl(line.port->hPort, FIONREAD, &waiting) == 0 && waiting > 0;
}

constexpr unsigned long fastest = 230'400; // the line's own speed holds the sends back
} // namespace

class BytesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void bytesOnTheWire_data();
    void bytesOnTheWire();
    void whatAWriteHasReadOutlastsClosing();
    void sendsThatDoNotWaitKeepTheirOrder();
    void everyByteArrivesAsSevenBitsWithoutWaitingForThePoll();
    void arrivalIsReportedOnceUntilTheBytesAreTaken();
    void stopAndResumeLosesAndDoublesNothing();
    void newSendDoesNotWakeAStoppedOne();
    void completionFromBeforeAStopIsDropped();
    void bytesNeverReachAnotherDevice();
    void closingDiscardsOnlyWhatAStopCutOff();
};

void BytesTest::bytesOnTheWire_data()
{
    QTest::addColumn<int>("flow");
    QTest::addColumn<int>("parity");
    QTest::addColumn<QByteArray>("wire");
    QTest::newRow("none") << 0 << 0 << QByteArray("\x41\x43\x13\0\x7f\r\n", 7);
    QTest::newRow("even; NUL counts as odd") << 0 << 1 << QByteArray("\x41\xC3\x93\x80\xFF\x8D\x0A", 7);
    QTest::newRow("XModem: none") << 3 << 1 << QByteArray("\x41\x43\x13\0\x7f\r\n", 7);
}

void BytesTest::bytesOnTheWire()
{
    QFETCH(int, flow);
    QFETCH(int, parity);
    OpenPort line(flow, parity);
    line.port->sendBytes(QByteArray("\x41\x43\x13\0\x7f\r\n", 7));
    QTEST(line.control.readAtLeast(7), "wire");
    line.port->sendBytes({});
    QTRY_COMPARE(line.txCount, 2);
    for (const char reply : QByteArray("\x43\x15\x06")) // a single byte is marked whatever the parity
        line.port->sendByte(static_cast<std::uint8_t>(reply));
    QCOMPARE(line.control.readAtLeast(3), QByteArray("\xC3\x95\x06"));
}

void BytesTest::whatAWriteHasReadOutlastsClosing()
{
    OpenPort line(0, 0, 300);
    line.port->tmrRxTimer.stop();
    line.port->sendBytes(QByteArray(100, 'x'));
    line.control.write("N10");
    QTest::qWait(50); // the write reads it
    QVERIFY(!hasUnread(line));
    line.port->Close();
    QCOMPARE(line.port->readBytes(), QByteArray("N10"));
    QCOMPARE(line.rxCount, 1);
}

// An XModem receiver may send two replies in a row; blocks in the wrong order would end the transfer.
void BytesTest::sendsThatDoNotWaitKeepTheirOrder()
{
    OpenPort line(0, 0, fastest);
    QByteArray expected;
    for (int send = 0; send < 500; ++send) {
        const QByteArray bytes = "N" + QByteArray::number(send) + QByteArray(send % 100, 'X');
        line.port->sendBytes(bytes);
        expected += bytes;
    }
    QCOMPARE(line.control.readAtLeast(expected.size()), expected);
}

// At 115200 baud more comes in between two polls than one read takes.
void BytesTest::everyByteArrivesAsSevenBitsWithoutWaitingForThePoll()
{
    for (const auto& [flow, parity] : {std::pair(0, 0), {2, 1}, {3, 1}}) {
        OpenPort line(flow, parity);
        line.port->tmrRxTimer.stop();
        QByteArray sent, expected;
        for (int value = 0; value < 3000; ++value) {
            sent += static_cast<char>(value);
            expected += static_cast<char>(value & 0x7F);
        }
        line.control.write(sent);
        if (flow != 3) { // with flow 3, each block waits for an answer: its arrival is noticed at once
            int waiting = 0;
            QTRY_VERIFY(::ioctl(line.port->hPort, FIONREAD, &waiting) == 0 && waiting == sent.size());
            line.port->tmrRx_Tick();
        }
        QTRY_COMPARE(line.port->bytesRxBuffer, expected);
        QCOMPARE(line.rxCount, 1);
    }
}

void BytesTest::arrivalIsReportedOnceUntilTheBytesAreTaken()
{
    OpenPort line;
    line.control.write("N10G0");
    QTRY_COMPARE(line.rxCount, 1);
    line.control.write("X5\r");
    QTRY_COMPARE(line.port->bytesRxBuffer, QByteArray("N10G0X5\r"));
    line.port->Close();
    QCOMPARE(line.port->readBytes() + line.port->readBytes(), QByteArray("N10G0X5\r")); // what arrived is kept
    QCOMPARE(line.rxCount, 1);
}

// Stops come before, while and after the driver takes the array.
void BytesTest::stopAndResumeLosesAndDoublesNothing()
{
    QRandomGenerator chance(7);
    QByteArray program;
    while (program.size() < 10'000)
        program += "N" + QByteArray::number(program.size()) + "\n";
    for (int round = 0; round < 10; ++round) {
        OpenPort line(0, round % 2, fastest); // with parity nothing must be marked twice
        QByteArray received;
        line.port->sendBytes(program);
        while (line.txCount == 0) {
            QTest::qWait(static_cast<int>(chance.bounded(4)));
            if (chance.bounded(3) == 0) received += line.control.read();
            QCOMPARE(line.port->takeUnsentBytes(), QByteArray()); // without a stop
            if (chance.bounded(4) != 0) continue;
            line.port->stopButtonPressed = true;
            if (line.txCount == 0 && chance.bounded(2) == 0) QTest::qWait(static_cast<int>(chance.bounded(20)));
            const QByteArray rest = line.port->takeUnsentBytes();
            received += line.control.readAtLeast(program.size() - rest.size() - received.size());
            QCOMPARE(received.size() + rest.size(), program.size());
            line.port->sendBytes(rest);
        }
        received += line.control.readAtLeast(program.size() - received.size());
        for (char& byte : received)
            byte = static_cast<char>(byte & 0x7F);
        QCOMPARE(received, program);
        QCOMPARE(line.txCount, 1);
    }
}

void BytesTest::newSendDoesNotWakeAStoppedOne()
{
    OpenPort line(1, 1);
    for (int round = 1; round <= 40; ++round) {
        line.hold();
        line.port->sendBytes(QByteArray("\0old", 4));
        QTest::qWait(round % 3);
        line.port->stopButtonPressed = true;
        if (round % 2 == 0)
            QCOMPARE(line.port->takeUnsentBytes() + line.port->takeUnsentBytes(), QByteArray("\0old", 4));
        if (round % 2 != 0) line.release(); // the stop alone must have ended it
        QTest::qWait(round % 2 != 0 ? 15 : 0);
        line.port->sendBytes("new\n");
        line.release();
        QCOMPARE(line.control.readAtLeast(4), QByteArray("\xEE\x65\x77\x0A"));
        QTRY_COMPARE(line.txCount, round);
    }
    QCOMPARE(line.control.readAtLeast(1, 50), QByteArray());
}

void BytesTest::completionFromBeforeAStopIsDropped()
{
    OpenPort again, stopped, closed;
    for (auto* line : {&again, &stopped, &closed})
        line->sendWithoutEvents();
    again.port->stopButtonPressed = stopped.port->stopButtonPressed = true;
    again.port->sendBytes("N20\n");
    closed.port.reset();
    QCOMPARE(again.control.readAtLeast(4), QByteArray("N20\n"));
    QTest::qWait(60);
    QVERIFY(again.txCount == 1 && stopped.txCount + closed.txCount == 0);
}

// The next device that opens gets the lowest free number: that of the device which was just closed.
void BytesTest::bytesNeverReachAnotherDevice()
{
    for (int round = 0; round < 30; ++round) {
        OpenPort first(1);
        first.hold();
        first.port->sendBytes(QByteArray(100, 'x'));
        QTest::qSleep(round % 4);
        first.port->Close();
        if (round % 2 == 0) first.port.reset();
        std::array<OpenPort, 3> next{OpenPort(1), OpenPort(1), OpenPort(1)};
        for (auto& machine : next)
            machine.port->sendBytes("M30");
        first.release();
        for (auto& machine : next) {
            QTRY_COMPARE(machine.txCount, 1);
            QCOMPARE(machine.control.readAtLeast(4, 5), QByteArray("M30"));
        }
        QVERIFY(first.control.read().isEmpty() && first.txCount == 0);
    }
}

// A stop may come when all writes are complete; the driver may still hold bytes that the control has to get.
void BytesTest::closingDiscardsOnlyWhatAStopCutOff()
{
    OpenPort whole(0, 0, fastest), cut(0, 0, fastest);
    whole.port->sendBytes(QByteArray(3'000, 'x'));
    QTRY_COMPARE(whole.txCount, 1);
    cut.port->sendBytes(QByteArray(500'000, 'x'));
    QTest::qWait(20);
    for (auto* line : {&whole, &cut}) {
        line->port->stopButtonPressed = true;
        line->port->Close();
        QVERIFY(line->port->Open(line->control.devicePath()) >= 0); // at once, even while a write still holds it
    }
    QCOMPARE(whole.control.readAtLeast(3'000).size(), 3'000);
    QVERIFY(cut.control.readAtLeast(500'000, 60).size() < 12'000);
}

QTEST_GUILESS_MAIN(BytesTest)
#include "serial_bytes.moc"
