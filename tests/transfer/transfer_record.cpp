// SPDX-License-Identifier: GPL-3.0-or-later
// What the history is told of a transfer is what went over the line.
#include "history/TransferEntry.h"
#include "protocol/XModemBlock.h"
#include "transfer/TransferRig.h"

#include <QCryptographicHash>
#include <QLineEdit>

using Outcome = TransferEntry::Outcome;
using Unit = TransferEntry::Unit;

namespace
{
const QByteArray program("G0\nG1\nG2\nG3\n");

// Takes down what views report.
class Reported : public QList<TransferEntry>
{
public:
    Reported()
    {
        NotificationCenter::defaultCenter().addObserver(
            &observer_, Notifications::transferRecorded_Event, nullptr, [this](const Notification& notification) {
                append(notification.userInfo.value(Notifications::transferEntry).value<TransferEntry>());
            });
    }

private:
    QObject observer_;
};

QByteArrayList bytesOf(const QByteArray& text)
{
    QByteArrayList bytes;
    for (const char byte : text)
        bytes << QByteArray(1, byte);
    return bytes;
}

QByteArray sum(const QByteArray& bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
}
} // namespace

class RecordTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void sentProgramIsReported();
    void stoppedSendAndItsContinuationAreTwo_data();
    void stoppedSendAndItsContinuationAreTwo();
    void everyCopyIsReported();
    void waitThatSentNothingIsNoTransfer();
    void holdIsCounted();
    void lostPortIsReported();
    void xmodemIsReportedInBlocks_data();
    void xmodemIsReportedInBlocks();
    void receivedProgramsAreToldApart_data();
    void receivedProgramsAreToldApart();
    void closedProgramIsReported();
    void receptionBeginsWithItsFirstBytes();
};

void RecordTest::sentProgramIsReported()
{
    Reported reported;
    TransferRig rig;
    rig.machine->MCNAME = "Mill";
    rig.machine->MCMODE = "FANUC";
    rig.startWith(program);
    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    rig.click("btnSend");
    const QByteArray line = rig.readUntilIdle();
    QCOMPARE(reported.size(), 1);
    const auto entry = reported.first();
    QVERIFY(before <= entry.began && entry.began <= entry.ended);
    QVERIFY(entry.ended <= QDateTime::currentMSecsSinceEpoch());
    QCOMPARE(entry.direction, TransferEntry::Direction::Sent);
    QCOMPARE(entry.machine, "Mill");
    QCOMPARE(entry.program, "program.nc");
    QCOMPARE(entry.path, rig.find<QLineEdit>("txtPath")->text());
    QCOMPARE(entry.bytes, line.size());
    QCOMPARE(entry.sha256, sum(line));
    QCOMPARE(entry.unit, Unit::Lines);
    QCOMPARE(entry.count, 4);
    QCOMPARE(entry.fromLine, 1);
    QCOMPARE(entry.outcome, Outcome::Finished);
    QCOMPARE(entry.stoppedAt, 0);
}

void RecordTest::stoppedSendAndItsContinuationAreTwo_data()
{
    QTest::addColumn<int>("writes"); // that have gone out, the header being the first
    QTest::addColumn<qint64>("line");
    QTest::newRow("in the header") << 0 << qint64{1};
    QTest::newRow("in the first line") << 1 << qint64{2};
    QTest::newRow("in the third line") << 3 << qint64{4};
    QTest::newRow("in the trailer") << 5 << qint64{4};
}

// Line by line: what the first did not bring to the line, the second did.
void RecordTest::stoppedSendAndItsContinuationAreTwo()
{
    QFETCH(int, writes);
    QFETCH(qint64, line);
    Reported reported;
    TransferRig rig;
    rig.machine->MCMODE = "FANUC";
    rig.startWith(program);
    rig.sendUntilHeld(writes);
    rig.click("btnStop");
    rig.releaseLine();
    const QByteArray before = rig.pty.read();
    QCOMPARE(reported.size(), 1);
    QCOMPARE(reported[0].outcome, Outcome::Stopped);
    QCOMPARE(reported[0].stoppedAt, line);
    QCOMPARE(reported[0].bytes, before.size());
    QCOMPARE(reported[0].sha256, sum(before));

    rig.click("btnSend");
    const QByteArray rest = rig.readUntilIdle();
    QCOMPARE(reported.size(), 2);
    QCOMPARE(reported[1].outcome, Outcome::Finished);
    QCOMPARE(reported[1].fromLine, line);
    QVERIFY(!reported[1].isRestart);
    QCOMPARE(reported[1].sha256, sum(rest));
    QCOMPARE(reported[0].count + reported[1].count, 4);
}

