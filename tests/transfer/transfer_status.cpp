// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/MessageBoxes.h"
#include "transfer/TransferRig.h"
#include "transfer/XModemBlock.h"

#include <QFile>

namespace
{
const QByteArray program("O1\nG1 X1\nG2 X2\nM30\n");
const QByteArray onTheLine("O1\r\nG1 X1\r\nG2 X2\r\nM30\r\n");
const QByteArray NAK("\x15");
const QByteArray ACK("\x06");
} // namespace

/// What the operator reads in the view and at the icon, in each state, and what becomes of a port that is lost.
class StatusTest : public QObject
{
    Q_OBJECT

    static QString headline(const TransferRig& rig) { return rig.text("lblTransferState"); }
    static QString details(const TransferRig& rig) { return rig.text("lblStatus").simplified(); }

    // The record names the device through a link, as udev gives an adapter a lasting name.
    static void linkTo(const QString& device, const QString& link)
    {
        QFile::remove(link);
        QVERIFY(QFile::link(device, link));
    }

private Q_SLOTS:
    void machineLineAndProgramAreNamed();
    void heldLineIsToldApartFromARunningOne();
    void stoppedAndSentAreNamed();
    void continuedSendIsCountedAsOne();
    void waitsAreNamed();
    void xmodemSendIsNamed();
    void receivingIsNamed();
    void lostPortIsToldInEveryState_data();
    void lostPortIsToldInEveryState();
    void nothingGoesOnBehindALostPort();
    void sendGoesOnWhenTheAdapterIsBack();
    void lostPortTakesNothingOfTheProgramAway_data();
    void lostPortTakesNothingOfTheProgramAway();
    void sendWithoutTheAdapterKeepsThePlace();
    void nothingIsCutOff_data();
    void nothingIsCutOff();
};

void StatusTest::machineLineAndProgramAreNamed()
{
    TransferRig rig;
    rig.machine->MCPORT = "/dev/ttyUSB0";
    rig.start();
    QCOMPARE(rig.text("lblMachine"), QString("Mill"));
    QVERIFY(rig.text("lblLine").startsWith("ttyUSB0"));
    QCOMPARE(headline(rig), QString("No program yet"));
    rig.open(program);
    QCOMPARE(rig.text("lblProgram"), QString("program.nc"));
    QCOMPARE(headline(rig), QString("Ready to send"));
    QVERIFY2(details(rig).startsWith("4 lines, 19 bytes"), qPrintable(details(rig)));
    rig.click("btnLock");
    rig.click("btnNew");
    QVERIFY(!rig.isShown("lblProgram"));
    QCOMPARE(headline(rig), QString("No program yet"));
}

void StatusTest::heldLineIsToldApartFromARunningOne()
{
    TransferRig rig;
    rig.machine->MCFLOW = 1;
    rig.start();
    rig.open(program);
    rig.holdLineAfter(2); // the second line does not go out
    rig.click("btnSend");
    QCOMPARE(headline(rig), QString("Sending"));
    QTRY_COMPARE(headline(rig), QString("Held by the control"));
    QCOMPARE(rig.machine->activity, TransferActivity::Held);
    QVERIFY2(details(rig).startsWith(QString::fromUtf8("Line 2 of 4 · 4 bytes")), qPrintable(details(rig)));
    rig.holdLineAfter(4);
    rig.releaseLine();
    QTRY_VERIFY(rig.isHeld());
    QTRY_VERIFY2(details(rig).startsWith("Line 4 of 4"), qPrintable(details(rig)));
    rig.releaseLine();
    rig.readUntilIdle();
    QVERIFY(headline(rig).startsWith("Sent:"));
}

void StatusTest::stoppedAndSentAreNamed()
{
    TransferRig rig;
    rig.start();
    rig.open(program);
    rig.holdLineAfter(3);
    rig.click("btnSend");
    QTRY_VERIFY(rig.isHeld());
    QTest::qWait(0);
    rig.click("btnStop");
    QCOMPARE(headline(rig), QString("Stopped at line 4, Send continues there"));
    QCOMPARE(rig.machine->activity, TransferActivity::Stopped);
    rig.releaseLine();
    QTest::keyClick(rig.editor, Qt::Key_Home, Qt::ControlModifier); // another place
    QCOMPARE(headline(rig), QString("Ready to send"));
    QVERIFY2(details(rig).contains("from line 1"), qPrintable(details(rig)));
    rig.click("btnRewind");
    rig.click("btnSend");
    rig.readUntilIdle();
    QVERIFY2(headline(rig).startsWith("Sent: 4 lines, 23 bytes in 0:0"), qPrintable(headline(rig)));
}

