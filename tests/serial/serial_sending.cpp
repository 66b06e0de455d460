// SPDX-License-Identifier: GPL-3.0-or-later
#include "serial/OpenPort.h"

#include "serial/CustomObject.h"
#include "serial/WriteTask.h"

#include <QTest>

#include <array>
#include <csignal>
#include <future>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

class SendingTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void parityOnTheWire_data();
    void parityOnTheWire();
    void singleByteIsAlwaysMarked_data();
    void singleByteIsAlwaysMarked();
    void markingAMarkedByteEndsTheProgram();
    void emptyArrayIsReported();
    void controlHoldsAndReleasesASend_data();
    void controlHoldsAndReleasesASend();
    void longArrayIsWrittenWhole();
    void sendsThatDoNotWaitKeepTheirOrder();
    void sendWaitsUntilEverythingBeforeIsOut_data();
    void sendWaitsUntilEverythingBeforeIsOut();
    void heldMachinesDoNotStopAnother();
    void unpluggedDeviceStillReports();
};

void SendingTest::parityOnTheWire_data()
{
    QTest::addColumn<int>("flow");
    QTest::addColumn<int>("parity");
    QTest::addColumn<QByteArray>("wire");
    const QByteArray plain("\x41\x43\x13\0\x7f\r\n", 7);
    QTest::newRow("none") << 0 << 0 << plain;
    QTest::newRow("even; NUL counts as odd") << 0 << 1 << QByteArray("\x41\xC3\x93\x80\xFF\x8D\x0A", 7);
    QTest::newRow("XModem takes none") << 3 << 1 << plain;
}

void SendingTest::parityOnTheWire()
{
    QFETCH(int, flow);
    QFETCH(int, parity);
    QFETCH(QByteArray, wire);
    OpenPort line(flow, parity);
    line.port->sendBytes(QByteArray("\x41\x43\x13\0\x7f\r\n", 7));
    QCOMPARE(line.control.readAtLeast(wire.size()), wire);
    QTRY_COMPARE(line.txCount, 1);
}

void SendingTest::singleByteIsAlwaysMarked_data()
{
    QTest::addColumn<int>("byte");
    QTest::addColumn<QByteArray>("wire");
    QTest::newRow("odd") << 0x43 << QByteArray("\xC3");
    QTest::newRow("NAK") << 0x15 << QByteArray("\x95");
    QTest::newRow("ACK, even already") << 0x06 << QByteArray("\x06");
}

void SendingTest::singleByteIsAlwaysMarked()
{
    QFETCH(int, byte);
    QFETCH(QByteArray, wire);
    for (const int parity : {0, 1}) {
        OpenPort line(0, parity);
        line.port->sendByte(static_cast<std::uint8_t>(byte));
        QCOMPARE(line.control.readAtLeast(1), wire);
        QTRY_COMPARE(line.txCount, 1);
    }
}

void SendingTest::markingAMarkedByteEndsTheProgram()
{
    QCOMPARE(serialPort::SetParityBit(0xC3), std::uint8_t{0xC3});
    for (const int byte : {0x80, 0xFF, 0xFE}) {
        const pid_t child = ::fork();
        if (child == 0) {
            ::signal(SIGABRT, SIG_DFL);
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
            serialPort::SetParityBit(static_cast<std::uint8_t>(byte));
            ::_exit(0);
        }
        int status = 0;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QVERIFY(WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT);
    }
}

void SendingTest::emptyArrayIsReported()
{
    OpenPort line;
    line.port->sendBytes({});
    QTRY_COMPARE(line.txCount, 1);
}

void SendingTest::controlHoldsAndReleasesASend_data()
{
    QTest::addColumn<int>("parity");
    QTest::newRow("no parity: XOFF is 0x13") << 0;
    QTest::newRow("even parity: XOFF is 0x93") << 1;
}

