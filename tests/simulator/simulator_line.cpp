// SPDX-License-Identifier: GPL-3.0-or-later
#include "simulator/SimulatedControl.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <unistd.h>

using namespace cncsim;

namespace
{
const std::string fanuc = std::string(20, '\0') + "%\r\nG0\r\n%\r\n";

// The DNC program's end of the line.
class Device
{
public:
    explicit Device(const SimulatedControl& control)
        : fd_(::open(control.devicePath().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC))
    {
    }
    ~Device() { ::close(fd_); }
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    void write(const std::string& bytes) const
    {
        QCOMPARE(::write(fd_, bytes.data(), bytes.size()), ssize_t(bytes.size()));
    }
    std::string readAtLeast(std::size_t count, int ms = 5000) const
    {
        std::string bytes;
        QElapsedTimer timer;
        for (timer.start(); bytes.size() < count && timer.elapsed() < ms; QTest::qWait(1)) {
            char buffer[4096];
            const auto got = ::read(fd_, buffer, sizeof buffer);
            if (got > 0) bytes.append(buffer, static_cast<std::size_t>(got));
        }
        return bytes;
    }

private:
    int fd_;
};
} // namespace

/// A whole simulated control at the end of a real pseudo-terminal.
class LineTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void verdict_data();
    void verdict();
    void silenceEndsAProgramWithoutAVisibleEnd();
    void fullBufferHoldsTheLine();
    void handHoldsTheLine();
    void startSignal();
    void startSignalAfterADelayDoesNotPileUp();
    void punchingStopsOnXoff();
    void punchedBytesCarryParity();
    void xmodemIsTakenIn();
    void clearBeginsAnew();
    void linkAndOutputFile();
};

void LineTest::verdict_data()
{
    QTest::addColumn<bool>("evenParity");
    QTest::addColumn<std::string>("bytes");
    QTest::addColumn<QString>("problem");
    std::string marked = fanuc;
    for (char& byte : marked)
        byte = static_cast<char>(byte == 0 || std::popcount(static_cast<unsigned char>(byte)) % 2 ? byte | 0x80 : byte);
    std::string wrong = marked;
    wrong[23] = static_cast<char>(wrong[23] ^ 0x80);
    QTest::newRow("right") << false << fanuc << QString();
    QTest::newRow("right with parity") << true << marked << QString();
    QTest::newRow("one byte without parity") << true << wrong << "1 bytes with wrong parity";
    QTest::newRow("two programs, the first wrong")
        << false << fanuc.substr(1) + fanuc << "the leader has 19 NULs, not 20";
}

void LineTest::verdict()
{
    QFETCH(bool, evenParity);
    QFETCH(std::string, bytes);
    SimulatedControl control({.framing = {.type = ControlType::Fanuc}, .evenParity = evenParity});
    Device(control).write(bytes);
    QVERIFY(control.waitComplete(5000));
    QTRY_COMPARE(control.receivedBytes(), bytes.size());
    const auto report = control.report();
    QTEST(QString::fromStdString(report.problem), "problem");
    QCOMPARE(report.program, std::string("G0\r\n"));
    QCOMPARE(report.line().ends_with("complete and correct"), report.problem.empty());
}

void LineTest::silenceEndsAProgramWithoutAVisibleEnd()
{
    SimulatedControl control({.silenceMs = 100});
    const Device device(control);
    device.write("G0\r\n");
    QVERIFY(control.waitComplete(5000));
    device.write("G1\r\n");
    QTRY_COMPARE(control.report().programs, std::size_t{2});
    QCOMPARE(control.report().program, std::string("G1\r\n"));
}

void LineTest::fullBufferHoldsTheLine()
{
    Settings settings{.xonXoff = true, .readRate = 2000, .highMark = 100, .lowMark = 10, .overrunRoom = 50};
    SimulatedControl control(settings);
    const Device device(control);
    device.write(std::string(120, 'X'));
    QCOMPARE(device.readAtLeast(1), std::string("\x13"));
    QCOMPARE(device.readAtLeast(1), std::string("\x11"));
    QCOMPARE(control.report().lostBytes, std::size_t{0});
    QVERIFY(control.report().mostAfterXoff <= 20);

    device.write(std::string(1000, 'X')); // pays no heed to XOFF
    QTRY_VERIFY(control.report().lostBytes > 0);
    QTRY_VERIFY(QString::fromStdString(control.report().problem).contains("bytes lost after XOFF"));
    QVERIFY(control.report().mostAfterXoff > 50);
}

