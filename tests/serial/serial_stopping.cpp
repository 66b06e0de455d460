// SPDX-License-Identifier: GPL-3.0-or-later
#include "serial/OpenPort.h"

#include <QRandomGenerator>
#include <QTest>

#include <vector>

class StoppingTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void stoppedSendWritesNothingMore();
    void stopAndResumeLosesAndDoublesNothing_data();
    void stopAndResumeLosesAndDoublesNothing();
    void nothingIsUnsentWithoutAStop();
    void newSendDoesNotWakeAStoppedOne();
    void completionFromBeforeAStopIsDropped_data();
    void completionFromBeforeAStopIsDropped();
    void closingEndsAHeldSend();
    void bytesNeverReachAnotherDevice();
    void closingKeepsAProgramThatWentOutWhole();
    void closingAfterAStopDiscardsTheRest();
    void portMayDieWhileItSends();
};

void StoppingTest::stoppedSendWritesNothingMore()
{
    OpenPort line(1, 1);
    line.hold();
    const QByteArray leader("\0\x7f%\r\n", 5); // two bytes that must not be marked twice
    line.port->sendBytes(leader);
    line.port->stopButtonPressed = true;
    QCOMPARE(line.port->takeUnsentBytes(), leader);
    QCOMPARE(line.port->takeUnsentBytes(), QByteArray());
    line.release();
    QCOMPARE(line.control.readAtLeast(1, 60), QByteArray());
    QCOMPARE(line.txCount, 0);
    line.port->sendBytes(leader);
    QCOMPARE(line.control.readAtLeast(5), QByteArray("\x80\xFF\xA5\x8D\x0A"));
    QTRY_COMPARE(line.txCount, 1);
}

void StoppingTest::stopAndResumeLosesAndDoublesNothing_data()
{
    QTest::addColumn<int>("parity");
    QTest::newRow("no parity") << 0;
    QTest::newRow("even parity") << 1;
}

