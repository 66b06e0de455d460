// SPDX-License-Identifier: GPL-3.0-or-later
#include "simulator/SimulatedControl.h"

#include <QFile>
#include <QTest>

#include <termios.h>

using namespace cncsim;
using namespace std::string_literals;
using Script = std::vector<std::string>;

namespace
{
const std::string leader(20, '\0');
constexpr XModemReceiver::Time begin{};

std::string numbered(int number)
{
    return xmodem::block(static_cast<unsigned char>(number), std::string(128, 'a'), ' ');
}

// The DNC program's end of the line, set up as a program has to.
class Device
{
public:
    explicit Device(const SimulatedControl& control)
    {
        file_.setFileName(QString::fromStdString(control.devicePath()));
        termios line{};
        if (!file_.open(QIODevice::ReadWrite | QIODevice::Unbuffered) || ::tcgetattr(file_.handle(), &line) != 0)
            qFatal("the simulated control's device does not open");
        ::cfmakeraw(&line);
        ::tcsetattr(file_.handle(), TCSANOW, &line);
    }
    void send(const QByteArray& bytes) { QCOMPARE(file_.write(bytes), bytes.size()); }
    QByteArray receive(qsizetype count)
    {
        QByteArray bytes;
        while (bytes.size() < count)
            bytes += file_.read(1);
        return bytes;
    }

private:
    QFile file_;
};
} // namespace

/// The simulated control decides whether our program is right: a verdict that is too lenient hides a fault.
class PartsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void framing_data();
    void framing();
    void marks_data();
    void marks();
    void receiver_data();
    void receiver();
    void sender_data();
    void sender();
    void wrongParityIsReported();
    void bytesAfterXoffAreCountedAndLost();
};

void PartsTest::framing_data()
{
    QTest::addColumn<ControlKind>("type");
    QTest::addColumn<std::string>("bytes");
    QTest::addColumn<QString>("verdict"); // problem, or the program when right, or "open"
    const auto row = [](ControlKind type, const std::string& bytes, const char* verdict) {
        QTest::addRow("%d: %s", static_cast<int>(type), verdict) << type << bytes << verdict;
    };
    const std::string okumaHead = leader + "\x12\0"s + leader;
    const std::string okumaEnd = leader + "\x14\0\0\0\0\0"s;
    row(ControlKind::Fanuc, leader + "%\r\nG0\r\n%\r\n", "G0\r\n");
    row(ControlKind::Fanuc, leader + "%\r\nG0\r\n", "open");
    row(ControlKind::Fanuc, leader.substr(1) + "%\r\nG0\r\n%\r\n", "the leader has 19 NULs, not 20");
    row(ControlKind::Fanuc, leader + "\0%\r\nG0\r\n%\r\n"s, "the leader has 21 NULs, not 20");
    row(ControlKind::Fanuc, leader + "%\nG0\nG1\n%\r\n", "no % and end of block after the leader");
    row(ControlKind::Fanuc, leader + "%\r\nG0%1\r\n%\r\n", "a % inside the program");
    row(ControlKind::Okuma, okumaHead + "G0\r\n%\r\n" + okumaEnd, "G0\r\n%\r\n");
    row(ControlKind::Okuma, okumaHead + "G0\r\n" + leader + "\x14\0\0\0\0"s, "open");
    row(ControlKind::Okuma, leader + "G0" + leader + "G1" + okumaEnd, "no tape start (DC2) after the leader");
    row(ControlKind::Okuma, leader + "\x12\0G0 X1.5 Y2.5 Z3.5 F2000\r\n"s + okumaEnd,
        "no NUL and leader of 20 NULs between tape start and first line");
    row(ControlKind::Okuma, okumaHead + "G0\r\n" + leader + "G1\r\n" + okumaEnd,
        "a tape code (NUL, DC2 or DC4) inside the program");
    row(ControlKind::Plain, "<<G0>>", "G0");
    row(ControlKind::Plain, "G0 X1>>", "the start string is missing");
}

