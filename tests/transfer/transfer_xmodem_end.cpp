// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/SimulatedRig.h"
#include "transfer/XModemWords.h"

using cncsim::EndFault;

namespace
{
const QByteArray shortProgram = QByteArray("G1 X1.5 Y-2.25\n").repeated(20);
const QByteArray longProgram = shortProgram.repeated(110); // 33,000 bytes: the block numbers start over
constexpr int controlsPoll = 1000; // ms; it must not ask twice before a busy computer has answered
constexpr double viewsSecond = 0.05;

QByteArray padded(const QByteArray& program, char padding)
{
    return program.leftJustified((program.size() + 127) / 128 * 128, padding);
}
} // namespace

/// However the end of an XModem transfer goes wrong, it comes to an end, and the operator is told where it is in doubt.
class XModemEndTest : public QObject
{
    Q_OBJECT

    static void addRows()
    {
        QTest::addColumn<QByteArray>("program");
        QTest::addColumn<bool>("isStandard");
        QTest::addColumn<EndFault>("fault");
        QTest::newRow("1 to 255") << longProgram << false << EndFault::None;
        QTest::newRow("0 to 255") << longProgram << true << EndFault::None;
        QTest::newRow("EOT lost") << shortProgram << false << EndFault::EotLost;
        QTest::newRow("EOT refused") << shortProgram << false << EndFault::EotRefused;
        QTest::newRow("ACK of EOT lost") << shortProgram << false << EndFault::AckLost;
        QTest::newRow("never confirmed") << shortProgram << false << EndFault::NotConfirmed;
    }

private Q_SLOTS:
    void sending_data() { addRows(); }
    void sending()
    {
        QFETCH(QByteArray, program);
        QFETCH(bool, isStandard);
        QFETCH(EndFault, fault);
        SimulatedRig line(true, program, {.pollMs = controlsPoll, .standardNumbers = isStandard, .endFault = fault});
        line.rig.click("btnSend");
        QTRY_VERIFY(line.rig.view->booSentXModemBOF());
        line.rig.view->startXModemTimer(viewsSecond);
        QTRY_VERIFY_WITH_TIMEOUT(!line.rig.view->dncRunning(), 60'000);
        const bool isInDoubt = fault == EndFault::NotConfirmed;
        QCOMPARE(line.rig.headline() == "Sent; the control did not confirm the end", isInDoubt);
        QCOMPARE(line.rig.headline().startsWith("Sent: "), !isInDoubt);
        QCOMPARE(line.rig.machine->activity, isInDoubt ? TransferActivity::Unconfirmed : TransferActivity::Sent);
        const auto report = line.control.report();
        QCOMPARE(report.programs, std::size_t{1});
        QCOMPARE(report.problem, std::string());
        QCOMPARE(QByteArray::fromStdString(report.program), padded(program, ' '));
    }

    void receiving_data() { addRows(); }
    void receiving()
    {
        QFETCH(QByteArray, program);
        QFETCH(bool, isStandard);
        QFETCH(EndFault, fault);
        SimulatedRig line(false, program, {.pollMs = controlsPoll, .standardNumbers = isStandard, .endFault = fault});
        line.rig.view->startXModemTimer(viewsSecond);
        const bool isGivenUp = fault == EndFault::NotConfirmed;
        QTRY_VERIFY_WITH_TIMEOUT(line.control.isComplete() || !line.control.report().problem.empty(), 60'000);
        QCOMPARE(!line.control.isComplete(), isGivenUp);
        QTRY_COMPARE(line.rig.machine->activity, TransferActivity::Received);
        QCOMPARE(line.rig.editor->wholeText(), padded(program, '\x1A'));
        QVERIFY2(!line.rig.text("lblStatus").contains(u'\n'), qPrintable(line.rig.text("lblStatus")));
    }

    // Stop works at any time; it is the only end of a send whose control is gone.
    void silentControlIsTold()
    {
        SimulatedRig line(true, shortProgram.repeated(2), {.pollMs = controlsPoll, .silentAfterBlock = 3});
        line.rig.click("btnSend");
        QTRY_COMPARE(line.control.report().blocks, std::size_t{3});
        QTRY_COMPARE(line.rig.view->iXModemPacketNo(), 5); // block 4 is out
        line.rig.view->tmrXModemTimer.stop();
        for (int second = 0; second < 60; ++second)
            line.rig.view->tmrXModem_Tick();
        QTRY_VERIFY(line.rig.text("lblStatus").contains("\nNo answer from the control for 1 min"));
        QVERIFY(line.rig.view->dncRunning());
        line.rig.click("btnStop");
        QVERIFY(line.rig.headline().startsWith("Stopped"));
    }

    void wordsFitTheSend_data()
    {
        QTest::addColumn<int>("blocksTaken");
        QTest::addColumn<bool>("isStandard");
        QTest::addColumn<QString>("hint");
        QTest::newRow("in the middle") << 254 << false << QString();
        QTest::newRow("after 255, 1 to 255") << 255 << false << "try Block numbers \"0-255 (standard)\"";
        QTest::newRow("after 255, 0 to 255") << 255 << true << "try Block numbers \"1-255 (as before)\"";
        QTest::newRow("past it") << 256 << false << QString();
        QTest::newRow("the second time") << 510 << false << "try Block numbers \"0-255 (standard)\"";
    }

    void wordsFitTheSend()
    {
        QFETCH(int, blocksTaken);
        QFETCH(bool, isStandard);
        QFETCH(QString, hint);
        XModemSend send;
        send.begin(longProgram.repeated(2), isStandard ? XModemBlock::Numbers::From0 : XModemBlock::Numbers::From1);
        send.take(viewTX::iNAK);
        for (int block = 0; block < blocksTaken; ++block)
            send.take(viewTX::iACK);
        for (int second = 0; second < 59; ++second)
            send.tick();
        QCOMPARE(XModemWords::waiting(send), QString());
        send.tick();
        for (const QString& words : {XModemWords::waiting(send), XModemWords::cancelled(send)}) {
            QVERIFY2(hint.isEmpty() ? !words.contains("Setup") : words.contains(hint), qPrintable(words));
        }
        QVERIFY(XModemWords::cancelled(send).startsWith(QString("%1 of 516 blocks sent").arg(blocksTaken + 1)));
    }
};

QTEST_MAIN(XModemEndTest)
#include "transfer_xmodem_end.moc"