void StatusTest::continuedSendIsCountedAsOne()
{
    TransferRig rig;
    rig.start();
    rig.open(program);
    rig.holdLineAfter(3);
    rig.click("btnSend");
    for (int stops = 0; stops < 3; ++stops) {
        QTRY_VERIFY(rig.isHeld());
        rig.click("btnStop");
        rig.click("btnSend");
        QVERIFY(rig.machine->value > 0); // the bars go on from where they were
    }
    rig.releaseLine();
    QCOMPARE(rig.readUntilIdle(), onTheLine);
    QVERIFY2(headline(rig).startsWith("Sent: 4 lines, 23 bytes"), qPrintable(headline(rig)));

    rig.editor->moveCaretTo(3);
    rig.chooseStart(1);
    rig.click("btnSend");
    rig.readUntilIdle();
    QVERIFY2(headline(rig).startsWith("Sent: 3 lines, 19 bytes"), qPrintable(headline(rig)));
}

void StatusTest::waitsAreNamed()
{
    TransferRig rig;
    rig.machine->MCWAIT = true;
    rig.start();
    rig.open(program);
    rig.click("btnSend");
    QCOMPARE(headline(rig), QString("Waiting for the start signal"));
    QCOMPARE(rig.machine->activity, TransferActivity::Waiting);
    rig.click("btnStop");
    QCOMPARE(headline(rig), QString("Stopped at line 1, Send continues there"));
}

void StatusTest::xmodemSendIsNamed()
{
    TransferRig rig;
    rig.machine->MCFLOW = 3;
    rig.start();
    rig.open(program);
    rig.click("btnSend");
    QCOMPARE(headline(rig), QString("Waiting for the control's first request"));
    rig.deliver(NAK);
    QCOMPARE(headline(rig), QString("Sending"));
    QTRY_COMPARE(headline(rig), QString("Waiting for the control's answer"));
    QCOMPARE(rig.machine->activity, TransferActivity::Held);
    rig.deliver(ACK); // EOT goes out
    rig.deliver(ACK);
    QVERIFY2(headline(rig).startsWith("Sent: 4 lines, 133 bytes"), qPrintable(headline(rig)));

    rig.click("btnSend");
    rig.deliver(NAK);
    rig.deliver("\x18");
    QVERIFY2(headline(rig).startsWith("Cancelled by the control"), qPrintable(headline(rig)));
    QCOMPARE(rig.machine->activity, TransferActivity::Stopped);
}

void StatusTest::receivingIsNamed()
{
    TransferRig rig;
    rig.machine->MCFLOW = 3;
    rig.start(false);
    QCOMPARE(headline(rig), QString("Waiting for bytes"));
    rig.deliver(XModemBlock::build(1, QByteArray(128, 'A')));
    QTRY_COMPARE(headline(rig), QString("Receiving"));
    rig.deliver(XModemBlock::build(1, QByteArray(128, 'A')));
    QTRY_COMPARE(headline(rig), QString("Waiting for bytes")); // none for a while
    QVERIFY2(details(rig).startsWith(QString::fromUtf8("1 line, 256 bytes · 1 block, 1 repeated · last byte ")),
             qPrintable(details(rig)));
    rig.deliver("\x04");
    QCOMPARE(headline(rig), QString("Received: 1 line, 256 bytes"));
    rig.click("btnNew");
    QCOMPARE(headline(rig), QString("Waiting for bytes"));
}

void StatusTest::lostPortIsToldInEveryState_data()
{
    QTest::addColumn<int>("flow");
    QTest::addColumn<bool>("sends");
    QTest::addColumn<bool>("waits");
    QTest::addColumn<bool>("isUnderWay");
    QTest::newRow("idle") << 1 << true << false << false;
    QTest::newRow("waiting for the start signal") << 1 << true << true << true;
    QTest::newRow("sending") << 1 << true << false << true;
    QTest::newRow("sending XModem") << 3 << true << false << true;
    QTest::newRow("receiving") << 1 << false << false << false;
    QTest::newRow("receiving XModem") << 3 << false << false << false;
}

