// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/MessageBoxes.h"
#include "transfer/TransferRig.h"

namespace
{
const QByteArray leader(20, '\0');
const QByteArray okumaHeader = leader + QByteArray("\x12\0", 2) + leader; // the first line has a leader of its own
const QByteArray okumaTrailer = leader + QByteArray("\x14\0\0\0\0\0", 6);

// What of the record makes the bytes on the line.
struct Machine {
    QString mode = "NONE";
    QString eob = "CRLF";
    QString sot = "None (Default)";
    QString eot = "None (Default)";
    bool stripComments = false;
    bool stripEmptyLines = false;
};
} // namespace
Q_DECLARE_METATYPE(Machine)

class SendingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bytesOnTheLine_data();
    void bytesOnTheLine();
    void longProgramIsWholeAndInOrder();
    void secondTransferIsFramedAsTheFirst();
    void emptyProgramIsRefused();
    void runningTransferShowsStopAlone();
    void repeatSendsAgainUntilStop();
    void progressAndIconFollow();
};

void SendingTest::bytesOnTheLine_data()
{
    QTest::addColumn<Machine>("machine");
    QTest::addColumn<QByteArray>("program");
    QTest::addColumn<QByteArray>("bytes");
    const auto row = [](const char* name, const Machine& machine, const QByteArray& program, const QByteArray& bytes) {
        QTest::newRow(name) << machine << program << bytes;
    };
    row("last line with a line end", {}, "G0\nG1\n", "G0\r\nG1\r\n");
    row("last line without", {}, "G0\nG1", "G0\r\nG1");
    row("one line", {}, "M30", "M30");
    row("a line end alone", {}, "\n", "\r\n");
    row("end of block LF", {.eob = "LF"}, "G0\nG1\n", "G0\nG1\n");
    row("end of block CR", {.eob = "CR"}, "G0\nG1\n", "G0\rG1\r");
    row("end of block LF CR CR", {.eob = "LFCRCR"}, "G0\nG1", "G0\n\r\rG1");
    row("no end of block", {.eob = ""}, "G0\nG1\n", "G0G1");
    row("literal end of block", {.eob = "*"}, "G0\nG1\n", "G0*G1*");
    row("unknown control type", {.mode = "Haas"}, "%\nG0\n%", "%\r\nG0\r\n%");
    row("start and end", {.sot = "37,13", .eot = "3,4"}, "G0\n", "%\rG0\r\n\3\4");
    row("start and end as text", {.sot = "O1,-", .eot = "END"}, "G0\n", "O1-G0\r\nEND");
    row("bytes that are no ASCII", {}, "G\xE9\xFF\n", "G??\r\n");
    row("blanks and controls", {}, QByteArray("\t G0 \x01\0\x7F\n", 9),
        QByteArray("\t G0 \x01\0\x7F", 8).append("\r\n"));

    row("Fanuc", {.mode = "Fanuc"}, "O1\nM30\n", leader + "%\r\nO1\r\nM30\r\n%\r\n");
    row("Fanuc with the program's own percent lines", {.mode = "FANUC"}, "%\nO1\n % \nG%0%\n%",
        leader + "%\r\nO1\r\nG0\r\n%\r\n");
    row("Fanuc keeps blank lines that it did not make", {.mode = "fanuc"}, "O1\n \nM30\n",
        leader + "%\r\nO1\r\n \r\nM30\r\n%\r\n");
    row("Fanuc, percent lines only", {.mode = "Fanuc", .eob = "LF"}, "%\n%\n", leader + "%\n%\n");
    row("Fanuc sends no start and end strings", {.mode = "Fanuc", .sot = "65", .eot = "66"}, "O1",
        leader + "%\r\nO1%\r\n");

    row("Okuma", {.mode = "okuma"}, "$A.MIN%\nG0\n", okumaHeader + "$A.MIN%\r\nG0\r\n" + okumaTrailer);
    row("Okuma without tape codes of the text", {.mode = "OKUMA"}, QByteArray("\0\x12G\x14\0\n\x12\n", 8),
        okumaHeader + "G\r\n\r\n" + okumaTrailer);
    row("Okuma, first line stripped", {.mode = "OKUMA", .stripComments = true, .stripEmptyLines = true}, "(A)\nG0\nG1",
        okumaHeader + "G0\r\nG1" + okumaTrailer);

    row("comments", {.stripComments = true}, "N1 (A) G0 ; B\n(C;D)\nG1 (open\n;E\nM30", "N1  G0\r\n\r\nG1\r\n\r\nM30");
    row("empty lines", {.stripEmptyLines = true}, "G0\n \t\n(A)\n \nM30\n  ", "G0\r\n(A)\r\nM30\r\n");
    row("both", {.eot = "4", .stripComments = true, .stripEmptyLines = true}, "(A)\nG0\n ;B\n(C)\n", "G0\r\n\4");
    row("nothing left", {.sot = "1", .eot = "4", .stripComments = true, .stripEmptyLines = true}, "(A)\n(B)\n", "\1\4");
}

