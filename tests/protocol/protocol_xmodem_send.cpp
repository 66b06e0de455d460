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

// Gives the replies to a send, A for ACK, N for NAK, C for CAN; returns what goes out, "S" and "C" where the transfer
// is over, sent or cancelled, and "." for a reply without an answer.
QByteArray play(XModemSend& send, QByteArray replies)
{
    replies.replace('A', '\x06').replace('N', '\x15').replace('C', '\x18');
    QByteArray out;
    for (const char reply : replies) {
        const auto step = send.take(reply);
        out += step.bytes;
        if (step.ending)
            out += *step.ending == XModemSend::Ending::Sent ? 'S' : 'C';
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
        row("refused end counts as an answer", full, "NANN", first + EOT + "S.", 128);
        row("cancelled at the end", full, "NAC", first + EOT + "C", 128);
    }

    void repliesInBlocksOut()
    {
        QFETCH(QByteArray, program);
        QFETCH(QByteArray, replies);
        XModemSend send;
        QCOMPARE(play(send, "NAC"), QByteArray("...")); // no send has begun
        send.begin(program);
        QTEST(play(send, replies), "sent");
        QTEST(static_cast<int>(send.acknowledged()), "acknowledged");
        send.stop();
        QCOMPARE(play(send, "NAC"), QByteArray("..."));
        send.begin("G0");
        QCOMPARE(play(send, "NAA"), block(1, "G0") + EOT + 'S'); // nothing is left of the previous send
    }

    void blockNumbersWrapWithoutZero()
    {
        XModemSend send;
        const QByteArray program(600 * 128, 'x');
        send.begin(program);
        QByteArray sent = play(send, "N");
        for (int number = 1; sent != EOT; number = number == 255 ? 1 : number + 1) {
            QCOMPARE(sent, block(number, QByteArray(128, 'x')));
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
