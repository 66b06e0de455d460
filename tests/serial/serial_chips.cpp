// SPDX-License-Identifier: GPL-3.0-or-later
#include "benchmarks/PacedLine.h"
#include "serial/OpenPort.h"

namespace
{
QByteArray programOf(qsizetype characters)
{
    QByteArray program;
    for (int block = 0; program.size() < characters; ++block)
        program += "N" + QByteArray::number(block) + " G1 X1.5\r\n";
    return program;
}

bool waitFor(const std::function<bool()>& condition)
{
    return QTest::qWaitFor(condition, 30'000); // only a fault takes that long
}
} // namespace

/// Behind every chip the control's stop ends a program within a few characters, although the chip accepts bytes that
/// nobody counts, saves up what arrives, and has a clock of its own.
class ChipsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void stopEndsAProgramBehindAnyChip_data();
    void stopEndsAProgramBehindAnyChip();
    void flowThatTheDriverDoesNotTakeClosesThePort();

private:
    static void hold(OpenPort& line, int ahead, int inDelay);
};

void ChipsTest::stopEndsAProgramBehindAnyChip_data()
{
    QTest::addColumn<unsigned long>("speed");
    QTest::addColumn<int>("ahead"); // characters that may be on their way
    QTest::addColumn<int>("fifo");
    QTest::addColumn<int>("delay"); // ms
    const auto row = [](unsigned long speed, int ahead, int fifo, int delay) {
        QTest::addRow("%lu baud, FIFO of %d, read after %d ms", speed, fifo, delay) << speed << ahead << fifo << delay;
    };
    for (const int fifo : {0, 32, 256})
        for (const int delay : {0, 1, 16})
            row(9600, 4, fifo, delay);
    row(115200, 45, 32, 1);
    row(115200, 45, 256, 16);
}

void ChipsTest::stopEndsAProgramBehindAnyChip()
{
    QFETCH(unsigned long, speed);
    QFETCH(int, ahead);
    QFETCH(int, fifo);
    QFETCH(int, delay);
    PacedLine::use({.fifo = fifo, .slowness = 1.01, .arrivalDelay = std::chrono::milliseconds(delay)});
    OpenPort line(1, 0, speed);
    const qsizetype size = speed == 9600 ? 1000 : 4500;
    const auto program = programOf(size);
    line.port->sendBytes(program);
    QByteArray received;
    // The long stretch before the last hold is for a clock that runs ahead of the chip's: it fills the FIFO slowly.
    for (const auto start : {size / 50, size / 20, size / 10, size / 5, size - size / 10}) {
        while (received.size() < start)
            received += line.control.readAtLeast(1);
        hold(line, ahead, static_cast<int>((static_cast<unsigned long>(delay) * speed + 9'999) / 10'000));
        if (QTest::currentTestFailed()) return;
        received += line.control.read();
        QCOMPARE(received.size(), PacedLine::record(line.port->hPort).now.carried); // the model's count is true
        line.control.write("\x11");
    }
    QVERIFY(waitFor([&] { return (received += line.control.read()).size() >= program.size(); }));
    QTRY_COMPARE(line.txCount, 1);
    QCOMPARE(received, program);
}

// The limits hold however busy the machine is, for they count what the model had been given when the program read the
// XOFF, not what went by in some time. The model reckons the line's time exactly even when it is called late. A program
// that does not run writes nothing, and the chip soon has nothing left to send.
void ChipsTest::hold(OpenPort& line, int ahead, int inDelay)
{
    const auto record = [&line] { return PacedLine::record(line.port->hPort); };
    const auto before = record();
    line.control.write("\x13");
    QVERIFY(waitFor([&] { return record().readBytes > before.readBytes; }));
    // Several looks after the chip has run empty the program would have written again.
    const auto looks = record().reads + 10;
    QVERIFY(waitFor([&] { return record().now.carried == record().now.taken && record().reads > looks; }));
    const auto after = record();
    QCOMPARE(after.now.taken, after.seen.taken);
    const auto onTheWay = after.seen.taken - after.seen.carried;
    QVERIFY2(onTheWay <= ahead, qPrintable(QString::number(onTheWay)));
    // A piece that the program decided on just before the XOFF became readable may be written just after.
    const auto afterStop = after.now.carried - after.arrival.carried;
    QVERIFY2(afterStop <= ahead + inDelay + ahead, qPrintable(QString::number(afterStop)));
}

// The driver reports success and leaves RTS/CTS off: nothing would hold the line.
void ChipsTest::flowThatTheDriverDoesNotTakeClosesThePort()
{
    PacedLine::use({.hasRtsCts = false});
    OpenPort line;
    QVERIFY(line.port->setFlow(1) && line.port->setFlow(0));
    QVERIFY(!line.port->setFlow(2) && !line.port->isOpen());
    QCOMPARE(line.port->openError, PortError::RtsCtsNotTaken);
}

QTEST_GUILESS_MAIN(ChipsTest)
#include "serial_chips.moc"