void SendingTest::bytesOnTheLine()
{
    QFETCH(Machine, machine);
    QFETCH(QByteArray, program);
    TransferRig rig;
    auto& mc = *rig.machine;
    mc.MCMODE = machine.mode;
    mc.MCTXEOB = machine.eob;
    mc.MCTXSOT = machine.sot;
    mc.MCTXEOT = machine.eot;
    mc.MCSTRIPCOMMENTS = machine.stripComments;
    mc.MCSTRIPEMPTYLINES = machine.stripEmptyLines;
    rig.start();
    rig.open(program);
    rig.click("btnSend");
    QTEST(rig.readUntilIdle(), "bytes");
    QCOMPARE(rig.state(), viewTX::TxState::txState_idle);
    QCOMPARE(rig.text("txtPCent"), QStringLiteral("100%"));
}

void SendingTest::longProgramIsWholeAndInOrder()
{
    TransferRig rig;
    rig.machine->MCFLOW = 1;
    rig.start();
    QByteArray program;
    for (int i = 0; i < 3000; ++i)
        program += "N" + QByteArray::number(i) + " G1 X" + QByteArray(i % 97, '1') + '\n';
    rig.open(program);
    rig.click("btnSend");
    QCOMPARE(rig.readUntilIdle(), program.replace("\n", "\r\n"));
}

void SendingTest::secondTransferIsFramedAsTheFirst()
{
    TransferRig rig;
    rig.machine->MCMODE = "OKUMA";
    rig.start();
    rig.open("G0\nG1\n");
    for (int transfer = 0; transfer < 2; ++transfer) {
        rig.click("btnSend");
        QCOMPARE(rig.readUntilIdle(), okumaHeader + "G0\r\nG1\r\n" + okumaTrailer);
    }
}

void SendingTest::emptyProgramIsRefused()
{
    TransferRig rig;
    rig.start();
    MessageBoxes boxes("OK");
    rig.click("btnSend");
    QCOMPARE(boxes.texts,
             QStringList{"Can not send an empty file\n\nOpen folder and select a file to send to the CNC"});
    QVERIFY(rig.isShown("btnSend") && rig.isShown("btnRewind") && !rig.isShown("btnStop"));
    QCOMPARE(rig.readAll(), QByteArray());
}

void SendingTest::runningTransferShowsStopAlone()
{
    TransferRig rig;
    rig.start();
    rig.open("G0\nG1\n");
    QVERIFY(!rig.isShown("btnStop"));
    rig.holdLine();
    rig.click("btnSend");
    QVERIFY(rig.view->dncRunning());
    QVERIFY(rig.isShown("btnStop") && !rig.isShown("btnSend") && !rig.isShown("btnRewind") && !rig.isShown("cbo1"));
    rig.releaseLine();
    rig.readUntilIdle();
    QVERIFY(!rig.isShown("btnStop") && rig.isShown("btnSend") && rig.isShown("btnRewind") && rig.isShown("cbo1"));
    QVERIFY(!rig.isShown("btnStep"));
}

void SendingTest::repeatSendsAgainUntilStop()
{
    TransferRig rig;
    rig.machine->MCMODE = "FANUC";
    rig.machine->MCREPEAT = true;
    rig.start();
    rig.open("O1\nM30\n");
    const QByteArray once = leader + "%\r\nO1\r\nM30\r\n%\r\n";
    rig.click("btnSend");
    const QByteArray thrice = rig.pty.readAtLeast(3 * once.size());
    QVERIFY(thrice.startsWith(once + once + once));
    rig.click("btnStop");
    QVERIFY(!rig.view->dncRunning());
    rig.readAll();
    QCOMPARE(rig.readAll(), QByteArray());
}

void SendingTest::progressAndIconFollow()
{
    TransferRig rig;
    rig.start();
    QVERIFY(!rig.isShown("boxPBOuter"));
    rig.open("0123456789\n0123456789\n0123456789\n0123456789\n");
    rig.holdLineAfter(3); // header and two lines
    rig.click("btnSend");
    QTRY_VERIFY(rig.isHeld());
    QTRY_COMPARE(rig.text("txtPCent"), QStringLiteral("50%"));
    QCOMPARE(rig.machine->maximum, 44.0);
    QCOMPARE(rig.machine->value, 22.0);
    QCOMPARE(rig.machine->activity, TransferActivity::Sending);
    QVERIFY(!rig.machine->hidden && rig.isShown("boxPBOuter"));
    const int outer = rig.view->findChild<QWidget*>("boxPBOuter")->width();
    QCOMPARE(rig.view->findChild<QWidget*>("boxPBInner")->width(), outer / 2);
    rig.releaseLine();
    rig.readUntilIdle();
    QCOMPARE(rig.machine->activity, TransferActivity::Sent);
}

QTEST_MAIN(SendingTest)
#include "transfer_sending.moc"
