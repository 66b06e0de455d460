// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/XModemBlock.h"
#include "transfer/TransferRig.h"

namespace
{
const QByteArray ACK("\x06");
const QByteArray NAK("\x15");
const QByteArray markedNAK("\x95"); // with the parity bit, as controls expect it
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
const QByteArray blockA = block(1, dataA);
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
        row("nothing left, no block of spaces", "(A)\n(B)\n", {NAK, ACK}, EOT + ".");
        row("an ACK asks for a block, too", full, {ACK}, first);
        row("replies in one chunk", two, {"C" + NAK + ACK + ACK}, first + second + EOT);
        row("end refused", two, {NAK, ACK, ACK, NAK, NAK, ACK, ACK}, first + second + EOT + EOT + EOT + "..");
        row("cancelled in the middle, twice as usual", two, {NAK, CAN + CAN, NAK, ACK}, first + "...");
        const QByteArray sent[] = {{}, first, first + second, first + second + EOT};
        for (int replies = 0; replies < 4; ++replies)
            for (const auto& end : {stop, CAN.repeated(10)})
                row(QString("sent again after %1 replies, %2").arg(replies).arg(end == stop ? "stop" : "cancel"), two,
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
        QVERIFY(!rig.isShown("boxWaitForCNC"));
    }

    void endGoesOutWhateverIsAcknowledged()
    {
        TransferRig rig;
        startSend(rig, "G0\n");
        rig.deliver(NAK);
        QCOMPARE(rig.pty.readAtLeast(132).size(), 132);
        rig.deliver(ACK + ACK); // the second one ends the transfer while EOT is still to be written
        QCOMPARE(rig.pty.readAtLeast(1), EOT);
    }

    void wholeProgramGoesOut()
    {
        // The control type's rules do not apply here, and block 256 is numbered 1.
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

    void sendProgressIsShown()
    {
        TransferRig rig;
        rig.machine->MCTXEOB = "LF";
        startSend(rig, QByteArray(200, 'a') + '\n' + QByteArray(20, 'b') + '\n' + QByteArray(100, 'c') + '\n');
        rig.click("btnLock"); // takes effect only at the end
        rig.deliver(NAK);
        QCOMPARE(rig.editor->caret(), 201); // line one is under way
        rig.deliver(ACK);
        QTRY_COMPARE(rig.text("txtPCent"), QStringLiteral("68%"));    // line three holds the last byte sent
        QTRY_COMPARE(rig.machine->activity, TransferActivity::Still); // no answer comes
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

    void unconfirmedEndIsNotRepeated()
    {
        TransferRig rig;
        rig.machine->MCREPEAT = true;
        startSend(rig, "G0");
        QCOMPARE(play(rig, {NAK, ACK}), block(1, "G0") + EOT);
        QCOMPARE(play(rig, Script(12, NAK)), EOT.repeated(10) + "..");
        QCOMPARE(rig.headline(), QString("Sent; the control did not confirm the end"));
        QVERIFY(rig.isShown("btnSend") && rig.text("txtPCent") == "100%");
    }

    void receptionIsShownOnTheIcon()
    {
        TransferRig rig;
        rig.machine->MCFLOW = 3;
        rig.start(false);
        QCOMPARE(rig.machine->activity, TransferActivity::Listening);
        play(rig, {blockA});
        QCOMPARE(rig.machine->activity, TransferActivity::Receiving);
        play(rig, {EOT});
        QCOMPARE(rig.machine->activity, TransferActivity::Received);
        rig.click("btnNew");
        QCOMPARE(rig.machine->activity, TransferActivity::Listening);
    }

    void receptionIsAnsweredAndShown()
    {
        TransferRig rig;
        rig.machine->MCFLOW = 3;
        rig.start(false);
        const Script script = Script(7, tick) + Script{blockA, blockA, EOT};
        QCOMPARE(play(rig, script), "." + markedNAK + "." + markedNAK + "." + markedNAK + NAK + ACK + ACK + ACK);
        QCOMPARE(rig.editor->wholeText(), dataA + dataA);
        QVERIFY2(rig.text("lblStatus").contains("\nBlock 1 came twice"), qPrintable(rig.text("lblStatus")));
        QVERIFY2(rig.headline().startsWith("Received: "), qPrintable(rig.headline()));
        QCOMPARE(play(rig, {newProgram}), QByteArray("."));
        QVERIFY(!rig.text("lblStatus").contains('\n'));
        QCOMPARE(rig.headline(), QString("Waiting for bytes"));
    }
};

QTEST_MAIN(XModemTest)
#include "transfer_xmodem.moc"