void PartsTest::framing()
{
    QFETCH(ControlKind, type);
    QFETCH(std::string, bytes);
    const bool isPlain = type == ControlKind::Plain;
    ProgramReader reader({type, "\r\n", isPlain ? "<<" : "", isPlain ? ">>" : ""});
    bool hasEnded = false;
    for (const char byte : bytes) {
        QVERIFY(!hasEnded); // not before the last byte
        hasEnded = reader.take(byte);
    }
    const auto judged = reader.judge();
    const std::string right = hasEnded ? judged.program : "open";
    QTEST(QString::fromStdString(judged.problem.empty() ? right : judged.problem), "verdict");
}

void PartsTest::marks_data()
{
    QTest::addColumn<QString>("script"); // "b" a byte, "w" worked off one byte, "h" and "r" held and released by hand
    QTest::addColumn<QString>("said");   // "X" XOFF, "O" XON, "!" a byte lost
    const auto row = [](const char* script, const char* said) { QTest::newRow(script) << script << said; };
    // High mark 4, low mark 1, room for 3 bytes after XOFF.
    row("bbb", "");
    row("bbbbbbb", "X");
    row("bbbbbbbbb", "X!!");
    row("bbbbww", "X");
    row("bbbbbbbwwwwwwbbbbbb", "XOX"); // each XOFF makes the full room available again
    row("hbbbbr", "X!O");
    row("bbbbhrwww", "XO");
    row("bbbbhwwwwr", "XO");
}

void PartsTest::marks()
{
    QFETCH(QString, script);
    InputBuffer buffer({1, 4, 1, 3});
    QString said;
    for (const QChar step : std::as_const(script)) {
        if (step == 'b' && !buffer.accept()) said += '!';
        if (step == 'w') buffer.workOff(1);
        if (step == 'h' && buffer.holdByHand(true)) said += 'X';
        if (step == 'r' && buffer.holdByHand(false)) said += 'O';
        const auto signal = buffer.atMarks();
        if (signal != InputBuffer::Signal::None) said += signal == InputBuffer::Signal::Xoff ? 'X' : 'O';
    }
    QTEST(said, "said");
}

void PartsTest::receiver_data()
{
    QTest::addColumn<XModemSettings>("settings");
    QTest::addColumn<Script>("script");
    QTest::addColumn<std::string>("replies"); // "." where there is none
    QTest::addColumn<QString>("problem");
    const auto row = [](const XModemSettings& settings, const Script& script, const std::string& replies,
                        const char* problem = "") {
        QTest::addRow("%s, %zu steps", problem, script.size()) << settings << script << replies << problem;
    };
    std::string damaged = numbered(1);
    ++damaged[60];
    row({}, {numbered(1).substr(0, 50), numbered(1).substr(50), numbered(1), numbered(2), "\4", "\4"}, ".\6\6\6\6\6");
    row({}, {damaged, numbered(1), "\4"}, "\x15\6\6", "block 1 has a wrong checksum");
    row({}, {"\1\1\1"s + numbered(1).substr(3), numbered(1)}, "\x15\6", "block 1 has a wrong number");
    row({}, {numbered(1), numbered(3)}, "\6\x18\x18", "block number 3 came instead of 2");
    row({}, {numbered(1), "x", numbered(2), "\4"}, "\6.\6\6", "a byte (120) between the blocks");
    row({.nakBlock = 2}, {numbered(1), numbered(2), numbered(2), "\4"}, "\6\x15\6\6");
    row({.endFault = EndFault::EotLost}, {numbered(1), "\4", "\4"}, "\6.\6");
    row({.endFault = EndFault::EotRefused}, {numbered(1), "\4", "\4", "\4"}, "\6\x15\6\6");
    row({.endFault = EndFault::AckLost}, {numbered(1), "\4", "\4", numbered(1), "\4"}, "\6.\6\6\6");
    row({.endFault = EndFault::NotConfirmed}, {numbered(1), "\4", "\4", numbered(1)}, "\6...");
    row({.cancelAtBlock = 2}, {numbered(1), numbered(2), numbered(2)}, "\6\x18\x18.", "cancelled at block 2");
}

void PartsTest::receiver()
{
    QFETCH(XModemSettings, settings);
    QFETCH(Script, script);
    XModemReceiver receiver(settings);
    std::string replies;
    for (const auto& step : script) {
        const auto reply = receiver.take(step, begin);
        replies += reply.empty() ? "." : reply;
    }
    QTEST(replies, "replies");
    QTEST(QString::fromStdString(receiver.problem()), "problem");
    QCOMPARE(receiver.data(), std::string(receiver.blocks() * 128, 'a'));
}

