// SPDX-License-Identifier: GPL-3.0-or-later
#include "simulator/InputBuffer.h"
#include "simulator/ProgramReader.h"
#include "simulator/XModemReceiver.h"
#include "simulator/XModemSender.h"

#include <QTest>

using namespace cncsim;
using namespace std::string_literals;

namespace
{
const std::string leader(20, '\0');
const QString okuma = QStringLiteral("okuma");

Framing framingOf(const QString& type)
{
    if (type == okuma) return {ControlType::Okuma, "\r\n", {}, {}};
    if (type == QLatin1String("fanuc")) return {ControlType::Fanuc, "\r\n", {}, {}};
    if (type == QLatin1String("start and end")) return {ControlType::Plain, "\r\n", "<<", ">>"};
    if (type == QLatin1String("start")) return {ControlType::Plain, "\r\n", "<<", {}};
    return {};
}

constexpr XModemReceiver::Time begin{};
constexpr auto beforePoll = begin + std::chrono::milliseconds(2999);
constexpr auto poll = begin + std::chrono::milliseconds(3000);

std::string numbered(int number, char fill = 'a')
{
    return xmodem::block(static_cast<unsigned char>(number), std::string(128, fill), ' ');
}

std::string damaged(std::string block)
{
    ++block[60];
    return block;
}
} // namespace

/// The simulated control's parts, which decide whether our program is right: a verdict that is too kind hides a fault.
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
    void receiverAsksAfterSilence_data();
    void receiverAsksAfterSilence();
    void receiverNumbersWithoutZero();
    void sender_data();
    void sender();
};

void PartsTest::framing_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<std::string>("bytes");
    QTest::addColumn<QString>("verdict"); // problem, or the program when right, or "open"
    const auto row = [](const char* name, const char* type, const std::string& bytes, const char* verdict) {
        QTest::newRow(name) << type << bytes << verdict;
    };
    const std::string okumaHead = leader + "\x12\0"s + leader;
    const std::string okumaEnd = leader + "\x14\0\0\0\0\0"s;
    row("Fanuc", "fanuc", leader + "%\r\nG0\r\n%\r\n", "G0\r\n");
    row("Fanuc, empty program", "fanuc", leader + "%\r\n%\r\n", "");
    row("Fanuc, under way", "fanuc", leader + "%\r\nG0\r\n", "open");
    row("Fanuc, short leader", "fanuc", leader.substr(1) + "%\r\nG0\r\n%\r\n", "the leader has 19 NULs, not 20");
    row("Fanuc, long leader", "fanuc", leader + "\0%\r\nG0\r\n%\r\n"s, "the leader has 21 NULs, not 20");
    row("Fanuc, no percent", "fanuc", leader + "G0\r\nG1\r\n%\r\n", "no % and end of block after the leader");
    row("Fanuc, other end of block", "fanuc", leader + "%\nG0\nG1\n%\r\n", "no % and end of block after the leader");
    row("Fanuc, percent inside", "fanuc", leader + "%\r\nG0%1\r\n%\r\n", "a % inside the program");
    row("Okuma", "okuma", okumaHead + "G0\r\n%\r\n" + okumaEnd, "G0\r\n%\r\n");
    row("Okuma, no tape start", "okuma", leader + "G0" + leader + "G1" + okumaEnd,
        "no tape start (DC2) after the leader");
    row("Okuma, no second leader", "okuma", leader + "\x12\0G0 X1.5 Y2.5 Z3.5 F2000\r\n"s + okumaEnd,
        "no NUL and leader of 20 NULs between tape start and first line");
    row("Okuma, leader before each line", "okuma", okumaHead + "G0\r\n" + leader + "G1\r\n" + okumaEnd,
        "a tape code (NUL, DC2 or DC4) inside the program");
    row("Okuma, short end", "okuma", okumaHead + "G0\r\n" + leader + "\x14\0\0\0\0"s, "open");
    row("start and end string", "start and end", "<<G0>>", "G0");
    row("start string missing", "start and end", "G0 X1>>", "the start string is missing");
    row("no end to see", "start", "<<G0", "G0");
    row("ends inside the start string", "start", "<", "the start string is missing");
    row("plain", "plain", "G0\r\n%\r\n", "G0\r\n%\r\n");
}

