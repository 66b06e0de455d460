// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/TransferClock.h"
#include "support/MessageBoxes.h"
#include "transfer/TransferRig.h"

namespace
{
const QByteArray leader(20, '\0');
const QByteArray okumaHeader = leader + QByteArray("\x12\0", 2) + leader; // the first line has a leader of its own
const QByteArray okumaTrailer = leader + QByteArray("\x14\0\0\0\0\0", 6);
const QByteArray program("G0\nG1\nG2\n");
const QByteArray onTheLine("G0\r\nG1\r\nG2\r\n");
const QByteArray startSignal("\x11"); // DC1

// What in the record decides the bytes on the line.
struct Machine {
    QString mode = "NONE";
    QString eob = "CRLF";
    QString sot = "None (Default)";
    QString eot = "None (Default)";
    bool stripComments = false;
    bool stripEmptyLines = false;
};
} // namespace

/// What goes out on the line, and when.
class SendingTest : public QObject
{
    Q_OBJECT

    // A machine that waits for the control's start signal, Send pressed.
    static void startWaiting(TransferRig& rig, int flow)
    {
        rig.machine->MCWAIT = true;
        rig.machine->MCFLOW = flow;
        rig.startWith(program);
        rig.click("btnSend");
    }

private Q_SLOTS:
    void bytesOnTheLine_data()
    {
        QTest::addColumn<Machine>("machine");
        QTest::addColumn<QByteArray>("program");
        QTest::addColumn<QByteArray>("bytes");
        const auto row = [](const char* name, const Machine& machine, const QByteArray& program,
                            const QByteArray& bytes) { QTest::newRow(name) << machine << program << bytes; };
        row("unknown control type", {.mode = "Fanuc 0M"}, "%\r\n\x12G0\rG1", "%\r\n\x12G0\r\nG1");
        row("start and end", {.eob = "LFCRCR", .sot = "37,13", .eot = "3,4"}, "G0\n", "%\rG0\n\r\r\3\4");
        row("any bytes", {.eob = "LF"}, QByteArray("\t G0 \x01\0\x7F\n\xE9\x85\xFF\x0B\x0C\n", 15),
            QByteArray("\t G0 \x01\0\x7F\n???\x0B\x0C\n", 15));
        row("Fanuc", {.mode = "Fanuc", .sot = "65", .eot = "66", .stripComments = true}, "%\nO1(B)\n%",
            leader + "%\r\nO1\r\n%\r\n");
        row("Okuma", {.mode = "okuma", .stripComments = true, .stripEmptyLines = true}, "(A)\nG0\nG1",
            okumaHeader + "G0\r\nG1" + okumaTrailer);
        row("nothing left", {.sot = "1", .eot = "4", .stripComments = true, .stripEmptyLines = true}, "(A)\n ;B\n",
            "\1\4");
    }

    void bytesOnTheLine()
    {
        QFETCH(Machine, machine);
        QFETCH(QByteArray, program);
        TransferRig rig;
        auto& mc = *rig.machine;
        rig.startWith(program);
        mc.MCMODE = machine.mode;
        mc.MCTXEOB = machine.eob;
        mc.MCTXSOT = machine.sot;
        mc.MCTXEOT = machine.eot;
        mc.MCSTRIPCOMMENTS = machine.stripComments;
        mc.MCSTRIPEMPTYLINES = machine.stripEmptyLines;
        rig.view->machineChanged();
        rig.click("btnSend");
        QTEST(rig.readUntilIdle(), "bytes");
        QCOMPARE(rig.text("txtPCent"), QStringLiteral("100%"));
        QCOMPARE(rig.machine->activity, TransferActivity::Sent);
    }

    void emptyProgramIsRefused()
    {
        TransferRig rig;
        rig.machine->MCMODE = "FANUC"; // header and trailer alone would be a program, too
        rig.startWith("");
        MessageBoxes boxes("OK");
        rig.click("btnSend");
        QCOMPARE(boxes.texts.size(), 1);
        QVERIFY(!rig.view->dncRunning());
        QCOMPARE(rig.readAll(), QByteArray());
    }

