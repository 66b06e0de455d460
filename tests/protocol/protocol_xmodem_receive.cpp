// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/XModemBlock.h"
#include "protocol/XModemReceive.h"

#include <QTest>

namespace
{
using Script = QList<QByteArray>; // chunks that arrive, one by one, and between them:
const QByteArray tick;            // a second goes by

const QByteArray EOT("\x04");
const QByteArray CAN("\x18");

QByteArray block(int number, const QByteArray& data)
{
    return XModemBlock::build(number, data);
}

const QByteArray dataA = QByteArray("O1\r\n").leftJustified(127, 'a') + '\x1A';
const QByteArray dataB = QByteArray("\0M30\r\n", 6).leftJustified(128, 'b');
const QByteArray blockA = block(1, dataA);
const QByteArray blockB = block(2, dataB);

QByteArray damaged(QByteArray bytes)
{
    bytes[60] = bytes[60] ^ 1;
    return bytes;
}

char letter(XModemReceive::Reply reply)
{
    switch (reply) {
    case XModemReceive::Reply::Ack:
        return 'A';
    case XModemReceive::Reply::MarkedNak:
        return 'N';
    case XModemReceive::Reply::PlainNak:
        return 'n';
    }
    return '?';
}
} // namespace

/// Blocks in, replies out: A for ACK, N for the marked NAK, n for the plain one, "." for a step without an answer.
class XModemReceiveTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void blocksInRepliesOut_data()
    {
        QTest::addColumn<Script>("script");
        QTest::addColumn<QByteArray>("replies");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("told");
        const auto row = [](const char* name, const Script& script, const QByteArray& replies,
                            const QByteArray& text = {}, const char* told = "") {
            QTest::newRow(name) << script << replies << text << QString(told);
        };
        const auto ticks = [](int count) { return Script(count, tick); };
        row("polls, then plain NAK between them", ticks(11), ".N.N.NnNnNn");
        row("no plain NAK once a block began", ticks(6) + Script{blockA} + ticks(8), ".N.N.NA.N.N.N.N", dataA);
        row("plain NAK when a block came without its SOH", {blockA, '\x03' + blockB.mid(1), tick, tick, tick, blockB},
            "A..NnA", dataA + dataB);
        row("plain NAK after a silent minute", Script{blockA} + ticks(62), "A" + QByteArray(".N").repeated(30) + "nN",
            dataA);
        row("a glitch brings no plain NAK", Script{blockA, "\x03\x7F"} + ticks(6), "A..N.N.N", dataA);
        row("bytes delay the next poll", {tick, "\x06G\x15", blockA, tick, tick}, "..A.N", dataA);
        row("next program", Script{blockA, blockB, EOT} + ticks(7), "AAA.N.N.Nn", dataA + dataB);
        row("a block of end marks", {block(1, EOT.repeated(128))}, "A", EOT.repeated(128));
        row("refused block and its repeat", {damaged(blockA), damaged(blockA), blockA}, "NNA", dataA);
        row("silence after a refusal", Script{damaged(blockA)} + ticks(13) + Script{blockA}, "N.n....n....n.A", dataA);
        row("the start of a repeat ends the plain NAK",
            {damaged(blockA), tick, blockA.left(5), tick, tick, tick, tick, blockA.mid(5)}, "N......A", dataA);
        row("stalled block", Script{blockA.left(60)} + ticks(7) + Script{blockA}, ".....N.nA", dataA);
        row("end of one and start of the next in one chunk", {blockA + blockB.left(3), blockB}, "NA", dataB,
            "missing after block 0");
        const QByteArray highSum = block(1, "Gz"); // its sum is 129
        row("checksum that lost its bit 7", {highSum.chopped(1) + '\x01'}, "A", highSum.mid(3, 128));
        row("checksum wrong by bit 7", {blockA.chopped(1) + static_cast<char>(blockA.back() ^ 0x80)}, "N");

        const auto numbered = [](int number) { return block(number, dataA); };
        const auto takes = [&](const char* name, const Script& script, const char* told = "") {
            row(name, script, QByteArray(script.size(), 'A'), dataA.repeated(static_cast<int>(script.size())), told);
        };
        Script wrap;
        for (int number = 1; number <= 255; ++number)
            wrap << numbered(number);
        takes("our numbering at the wrap", wrap + Script{numbered(1), numbered(2)});
        takes("usual numbering at the wrap", wrap + Script{numbered(0), numbered(1)});
        takes("came twice", {numbered(1), numbered(2), numbered(2), numbered(3)}, "Block 2 came twice");
        takes("one left out", {numbered(1), numbered(3), numbered(4)}, "missing after block 1");
        row("another program", {numbered(1), EOT, numbered(1)}, "AAA", dataA + dataA);
        // The first byte of block 4 was damaged, and its number looks like the end.
        row("a false end made by noise", {numbered(1), numbered(2), numbered(3), numbered(4).mid(1), numbered(5)},
            "AAAAA", dataA.repeated(4), "missing after block 3");
        row("cancelled and begun anew", {numbered(1), CAN.repeated(10), numbered(1)}, "A.A", dataA + dataA,
            "cancelled after block 1");
        row("blocks are counted from their own program's start",
            {numbered(1), numbered(2), EOT, numbered(1), CAN.repeated(2)}, "AAAA.", dataA.repeated(3),
            "cancelled after block 1");
        row("a damaged byte is no cancel", {numbered(1), CAN, numbered(2)}, "A.A", dataA + dataA);
        row("a block of cancels", {block(1, CAN.repeated(128))}, "A", CAN.repeated(128));
        row("a leftover of a refused block is no end", {damaged(blockA), EOT, blockA}, "N.A", dataA);
        row("end after a refused block", {damaged(blockA), tick, EOT}, "N.A");
        const Script stall = Script{blockA.left(60)} + Script(5, tick);
        row("after a stall the end comes alone", stall + Script{EOT + EOT}, ".....NAA");
        row("leftovers of a stalled block are no end", stall + Script{"x" + EOT, EOT, tick, EOT, blockA}, ".....N...AA",
            dataA);
        row("cancelled after a refusal", {damaged(blockA), CAN + CAN, blockA}, "N.A", dataA, "cancelled after block 0");
        row("stray SOH before the end", Script{blockA, "\x01", EOT} + ticks(5) + Script{EOT}, "A......NA", dataA);
    }

    void blocksInRepliesOut()
    {
        QFETCH(Script, script);
        QFETCH(QString, told);
        XModemReceive machine;
        QByteArray replies, text;
        for (const auto& chunk : script) {
            const auto step = chunk.isEmpty() ? machine.tick() : machine.take(chunk);
            text += step.program;
            if (step.replies.isEmpty()) replies += '.';
            for (const auto reply : step.replies)
                replies += letter(reply);
        }
        QTEST(replies, "replies");
        QTEST(text, "text");
        QVERIFY2(told.isEmpty() ? machine.notice().isEmpty() : machine.notice().contains(told),
                 qPrintable(machine.notice()));
        machine.forgetProgram();
        QCOMPARE(machine.notice(), QString());
    }

    void textPutAwayInTheMiddleIsTold()
    {
        XModemReceive machine;
        machine.take(blockA);
        machine.forgetProgram();
        machine.take(blockA); // again: its acknowledgement was lost
        QCOMPARE(machine.notice(), QString());
        machine.forgetProgram();
        machine.take(blockB);
        QVERIFY2(machine.notice().contains("missing after block 0"), qPrintable(machine.notice()));
    }
};

QTEST_APPLESS_MAIN(XModemReceiveTest)
#include "protocol_xmodem_receive.moc"