void PartsTest::framing()
{
    QFETCH(QString, type);
    QFETCH(std::string, bytes);
    ProgramReader reader(framingOf(type));
    bool hasEnded = false;
    for (const char byte : bytes) {
        QVERIFY(!hasEnded); // not before the last byte
        hasEnded = reader.take(byte);
    }
    const auto judged = reader.judge();
    QCOMPARE(judged.hasTrailer, hasEnded);
    const bool isOpen = reader.hasVisibleEnd() && !hasEnded && judged.problem.empty();
    const std::string verdict = isOpen ? "open" : judged.problem.empty() ? judged.program : judged.problem;
    QTEST(QString::fromStdString(verdict), "verdict");
}

void PartsTest::marks_data()
{
    QTest::addColumn<QString>("script"); // "b" a byte, "w" worked off one byte, "h" and "r" held and released by hand
    QTest::addColumn<QString>("said");   // "X" XOFF, "O" XON, "!" a byte lost
    // High mark 4, low mark 1, room for 3 bytes after XOFF.
    QTest::newRow("below the high mark") << "bbb"
                                         << "";
    QTest::newRow("at the high mark, once") << "bbbbb"
                                            << "X";
    QTest::newRow("XON at the low mark") << "bbbbwwwwbbb"
                                         << "XO";
    QTest::newRow("not above it") << "bbbbww"
                                  << "X";
    QTest::newRow("room after XOFF") << "bbbbbbb"
                                     << "X";
    QTest::newRow("lost after the room") << "bbbbbbbbb"
                                         << "X!!";
    QTest::newRow("each XOFF gives the room anew") << "bbbbbbbwwwwwwbbbbbb"
                                                   << "XOX";
    QTest::newRow("held by hand") << "hbbbbr"
                                  << "X!O";
    QTest::newRow("released by hand above the low mark") << "bbbbhrwww"
                                                         << "XO";
    QTest::newRow("low mark while held by hand") << "bbbbhwwwwr"
                                                 << "XO";
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
    QCOMPARE(buffer.xoffCount(), static_cast<std::size_t>(said.count('X')));
    QCOMPARE(buffer.lostBytes(), static_cast<std::size_t>(said.count('!')));
}

void PartsTest::receiver_data()
{
    using Script = std::vector<std::string>;
    QTest::addColumn<XModemSettings>("settings");
    QTest::addColumn<Script>("script");
    QTest::addColumn<std::string>("replies"); // "." where there is none
    QTest::addColumn<QString>("problem");
    QTest::addColumn<int>("blocks"); // -1 when it is not complete
    const auto row = [](const char* name, const XModemSettings& settings, const Script& script,
                        const std::string& replies, const char* problem,
                        int blocks) { QTest::newRow(name) << settings << script << replies << problem << blocks; };
    row("whole program", {}, {numbered(1), numbered(2), "\4"}, "\6\6\6", "", 2);
    row("block in pieces", {}, {numbered(1).substr(0, 50), numbered(1).substr(50), "\4"}, ".\6\6", "", 1);
    row("repeated block counts once", {}, {numbered(1), numbered(1), "\4"}, "\6\6\6", "", 1);
    row("repeated end", {}, {numbered(1), "\4", "\4"}, "\6\6\6", "", 1);
    row("empty program", {}, {"\4"}, "\6", "", 0);
    row("end missing", {}, {numbered(1)}, "\6", "", -1);
    row("wrong checksum", {}, {damaged(numbered(1)), numbered(1), "\4"}, "\x15\6\6", "block 1 has a wrong checksum", 1);
    row("number and complement differ", {}, {"\1\1\1"s + numbered(1).substr(3), numbered(1), "\4"}, "\x15\6\6",
        "block 1 has a wrong number", 1);
    row("number left out", {}, {numbered(1), numbered(3)}, "\6\x18\x18", "block number 3 came instead of 2", -1);
    row("noise", {}, {numbered(1), "x", numbered(2), "\4"}, "\6.\6\6", "a byte (120) between the blocks", 2);
    row("asked to refuse", {.nakBlock = 2}, {numbered(1), numbered(2), numbered(2), "\4"}, "\6\x15\6\6", "", 2);
    row("asked to cancel", {.cancelAtBlock = 2}, {numbered(1), numbered(2), numbered(2)}, "\6\x18\x18.",
        "cancelled at block 2", -1);
    row("asked to be silent", {.silentAfterBlock = 1}, {numbered(1), numbered(2), "\4"}, "\6..", "", -1);
}