    void nothingGoesOutBeforeTheStartSignal_data()
    {
        QTest::addColumn<int>("flow");
        QTest::newRow("no flow control") << 0;
        QTest::newRow("XON/XOFF") << 1;
    }

    void nothingGoesOutBeforeTheStartSignal()
    {
        QFETCH(int, flow);
        TransferRig rig;
        startWaiting(rig, flow);
        QVERIFY(rig.isShown("boxWaitForCNC") && rig.isShown("btnSendNow") && rig.isShown("btnStop"));
        QCOMPARE(rig.machine->activity, TransferActivity::Waiting);
        rig.click("btnHideWaitBox");
        QVERIFY(!rig.isShown("boxWaitForCNC") && rig.isShown("btnStop")); // it still waits
        QVERIFY(!(rig.pty.line().c_iflag & IXOFF));                       // XON gets through, as the start signal
        QTest::keyClick(rig.editor, Qt::Key_End, Qt::ControlModifier);    // does not choose a line
        QCOMPARE(rig.readAll(), QByteArray());
        termios changed = rig.pty.line(); // by another program: a wait can last for days
        ::cfsetospeed(&changed, B2400);
        ::tcsetattr(rig.pty.slave(), TCSANOW, &changed);
        rig.pty.write("G11 is no start" + startSignal);
        QTRY_VERIFY(!rig.view->booWaitingForStartSignal());
        const termios line = rig.pty.line();
        QCOMPARE(bool(line.c_iflag & IXOFF), flow == 1);
        QCOMPARE(::cfgetospeed(&line), speed_t{B115200});
        QCOMPARE(rig.readUntilIdle(), onTheLine);
    }

    void rtsCtsDoesNotWait()
    {
        TransferRig rig;
        startWaiting(rig, 2);
        QCOMPARE(rig.readUntilIdle(), onTheLine);
    }

    void oneStartSignalStartsOnce()
    {
        TransferRig rig;
        rig.machine->MCMODE = "OKUMA";
        rig.machine->MCREPEAT = true;
        startWaiting(rig, 0);
        const QByteArray whole = okumaHeader + onTheLine + okumaTrailer;
        for (int transfer = 0; transfer < 2; ++transfer) { // every repeat waits again and is framed like the first
            rig.holdLineAfter(2);
            rig.deliver(startSignal + startSignal);
            QTRY_VERIFY(rig.isHeld);
            rig.deliver(startSignal);
            rig.releaseLine();
            const QString started = QString("Copy %1, started by the control at ").arg(transfer + 1);
            QVERIFY2(rig.details().contains(started), qPrintable(rig.details()));
            QCOMPARE(rig.pty.readAtLeast(whole.size()), whole);
            QTRY_VERIFY(rig.view->booWaitingForStartSignal());
            QCOMPARE(rig.readAll(), QByteArray());
        }
        rig.click("btnStop");
        rig.deliver(startSignal + "\x06\x15\x18 O1\n");
        QVERIFY(!rig.view->dncRunning());
        QCOMPARE(rig.editor->wholeText(), program);
        QCOMPARE(rig.readAll(), QByteArray());
    }

    void stopInTheWaitLosesNothing()
    {
        TransferRig rig;
        rig.machine->MCTXSOT = "37";
        startWaiting(rig, 1);
        for (int stop = 0; stop < 2; ++stop) {
            rig.click("btnStop");
            QVERIFY(!rig.isShown("boxWaitForCNC") && rig.isShown("btnSend"));
            rig.click("btnSend"); // waits again
            QVERIFY(rig.isShown("boxWaitForCNC"));
        }
        rig.holdLineAfter(2);
        rig.deliver(startSignal);
        QTRY_VERIFY(rig.isHeld);
        rig.click("btnStop"); // in the second line
        rig.releaseLine();
        const QByteArray before = rig.pty.readAtLeast(5);
        for (int stop = 0; stop < 2; ++stop) { // giving up a wait keeps what that stop cut off
            rig.click("btnSend");
            QTest::keyClick(rig.editor, Qt::Key_End, Qt::ControlModifier);
            if (stop == 0) rig.click("btnStop");
        }
        rig.deliver(startSignal);
        QVERIFY(rig.pty.line().c_iflag & IXOFF);
        QCOMPARE(before + rig.readUntilIdle(), "%" + onTheLine);
    }

