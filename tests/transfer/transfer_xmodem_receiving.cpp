// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/TransferRig.h"
#include "transfer/XModemBlock.h"

namespace
{
const QByteArray ACK("\x06");
const QByteArray NAK("\x95"); // with the parity bit, as controls know it
const QByteArray plainNAK("\x15");
const QByteArray EOT("\x04");
const QByteArray tick; // in a script: a second goes by

const QByteArray dataA = QByteArray("O1\r\n").leftJustified(127, 'a') + '\x1A';
const QByteArray dataB = QByteArray("\0M30\r\n", 6).leftJustified(128, 'b');
const QByteArray blockA = XModemBlock::build(1, dataA);
const QByteArray blockB = XModemBlock::build(2, dataB);

QByteArray damaged(QByteArray block)
{
    block[60] = block[60] ^ 1;
    return block;
}

QList<QByteArray> ticks(int count)
{
    return QList<QByteArray>(count, tick);
}
} // namespace

class XModemReceivingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bytesInRepliesOut_data();
    void bytesInRepliesOut();
    void blockInTwoChunksIsTakenOnce();
    void repeatedBlockIsTold();
    void missingBlocksAreTold_data();
    void missingBlocksAreTold();
    void nextProgramArrivesWhole_data();
    void nextProgramArrivesWhole();
    void newProgramForgetsWhatWasTold();
    void bytesFromTheLineReachTheView();
};

void XModemReceivingTest::bytesInRepliesOut_data()
{
    using Script = QList<QByteArray>;
    QTest::addColumn<Script>("script");
    QTest::addColumn<QByteArray>("replies"); // "." for every tick and chunk that is not answered
    QTest::addColumn<QByteArray>("text");
    const auto row = [](const char* name, const Script& script, const QByteArray& replies,
                        const QByteArray& text = {}) { QTest::newRow(name) << script << replies << text; };

    row("polls on every second tick", ticks(4), "." + NAK + "." + NAK);
    row("plain NAK between polls after three in vain", ticks(11),
        "." + NAK + "." + NAK + "." + NAK + plainNAK + NAK + plainNAK + NAK + plainNAK);
    row("no plain NAK once a block began", ticks(6) + Script{blockA} + ticks(8),
        "." + NAK + "." + NAK + "." + NAK + ACK + "." + NAK + "." + NAK + "." + NAK + "." + NAK, dataA);
    const QByteArray headless = '\x03' + blockB.mid(1); // its SOH is damaged
    row("plain NAK when a block came as noise", Script{blockA, headless} + ticks(4) + Script{blockB},
        ACK + ".." + NAK + plainNAK + NAK + ACK, dataA + dataB);
    row("plain NAK after a silent minute between blocks", Script{blockA} + ticks(62),
        ACK + QByteArray("." + NAK).repeated(30) + plainNAK + NAK, dataA);
    row("a glitch between blocks brings no plain NAK", Script{blockA, "\x03\x7F"} + ticks(6),
        ACK + ".." + NAK + "." + NAK + "." + NAK, dataA);
    row("noise before a block", {"\x06G\x15", blockA}, "." + ACK, dataA);
    row("two blocks and the end", {blockA, blockB, EOT}, ACK + ACK + ACK, dataA + dataB);
    row("bytes put the next poll off", {tick, blockA, tick, tick}, "." + ACK + "." + NAK, dataA);
    row("next program is asked for with plain NAK again", Script{blockA, EOT} + ticks(7),
        ACK + ACK + "." + NAK + "." + NAK + "." + NAK + plainNAK, dataA);
    row("end inside a block is data", {blockA.left(50) + XModemBlock::build(1, QByteArray(128, '\x04')).mid(50)}, NAK);
    row("a block of end marks", {XModemBlock::build(1, QByteArray(128, '\x04'))}, ACK, QByteArray(128, '\x04'));

    row("refused block and its repeat", {damaged(blockA), blockA}, NAK + ACK, dataA);
    row("refused twice", {damaged(blockA), damaged(blockA), blockA}, NAK + NAK + ACK, dataA);
    row("silence after a refusal", Script{damaged(blockA)} + ticks(13),
        NAK + "." + plainNAK + "...." + plainNAK + "...." + plainNAK + ".");
    row("repeat after that silence", Script{damaged(blockA)} + ticks(3) + Script{blockA},
        NAK + "." + plainNAK + "." + ACK, dataA);
    row("repeat that begins stops the plain NAK",
        Script{damaged(blockA), tick, blockA.left(5), tick, tick, blockA.mid(5)}, NAK + "...." + ACK, dataA);

    row("no poll during a block", Script{blockA.left(60)} + ticks(4) + Script{blockA.mid(60)}, "....." + ACK, dataA);
    row("stalled block is refused and repeated", Script{blockA.left(60)} + ticks(5) + Script{blockA},
        "....." + NAK + ACK, dataA);
    row("stalled block, then silence", Script{blockA.left(60)} + ticks(12),
        "....." + NAK + "." + plainNAK + "...." + plainNAK);
    row("end of one and start of the next in one chunk", {blockA + blockB.left(3), blockB}, NAK + ACK, dataB);

    QByteArray highSum = XModemBlock::build(1, "Gz"); // its sum is 129
    const QByteArray highData = XModemBlock::data(highSum);
    highSum[131] = highSum[131] & 0x7F;
    row("checksum that lost its bit 7", {highSum}, ACK, highData);
}