void PartsTest::receiver()
{
    QFETCH(XModemSettings, settings);
    QFETCH(std::vector<std::string>, script);
    QFETCH(int, blocks);
    XModemReceiver receiver(settings);
    std::string replies;
    for (const auto& step : script) {
        const auto reply = receiver.take(step, begin);
        replies += reply.empty() ? "." : reply;
    }
    QTEST(replies, "replies");
    QTEST(QString::fromStdString(receiver.problem()), "problem");
    QCOMPARE(receiver.isComplete(), blocks >= 0);
    if (blocks >= 0) QCOMPARE(receiver.data(), std::string(static_cast<std::size_t>(blocks) * 128, 'a'));
}

void PartsTest::receiverAsksAfterSilence_data()
{
    QTest::addColumn<std::string>("before");
    QTest::newRow("a program") << ""s;
    QTest::newRow("the next block") << numbered(1);
    QTest::newRow("the rest of a block") << numbered(1).substr(0, 60);
}

void PartsTest::receiverAsksAfterSilence()
{
    QFETCH(std::string, before);
    XModemReceiver receiver({});
    QCOMPARE(receiver.tick(begin), "\x15"s); // at once
    receiver.take(before, begin);
    QCOMPARE(receiver.tick(beforePoll), ""s);
    QCOMPARE(receiver.tick(poll), "\x15"s);
    QCOMPARE(receiver.tick(poll), ""s);
    QCOMPARE(receiver.take(numbered(1) + "\4", poll), "\6\6"s); // the stalled block's rest is forgotten
}

void PartsTest::receiverNumbersWithoutZero()
{
    XModemReceiver receiver({});
    for (int number = 1; number <= 255; ++number)
        QCOMPARE(receiver.take(numbered(number), begin), "\6"s);
    QCOMPARE(receiver.take(numbered(1), begin), "\6"s);
    QCOMPARE(receiver.blocks(), std::size_t{256});
    QCOMPARE(receiver.take(numbered(0), begin), "\x18\x18"s);
}

void PartsTest::sender_data()
{
    using Script = std::vector<std::string>;
    QTest::addColumn<XModemSettings>("settings");
    QTest::addColumn<Script>("script"); // replies, one read each
    QTest::addColumn<QString>("sent");  // "1" block 1, "b" bad block, "s" stalled, "e" EOT, "c" cancel, "." nothing
    const auto row = [](const char* name, const XModemSettings& settings, const Script& script, const char* sent) {
        QTest::newRow(name) << settings << script << sent;
    };
    row("whole program", {}, {"\x15", "\6", "\6", "\6"}, "12e.");
    row("marked NAK", {}, {"\x95", "\x95", "\6"}, "112");
    row("marked NAK means nothing to a plain peer", {.plainNakOnly = true}, {"\x95", "\x15", "\x95", "\x15"}, ".1.1");
    row("ACK begins nothing", {}, {"\6", "\x15"}, ".1");
    row("replies that piled up are one", {}, {"\x15\x15\x15", "\6\6", "\6\x15"}, "12e");
    row("refused end", {}, {"\x15", "\6", "\6", "\x15", "\6"}, "12ee.");
    row("cancelled by the receiver", {}, {"\x15", "\x18\x18", "\x15"}, "1..");
    row("asked to spoil", {.spoilBlock = 1}, {"\x15", "\x15", "\6"}, "b12");
    row("asked to duplicate", {.duplicateBlock = 1}, {"\x15", "\6", "\6", "\6"}, "112e");
    row("asked to stall", {.stallInBlock = 2}, {"\x15", "\6", "\x15", "\6"}, "1s2e");
    row("asked to cancel", {.cancelAtBlock = 2}, {"\x15", "\6", "\x15"}, "1c.");
    row("asked to be silent", {.silentAfterBlock = 1}, {"\x15", "\6", "\x15"}, "1..");
}

void PartsTest::sender()
{
    QFETCH(XModemSettings, settings);
    QFETCH(std::vector<std::string>, script);
    const std::string program = std::string(128, 'a') + "bbb";
    XModemSender sender(settings, program);
    const std::string second = xmodem::block(2, "bbb", '\x1A');
    QString sent;
    for (const auto& replies : script) {
        const auto out = sender.take(replies, begin);
        if (out == numbered(1))
            sent += '1';
        else if (out == second)
            sent += '2';
        else if (out == "\4")
            sent += 'e';
        else if (out == "\x18\x18")
            sent += 'c';
        else if (out.empty())
            sent += '.';
        else
            sent += out.size() == numbered(1).size() ? 'b' : 's';
    }
    QTEST(sent, "sent");
    QCOMPARE(sender.isComplete(), sent.endsWith("e."));
}

QTEST_MAIN(PartsTest)
#include "simulator_parts.moc"
