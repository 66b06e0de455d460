// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/TransferRig.h"
#include "transfer/XModemBlock.h"

namespace
{
const QByteArray NAK("\x15");
const QByteArray ACK("\x06");
const QByteArray EOT("\x04");
const QByteArray CAN("\x18");

// The blocks that carry these bytes, the first one numbered `number`.
QByteArray blocks(const QByteArray& data, int number = 1)
{
    QByteArray result;
    for (qsizetype at = 0; at < data.size(); at += 128) {
        result += XModemBlock::build(number, data.mid(at, 128));
        number = XModemBlock::nextNumber(number);
    }
    return result;
}

QByteArray lines(int count)
{
    QByteArray program;
    for (int line = 0; line < count; ++line)
        program += "N" + QByteArray::number(line) + " G1 X10.5 Y-3.25 (MOVE)\n";
    return program;
}
} // namespace

class XModemSendingTest : public QObject
{
    Q_OBJECT

    static void start(TransferRig& rig, const QByteArray& program)
    {
        rig.machine->MCFLOW = 3;
        rig.start();
        rig.open(program);
        rig.click("btnSend");
    }

    // Answers every block with ACK until EOT is answered; returns the data of all blocks.
    static QByteArray takeAll(TransferRig& rig)
    {
        QByteArray data;
        rig.deliver(NAK);
        while (rig.view->dncRunning()) {
            QByteArray got = rig.pty.readAtLeast(1);
            if (got != EOT) got += rig.pty.readAtLeast(XModemBlock::size - got.size());
            if (got != EOT && !XModemBlock::isGood(got)) return "bad block";
            if (got != EOT) data += XModemBlock::data(got);
            rig.deliver(ACK);
        }
        return data;
    }

private Q_SLOTS:
    void nothingGoesOutBeforeTheControlAsks();
    void repliesInBytesOut_data();
    void repliesInBytesOut();
    void wholeProgramGoesOut_data();
    void wholeProgramGoesOut();
    void block256IsNumberedOne();
    void bytesFromTheLineReachTheTransfer();
    void highlightReachesTheEndWithTheLastByte();
    void nakHidesTheBox();
    void cancelIsTold();
    void endGivesTheEditorBack_data();
    void endGivesTheEditorBack();
    void nextTransferWorksAfterAnyEnd_data();
    void nextTransferWorksAfterAnyEnd();
    void repeatWaitsForTheNextNak();
    void stopEndsARepeat();
    void repliesAfterStopAreIgnored();
    void selectorStaysHidden();
};

void XModemSendingTest::nothingGoesOutBeforeTheControlAsks()
{
    TransferRig rig;
    rig.machine->MCWAIT = true; // has no meaning here
    start(rig, "G0\n");
    QVERIFY(rig.isShown("boxWaitForCNC") && !rig.isShown("btnSendNow"));
    QCOMPARE(rig.text("lblWaitForMC"), QStringLiteral("Waiting for XModem start command from CNC"));
    QCOMPARE(rig.state(), viewTX::TxState::txState_sending_xmodem);
    rig.deliver("C\x11 ");
    QCOMPARE(rig.readAll(), QByteArray());
}

void XModemSendingTest::repliesInBytesOut_data()
{
    QTest::addColumn<QByteArray>("program");
    QTest::addColumn<QList<QByteArray>>("replies"); // one chunk each
    QTest::addColumn<QByteArray>("sent");
    const auto row = [](const char* name, const QByteArray& program, const QList<QByteArray>& replies,
                        const QByteArray& sent) { QTest::newRow(name) << program << replies << sent; };
    const QByteArray full(128, 'a');
    const QByteArray two = full + "b";
    row("first block", "G0\n", {NAK}, blocks("G0\r\n"));
    row("whole transfer", two, {NAK, ACK, ACK, ACK}, blocks(two) + EOT);
    row("exactly one block, none of spaces behind it", full, {NAK, ACK, ACK}, blocks(full) + EOT);
    row("refused first block", two, {NAK, NAK}, blocks(full) + blocks(full));
    row("refused last block keeps number and data", two, {NAK, ACK, NAK, NAK, ACK},
        blocks(two) + blocks("b", 2) + blocks("b", 2) + EOT);
    row("acknowledgement asks as well", "G0", {ACK}, blocks("G0"));
    row("replies in one chunk", two, {NAK + ACK + ACK}, blocks(two) + EOT);
    row("other bytes mean nothing", "G0", {QByteArray("C\x11\x13\0x\x04", 6), NAK}, blocks("G0"));
    row("cancelled before the first block", "G0", {CAN, NAK}, "");
    row("cancelled in the middle, twice as usual", two, {NAK, CAN + CAN, NAK, ACK}, blocks(full));
    row("refused end counts as an answer", "G0", {NAK, ACK, NAK, NAK}, blocks("G0") + EOT);
}