void XModemReceivingTest::bytesInRepliesOut()
{
    QFETCH(QList<QByteArray>, script);
    QFETCH(QByteArray, replies);
    TransferRig rig;
    rig.machine->MCFLOW = 3;
    rig.start(false);
    QByteArray got;
    for (const auto& step : std::as_const(script)) {
        step.isEmpty() ? rig.view->tmrXModem_Tick() : rig.deliver(step);
        const QByteArray reply = rig.readAll();
        got += reply.isEmpty() ? QByteArray(".") : reply;
    }
    QCOMPARE(got.toHex(' '), replies.toHex(' '));
    QTEST(rig.editor->wholeText(), "text");
}

void XModemReceivingTest::blockInTwoChunksIsTakenOnce()
{
    TransferRig rig;
    rig.machine->MCFLOW = 3;
    rig.start(false);
    QByteArray expected;
    for (qsizetype cut = 1; cut < blockA.size(); ++cut) {
        rig.deliver(blockA.left(cut));
        QCOMPARE(rig.editor->wholeText(), expected);
        rig.deliver(blockA.mid(cut));
        expected += dataA;
        QCOMPARE(rig.editor->wholeText(), expected);
    }
}

void XModemReceivingTest::repeatedBlockIsTold()
{
    TransferRig rig;
    rig.machine->MCFLOW = 3;
    rig.start(false);
    rig.deliver(blockA);
    QVERIFY(!rig.text("lblStatus").contains("twice"));
    rig.deliver(blockB);
    rig.deliver(blockB);
    QCOMPARE(rig.editor->wholeText(), dataA + dataB + dataB); // the operator decides, no block is dropped
    QVERIFY2(rig.text("lblStatus").contains("Block 2 came twice"), qPrintable(rig.text("lblStatus")));
    rig.deliver(XModemBlock::build(3, dataA));
    QVERIFY(rig.text("lblStatus").contains("Block 2 came twice")); // does not go unnoticed later on

    rig.deliver(EOT); // the next program begins with a block of the number that this one could have ended with
    rig.deliver(XModemBlock::build(3, dataA));
    QVERIFY(rig.text("lblStatus").contains("1 repeated"));
}

