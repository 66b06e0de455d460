// SPDX-License-Identifier: GPL-3.0-or-later
#include "serial/CustomObject.h"
#include "serial/LineTraffic.h"
#include "serial/OpenPort.h"
#include "serial/WriteTask.h"

#include <array>
#include <future>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{
bool hasUnread(const OpenPort& line)
{
    int waiting = 0;
    return ::ioctl(line.port->hPort, FIONREAD, &waiting) == 0 && waiting > 0;
}
} // namespace

/// The control holds the line, and the program obeys, whatever the driver does.
class HoldingTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void controlHoldsOneMachineAndNoOther();
    void holdsStopAProgramWithinAPiece_data();
    void holdsStopAProgramWithinAPiece();
    void goFromBeforeAWaitDoesNotStartIt();
    void onlyALongHoldIsReleased();
    void holdTimesAddUp();
    void heldWriteEndsWithItsDevice();
    void lineThatTheDriverHoldsTakesNoMore();
};

void HoldingTest::controlHoldsOneMachineAndNoOther()
{
    for (const int parity : {0, 1}) { // XOFF is 0x13 or 0x93
        OpenPort line(1, parity), other(1, parity);
        line.hold();
        line.port->sendBytes("ABD\n"); // even bit counts: the same on both wires
        other.port->sendBytes("ABD\n");
        QCOMPARE(other.control.readAtLeast(4), QByteArray("ABD\n"));
        QCOMPARE(line.control.readAtLeast(1, 80), QByteArray());
        QCOMPARE(line.txCount, 0);
        line.release();
        QCOMPARE(line.control.readAtLeast(4), QByteArray("ABD\n"));
        QTRY_COMPARE(line.txCount, 1);
    }
}

void HoldingTest::holdsStopAProgramWithinAPiece_data()
{
    QTest::addColumn<unsigned long>("speed");
    QTest::addColumn<int>("parity");
    QTest::addColumn<int>("piece"); // characters that may be on their way
    QTest::newRow("9600, 8 bits") << 9600UL << 0 << 4;
    QTest::newRow("9600, even parity") << 9600UL << 1 << 4;
    QTest::newRow("115200, 8 bits") << 115200UL << 0 << 45;
    QTest::newRow("115200, even parity") << 115200UL << 1 << 45;
}

// The line discipline of this terminal obeys nothing. Whatever the machine's load, a write looks at what has arrived
// before each piece: no more than the piece that was on its way comes after XOFF.
void HoldingTest::holdsStopAProgramWithinAPiece()
{
    QFETCH(unsigned long, speed);
    QFETCH(int, parity);
    QFETCH(int, piece);
    OpenPort line(1, parity, speed);
    QByteArray program;
    for (int block = 0; program.size() < 1000; ++block)
        program += "N" + QByteArray::number(block) + " G1 X1.5\r\n";
    line.port->sendBytes(program);
    QByteArray received;
    const auto upTo = [&](qsizetype count) {
        while (received.size() < count)
            received += line.control.readAtLeast(1);
    };
    for (int hold = 1; hold <= 20; ++hold) {
        upTo(40 * hold);
        line.control.write(parity == 1 ? "\x93" : "\x13");
        const auto before = received.size();
        for (QByteArray more = "-"; !more.isEmpty(); received += more)
            more = line.control.readAtLeast(1, 30);
        QVERIFY2(received.size() - before <= 2 * piece, qPrintable(QString::number(received.size() - before)));
        QVERIFY(line.port->heldFor());
        line.control.write(parity == 1 ? "\x11" : "\x91"); // either form counts
    }
    upTo(program.size());
    QTRY_COMPARE(line.txCount, 1);
    for (char& byte : received)
        byte = static_cast<char>(byte & 0x7F);
    QCOMPARE(received, program);
    QCOMPARE(line.port->readBytes(), QByteArray()); // flow control is not program text
}

// XON ended a hold while flow control was on; in the wait that follows it would be the start signal.
void HoldingTest::goFromBeforeAWaitDoesNotStartIt()
{
    OpenPort line(1);
    line.hold();
    line.port->tmrRxTimer.stop();
    line.release();
    QTRY_VERIFY(hasUnread(line));
    QVERIFY(line.port->setFlow(0));
    line.port->tmrRx_Tick();
    QCOMPARE(line.port->readBytes(), QByteArray());
    line.release();
    line.port->startRxTimer(0.001);
    QTRY_COMPARE(line.port->bytesRxBuffer, QByteArray("\x11"));
}

void HoldingTest::onlyALongHoldIsReleased()
{
    OpenPort line(1);
    line.hold();
    line.port->sendBytes("N10\n");
    line.port->sendOn(60'000);
    QCOMPARE(line.control.readAtLeast(1, 30), QByteArray());
    line.port->sendOn(10);
    QCOMPARE(line.control.readAtLeast(4), QByteArray("N10\n"));
}

void HoldingTest::holdTimesAddUp()
{
    const auto at = [](int ms) { return HoldTimes::Time(std::chrono::milliseconds(ms)); };
    HoldTimes times;
    times.note(true, at(100));
    times.restart(at(150)); // a transfer begins in a hold
    times.note(true, at(200));
    times.note(false, at(250));
    times.note(false, at(300));
    times.note(true, at(400));
    times.note(false, at(430));
    times.note(true, at(500));
    QCOMPARE(times.sum(at(520)).inAll.count(), 150);
    QCOMPARE(times.sum(at(520)).longest.count(), 100);
    QCOMPARE(times.sum(at(700)).longest.count(), 200); // the one under way
}

void HoldingTest::heldWriteEndsWithItsDevice()
{
    OpenPort line(1);
    line.hold();
    auto done = std::async(std::launch::async, [&line] { return line.port->sendData("N10\n"); });
    QTest::qSleep(20);
    line.control.hangUp();
    QVERIFY(done.get());
}

// A socket answers the query for pending bytes as a driver does; a pseudo-terminal always answers 0.
void HoldingTest::lineThatTheDriverHoldsTakesNoMore()
{
    std::array<int, 2> ends{};
    QCOMPARE(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends.data()), 0);
    const auto arrived = [&] {
        std::array<char, 16> buffer{};
        return QByteArray(buffer.data(), std::max<ssize_t>(::recv(ends[1], buffer.data(), 16, MSG_DONTWAIT), 0));
    };
    QCOMPARE(::write(ends[0], "N10", 3), 3);
    if (CustomObject::bytesInTxBuffer(ends[0]) == 0) QSKIP("sockets do not count here");
    const auto stop = std::make_shared<std::atomic<bool>>(false);
    const auto line = std::make_shared<LineTraffic>(std::make_shared<Descriptor>(ends[0], dev_t{}),
                                                    LineTraffic::Line{9600, 1, false, 0});
    WriteTask task(line, stop, false, "N20");
    auto completed = std::async(std::launch::async, [&] { return task.run(); });
    QTest::qWait(30);
    QCOMPARE(arrived(), QByteArray("N10"));
    QVERIFY(completed.get());
    QCOMPARE(arrived(), QByteArray("N20"));
    ::close(ends[1]);
}

QTEST_GUILESS_MAIN(HoldingTest)
#include "serial_holding.moc"