    void pulledAdapterIsReportedOnce()
    {
        TransferRig rig;
        startWaiting(rig, 1);
        rig.pty.hangUp();
        MessageBoxes boxes("OK");
        rig.deliver(startSignal + startSignal);
        QCOMPARE(boxes.texts.size(), 1);
        QCOMPARE(rig.machine->activity, TransferActivity::PortLost);
        QVERIFY(rig.isShown("btnSend") && !rig.isShown("boxWaitForCNC"));
    }

    void heldLineIsToldApartFromARunningOne()
    {
        TransferRig rig;
        rig.machine->MCFLOW = 1;
        rig.startWith(program);
        rig.view->initialize(true, 1); // set up again, but must be told of each write once
        rig.sendUntilHeld(2);          // the second line does not go out
        QTRY_COMPARE(rig.headline(), QString("Nothing moves: the line takes no bytes"));
        QCOMPARE(rig.machine->activity, TransferActivity::Still);
        QVERIFY2(rig.details().startsWith(QString::fromUtf8("Line 2 of 3 · 4 bytes")), qPrintable(rig.details()));
        for (int stops = 0; stops < 2; ++stops) {
            rig.click("btnStop");
            QCOMPARE(rig.headline(), QString("Stopped at line 3, Send continues there"));
            rig.click("btnSend");
        }
        rig.releaseLine();
        rig.readUntilIdle();
        QVERIFY2(rig.headline().startsWith("Sent: 3 lines, 12 bytes in 0:0"), qPrintable(rig.headline()));
        rig.view.reset();
        QVERIFY(rig.machine->hidden && rig.machine->activity == TransferActivity::Idle);
    }

    void holdOfTheControlIsKnown()
    {
        TransferRig rig;
        rig.machine->MCFLOW = 1;
        rig.startWith(program);
        rig.pty.write("\x13"); // before the send: the control's buffer is full from the last one
        QTRY_VERIFY(rig.port.heldFor());
        rig.click("btnSend");
        QTRY_COMPARE(rig.headline(), QString("Held by the control"));
        QVERIFY2(rig.details().contains("held for 0:0"), qPrintable(rig.details()));
        rig.click("btnStop");
        rig.click("btnSend");
        QCOMPARE(rig.pty.readAtLeast(1, 30), QByteArray());
        rig.pty.write("\x11");
        QCOMPARE(rig.readUntilIdle(), onTheLine);
    }

    void holdIsMeasuredByBytesAndSpeed_data()
    {
        QTest::addColumn<unsigned long>("baud");
        QTest::addColumn<int>("bytes");
        QTest::addColumn<int>("notHeld"); // ms
        QTest::addColumn<int>("held");
        QTest::newRow("fast line") << 115200UL << 30 << 900 << 1100;
        QTest::newRow("slow line") << 110UL << 100 << 10'500 << 13'000;
        QTest::newRow("large write") << 9600UL << 1'000'000 << 1'100'000 << 1'400'000;
        QTest::newRow("unknown speed") << 0UL << 100 << 900 << 1100;
    }

    void holdIsMeasuredByBytesAndSpeed()
    {
        QFETCH(unsigned long, baud);
        QFETCH(int, bytes);
        QFETCH(int, notHeld);
        QFETCH(int, held);
        TransferClock clock;
        clock.begin(5, {TransferClock::msPerByte(baud, 1), 1, 0, 1000});
        QVERIFY(!clock.isHeld(100'000'000)); // nothing is being written
        clock.wrote(5, bytes);
        QVERIFY(!clock.isHeld(5 + notHeld) && clock.isHeld(5 + held));
        clock.completed(5 + held, 30);
        QVERIFY(!clock.isHeld(5 + held));
        clock.wrote(5 + held, 1); // waits until the one before has left the line
        QVERIFY(!clock.isHeld(5 + held + notHeld));
        clock.stop(6 + held);
        QVERIFY(!clock.isHeld(100'000'000)); // the operator's stop is no hold
        clock.resume(100'000'000);
        QVERIFY(!clock.isHeld(100'000'000 + notHeld));
    }
};

QTEST_MAIN(SendingTest)
#include "transfer_sending.moc"
