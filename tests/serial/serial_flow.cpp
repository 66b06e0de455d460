// SPDX-License-Identifier: GPL-3.0-or-later
#include "serial/LineClock.h"
#include "serial/SoftwareFlow.h"

#include <QTest>

namespace
{
using namespace std::chrono_literals;
using Mode = SoftwareFlow::Mode;
const SoftwareFlow::Time start = SoftwareFlow::Time() + 1h;
} // namespace

/// When the control holds the line, and how much may be handed to the driver.
class FlowTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void whatArrivesHoldsAndReleases_data()
    {
        QTest::addColumn<Mode>("mode");
        QTest::addColumn<QByteArrayList>("chunks");
        QTest::addColumn<QByteArray>("rest");
        QTest::addColumn<bool>("isHeld");
        const auto row = [](const char* name, Mode mode, const QByteArrayList& chunks, const QByteArray& rest,
                            bool isHeld) { QTest::newRow(name) << mode << chunks << rest << isHeld; };
        row("nothing", Mode::Obey, {""}, "", false);
        row("stop", Mode::Obey,
            {"a\x13"
             "b"},
            "ab", true);
        row("stop with its parity bit", Mode::Obey, {"\x93"}, "", true);
        row("stop and go in one read", Mode::Obey, {"\x13\x11"}, "", false);
        row("go, then stop", Mode::Obey, {"\x11\x13"}, "", true);
        row("go with a parity bit", Mode::Obey, {"\x13", "\x91"}, "", false);
        row("stop twice, go once", Mode::Obey, {"\x13\x13", "\x11"}, "", false);
        row("go without a stop", Mode::Obey, {"\x11"}, "", false);
        row("other control characters", Mode::Obey, {"\x12\x14\x04\x18"}, "\x12\x14\x04\x18", false);
        row("watched only", Mode::Watch,
            {"a\x13"
             "b"},
            "a\x13"
            "b",
            true);
        row("start signal ends a hold", Mode::Watch, {"\x13", "\x11"}, "\x13\x11", false);
        row("no meaning", Mode::Off, {"\x13\x11\x13"}, "\x13\x11\x13", false);
    }

    void whatArrivesHoldsAndReleases()
    {
        QFETCH(Mode, mode);
        QFETCH(QByteArrayList, chunks);
        SoftwareFlow flow;
        flow.setMode(mode);
        QByteArray rest;
        for (const auto& chunk : chunks)
            rest += flow.take(chunk, start);
        QTEST(rest, "rest");
        QTEST(flow.isHeld(), "isHeld");
    }

    void holdOutlastsASend()
    {
        SoftwareFlow flow;
        flow.setMode(Mode::Obey);
        flow.take("\x13", start);
        flow.take("\x13", start + 5s); // says the same again
        flow.setMode(Mode::Watch);
        flow.setMode(Mode::Obey);
        QVERIFY(flow.heldSince() == start);
        flow.release();
        QVERIFY(!flow.isHeld());
        flow.take("\x13", start + 9s);
        QVERIFY(flow.heldSince() == start + 9s);
        flow.setMode(Mode::Off);
        QVERIFY(!flow.isHeld());
    }

    void littleIsAhead_data()
    {
        QTest::addColumn<unsigned long>("speed");
        QTest::addColumn<int>("mostAhead");
        QTest::newRow("150") << 150UL << 4;
        QTest::newRow("9600") << 9600UL << 4;
        QTest::newRow("19200") << 19200UL << 7;
        QTest::newRow("115200") << 115200UL << 45;
    }

    // A writer that wakes up when it is told to, and now and then much too late.
    void littleIsAhead()
    {
        QFETCH(unsigned long, speed);
        QFETCH(int, mostAhead);
        const double character = 10e9 / static_cast<double>(speed); // ns, of the real line
        LineClock clock(speed, 10);
        QCOMPARE(clock.mostAhead(), mostAhead);
        double lineFree = 0; // when the real line has sent all, ns
        double idle = 0;
        auto now = start;
        qsizetype written = 0;
        for (int wakeUp = 0; wakeUp < 2000; ++wakeUp) {
            const bool isLate = wakeUp % 100 == 99;
            const qsizetype left = wakeUp % 5 == 0 ? 2 : 1000;              // of the block
            QVERIFY(clock.untilRoom(now, 2) <= clock.untilRoom(now, 1000)); // a block's end need not wait so long
            now += clock.untilRoom(now, left) + (isLate ? LineClock::Duration(1s) : LineClock::Duration(60us));
            const double at = static_cast<double>((now - start).count());
            if (!isLate && lineFree < at) idle += at - lineFree;
            if (lineFree < at) lineFree = at;
            const auto room = clock.room(now);
            QVERIFY(room >= std::min<qsizetype>(left, mostAhead - mostAhead / 4));
            clock.wrote(now, room);
            written += room;
            QCOMPARE(clock.room(now), 0);
            lineFree += static_cast<double>(room) * character;
            QVERIFY((lineFree - at) / character < mostAhead + 1);
        }
        const double busy = static_cast<double>(written) * character;
        QVERIFY2(busy / (busy + idle) > 0.975, qPrintable(QString::number(busy / (busy + idle))));
    }

    void unknownSpeedTakesAll()
    {
        LineClock clock(0, 10);
        clock.wrote(start, 100'000);
        QVERIFY(clock.room(start) > 100'000);
        QVERIFY(clock.untilRoom(start, 1) == LineClock::Duration::zero());
    }
};

QTEST_APPLESS_MAIN(FlowTest)
#include "serial_flow.moc"
