// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/XModemBlock.h"
#include "transfer/TransferRig.h"

namespace
{
const QByteArray ACK("\x06");
const QByteArray NAK("\x15");
const QByteArray markedNAK("\x95"); // with the parity bit, as controls know it
const QByteArray EOT("\x04");
const QByteArray CAN("\x18");

using Script = QList<QByteArray>; // chunks that arrive, one by one, and between them:
const QByteArray tick;            // a second goes by
const QByteArray stop("btnStop"), sendAgain("btnSend"), newProgram("btnNew"); // the operator clicks

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
} // namespace

class XModemTest : public QObject
{
    Q_OBJECT

    static void startSend(TransferRig& rig, const QByteArray& program)
    {
        rig.machine->MCFLOW = 3;
        rig.machine->MCSTRIPCOMMENTS = rig.machine->MCSTRIPEMPTYLINES = true;
        rig.startWith(program);
        rig.click("btnSend");
    }

    // Plays the script; returns what went out at each step, "." for a step that is not answered.
    static QByteArray play(TransferRig& rig, const Script& script)
    {
        QByteArray got;
        for (const auto& step : script) {
            if (step.isEmpty())
                rig.view->tmrXModem_Tick();
            else
                step.startsWith("btn") ? rig.click(step.constData()) : rig.deliver(step);
            const QByteArray reply = rig.readAll(); // also lets each write end before the next
            got += reply.isEmpty() ? QByteArray(".") : reply;
        }
        return got;
    }

private Q_SLOTS:
    void repliesInBlocksOut_data()
    {
        QTest::addColumn<QByteArray>("program");
        QTest::addColumn<Script>("script");
        QTest::addColumn<QByteArray>("sent");
        const auto row = [](const QString& name, const QByteArray& program, const Script& script,
                            const QByteArray& sent) { QTest::newRow(qPrintable(name)) << program << script << sent; };
        const QByteArray full(128, 'a');
        const QByteArray two = full + "b";
        const QByteArray first("\x01\x01\xFE" + full + '\x80'); // the sum: 128 times 97
        const QByteArray second = block(2, "b");
        row("whole transfer", two, {NAK, ACK, ACK, ACK}, first + second + EOT + ".");
        row("exactly one block, none of spaces behind it", full, {NAK, ACK, ACK}, first + EOT + ".");
        row("nothing left, no block of spaces", "(A)\n(B)\n", {NAK, ACK}, EOT + ".");
        row("refused", two, {NAK, NAK, ACK, NAK, NAK, ACK}, first + first + second + second + second + EOT);
        row("acknowledgement asks as well", full, {ACK}, first);
        row("replies in one chunk", two, {NAK + ACK + ACK}, first + second + EOT);
        row("other bytes mean nothing", full, {QByteArray("C\x11\x13\0x\x04", 6), NAK}, "." + first);
        row("cancelled in the middle, twice as usual", two, {NAK, CAN + CAN, NAK, ACK}, first + "...");
        row("refused end counts as an answer", full, {NAK, ACK, NAK, NAK}, first + EOT + "..");
        const QByteArray sent[] = {{}, first, first + second, first + second + EOT};
        for (int replies = 0; replies < 4; ++replies)
            for (const auto& end : {stop, CAN.repeated(10)})
                row(QString("sent anew after %1, %2").arg(replies).arg(end == stop ? "stop" : "cancel"), two,
                    Script{NAK, ACK, ACK}.first(replies) + Script{end, ACK + NAK, sendAgain, NAK, ACK, ACK, ACK},
                    sent[replies] + "..." + first + second + EOT + ".");
    }

    void repliesInBlocksOut()
    {
        QFETCH(QByteArray, program);
        QFETCH(Script, script);
        TransferRig rig;
        rig.machine->MCWAIT = true; // has no meaning here
        startSend(rig, program);
        QVERIFY(rig.isShown("boxWaitForCNC") && !rig.isShown("btnSendNow") && !rig.isShown("cbo1"));
        QCOMPARE(rig.readAll(), QByteArray()); // the control has to ask
        QTEST(play(rig, script), "sent");
        QVERIFY(!rig.isShown("boxWaitForCNC") || script.first() == ACK);
    }

    void wholeProgramGoesOut()
    {
        // No rules of the control type here, and block 256 is numbered 1.
        const QByteArray longLine(1000, 'X');
        const QByteArray piece("G1 X10.5 (MOVE)\n \n(END)\n%\x12G\x14\xE9\n");
        const QByteArray data = longLine + "\r\n" + QByteArray("G1 X10.5\r\n%\x12G\x14?\r\n").repeated(2000);
        TransferRig rig;
        rig.machine->MCMODE = "OKUMA";
        startSend(rig, longLine + '\n' + piece.repeated(2000));
        rig.deliver(NAK);
        for (int at = 0, number = 1; at < data.size(); at += 128, number = number == 255 ? 1 : number + 1) {
            QCOMPARE(rig.pty.readAtLeast(132), block(number, data.mid(at, 128)));
            rig.deliver(ACK);
        }
        QCOMPARE(rig.pty.readAtLeast(1), EOT);
        rig.deliver(ACK);
        QCOMPARE(rig.text("txtPCent"), QStringLiteral("100%"));
        QCOMPARE(rig.machine->activity, TransferActivity::Sent);
    }

