// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/TransferClock.h"
#include "transfer/TransferStatus.h"
#include "transfer/TransferWords.h"

#include <QTest>

namespace
{
constexpr qint64 second = 1000;

// A program of 30-byte lines at 9600 baud: 31.25 ms a line.
TransferClock::Send program(qint64 lines)
{
    return {TransferClock::msPerByte(9600, 1), 1, 0, lines * 30};
}

// Sends lines, each of which takes that many ms; returns the time behind them.
qint64 sendLines(TransferClock& clock, qint64 from, int lines, qint64 msPerLine, qint64 position = 0)
{
    qint64 now = from;
    for (int line = 1; line <= lines; ++line) {
        clock.wrote(now, 30);
        now += msPerLine;
        clock.completed(now, position + line * 30);
    }
    return now;
}
} // namespace

class ClockTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void heldIsMeasuredByBytesAndSpeed_data();
    void heldIsMeasuredByBytesAndSpeed();
    void lineBeforeCountsForTheHold();
    void estimateStartsFromTheLineAndFollowsThePace_data();
    void estimateStartsFromTheLineAndFollowsThePace();
    void estimateCountsDownWithoutJumping();
    void longPauseDoesNotSpoilTheEstimate();
    void stopAndContinueCountOnce();
    void durationsAreRounded_data();
    void durationsAreRounded();
    void lineIsToldInPlainWords();
};

void ClockTest::heldIsMeasuredByBytesAndSpeed_data()
{
    QTest::addColumn<int>("baud");
    QTest::addColumn<int>("stopBits");
    QTest::addColumn<int>("bytes");
    QTest::addColumn<int>("notHeld"); // ms at which the write may still be under way
    QTest::addColumn<int>("held");
    QTest::newRow("short line, fast") << 115200 << 1 << 30 << 900 << 1100;
    QTest::newRow("nothing to write") << 9600 << 1 << 0 << 900 << 1100;
    QTest::newRow("long line, slow") << 110 << 2 << 100 << 10'500 << 14'000;
    QTest::newRow("second stop bit") << 110 << 1 << 100 << 10'500 << 13'000;
    QTest::newRow("megabyte in one write") << 9600 << 1 << 1'000'000 << 1'100'000 << 1'400'000;
    QTest::newRow("speed unknown") << 0 << 1 << 100 << 900 << 1100;
}

void ClockTest::heldIsMeasuredByBytesAndSpeed()
{
    QFETCH(int, baud);
    QFETCH(int, stopBits);
    QFETCH(int, bytes);
    QFETCH(int, notHeld);
    QFETCH(int, held);
    TransferClock clock;
    clock.begin(5, {TransferClock::msPerByte(static_cast<unsigned long>(baud), stopBits), 1, 0, 1000});
    QVERIFY(!clock.isHeld(100'000'000)); // nothing is being written
    clock.wrote(5, bytes);
    QVERIFY(!clock.isHeld(5 + notHeld));
    QVERIFY(clock.isHeld(5 + held));
    clock.completed(5 + held, 30);
    QVERIFY(!clock.isHeld(5 + held));
    clock.wrote(5 + held, bytes);
    clock.stop(6 + held);
    QVERIFY(!clock.isHeld(100'000'000)); // the operator's stop is no hold
}

// A write waits until the one before has left the line.
void ClockTest::lineBeforeCountsForTheHold()
{
    TransferClock clock;
    clock.begin(0, {TransferClock::msPerByte(110, 1), 1, 0, 1000});
    clock.wrote(0, 100);
    clock.completed(1, 100);
    clock.wrote(1, 1);
    QVERIFY(!clock.isHeld(9 * second));
    QVERIFY(clock.isHeld(14 * second));
}

void ClockTest::estimateStartsFromTheLineAndFollowsThePace_data()
{
    QTest::addColumn<int>("msPerLine");
    QTest::newRow("at the line's speed") << 31;
    QTest::newRow("drip feed, a fifth of it") << 156;
    QTest::newRow("faster than the line says") << 10;
}

void ClockTest::estimateStartsFromTheLineAndFollowsThePace()
{
    QFETCH(int, msPerLine);
    constexpr int lines = 20'000;
    TransferClock clock;
    clock.begin(0, program(lines));
    QCOMPARE(clock.remaining(0).value(), 625 * second);
    qint64 now = 0;
    for (int line = 0; line < lines / 2; line += 8) {
        now = sendLines(clock, now, 8, msPerLine, line * 30);
        clock.remaining(now); // as often as the view asks
    }
    const double expected = lines / 2.0 * msPerLine;
    QVERIFY2(qAbs(static_cast<double>(clock.remaining(now).value()) / expected - 1) < 0.08,
             qPrintable(QString::number(clock.remaining(now).value())));
    QVERIFY(!TransferClock().remaining(0)); // no speed, no pace
}