void XModemSendingTest::repliesInBytesOut()
{
    QFETCH(QByteArray, program);
    QFETCH(QList<QByteArray>, replies);
    TransferRig rig;
    start(rig, program);
    QByteArray sent;
    for (const auto& reply : std::as_const(replies)) {
        rig.deliver(reply);
        sent += rig.readAll(); // also lets the write of each reply end before the next
    }
    QTEST(sent, "sent");
}

void XModemSendingTest::wholeProgramGoesOut_data()
{
    QTest::addColumn<QByteArray>("program");
    QTest::addColumn<QString>("eob");
    QTest::addColumn<bool>("strip");
    QTest::addColumn<QByteArray>("data");
    const auto row = [](const char* name, const QByteArray& program, const char* eob, bool strip, QByteArray data) {
        data += QByteArray((128 - data.size() % 128) % 128, ' ');
        QTest::newRow(name) << program << eob << strip << data;
    };
    const QByteArray longLines = QByteArray(1000, 'a') + '\n' + QByteArray(1000, 'b') + "\nM30";
    row("many lines", lines(100), "CRLF", false, lines(100).replace("\n", "\r\n"));
    row("lines longer than a block", longLines, "LF", false, longLines);
    row("no line end at the end", "G0\nM30", "CR", false, "G0\rM30");
    row("percent and Okuma tape codes stay", "%\n\x12G\x14\n%", "LF", false, "%\n\x12G\x14\n%");
    row("byte codes above 127", "\xE9\n", "LF", false, "?\n");
    row("stripped", lines(100) + "(END)\n \nM30\n(X)\n", "LF", true, lines(100).replace(" (MOVE)", "") + "M30\n");
}

void XModemSendingTest::wholeProgramGoesOut()
{
    QFETCH(QByteArray, program);
    QFETCH(QString, eob);
    QFETCH(bool, strip);
    TransferRig rig;
    rig.machine->MCMODE = "OKUMA"; // no framing and no rules of the control type here
    rig.machine->MCTXEOB = eob;
    rig.machine->MCSTRIPCOMMENTS = rig.machine->MCSTRIPEMPTYLINES = strip;
    start(rig, program);
    QTEST(takeAll(rig), "data");
    QCOMPARE(rig.text("txtPCent"), QStringLiteral("100%"));
}

void XModemSendingTest::block256IsNumberedOne()
{
    TransferRig rig;
    rig.machine->MCTXEOB = "LF";
    const QByteArray program = lines(260 * 128 / 26);
    start(rig, program);
    rig.deliver(NAK);
    for (int block = 1; block <= 257; ++block) {
        const QByteArray got = rig.pty.readAtLeast(XModemBlock::size);
        QCOMPARE(got, blocks(program.mid((block - 1) * 128, 128), block <= 255 ? block : block - 255));
        rig.deliver(ACK);
    }
}

void XModemSendingTest::bytesFromTheLineReachTheTransfer()
{
    TransferRig rig;
    start(rig, "G0");
    rig.pty.write(NAK);
    QCOMPARE(rig.pty.readAtLeast(XModemBlock::size), blocks("G0"));
    rig.pty.write(ACK);
    QCOMPARE(rig.pty.readAtLeast(1), EOT);
    rig.pty.write(ACK);
    QTRY_VERIFY(!rig.view->dncRunning());
}