    void sendIsFollowedAndTold()
    {
        TransferRig rig;
        rig.machine->MCTXEOB = "LF";
        startSend(rig, QByteArray(200, 'a') + '\n' + QByteArray(20, 'b') + '\n' + QByteArray(100, 'c') + '\n');
        rig.click("btnLock"); // but not before the end
        rig.deliver(NAK);
        QCOMPARE(rig.editor->caret(), 201); // line one is under way
        rig.deliver(ACK);
        QTRY_COMPARE(rig.text("txtPCent"), QStringLiteral("68%"));   // line three holds the last byte sent
        QTRY_COMPARE(rig.machine->activity, TransferActivity::Held); // no answer comes
        rig.deliver(CAN);
        QVERIFY(rig.headline().startsWith("Cancelled by the control"));
        QVERIFY(rig.details().endsWith("2 of 3 blocks sent"));
        QVERIFY(rig.editor->markersAtLine(2) == 0 && !rig.editor->isReadOnly());
    }

    void repeatWaitsForTheNextNak()
    {
        TransferRig rig;
        rig.machine->MCREPEAT = true;
        startSend(rig, "G0");
        for (int transfer = 0; transfer < 2; ++transfer) {
            QCOMPARE(play(rig, {NAK, ACK, ACK}), block(1, "G0") + EOT + ".");
            QVERIFY(rig.isShown("boxWaitForCNC") && rig.view->dncRunning() && rig.editor->isReadOnly());
        }
        QCOMPARE(play(rig, {stop, NAK}), QByteArray(".."));
    }

    void blocksInRepliesOut_data()
    {
        QTest::addColumn<Script>("script");
        QTest::addColumn<QByteArray>("replies");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("told");
        const auto row = [](const char* name, const Script& script, QByteArray replies, const QByteArray& text = {},
                            const char* told = "") {
            replies.replace('N', markedNAK).replace('n', NAK).replace('A', ACK);
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
        row("bytes put the next poll off", {tick, "\x06G\x15", blockA, tick, tick}, "..A.N", dataA);
        row("next program", Script{blockA, blockB, EOT} + ticks(7), "AAA.N.N.Nn", dataA + dataB);
        row("a block of end marks", {block(1, EOT.repeated(128))}, "A", EOT.repeated(128));
        row("refused block and its repeat", {damaged(blockA), damaged(blockA), blockA}, "NNA", dataA);
        row("silence after a refusal", Script{damaged(blockA)} + ticks(13) + Script{blockA}, "N.n....n....n.A", dataA);
        row("repeat that begins ends the plain NAK",
            {damaged(blockA), tick, blockA.left(5), tick, tick, tick, tick, blockA.mid(5)}, "N......A", dataA);
        row("stalled block", Script{blockA.left(60)} + ticks(7) + Script{blockA}, ".....N.nA", dataA);
        row("new program within a block", {blockA.left(60), newProgram, blockA, blockA, blockB}, "..NAA",
            dataA + dataB);
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
        row("an end that noise made up", {numbered(1), numbered(2), numbered(3), numbered(4).mid(1), numbered(5)},
            "AAAAA", dataA.repeated(4), "missing after block 3");
        row("cancelled and begun anew", {numbered(1), CAN.repeated(10), numbered(1)}, "A.A", dataA + dataA,
            "cancelled after block 1");
        row("a damaged byte is no cancel", {numbered(1), CAN, numbered(2)}, "A.A", dataA + dataA);
        row("a block of cancels", {block(1, CAN.repeated(128))}, "A", CAN.repeated(128));
        row("what was told goes with its program", {numbered(1), numbered(1), newProgram}, "AA.");
    }

    void blocksInRepliesOut()
    {
        QFETCH(Script, script);
        QFETCH(QByteArray, replies);
        QFETCH(QString, told);
        TransferRig rig;
        rig.machine->MCFLOW = 3;
        rig.start(false);
        QCOMPARE(play(rig, script).toHex(' '), replies.toHex(' '));
        QTEST(rig.editor->wholeText(), "text");
        const QString status = rig.text("lblStatus");
        QVERIFY2(told.isEmpty() ? !status.contains('\n') : status.contains(told), qPrintable(status));
    }
};

QTEST_MAIN(XModemTest)
#include "transfer_xmodem.moc"
