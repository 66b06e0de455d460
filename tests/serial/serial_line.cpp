// SPDX-License-Identifier: GPL-3.0-or-later
// The line itself: how it is set up, who holds it, and what happens when it is lost.
#include "serial/OpenPort.h"
#include "serial/SerialLine.h"

#include <array>
#include <cstdlib>

class LineTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void openSetsTheLineUp_data();
    void openSetsTheLineUp();
    void settingThatTheDriverDidNotTakeIsAnError_data();
    void settingThatTheDriverDidNotTakeIsAnError();
    void receivedLineEndsAreKept_data();
    void receivedLineEndsAreKept();
    void deviceBelongsToOnePort();
    void unpluggedAdapterIsReportedOnce();
};

void LineTest::openSetsTheLineUp_data()
{
    QTest::addColumn<int>("flow");
    QTest::addColumn<int>("parity");
    QTest::addColumn<int>("stopBits");
    for (int row = 0; row < 16; ++row)
        QTest::addRow("flow %d, parity %d, stop bits %d", row % 4, row / 4 % 2, 1 + row / 8)
            << row % 4 << row / 4 % 2 << 1 + row / 8;
}

void LineTest::openSetsTheLineUp()
{
    QFETCH(int, flow);
    QFETCH(int, parity);
    QFETCH(int, stopBits);
    static const QList<unsigned long> rates{150, 300, 600, 1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200};
    static const QList<speed_t> codes{B150, B300, B600, B1200, B2400, B4800, B9600, B19200, B38400, B57600, B115200};
    const int rate = flow + 4 * parity + 3 * (stopBits - 1); // each is among the rows
    const PtyPair control;
#ifdef IUCLC
    constexpr tcflag_t toLowerCase = IUCLC;
#else
    constexpr tcflag_t toLowerCase = 0;
#endif
    constexpr tcflag_t translations = ICRNL | INLCR | IGNCR | PARMRK | INPCK | BRKINT | toLowerCase;
    termios cooked = control.line(); // as another program may have left it, all wrong for a control
    cooked.c_iflag |= translations | IGNBRK | IGNPAR | IXON | IXANY;
    cooked.c_oflag |= OPOST | ONLCR;
    cooked.c_lflag |= ICANON | ECHO | ISIG;
    cooked.c_cflag |= CSTOPB | CRTSCTS;
    ::tcsetattr(control.slave(), TCSANOW, &cooked);
    serialPort port;
    port.Speed = rates[rate];
    port.FlowType = flow;
    port.Parity = parity;
    port.StopBits = stopBits;
    QVERIFY(port.Open(control.devicePath()) >= 0);

    const bool isEven = parity == 1 && flow != 3;
    QCOMPARE(port.Parity, isEven ? 1 : 0);
    const termios line = control.line();
    const tcflag_t strip = SerialLine::readerStripsParity(isEven) ? 0 : ISTRIP;
    const tcflag_t control8 = CS8 | CREAD | CLOCAL | (stopBits == 2 ? CSTOPB : 0) | (flow == 2 ? CRTSCTS : 0);
    QCOMPARE(line.c_iflag & ~IUTF8, (flow == 1 ? IXOFF : 0) | strip);
    QCOMPARE(line.c_oflag | line.c_lflag, 0U);
    QCOMPARE(line.c_cflag & (CSIZE | CREAD | CLOCAL | PARENB | CSTOPB | CRTSCTS), control8);
    QCOMPARE(line.c_cc[VSTOP], static_cast<cc_t>(isEven ? 0x93 : 0x13));
    QVERIFY(::cfgetospeed(&line) == codes[rate] && ::cfgetispeed(&line) == codes[rate]);

    termios changed = line; // by another program
    changed.c_iflag |= ICRNL | IXON;
    changed.c_cflag ^= CSTOPB;
    ::cfsetospeed(&changed, B2400);
    ::tcsetattr(control.slave(), TCSANOW, &changed);
    QVERIFY(port.restoreLine());
    const termios restored = control.line();
    QVERIFY(restored.c_iflag == line.c_iflag && restored.c_cflag == line.c_cflag);
    QCOMPARE(::cfgetospeed(&restored), ::cfgetospeed(&line));

    for (const int later : {0, 1, 2, 3}) {
        QVERIFY(port.setFlow(later));
        QCOMPARE(control.line().c_iflag & (IXON | IXOFF | IXANY), later == 1 ? IXOFF : 0U);
        QCOMPARE((control.line().c_cflag & CRTSCTS) != 0, later == 2);
    }
}