void XModemSendingTest::highlightReachesTheEndWithTheLastByte()
{
    TransferRig rig;
    rig.machine->MCTXEOB = "LF";
    const QByteArray program = QByteArray(200, 'a') + '\n' + QByteArray(20, 'b') + '\n' + QByteArray(100, 'c') + '\n';
    start(rig, program);
    rig.deliver(NAK);
    QCOMPARE(rig.editor->caret(), 201); // line one is under way
    QCOMPARE(rig.view->iIndexCurrentLine, 0);
    QVERIFY(rig.editor->markersAtLine(0) != 0);
    rig.deliver(ACK);
    QCOMPARE(rig.view->iIndexCurrentLine, 222);
    QTRY_COMPARE(rig.text("txtPCent"), QStringLiteral("68%"));
    QVERIFY(!rig.view->booSentXModemEOF);
    rig.deliver(ACK);
    QTRY_COMPARE(rig.editor->caret(), program.size());
    QVERIFY(rig.view->booSentXModemEOF);
    QCOMPARE(rig.text("txtPCent"), QStringLiteral("100%"));
}

void XModemSendingTest::nakHidesTheBox()
{
    TransferRig rig;
    start(rig, "G0");
    rig.deliver(NAK);
    QVERIFY(!rig.isShown("boxWaitForCNC"));
    QCOMPARE(rig.machine->activity, TransferActivity::Sending);
}

void XModemSendingTest::cancelIsTold()
{
    TransferRig rig;
    start(rig, QByteArray(300, 'a'));
    rig.deliver(NAK);
    rig.deliver(ACK);
    rig.deliver(QByteArray(10, 24) + QByteArray(10, 8));
    QVERIFY(rig.text("lblTransferState").startsWith("Cancelled by the control"));
    QVERIFY(rig.text("lblStatus").endsWith("2 of 3 blocks sent"));
    rig.readAll();
    rig.click("btnSend");
    QVERIFY(!rig.text("lblStatus").contains("blocks sent"));
    rig.deliver(NAK + ACK + ACK + ACK + ACK);
    QVERIFY(!rig.view->dncRunning() && rig.text("lblTransferState").startsWith("Sent"));
}

void XModemSendingTest::endGivesTheEditorBack_data()
{
    QTest::addColumn<QByteArray>("replies");
    QTest::newRow("answered end") << NAK + ACK + ACK;
    QTest::newRow("cancelled") << CAN;
    QTest::newRow("stopped") << QByteArray();
}

void XModemSendingTest::endGivesTheEditorBack()
{
    QFETCH(QByteArray, replies);
    TransferRig rig;
    start(rig, "G0");
    QVERIFY(rig.editor->isReadOnly());
    rig.click("btnLock");
    QVERIFY(rig.editor->isReadOnly());
    if (replies.isEmpty()) rig.click("btnStop");
    rig.deliver(replies);
    QVERIFY(!rig.view->dncRunning());
    QCOMPARE(rig.state(), viewTX::TxState::txState_idle);
    QVERIFY(!rig.editor->isReadOnly());
    QVERIFY(!rig.isShown("boxWaitForCNC"));
    QCOMPARE(rig.editor->markersAtLine(0), 0U);
}

void XModemSendingTest::nextTransferWorksAfterAnyEnd_data()
{
    QTest::addColumn<QList<QByteArray>>("replies");
    QTest::addColumn<QString>("end");
    const std::pair<const char*, QList<QByteArray>> stages[] = {{"waiting for the start", {}},
                                                                {"first block out", {NAK}},
                                                                {"block refused", {NAK, NAK}},
                                                                {"last block out", {NAK, ACK, ACK}},
                                                                {"end sent", {NAK, ACK, ACK, ACK}}};
    for (const auto& [stage, replies] : stages)
        for (const char* end : {"stop", "close", "cancel"})
            QTest::addRow("%s, %s", stage, end) << replies << QString::fromLatin1(end);
}