void SendingTest::controlHoldsAndReleasesASend()
{
    QFETCH(int, parity);
    OpenPort line(1, parity);
    line.hold();
    line.port->sendBytes("ABD\n"); // even bit counts: the same on both wires
    QCOMPARE(line.control.readAtLeast(1, 80), QByteArray());
    QCOMPARE(line.txCount, 0);
    line.release();
    QCOMPARE(line.control.readAtLeast(4), QByteArray("ABD\n"));
    QTRY_COMPARE(line.txCount, 1);
}

void SendingTest::longArrayIsWrittenWhole()
{
    OpenPort line;
    QByteArray program;
    while (program.size() < 1'000'000)
        program += "N" + QByteArray::number(program.size()) + "\r\n";
    line.port->sendBytes(program);
    QTest::qWait(30); // the control reads late: the driver's buffer is full
    QCOMPARE(line.txCount, 0);
    QCOMPARE(line.control.readAtLeast(program.size(), 30000), program);
    QTRY_COMPARE(line.txCount, 1);
}

// An XModem receiver may answer twice at once; blocks in the wrong order would end the transfer.
void SendingTest::sendsThatDoNotWaitKeepTheirOrder()
{
    OpenPort line;
    QByteArray expected;
    for (int send = 0; send < 500; ++send) {
        const QByteArray bytes = "N" + QByteArray::number(send) + QByteArray(send % 100, 'X');
        line.port->sendBytes(bytes);
        expected += bytes;
    }
    QCOMPARE(line.control.readAtLeast(expected.size()), expected);
    QTRY_COMPARE(line.txCount, 500);
}

void SendingTest::sendWaitsUntilEverythingBeforeIsOut_data()
{
    QTest::addColumn<bool>("stops");
    QTest::newRow("waits") << false;
    QTest::newRow("stopped while it waits") << true;
}

// A socket counts its unread bytes through the same query as a driver; a pseudo-terminal always says none.
void SendingTest::sendWaitsUntilEverythingBeforeIsOut()
{
    QFETCH(bool, stops);
    std::array<int, 2> ends{};
    QCOMPARE(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
    const auto device = std::make_shared<Descriptor>(ends[0], dev_t{});
    const auto arrived = [&] {
        std::array<char, 16> buffer{};
        const auto count = ::recv(ends[1], buffer.data(), buffer.size(), MSG_DONTWAIT);
        return QByteArray(buffer.data(), std::max<ssize_t>(count, 0));
    };
    QCOMPARE(::write(ends[0], "N10", 3), 3);
    if (CustomObject::bytesInTxBuffer(ends[0]) == 0) QSKIP("sockets do not count here");

    const auto stop = std::make_shared<std::atomic<bool>>(false);
    WriteTask task(device, {stop, 9600, 1, false}, "N20");
    auto completed = std::async(std::launch::async, [&] { return task.run(); });
    QTest::qWait(30);
    if (stops) {
        *stop = true;
        QVERIFY(!completed.get());
        QCOMPARE(task.abandon(), QByteArray("N20"));
    }
    QCOMPARE(arrived(), QByteArray("N10"));
    if (!stops) QVERIFY(completed.get());
    QCOMPARE(arrived(), stops ? QByteArray() : QByteArray("N20"));
    ::close(ends[1]);
}

void SendingTest::heldMachinesDoNotStopAnother()
{
    std::vector<std::unique_ptr<OpenPort>> held;
    for (int machine = 0; machine < 8; ++machine) {
        held.push_back(std::make_unique<OpenPort>(1));
        held.back()->hold();
        held.back()->port->sendBytes("held");
    }
    OpenPort ninth(1);
    ninth.port->sendBytes("free");
    QCOMPARE(ninth.control.readAtLeast(4), QByteArray("free"));
    QTRY_COMPARE(ninth.txCount, 1);
    for (const auto& machine : held) {
        QCOMPARE(machine->txCount, 0);
        machine->release();
        QCOMPARE(machine->control.readAtLeast(4), QByteArray("held"));
    }
}

void SendingTest::unpluggedDeviceStillReports()
{
    OpenPort line;
    line.control.hangUp();
    line.port->sendBytes("G0");
    QTRY_COMPARE(line.txCount, 1);
}

QTEST_GUILESS_MAIN(SendingTest)
#include "serial_sending.moc"