void StatusTest::lostPortIsToldInEveryState()
{
    QFETCH(int, flow);
    QFETCH(bool, sends);
    QFETCH(bool, waits);
    QFETCH(bool, isUnderWay);
    TransferRig rig;
    rig.machine->MCFLOW = flow;
    rig.machine->MCWAIT = waits;
    rig.start(sends);
    MessageBoxes boxes("OK");
    if (sends) rig.open(program);
    rig.holdLineAfter(2);
    if (isUnderWay) rig.click("btnSend");
    if (isUnderWay && flow == 1 && !waits) QTRY_VERIFY(rig.isHeld());
    if (!sends && flow == 3) rig.view->startXModemTimer(0.01);

    rig.pty.hangUp();
    QTRY_COMPARE(rig.machine->activity, TransferActivity::PortLost);
    QCOMPARE(headline(rig), QString("Port lost"));
    QVERIFY(
        details(rig).startsWith("The port no longer answers. Check the adapter, then choose Send or Receive again."));
    QVERIFY(!rig.view->dncRunning() && !rig.isShown("boxWaitForCNC"));
    QVERIFY(!rig.view->tmrXModemTimer.isActive());
    QVERIFY(!rig.child->port->isOpen()); // the system can give the name to the adapter again
    QCOMPARE(boxes.texts, QStringList());
    if (sends) rig.click("btnRewind");
    QCOMPARE(headline(rig), QString("Port lost"));
}

// Writes to a lost device count as complete: the program would race to its end and be told as sent.
void StatusTest::nothingGoesOnBehindALostPort()
{
    TransferRig rig;
    rig.start();
    QByteArray text;
    for (int line = 0; line < 5000; ++line)
        text += "N" + QByteArray::number(line) + " G1 X1\n";
    rig.open(text);
    rig.holdLineAfter(101);
    rig.click("btnSend");
    QTRY_VERIFY(rig.isHeld());
    rig.pty.hangUp();
    QTRY_COMPARE(headline(rig), QString("Port lost"));
    QCOMPARE(rig.state(), viewTX::TxState::txState_idle);
    QCOMPARE(rig.editor->lineNumber(rig.editor->caret()), 101); // the one under way
    QCOMPARE(rig.view->findChild<QComboBox*>("cbo1")->currentIndex(), 1);
    QVERIFY2(details(rig).contains("Stopped at line 101."), qPrintable(details(rig)));
}

void StatusTest::sendGoesOnWhenTheAdapterIsBack()
{
    const QTemporaryDir folder;
    TransferRig rig;
    rig.machine->MCPORT = folder.filePath("adapter");
    rig.start();
    rig.open(program);
    rig.holdLineAfter(3); // two lines are out, the third is under way
    rig.click("btnSend");
    QTRY_VERIFY(rig.isHeld());
    rig.pty.hangUp();
    QTRY_COMPARE(headline(rig), QString("Port lost"));

    PtyPair again;
    linkTo(again.devicePath(), rig.machine->MCPORT);
    rig.click("btnSend");
    QByteArray got;
    QTRY_VERIFY((got += again.read()).endsWith("M30\r\n"));
    QCOMPARE(got, QByteArray("G2 X2\r\nM30\r\n")); // the whole line, not the rest of it
    QTRY_VERIFY(headline(rig).startsWith("Sent: 2 lines"));
    QCOMPARE(rig.machine->activity, TransferActivity::Sent);
    again.hangUp(); // noticed again
    QTRY_COMPARE(headline(rig), QString("Port lost"));
}