void XModemReceivingTest::missingBlocksAreTold_data()
{
    using Script = QList<QByteArray>;
    QTest::addColumn<Script>("script");
    QTest::addColumn<QString>("told");
    const auto numbered = [](int number) { return XModemBlock::build(number, dataA); };
    const auto row = [](const char* name, const Script& script, const char* told = "") {
        QTest::newRow(name) << script << QString::fromLatin1(told);
    };
    Script toTheWrap;
    for (int number = 1; number <= 255; ++number)
        toTheWrap << XModemBlock::build(number, dataA);
    row("our numbering at the wrap", toTheWrap + Script{numbered(1), numbered(2)});
    row("usual numbering at the wrap", toTheWrap + Script{numbered(0), numbered(1)});
    row("another program", {numbered(1), numbered(2), EOT, numbered(1)});
    row("begun in the middle", {numbered(2)}, "missing after block 0");
    row("one left out", {numbered(1), numbered(3), numbered(4)}, "missing after block 1");
    // The first byte of block 4 was damaged, and its number looks like the end.
    row("an end that noise made up", {numbered(1), numbered(2), numbered(3), numbered(4).mid(1), numbered(5)},
        "missing after block 3");
    row("cancelled", {numbered(1), QByteArray(10, 24) + QByteArray(10, 8)}, "cancelled after block 1");
    row("cancelled and begun anew", {numbered(1), QByteArray(10, 24), numbered(1)}, "cancelled after block 1");
    row("a damaged byte is no cancel", {numbered(1), "\x18", numbered(2)});
    row("a block of cancels", {XModemBlock::build(1, QByteArray(128, 24))});
}

void XModemReceivingTest::missingBlocksAreTold()
{
    QFETCH(QList<QByteArray>, script);
    QFETCH(QString, told);
    TransferRig rig;
    rig.machine->MCFLOW = 3;
    rig.start(false);
    for (const auto& step : std::as_const(script))
        rig.deliver(step);
    const QString status = rig.text("lblStatus");
    QVERIFY2(told.isEmpty() ? !status.contains('\n') : status.contains(told), qPrintable(status));
}

void XModemReceivingTest::nextProgramArrivesWhole_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<bool>("isClosed");
    const std::pair<const char*, QByteArray> stages[] = {{"idle", {}},
                                                         {"block under way", blockA.left(60)},
                                                         {"block refused", damaged(blockA)},
                                                         {"between blocks", blockA}};
    for (const auto& [stage, before] : stages) {
        QTest::addRow("%s, new program", stage) << before << false;
        QTest::addRow("%s, view closed", stage) << before << true;
    }
}

void XModemReceivingTest::nextProgramArrivesWhole()
{
    QFETCH(QByteArray, before);
    QFETCH(bool, isClosed);
    TransferRig rig;
    rig.machine->MCFLOW = 3;
    rig.start(false);
    rig.deliver(before);
    rig.readAll();
    if (isClosed) {
        rig.view.reset();
        rig.child->port->Close();
        QCOMPARE(rig.machine->activity, TransferActivity::Idle);
        rig.start(false);
    } else {
        rig.click("btnNew");
    }
    for (const auto& piece : {blockA, blockB, EOT}) {
        rig.deliver(piece);
        if (rig.readAll() != NAK) continue; // with the beginning of a block that was given up
        rig.deliver(piece);
        QCOMPARE(rig.readAll(), ACK);
    }
    QCOMPARE(rig.editor->wholeText(), dataA + dataB);
    rig.view->tmrXModem_Tick();
    rig.view->tmrXModem_Tick();
    QCOMPARE(rig.readAll(), NAK); // asks for the next program
}

void XModemReceivingTest::newProgramForgetsWhatWasTold()
{
    TransferRig rig;
    rig.machine->MCFLOW = 3;
    rig.start(false);
    rig.deliver(blockA);
    rig.deliver(blockA);
    rig.click("btnNew");
    QCOMPARE(rig.editor->wholeText(), QByteArray());
    QVERIFY(!rig.text("lblStatus").contains("twice"));
}

void XModemReceivingTest::bytesFromTheLineReachTheView()
{
    TransferRig rig;
    rig.machine->MCFLOW = 3;
    rig.start(false);
    rig.view->startXModemTimer(0.01);
    QCOMPARE(rig.pty.readAtLeast(1).left(1), NAK);
    rig.view->tmrXModemTimer.stop();
    rig.readAll();
    rig.pty.write(blockA);
    QCOMPARE(rig.pty.readAtLeast(1), ACK);
    QCOMPARE(rig.editor->wholeText(), dataA);
    rig.pty.write(EOT);
    QCOMPARE(rig.pty.readAtLeast(1), ACK);
}

QTEST_MAIN(XModemReceivingTest)
#include "transfer_xmodem_receiving.moc"
