// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/ProgramLines.h"
#include "protocol/XModemBlock.h"
#include "protocol/XModemProgram.h"
#include "protocol/XModemSend.h"

#include <QTest>

namespace
{
const QByteArray EOT("\x04");

QByteArray block(int number, const QByteArray& data)
{
    return XModemBlock::build(number, data);
}

constexpr auto from1 = XModemBlock::Numbers::From1;
constexpr auto from0 = XModemBlock::Numbers::From0;

// Gives the replies to a send, A for ACK, N for NAK, C for CAN, "-" for ten seconds without one; returns what goes out,
// "S", "C" and "U" where the transfer is over, sent, cancelled or unconfirmed, and "." where nothing follows.
QByteArray play(XModemSend& send, QByteArray replies)
{
    replies.replace('A', '\x06').replace('N', '\x15').replace('C', '\x18');
    QByteArray out;
    for (const char reply : replies) {
        XModemSend::Step step;
        if (reply != '-') step = send.take(reply);
        for (int second = 0; reply == '-' && second < 10; ++second) {
            step = send.tick();
            if (second < 9 && (step.ending || !step.bytes.isEmpty())) return out + "too early";
        }
        out += step.bytes;
        if (step.ending)
            out += "SCU"[static_cast<int>(*step.ending)];
        else if (step.bytes.isEmpty())
            out += '.';
    }
    return out;
}
} // namespace

/// Replies in, blocks out.
class XModemSendTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void repliesInBlocksOut_data()
    {
        QTest::addColumn<QByteArray>("program");
        QTest::addColumn<QByteArray>("replies");
        QTest::addColumn<QByteArray>("sent");
        QTest::addColumn<int>("acknowledged");
        const auto row = [](const char* name, const QByteArray& program, const QByteArray& replies,
                            const QByteArray& sent,
                            int acknowledged) { QTest::newRow(name) << program << replies << sent << acknowledged; };
        const QByteArray full(128, 'a');
        const QByteArray two = full + "b";
        const QByteArray first("\x01\x01\xFE" + full + '\x80'); // the sum: 128 times 97
        const QByteArray second = block(2, "b");
        row("whole transfer", two, "NAAA", first + second + EOT + 'S', 129);
        row("exactly one block, no block of spaces after it", full, "NAA", first + EOT + 'S', 128);
        row("nothing to send, no block of spaces", "", "NA", EOT + 'S', 0);
        row("refused", two, "NNANNA", first + first + second + second + second + EOT, 129);
        row("an ACK asks for a block, too", full, "A", first, 0);
        row("other bytes are ignored", full, QByteArray("\x11\x13\0x\x04N", 6), "....." + first, 0);
        row("cancelled in the middle, twice as usual", two, "NCCNA", first + "C...", 0);
        row("cancelled before the first request", two, "CN", "C.", 0);
        row("end refused", full, "NANNAA", first + EOT.repeated(3) + "S.", 128);
        row("end lost, or its answer", full, "NA--A-", first + EOT.repeated(3) + "S.", 128);
        row("end never answered", full, "NA" + QByteArray(12, '-'), first + EOT.repeated(11) + "U.", 128);
        row("end refused for ever", full, "NA" + QByteArray(12, 'N'), first + EOT.repeated(11) + "U.", 128);
        row("only the end goes out again by itself", full, "-N------A-", "." + first + "......" + EOT + EOT, 128);
        row("cancelled at the end", full, "NAC", first + EOT + "C", 128);
    }

    void repliesInBlocksOut()
    {
        QFETCH(QByteArray, program);
        QFETCH(QByteArray, replies);
        XModemSend send;
        QCOMPARE(play(send, "NAC"), QByteArray("...")); // no send has begun
        send.begin(program, from1);
        QTEST(play(send, replies), "sent");
        QTEST(static_cast<int>(send.acknowledged()), "acknowledged");
        send.stop();
        QCOMPARE(play(send, "NAC"), QByteArray("..."));
        send.begin("G0", from1);
        QCOMPARE(play(send, "NAA"), block(1, "G0") + EOT + 'S'); // nothing is left of the previous send
    }

    void lateAnswersAskForNoBlockOfTheNextCopy()
    {
        XModemSend send;
        send.begin("G0", from1);
        QCOMPARE(play(send, "NA-NA"), block(1, "G0") + EOT.repeated(3) + 'S');
        send.begin("G0", from1);
        QCOMPARE(play(send, "AANAA"), ".." + block(1, "G0") + EOT + 'S'); // EOT went out three times
        send.begin("G0", from1);
        QCOMPARE(play(send, "A"), block(1, "G0"));
    }

    void blockNumbersWrap_data()
    {
        QTest::addColumn<int>("afterLast");
        QTest::newRow("1 to 255") << 1;
        QTest::newRow("0 to 255") << 0;
    }

    void blockNumbersWrap()
    {
        QFETCH(int, afterLast);
        XModemSend send;
        const QByteArray program(600 * 128, 'x');
        send.begin(program, afterLast == 0 ? from0 : from1);
        QByteArray sent = play(send, "N");
        for (int number = 1; sent != EOT; number = number == 255 ? afterLast : number + 1) {
            QCOMPARE(sent, block(number, QByteArray(128, 'x')));
            QCOMPARE(send.isAtWrap(), number == afterLast && send.sent() > 128);
            sent = play(send, "A");
        }
        QCOMPARE(send.acknowledged(), program.size());
    }

    void positionsInBlocksMapToLines()
    {
        const ProgramLines text("O1 (A)\n(dropped)\n" + QByteArray(200, 'X') + "\nM30");
        XModemProgram program;
        const auto bytes = program.begin(text, {ControlType::General, true, true}, "\r\n");
        QCOMPARE(bytes, "O1\r\n" + QByteArray(200, 'X') + "\r\nM30");
        QCOMPARE(program.follow(text, 4).start, 0);
        QCOMPARE(program.follow(text, 5).start, 17);
        QCOMPARE(program.follow(text, 206).start, 17);
        QCOMPARE(program.follow(text, 207).start, 218);
        QCOMPARE(program.line().end, text.size());
    }
};

QTEST_APPLESS_MAIN(XModemSendTest)
#include "protocol_xmodem_send.moc"