void RecordTest::everyCopyIsReported()
{
    Reported reported;
    TransferRig rig;
    rig.machine->MCREPEAT = true;
    rig.startWith(program);
    rig.click("btnSend");
    QByteArray line;
    while (reported.size() < 2)
        line += rig.pty.readAtLeast(1, 1);
    rig.click("btnStop");
    for (const auto& copy : reported.first(2)) {
        QCOMPARE(copy.outcome, Outcome::Finished);
        QCOMPARE(copy.sha256, sum("G0\r\nG1\r\nG2\r\nG3\r\n"));
    }
}

void RecordTest::waitThatSentNothingIsNoTransfer()
{
    Reported reported;
    TransferRig rig;
    rig.machine->MCWAIT = true;
    rig.startWith(program);
    rig.click("btnSend");
    QVERIFY(rig.isShown("boxWaitForCNC"));
    rig.click("btnStop");
    QCOMPARE(reported.size(), 0);
}

void RecordTest::holdIsCounted()
{
    Reported reported;
    TransferRig rig;
    rig.machine->MCFLOW = 1;
    rig.startWith(program);
    rig.pty.write("\x13");
    QTRY_VERIFY(rig.port.heldFor());
    QTest::qWait(20); // of a hold before the transfer nothing counts
    rig.click("btnSend");
    QTRY_VERIFY(rig.port.holdTimes().inAll.count() >= 50);
    const auto first = rig.port.holdTimes().inAll.count();
    rig.pty.write("\x11");
    rig.readUntilIdle();
    QCOMPARE(reported.size(), 1);
    QVERIFY(reported[0].heldFor >= first && reported[0].heldFor <= reported[0].ended - reported[0].began + 1);
    QCOMPARE(reported[0].longestHold, reported[0].heldFor);
}

void RecordTest::lostPortIsReported()
{
    Reported reported;
    TransferRig rig;
    rig.startWith(program);
    rig.sendUntilHeld(2);
    rig.pty.hangUp();
    QTRY_COMPARE(reported.size(), 1);
    QCOMPARE(reported[0].outcome, Outcome::PortLost);
    QVERIFY(reported[0].stoppedAt >= 2);
}

void RecordTest::xmodemIsReportedInBlocks_data()
{
    QTest::addColumn<QByteArray>("replies");
    QTest::addColumn<Outcome>("outcome");
    QTest::addColumn<qint64>("blocks");
    QTest::newRow("finished") << QByteArray("\x15\x06\x06\x06") << Outcome::Finished << qint64{2};
    QTest::newRow("a block twice") << QByteArray("\x15\x06\x15\x06\x06") << Outcome::Finished << qint64{2};
    QTest::newRow("cancelled") << QByteArray("\x15\x06\x18") << Outcome::Cancelled << qint64{1};
}

void RecordTest::xmodemIsReportedInBlocks()
{
    QFETCH(QByteArray, replies);
    QFETCH(qint64, blocks);
    Reported reported;
    TransferRig rig;
    rig.machine->MCFLOW = 3;
    rig.startWith(QByteArray(200, 'X'));
    rig.click("btnSend");
    QByteArray line;
    for (const char reply : replies) {
        rig.deliver(QByteArray(1, reply));
        if (rig.view->dncRunning()) line += rig.pty.readAtLeast(1, 5000);
        line += rig.pty.readAtLeast(1000, 20);
    }
    QCOMPARE(reported.size(), 1);
    QTEST(reported[0].outcome, "outcome");
    QCOMPARE(reported[0].unit, Unit::Blocks);
    QCOMPARE(reported[0].count, blocks);
    QCOMPARE(reported[0].bytes, line.size());
    QCOMPARE(reported[0].sha256, sum(line));
}