void LineTest::settingThatTheDriverDidNotTakeIsAnError_data()
{
    QTest::addColumn<tcflag_t>("changed"); // of the control flags
    QTest::addColumn<speed_t>("speed");
    QTest::addColumn<PortError>("error");
    QTest::newRow("all taken") << tcflag_t{} << speed_t{B150} << PortError::None;
    QTest::newRow("line state that we do not set") << tcflag_t{HUPCL} << speed_t{B150} << PortError::None;
    QTest::newRow("another speed") << tcflag_t{} << speed_t{B9600} << PortError::SpeedNotTaken;
    QTest::newRow("the next speed") << tcflag_t{} << speed_t{B134} << PortError::SpeedNotTaken;
    QTest::newRow("one stop bit for two") << tcflag_t{CSTOPB} << speed_t{B150} << PortError::StopBitsNotTaken;
    QTest::newRow("no RTS/CTS") << tcflag_t{CRTSCTS} << speed_t{B150} << PortError::RtsCtsNotTaken;
}

void LineTest::settingThatTheDriverDidNotTakeIsAnError()
{
    QFETCH(tcflag_t, changed);
    QFETCH(speed_t, speed);
    termios asked{};
    asked.c_cflag = CS8 | CSTOPB | CRTSCTS;
    ::cfsetospeed(&asked, B150);
    ::cfsetispeed(&asked, B150);
    for (const bool isAskedFor : {true, false}) { // on and read back off, then the other way round
        termios taken = asked;
        taken.c_cflag ^= changed;
        ::cfsetospeed(&taken, speed);
        ::cfsetispeed(&taken, speed);
        QTEST(isAskedFor ? SerialLine::notTaken(asked, taken) : SerialLine::notTaken(taken, asked), "error");
    }
}

void LineTest::receivedLineEndsAreKept_data()
{
    QTest::addColumn<int>("flow");
    const std::array flows{"none", "XON/XOFF", "RTS/CTS", "XModem"};
    for (std::size_t flow = 0; flow < flows.size(); ++flow)
        QTest::newRow(flows[flow]) << static_cast<int>(flow);
}

void LineTest::receivedLineEndsAreKept()
{
    QFETCH(int, flow);
    const QByteArray program = QByteArray("N10 G1\r\n").repeated(600) + QByteArray("N20\n\r\r").repeated(100);
    OpenPort line(flow);
    line.port->startRxTimer(0.001);
    line.control.write(program);
    QTRY_COMPARE(line.port->bytesRxBuffer, program);
}

void LineTest::deviceBelongsToOnePort()
{
    OpenPort first;
    const PtyPair next;
    const auto flock = [](const PtyPair& p) { return std::system(qPrintable("flock -n " + p.devicePath() + " true")); };
    serialPort second;
    second.Speed = 9600;
    QVERIFY(second.Open(first.control.devicePath()) < 0 && flock(first.control) != 0);
    QCOMPARE(second.openError, PortError::InUse);
    QVERIFY(first.port->Open(next.devicePath()) >= 0); // lets go of the first device
    second.Speed = 12345;                              // no such speed: refused, and the device is free again
    QCOMPARE(second.Open(first.control.devicePath()), -1);
    QCOMPARE(second.openError, PortError::NoSuchSpeed);
    second.Speed = 9600;
    QVERIFY(second.Open(first.control.devicePath()) >= 0 && second.openError == PortError::None);
    QCOMPARE(first.port->Close(), -1);
    QTRY_COMPARE(flock(next), 0);

    const auto slow = std::get<std::shared_ptr<Descriptor>>(SerialLine::openExclusive(next.devicePath()));
    slow->shut(Descriptor::Pending::Send); // and its driver takes its time
    second.Open(next.devicePath());
    QCOMPARE(second.openError, PortError::Closing);
}

void LineTest::unpluggedAdapterIsReportedOnce()
{
    OpenPort line;
    QList<int> told; // each with the number of writes that were complete before
    connect(line.port.get(), &serialPort::lost, this, [&] { told << line.txCount; });
    const auto tick = [&] {
        for (int times = 0; times < 20; ++times)
            line.port->tmrRx_Tick();
        return told;
    };
    QCOMPARE(tick(), QList<int>()); // quiet is not lost
    line.control.hangUp();
    QCOMPARE(tick(), QList<int>({0}));
    QVERIFY(line.rxCount == 0 && line.port->isOpen());
    PtyPair again;
    QVERIFY(line.port->Open(again.devicePath()) >= 0);
    line.port->tmrRxTimer.stop(); // the write is the first to find out
    again.hangUp();
    line.port->sendBytes("G0 X1\r\n");
    QTRY_COMPARE(line.txCount, 1); // nobody could act on a write's error: it counts as complete
    QCOMPARE(tick(), QList<int>({0, 0}));
    QVERIFY(!line.port->setFlow(1) && !line.port->isOpen());
}

QTEST_GUILESS_MAIN(LineTest)
#include "serial_line.moc"