void LineTest::handHoldsTheLine()
{
    SimulatedControl control({.xonXoff = true});
    const Device device(control);
    control.holdLine();
    control.holdLine();
    control.releaseLine();
    control.releaseLine();
    QCOMPARE(device.readAtLeast(2), std::string("\x13\x11"));
    QCOMPARE(control.report().xoffCount, std::size_t{1});
}

void LineTest::startSignal()
{
    SimulatedControl control({.evenParity = true, .start = StartSignal::OnRequest});
    const Device device(control);
    QCOMPARE(device.readAtLeast(1, 50), std::string());
    control.pressStart();
    QCOMPARE(device.readAtLeast(1), std::string("\x11")); // its parity is even as it is
}

void LineTest::startSignalAfterADelayDoesNotPileUp()
{
    SimulatedControl control({.start = StartSignal::AfterDelay, .startDelayMs = 20});
    const Device device(control);
    QTest::qWait(200); // nobody reads
    QCOMPARE(device.readAtLeast(1), std::string("\x11"));
    QCOMPARE(device.readAtLeast(1), std::string("\x11"));
    device.write("G0");
    QTRY_COMPARE(control.receivedBytes(), std::size_t{2});
    device.readAtLeast(1, 10);
    QCOMPARE(device.readAtLeast(1, 100), std::string());
}

void LineTest::punchingStopsOnXoff()
{
    const std::string program(200'000, 'X');
    SimulatedControl control({.xonXoff = true, .punchProgram = program, .punchRate = 100'000});
    const Device device(control);
    control.punch();
    std::string got = device.readAtLeast(100);
    device.write("\x13");
    for (std::string piece = "."; !piece.empty(); got += piece) // what was under way
        piece = device.readAtLeast(1, 100);
    QVERIFY(got.size() < program.size() && !control.report().isPunched);
    device.write("\x11");
    got += device.readAtLeast(program.size() - got.size(), 10'000);
    QCOMPARE(got.size(), program.size());
    QTRY_VERIFY(control.report().isPunched);

    device.write("\x13\x11"); // late: nothing of a program
    device.write("\x13");
    QTest::qWait(20);
    QCOMPARE(control.receivedBytes(), std::size_t{0});
    control.punch(); // from the first byte, whatever held the last one
    QCOMPARE(device.readAtLeast(100).front(), 'X');
}

void LineTest::punchedBytesCarryParity()
{
    SimulatedControl control({.evenParity = true, .punchProgram = "AC\r\n", .punchDelayMs = 0});
    QCOMPARE(Device(control).readAtLeast(4), std::string("\x41\xC3\x8D\x0A"));
}

void LineTest::xmodemIsTakenIn()
{
    SimulatedControl control({.protocol = Protocol::XModemReceive});
    const Device device(control);
    QCOMPARE(device.readAtLeast(1), std::string("\x15"));
    device.write(xmodem::block(1, "O1\r\n", ' '));
    QCOMPARE(device.readAtLeast(1), std::string("\x06"));
    device.write("\x04");
    QVERIFY(control.waitComplete(5000));
    QCOMPARE(QString::fromStdString(control.report().program).trimmed(), QStringLiteral("O1"));
}

void LineTest::clearBeginsAnew()
{
    SimulatedControl control({.protocol = Protocol::XModemReceive, .xmodem = {.cancelAtBlock = 1}});
    const Device device(control);
    for (int round = 0; round < 2; ++round) {
        QCOMPARE(device.readAtLeast(1), std::string("\x15"));
        device.write(xmodem::block(1, "O1", ' '));
        QCOMPARE(device.readAtLeast(2), std::string("\x18\x18"));
        control.clear();
        QVERIFY(control.report().problem.empty() && control.receivedBytes() == 0);
    }
}

void LineTest::linkAndOutputFile()
{
    const QTemporaryDir folder;
    const QString link = folder.filePath("control");
    const QString output = folder.filePath("received.nc");
    {
        Settings settings{.framing = {.type = ControlType::Fanuc}};
        settings.linkPath = link.toStdString();
        settings.outputFile = output.toStdString();
        SimulatedControl control(settings);
        QCOMPARE(QFile::symLinkTarget(link).toStdString(), control.devicePath());
        Device(control).write(fanuc);
        QVERIFY(control.waitComplete(5000));
        QTRY_COMPARE(QFileInfo(output).size(), qint64(fanuc.size()));
    }
    QVERIFY(!QFileInfo(link).isSymLink());
}

QTEST_MAIN(LineTest)
#include "simulator_line.moc"