// The port keeps what a stop cut off; with the port that is gone, and no part of the program may go with it.
void StatusTest::lostPortTakesNothingOfTheProgramAway_data()
{
    QTest::addColumn<bool>("waits");
    QTest::addColumn<int>("writesOut");
    QTest::addColumn<bool>("stops");
    QTest::addColumn<QByteArray>("rest");
    const QByteArray whole = "%\r\n" + onTheLine;
    const QByteArray lines = "G2 X2\r\nM30\r\n";
    QTest::newRow("in the wait") << true << 0 << false << whole;
    QTest::newRow("after a stop in the wait") << true << 0 << true << whole;
    QTest::newRow("in the header") << false << 0 << false << whole;
    QTest::newRow("after a stop in the header") << false << 0 << true << whole;
    QTest::newRow("in a line") << false << 3 << false << lines;
    QTest::newRow("after a stop in a line") << false << 3 << true << lines;
}

void StatusTest::lostPortTakesNothingOfTheProgramAway()
{
    QFETCH(bool, waits);
    QFETCH(int, writesOut);
    QFETCH(bool, stops);
    QFETCH(QByteArray, rest);
    const QTemporaryDir folder;
    TransferRig rig;
    rig.machine->MCPORT = folder.filePath("adapter");
    rig.machine->MCTXSOT = "37,13,10";
    rig.machine->MCWAIT = waits;
    rig.start();
    rig.open(program);
    if (writesOut > 0) rig.holdLineAfter(writesOut);
    if (writesOut == 0) rig.holdLine();
    rig.click("btnSend");
    QTRY_VERIFY(rig.isHeld());
    if (stops) rig.click("btnStop");
    rig.pty.hangUp();
    QTRY_COMPARE(headline(rig), QString("Port lost"));

    PtyPair again;
    linkTo(again.devicePath(), rig.machine->MCPORT);
    rig.click("btnSend");
    if (waits) rig.click("btnSendNow");
    QByteArray got;
    QTRY_VERIFY((got += again.read()).endsWith("M30\r\n"));
    QCOMPARE(got, rest);
}

void StatusTest::sendWithoutTheAdapterKeepsThePlace()
{
    const QTemporaryDir folder;
    TransferRig rig;
    rig.machine->MCPORT = folder.filePath("adapter"); // not there
    rig.start();
    rig.open(program);
    rig.pty.hangUp();
    QTRY_COMPARE(headline(rig), QString("Port lost"));
    MessageBoxes boxes("OK");
    for (const int start : {0, 1}) {
        rig.chooseStart(start);
        rig.click("btnSend");
        QCOMPARE(boxes.texts.size(), start + 1);
        QVERIFY(!rig.view->dncRunning());
        QCOMPARE(rig.view->findChild<QComboBox*>("cbo1")->currentIndex(), start);
        QCOMPARE(headline(rig), QString("Port lost"));
    }
}

void StatusTest::nothingIsCutOff_data()
{
    QTest::addColumn<int>("points");
    QTest::newRow("usual font") << 0;
    QTest::newRow("large font") << 16;
}

void StatusTest::nothingIsCutOff()
{
    QFETCH(int, points);
    const QFont usual = QApplication::font();
    QFont font = usual;
    if (points > 0) font.setPointSize(points);
    QApplication::setFont(font);
    {
        TransferRig rig;
        rig.machine->MCNAME = "Machining centre at the far end of the hall, with the long name";
        rig.machine->MCWAIT = true;
        rig.machine->MCFLOW = 1;
        rig.start();
        rig.open(program);
        rig.click("btnSend");
        rig.view->resize(640, 480);
        QCOMPARE(rig.view->size(), QSize(640, 480));
        QTest::qWait(0);
        const auto labels = rig.view->findChildren<QLabel*>();
        for (const auto* label : labels) {
            if (!label->isVisible() || label->inherits("ShortLabel")) continue;
            const int needed = label->wordWrap() ? label->heightForWidth(label->width()) : label->sizeHint().height();
            QVERIFY2(label->height() >= needed, qPrintable(label->objectName()));
        }
        const auto buttons = rig.view->findChildren<QAbstractButton*>(QRegularExpression("^btn"));
        for (const auto* button : buttons)
            QVERIFY2(!button->isVisible() || button->width() >= button->minimumSizeHint().width(),
                     qPrintable(button->objectName()));
        QVERIFY(rig.view->findChild<QWidget*>("boxWaitForCNC")->height() <= rig.editor->height());
    }
    QApplication::setFont(usual);
}

QTEST_MAIN(StatusTest)
#include "transfer_status.moc"