void RecordTest::receivedProgramsAreToldApart_data()
{
    QTest::addColumn<QByteArrayList>("chunks");
    QTest::addColumn<QByteArrayList>("programs");
    QTest::addColumn<Outcome>("last");
    const QByteArray one("%\r\nO1\r\nG0 (5%)\r\n%\r\n"), two("%\r\nO2\r\nM30\r\n%\r\n");
    const QByteArray leader(20, '\0');
    QTest::newRow("nothing but noise") << QByteArrayList{leader, "\r\n", "\x11"} << QByteArrayList{}
                                       << Outcome::Finished;
    QTest::newRow("one") << QByteArrayList{one} << QByteArrayList{one} << Outcome::Finished;
    QTest::newRow("one, byte by byte") << bytesOf(one) << QByteArrayList{one} << Outcome::Finished;
    QTest::newRow("two in one chunk") << QByteArrayList{leader + one + leader + two}
                                      << QByteArrayList{leader + one, leader + two} << Outcome::Finished;
    QTest::newRow("the second is cut short")
        << QByteArrayList{one, two.first(9)} << QByteArrayList{one, two.first(9)} << Outcome::Stopped;
    QTest::newRow("no percent signs") << QByteArrayList{"O1\nG0\n", "M30\n"} << QByteArrayList{"O1\nG0\nM30\n"}
                                      << Outcome::Stopped; // nobody knows whether more was to come
}

void RecordTest::receivedProgramsAreToldApart()
{
    QFETCH(QByteArrayList, chunks);
    QFETCH(QByteArrayList, programs);
    Reported reported;
    TransferRig rig;
    rig.start(false);
    for (const auto& chunk : chunks)
        rig.deliver(chunk);
    rig.view.reset();
    QCOMPARE(reported.size(), programs.size());
    for (qsizetype number = 0; number < programs.size(); ++number) {
        QCOMPARE(reported[number].direction, TransferEntry::Direction::Received);
        QCOMPARE(reported[number].sha256, sum(programs[number]));
        QCOMPARE(reported[number].bytes, programs[number].size());
        QCOMPARE(reported[number].count, programs[number].count('\n'));
        if (number + 1 < programs.size()) QCOMPARE(reported[number].outcome, Outcome::Finished);
    }
    if (!programs.isEmpty()) QTEST(reported.last().outcome, "last");
}

void RecordTest::closedProgramIsReported()
{
    Reported reported;
    TransferRig rig;
    rig.start(false);
    rig.open("O9\n");
    rig.deliver("%\nO1\nM30\n%");
    QCOMPARE(reported.size(), 0); // the rest of its line may still be coming
    QTRY_COMPARE(reported.size(), 1);
    QCOMPARE(reported[0].outcome, Outcome::Finished);
    QCOMPARE(reported[0].path, ""); // not that of the program that was opened before
    QCOMPARE(reported[0].program, "O1");
    const QTemporaryDir folder;
    const QString path = folder.filePath("O2.nc");
    rig.deliver("%\nO2\n");
    QVERIFY(rig.view->saveFile(path));
    rig.deliver("M30\n%\n");
    QCOMPARE(reported.size(), 2);
    QCOMPARE(reported[1].path, path);
    rig.deliver("%\nO3\nM30\n%\n");
    QCOMPARE(reported.size(), 3);
    QCOMPARE(reported[2].path, ""); // nor that of the one saved before
    QCOMPARE(reported[2].program, "O3");
}

// Between two programs may be a night.
void RecordTest::receptionBeginsWithItsFirstBytes()
{
    Reported reported;
    TransferRig rig;
    rig.start(false);
    rig.deliver("%\nO1\nM30\n%\n");
    QCOMPARE(reported.size(), 1);
    QTest::qWait(50);
    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    rig.deliver("%\nO2\nM30\n%\n");
    QCOMPARE(reported.size(), 2);
    QVERIFY(reported[1].began >= before);
}

QTEST_MAIN(RecordTest)
#include "transfer_record.moc"