void ClockTest::estimateCountsDownWithoutJumping()
{
    TransferClock clock;
    clock.begin(0, program(20'000));
    qint64 last = clock.remaining(0).value();
    qint64 now = 0;
    for (int line = 0; line < 19'000; line += 8) {
        now = sendLines(clock, now, 8, line / 800 % 2 == 0 ? 25 : 45, line * 30); // an uneven control
        const qint64 left = clock.remaining(now).value();
        QVERIFY2(qAbs(left - last) < 15 * second, qPrintable(QString::number(left - last)));
        last = left;
    }
    now = sendLines(clock, now, 1000, 31, 19'000 * 30);
    for (int refresh = 0; refresh < 100; ++refresh)
        last = clock.remaining(now += 250).value();
    QVERIFY(last < 3 * second);
}

void ClockTest::longPauseDoesNotSpoilTheEstimate()
{
    TransferClock clock;
    clock.begin(0, program(20'000));
    qint64 now = sendLines(clock, 0, 4000, 31);
    const qint64 before = clock.remaining(now).value();
    clock.wrote(now, 30);
    now += 3600 * second; // the operator's break
    QCOMPARE(clock.remaining(now).value(), before);
    clock.completed(now, 4001 * 30);
    now = sendLines(clock, now, 1000, 31, 4001 * 30);
    QVERIFY(clock.remaining(now).value() < 3 * before);
}

void ClockTest::stopAndContinueCountOnce()
{
    TransferClock clock;
    clock.begin(0, program(100));
    clock.wrote(0, 30);
    clock.completed(1000, 30);
    clock.wrote(1000, 50); // cut off
    clock.stop(2000);
    QCOMPARE(clock.bytesSent(), 30);
    clock.completed(2500, 60); // reported late
    QCOMPARE(clock.elapsed(60'000), 2000);
    clock.resume(100'000);
    QVERIFY(!clock.isHeld(100'500));
    clock.completed(101'000, 60);
    QCOMPARE(clock.bytesSent(), 80);
    QCOMPARE(clock.elapsed(101'000), 3000);
    clock.begin(200'000, program(100));
    QCOMPARE(clock.bytesSent(), 0);
    QCOMPARE(clock.elapsed(200'000), 0);
}

void ClockTest::durationsAreRounded_data()
{
    QTest::addColumn<qint64>("seconds");
    QTest::addColumn<QString>("clock");
    QTest::addColumn<QString>("about");
    QTest::addColumn<QString>("ago");
    QTest::newRow("nothing") << qint64(0) << "0:00"
                             << "a few seconds"
                             << "0 s";
    QTest::newRow("seconds") << qint64(32) << "0:32"
                             << "about 40 s"
                             << "32 s";
    QTest::newRow("just below a minute") << qint64(59) << "0:59"
                                         << "about 1 min"
                                         << "59 s";
    QTest::newRow("minutes") << qint64(754) << "12:34"
                             << "about 13 min"
                             << "12 min";
    QTest::newRow("just below an hour") << qint64(3599) << "59:59"
                                        << "about 1 h"
                                        << "59 min";
    QTest::newRow("hours") << qint64(7503) << "2:05:03"
                           << "about 2 h 10 min"
                           << "2 h 5 min";
    QTest::newRow("a day") << qint64(90'000) << "25:00:00"
                           << "about 25 h"
                           << "25 h";
}

void ClockTest::durationsAreRounded()
{
    QFETCH(qint64, seconds);
    QTEST(TransferWords::clockTime(seconds * second), "clock");
    QTEST(TransferWords::about(static_cast<double>(seconds * second)), "about");
    QTEST(TransferWords::ago(seconds * second), "ago");
}

void ClockTest::lineIsToldInPlainWords()
{
    MachineRecord mc;
    mc.MCPORT = "/dev/ttyUSB0";
    mc.MCBAUD = 9600;
    mc.MCDBPAR = 2;
    QCOMPARE(TransferWords::line(mc).simplified(),
             QString::fromUtf8("ttyUSB0 · 9600 baud · 7 data bits, even parity, 1 stop bit · XON/XOFF"));
    mc.MCPORT.clear();
    mc.MCDBPAR = 0;
    mc.MCSBITS = 2;
    mc.MCFLOW = 3;
    QCOMPARE(TransferWords::line(mc).simplified(),
             QString::fromUtf8("No port · 9600 baud · 8 data bits, no parity, 2 stop bits · XModem"));
}

QTEST_GUILESS_MAIN(ClockTest)
#include "transfer_clock.moc"
