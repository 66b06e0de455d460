// SPDX-License-Identifier: GPL-3.0-or-later
#include "serial/OpenPort.h"

#include "serial/SerialLine.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QTest>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace
{
// A device as another program may have left it: everything on that a control cannot do with.
void leaveCooked(const PtyPair& control)
{
    const int fd = ::open(control.devicePath().toUtf8().constData(), O_RDWR | O_NOCTTY);
    termios line = control.line();
    line.c_iflag |= ICRNL | INLCR | IGNCR | PARMRK | INPCK | BRKINT | IGNBRK | IGNPAR | IXON | IXANY;
    line.c_oflag |= OPOST | ONLCR;
    line.c_lflag |= ICANON | ECHO | ISIG;
    line.c_cflag |= CSTOPB | CRTSCTS;
    line.c_cc[VSTART] = 0x55;
    ::tcsetattr(fd, TCSANOW, &line);
    ::close(fd);
}

tcflag_t bits(tcflag_t flags, std::initializer_list<int> wanted)
{
    tcflag_t mask = 0;
    for (const int flag : wanted)
        mask |= static_cast<tcflag_t>(flag);
    return flags & mask;
}
} // namespace

class LineTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void openSetsTheLineUp_data();
    void openSetsTheLineUp();
    void speedReachesTheDevice_data();
    void speedReachesTheDevice();
    void whatIsNoSerialLineDoesNotOpen();
    void deviceOpensOnlyOnce();
    void lockOfAnotherProgramIsRespected();
    void closedDeviceOpensAgainAtOnce();
    void openingAnOpenPortLetsGoOfTheFirstDevice();
    void flowChangesOnTheOpenLine();
    void unpluggedDeviceClosesThePortOnFlowChange();
    void freshPortLeavesStandardInputAlone();
};

void LineTest::openSetsTheLineUp_data()
{
    QTest::addColumn<int>("flow");
    QTest::addColumn<int>("parity");
    QTest::addColumn<int>("stopBits");
    for (const int flow : {0, 1, 2, 3}) {
        for (const int parity : {0, 1}) {
            for (const int stopBits : {1, 2})
                QTest::addRow("flow %d, parity %d, stop bits %d", flow, parity, stopBits) << flow << parity << stopBits;
        }
    }
}

void LineTest::openSetsTheLineUp()
{
    QFETCH(int, flow);
    QFETCH(int, parity);
    QFETCH(int, stopBits);
    const PtyPair control;
    leaveCooked(control);
    serialPort port;
    port.Speed = 4800;
    port.FlowType = flow;
    port.Parity = parity;
    port.StopBits = stopBits;
    QVERIFY(port.Open(control.devicePath()) >= 0);
    QVERIFY(port.tmrRxTimer.isActive());

    const bool even = parity == 1 && flow != 3;
    QCOMPARE(port.Parity, even ? 1 : 0);
    QCOMPARE(port.DataBits, flow == 3 ? 8 : 7);
    const termios line = control.line();
    QCOMPARE(bits(line.c_iflag, {IXON, IXOFF, IXANY}), bits(flow == 1 ? ~0U : 0, {IXON, IXOFF}));
    QCOMPARE(bits(line.c_iflag, {IGNBRK, IGNPAR}), 0U);
    QCOMPARE(bits(line.c_iflag, {ICRNL, INLCR, IGNCR, PARMRK, INPCK, BRKINT}),
             bits(flow == 3 ? 0 : ~0U, {ICRNL, INLCR, IGNCR, PARMRK, INPCK, BRKINT}));
    QCOMPARE((line.c_iflag & ISTRIP) != 0, !SerialLine::readerStripsParity(even));
    QCOMPARE(line.c_oflag, 0U);
    QCOMPARE(line.c_lflag, 0U);
    QCOMPARE(bits(line.c_cflag, {CSIZE, CREAD, CLOCAL, PARENB}), bits(~0U, {CS8, CREAD, CLOCAL}));
    QCOMPARE((line.c_cflag & CSTOPB) != 0, stopBits == 2);
    QCOMPARE((line.c_cflag & CRTSCTS) != 0, flow == 2);
    QCOMPARE(line.c_cc[VSTOP], static_cast<cc_t>(even ? 0x93 : 0x13));
    QCOMPARE(line.c_cc[VSTART], static_cast<cc_t>(0x55));
}

void LineTest::speedReachesTheDevice_data()
{
    QTest::addColumn<unsigned long>("baud");
    QTest::addColumn<speed_t>("code");
    QTest::newRow("150") << 150UL << speed_t{B150};
    QTest::newRow("4800") << 4800UL << speed_t{B4800};
    QTest::newRow("115200") << 115200UL << speed_t{B115200};
    QTest::newRow("no such speed") << 12345UL << speed_t{B0};
    QTest::newRow("never set") << 0UL << speed_t{B0};
}