// The control reads now and then, so that stops find the array untouched, half taken and gone.
void StoppingTest::stopAndResumeLosesAndDoublesNothing()
{
    QFETCH(int, parity);
    QRandomGenerator chance(7);
    for (int round = 0; round < 10; ++round) {
        OpenPort line(0, parity);
        QByteArray program;
        while (program.size() < 150'000)
            program += "N" + QByteArray::number(program.size()) + "\n";
        QByteArray received;
        line.port->sendBytes(program);
        while (line.txCount == 0) {
            QTest::qWait(static_cast<int>(chance.bounded(4)));
            if (chance.bounded(3) == 0) received += line.control.read();
            if (chance.bounded(4) != 0) continue;
            line.port->stopButtonPressed = true;
            if (line.txCount == 0 && chance.bounded(2) == 0) QTest::qWait(static_cast<int>(chance.bounded(20)));
            const QByteArray rest = line.port->takeUnsentBytes();
            received += line.control.readAtLeast(program.size() - rest.size() - received.size());
            QCOMPARE(received.size() + rest.size(), program.size());
            line.port->sendBytes(rest);
        }
        received += line.control.readAtLeast(program.size() - received.size());
        for (char& byte : received)
            byte = static_cast<char>(byte & 0x7F);
        QCOMPARE(received, program);
        QCOMPARE(line.txCount, 1);
    }
}

void StoppingTest::nothingIsUnsentWithoutAStop()
{
    OpenPort line(1);
    line.port->sendBytes("N10\n");
    QTRY_COMPARE(line.txCount, 1);
    line.port->stopButtonPressed = true;
    QCOMPARE(line.port->takeUnsentBytes(), QByteArray());
    line.hold();
    line.port->sendBytes("N20\n");
    QCOMPARE(line.port->takeUnsentBytes(), QByteArray());
    line.release();
    QCOMPARE(line.control.readAtLeast(8), QByteArray("N10\nN20\n"));
}

void StoppingTest::newSendDoesNotWakeAStoppedOne()
{
    OpenPort line(1);
    for (int round = 1; round <= 40; ++round) {
        line.hold();
        line.port->sendBytes("old\n");
        QTest::qWait(round % 3);
        line.port->stopButtonPressed = true;
        line.port->sendBytes("new\n");
        line.release();
        QCOMPARE(line.control.readAtLeast(4), QByteArray("new\n"));
        QTRY_COMPARE(line.txCount, round);
    }
    QCOMPARE(line.control.readAtLeast(1, 50), QByteArray());
}

void StoppingTest::completionFromBeforeAStopIsDropped_data()
{
    QTest::addColumn<bool>("sendsAgain");
    QTest::newRow("stopped") << false;
    QTest::newRow("stopped and sent again at once") << true;
}

void StoppingTest::completionFromBeforeAStopIsDropped()
{
    QFETCH(bool, sendsAgain);
    OpenPort line(1);
    line.port->sendBytes("N10\n");
    QCOMPARE(line.readWithoutEvents(4), QByteArray("N10\n"));
    line.port->stopButtonPressed = true; // its completion is on the way
    if (sendsAgain) {
        line.hold(); // runs the event loop
        QCOMPARE(line.port->takeUnsentBytes(), QByteArray());
        line.port->sendBytes("N20\n");
    }
    QTest::qWait(60);
    QCOMPARE(line.txCount, 0);
    line.release();
    if (sendsAgain) QTRY_COMPARE(line.txCount, 1);
}

void StoppingTest::closingEndsAHeldSend()
{
    OpenPort line(1);
    line.hold();
    line.port->sendBytes("N10\n");
    line.port->Close();
    line.release();
    QCOMPARE(line.control.readAtLeast(1, 60), QByteArray());
    QCOMPARE(line.txCount, 0);
    QCOMPARE(line.port->takeUnsentBytes(), QByteArray());
}

// The next device that opens gets the lowest free number: that of the device which was just closed.
void StoppingTest::bytesNeverReachAnotherDevice()
{
    for (int round = 0; round < 30; ++round) {
        OpenPort first(1);
        first.hold();
        first.port->sendBytes(QByteArray(100, 'x'));
        QTest::qSleep(round % 4);
        first.port->Close();
        std::vector<std::unique_ptr<OpenPort>> next;
        for (int machine = 0; machine < 3; ++machine) {
            next.push_back(std::make_unique<OpenPort>(1));
            next.back()->port->sendBytes("M30");
        }
        first.release();
        for (const auto& machine : next) {
            QTRY_COMPARE(machine->txCount, 1);
            QCOMPARE(machine->control.readAtLeast(4, 5), QByteArray("M30"));
        }
        QCOMPARE(first.control.read(), QByteArray());
    }
}

// The end of a transfer sets the stop flag, too; the control may still have to read what the driver holds.
void StoppingTest::closingKeepsAProgramThatWentOutWhole()
{
    OpenPort line;
    const QByteArray program(12000, 'x');
    line.port->sendBytes(program);
    QTRY_COMPARE(line.txCount, 1);
    line.port->stopButtonPressed = true;
    line.port->Close();
    QCOMPARE(line.control.readAtLeast(program.size()), program);
}

void StoppingTest::closingAfterAStopDiscardsTheRest()
{
    OpenPort line;
    line.port->sendBytes(QByteArray(500'000, 'x'));
    QTest::qWait(20);
    line.port->stopButtonPressed = true;
    const qsizetype taken = 500'000; // more than the driver ever holds
    line.port->Close();
    QVERIFY(line.control.readAtLeast(taken, 60).size() < 12'000);
}

void StoppingTest::portMayDieWhileItSends()
{
    OpenPort held(1);
    held.hold();
    held.port->sendBytes("N10\n");
    OpenPort reporting;
    reporting.port->sendBytes("N10\n");
    QCOMPARE(reporting.readWithoutEvents(4), QByteArray("N10\n"));
    held.port.reset();
    reporting.port.reset();
    held.release();
    QCOMPARE(held.control.readAtLeast(1, 60), QByteArray());
    QCOMPARE(held.txCount + reporting.txCount, 0);
}

QTEST_GUILESS_MAIN(StoppingTest)
#include "serial_stopping.moc"