void XModemSendingTest::nextTransferWorksAfterAnyEnd()
{
    QFETCH(QList<QByteArray>, replies);
    QFETCH(QString, end);
    const QByteArray program = QByteArray(300, 'a') + "\nM30";
    TransferRig rig;
    rig.machine->MCTXEOB = "LF";
    start(rig, program);
    for (const auto& reply : std::as_const(replies)) {
        rig.deliver(reply);
        rig.readAll();
    }
    QVERIFY(rig.view->dncRunning());
    if (end == "stop") rig.click("btnStop");
    if (end == "cancel") rig.deliver(QByteArray(10, CAN[0]));
    if (end == "close") {
        rig.view.reset();
        rig.child->port->Close();
        QCOMPARE(rig.machine->activity, TransferActivity::Idle);
        QVERIFY(rig.machine->hidden);
        rig.start();
        rig.open("O2");
        rig.open(program);
    }
    QVERIFY(!rig.view->dncRunning());
    QCOMPARE(rig.state(), viewTX::TxState::txState_idle);
    QVERIFY(rig.isShown("btnSend") && rig.isShown("btnRewind") && !rig.isShown("btnStop"));
    QVERIFY(!rig.isShown("boxWaitForCNC"));
    QCOMPARE(rig.machine->activity, end == "close" ? TransferActivity::Idle : TransferActivity::Stopped);
    rig.deliver(ACK + NAK); // late
    QCOMPARE(rig.readAll(), QByteArray());

    rig.click("btnSend");
    QVERIFY(rig.isShown("boxWaitForCNC"));
    QCOMPARE(takeAll(rig), program.leftJustified(384, ' '));
}

void XModemSendingTest::stopEndsARepeat()
{
    TransferRig rig;
    rig.machine->MCREPEAT = true;
    start(rig, "G0");
    for (const auto& reply : {NAK, ACK, ACK}) {
        rig.deliver(reply);
        rig.readAll();
    }
    QVERIFY(rig.view->dncRunning() && rig.isShown("boxWaitForCNC"));
    rig.click("btnStop");
    QVERIFY(!rig.view->dncRunning() && !rig.isShown("boxWaitForCNC"));
    rig.deliver(NAK);
    QCOMPARE(rig.readAll(), QByteArray());
}

void XModemSendingTest::repeatWaitsForTheNextNak()
{
    TransferRig rig;
    rig.machine->MCREPEAT = true;
    start(rig, "G0");
    for (int transfer = 0; transfer < 2; ++transfer) {
        QVERIFY(rig.isShown("boxWaitForCNC"));
        rig.deliver(NAK);
        rig.deliver(ACK);
        rig.deliver(ACK);
        QCOMPARE(rig.readAll(), blocks("G0") + EOT);
        QVERIFY(rig.view->dncRunning() && rig.editor->isReadOnly());
    }
}

void XModemSendingTest::repliesAfterStopAreIgnored()
{
    TransferRig rig;
    start(rig, QByteArray(300, 'a'));
    rig.deliver(NAK);
    QCOMPARE(rig.readAll().size(), XModemBlock::size);
    rig.click("btnStop");
    rig.deliver(ACK + NAK + CAN);
    QCOMPARE(rig.readAll(), QByteArray());
    QVERIFY(!rig.view->dncRunning());

    rig.click("btnSend"); // from the top again
    rig.deliver(NAK);
    QCOMPARE(rig.readAll(), blocks(QByteArray(128, 'a')));
}

void XModemSendingTest::selectorStaysHidden()
{
    TransferRig rig;
    start(rig, "G0");
    QVERIFY(!rig.isShown("cbo1"));
    rig.click("btnStop");
    QVERIFY(!rig.isShown("cbo1"));
    rig.click("btnRewind");
    QVERIFY(!rig.isShown("cbo1"));
}

QTEST_MAIN(XModemSendingTest)
#include "transfer_xmodem_sending.moc"