void LineTest::speedReachesTheDevice()
{
    QFETCH(unsigned long, baud);
    QFETCH(speed_t, code);
    const PtyPair control;
    serialPort port;
    port.Speed = baud;
    const int result = port.Open(control.devicePath());
    QCOMPARE(result, port.hPort);
    QCOMPARE(port.isOpen(), code != B0);
    if (code == B0) {
        QCOMPARE(port.hPort, -1);
        port.Speed = 9600;
        QVERIFY2(port.Open(control.devicePath()) >= 0, "the refused device is free again");
        return;
    }
    const termios line = control.line();
    QCOMPARE(::cfgetospeed(&line), code);
    QCOMPARE(::cfgetispeed(&line), code);
}

void LineTest::whatIsNoSerialLineDoesNotOpen()
{
    QTemporaryFile file;
    QVERIFY(file.open());
    for (const QString& path : {QStringLiteral("1"), QString(), QStringLiteral("/dev/no-such-line"), file.fileName()}) {
        serialPort port;
        port.Speed = 9600;
        QVERIFY2(port.isOpen(), "a port that was never opened counts as open");
        QCOMPARE(port.Open(path), -1);
        QCOMPARE(port.hPort, -1);
        QVERIFY(!port.isOpen());
        QVERIFY(!port.tmrRxTimer.isActive());
    }
}

void LineTest::deviceOpensOnlyOnce()
{
    OpenPort first;
    serialPort second;
    second.Speed = 9600;
    QCOMPARE(second.Open(first.control.devicePath()), -1);
    QVERIFY(first.port->isOpen());
    QCOMPARE(first.port->Close(), -1);
    QVERIFY(second.Open(first.control.devicePath()) >= 0);
}

void LineTest::lockOfAnotherProgramIsRespected()
{
    const PtyPair control;
    const QTemporaryDir dir;
    const QString held = dir.filePath(QStringLiteral("held"));
    const QString lock = QStringLiteral("flock --nonblock %1 ").arg(control.devicePath());
    const QString holder = lock + QStringLiteral("sh -c 'touch %1; read end'").arg(held);
    FILE* const other = ::popen(holder.toUtf8().constData(), "w");
    QTRY_VERIFY(QFile::exists(held));
    serialPort port;
    port.Speed = 9600;
    QCOMPARE(port.Open(control.devicePath()), -1);
    QCOMPARE(port.hPort, -1);
    ::pclose(other);
    QVERIFY(port.Open(control.devicePath()) >= 0);
    QVERIFY2(std::system((lock + QStringLiteral("true")).toUtf8().constData()) != 0, "ours binds the other");
}

// A write that has yet to notice the close still holds the device.
void LineTest::closedDeviceOpensAgainAtOnce()
{
    OpenPort line(1);
    for (int round = 0; round < 100; ++round) {
        if (round % 2 == 0) line.hold();
        line.port->sendBytes(QByteArray(9000, 'x'));
        line.port->stopButtonPressed = round % 3 == 0;
        line.port->Close();
        line.release();
        QVERIFY2(line.port->Open(line.control.devicePath()) >= 0, qPrintable(QString::number(round)));
        line.control.read();
        line.port->bytesRxBuffer.clear();
    }
}

void LineTest::openingAnOpenPortLetsGoOfTheFirstDevice()
{
    OpenPort line;
    const PtyPair next;
    QVERIFY(line.port->Open(next.devicePath()) >= 0);
    serialPort other;
    other.Speed = 9600;
    QVERIFY(other.Open(line.control.devicePath()) >= 0);
    QCOMPARE(other.Open(next.devicePath()), -1);
}

void LineTest::flowChangesOnTheOpenLine()
{
    OpenPort line(1);
    for (const int flow : {0, 1, 2, 3, 1}) {
        QVERIFY(line.port->setFlow(flow));
        const termios now = line.control.line();
        QCOMPARE(bits(now.c_iflag, {IXON, IXOFF, IXANY}), bits(flow == 1 ? ~0U : 0, {IXON, IXOFF}));
        QCOMPARE((now.c_cflag & CRTSCTS) != 0, flow == 2);
        QCOMPARE(line.port->FlowType, 1);
    }
}

void LineTest::unpluggedDeviceClosesThePortOnFlowChange()
{
    OpenPort line;
    line.control.hangUp();
    QVERIFY(!line.port->setFlow(1));
    QCOMPARE(line.port->hPort, -1);
    QVERIFY(!line.port->tmrRxTimer.isActive());
}

// Its descriptor reads 0, which is a terminal when the program is started from one.
void LineTest::freshPortLeavesStandardInputAlone()
{
    const PtyPair terminal;
    const int saved = ::dup(STDIN_FILENO);
    const int fd = ::open(terminal.devicePath().toUtf8().constData(), O_RDWR | O_NOCTTY);
    ::dup2(fd, STDIN_FILENO);
    {
        serialPort port;
        port.sendBytes("G0");
        QVERIFY(!port.sendData("G0") || port.hPort == 0);
        QVERIFY(!port.setFlow(1));
    }
    QCOMPARE(bits(terminal.line().c_iflag, {IXON, IXOFF}), 0U);
    QVERIFY(::fcntl(STDIN_FILENO, F_GETFD) >= 0);
    ::dup2(saved, STDIN_FILENO);
    ::close(saved);
    ::close(fd);
}

QTEST_GUILESS_MAIN(LineTest)
#include "serial_line.moc"