void PartsTest::sender_data()
{
    QTest::addColumn<XModemSettings>("settings");
    QTest::addColumn<std::string>("replies");
    QTest::addColumn<Script>("sent"); // for each reply
    QTest::addColumn<QString>("problem");
    const auto row = [](const XModemSettings& settings, const std::string& replies, const Script& sent,
                        const char* problem = "") {
        QTest::addRow("%s, %zu steps", problem, replies.size()) << settings << replies << sent << problem;
    };
    const std::string one = numbered(1);
    const std::string two = xmodem::block(2, "a", '\x1A');
    std::string spoiled = one;
    ++spoiled.back();
    row({}, "x\x15\6\6\6\6", {"", one, two, "\4", "", ""});
    row({}, "\x95\x95\6\x15\6\x15\6", {one, one, two, two, "\4", "\4", ""});
    row({.plainNakOnly = true}, "\x95\x15\x95\x15", {"", one, "", one});
    row({.spoilBlock = 1}, "\x15\x15\6", {spoiled, one, two});
    row({.duplicateBlock = 1}, "\x15\6\6\6", {one, one, two, "\4"});
    row({.stallInBlock = 1}, "\x15\x15\6", {one.substr(0, 60), one, two});
    row({.cancelAtBlock = 2}, "\x15\6\6", {one, "\x18\x18", ""}, "cancelled at block 2");
    row({.silentAfterBlock = 1}, "\x15\6\x15", {one, "", ""}, "silent after block 1");
    const Script ends(9, "\4");
    row({.endFault = EndFault::EotLost}, "\x15\6\6\x15\6", {one, two, "", "\4", ""});
    row({.endFault = EndFault::AckLost}, "\x15\6\6\6\x15\6", {one, two, "\4", "", "\4", ""});
    Script unconfirmed{one, two, "\4", ""};
    unconfirmed.insert(unconfirmed.end(), ends.begin(), ends.end());
    unconfirmed.insert(unconfirmed.end(), 2, "");
    row({.endFault = EndFault::NotConfirmed}, "\x15\6\6\6" + std::string(10, '\x15') + '\6', unconfirmed,
        "the receiver did not confirm the end");
    row({}, "\x15\x18\6", {one, "", ""}, "the receiver cancelled at block 1");
}

void PartsTest::sender()
{
    QFETCH(XModemSettings, settings);
    QFETCH(std::string, replies);
    QFETCH(QString, problem);
    XModemSender sender(settings, std::string(129, 'a'));
    Script sent;
    for (const char reply : replies)
        sent.push_back(sender.take({reply}, begin));
    QTEST(sent, "sent");
    QCOMPARE(QString::fromStdString(sender.problem()), problem);
    QCOMPARE(sender.isComplete(), replies.back() == '\6' && problem.isEmpty() && sent.back().empty());
}

void PartsTest::wrongParityIsReported()
{
    SimulatedControl control({.evenParity = true, .silenceMs = 50, .punchProgram = "AC\r\n"});
    Device device(control);
    device.send("\x41\xC3\x8D\x0A");
    QVERIFY(control.waitComplete(5000));
    QCOMPARE(control.report().problem, ""s);
    device.send("\x41\x43");
    QTRY_COMPARE(control.report().problem, "1 bytes with wrong parity"s);
    control.punch();
    QCOMPARE(device.receive(4), QByteArray("\x41\xC3\x8D\x0A"));
}

void PartsTest::bytesAfterXoffAreCountedAndLost()
{
    SimulatedControl control({.xonXoff = true, .readRate = 2000, .highMark = 100, .lowMark = 10, .overrunRoom = 50});
    Device device(control);
    device.send(QByteArray(120, 'X'));
    QCOMPARE(device.receive(2), QByteArray("\x13\x11"));
    QCOMPARE(control.report().lostBytes, std::size_t{0});
    device.send(QByteArray(1000, 'X')); // ignores XOFF
    QTRY_VERIFY(QString::fromStdString(control.report().problem).contains("bytes lost after XOFF"));
    QVERIFY(control.report().mostAfterXoff > 50);
}

QTEST_GUILESS_MAIN(PartsTest)
#include "simulator_parts.moc"
