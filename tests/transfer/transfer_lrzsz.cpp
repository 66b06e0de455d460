// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/LrzszRig.h"

namespace
{
constexpr double shortSecond = 0.2; // a spoiled transfer would take minutes otherwise

QByteArray lines(int bytes, const char* lineEnd)
{
    const QByteArray line = QByteArray("G1 X1.5 Y-2.25") + lineEnd;
    return line.repeated(bytes / 15 + 1).left(bytes);
}
} // namespace

/// What a real XModem peer gets from us and we from it, byte for byte. Over a line that spoils bytes it is right in the
/// end, or the operator is told.
class LrzszTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void programsArriveWhole_data()
    {
        QTest::addColumn<bool>("sends");
        QTest::addColumn<QByteArray>("program");
        for (const int size : {1, 127, 128, 129, 256, 255 * 128})
            QTest::addRow("rx, %d bytes", size) << true << lines(size, "\n");
        for (const int size : {0, 1, 127, 128, 129, 256})
            QTest::addRow("sx, %d bytes", size) << false << lines(size, "\r\n");
    }

    void programsArriveWhole()
    {
        QFETCH(bool, sends);
        QFETCH(QByteArray, program);
        LrzszRig line(sends);
        QList<QByteArray> programs{program};
        if (!sends) programs.append("O2\n");
        for (const QByteArray& each : std::as_const(programs)) {
            QCOMPARE(sends ? line.sendToRx(each) : line.takeFromSx(each), padded(each, sends ? ' ' : '\x1A'));
            QVERIFY(line.peer.isContent());
            QVERIFY2(!hasNotice(line), qPrintable(line.rig.text("lblStatus")));
        }
    }

    // After 255 the view goes on with 1, as the controls it was made for do; rx expects 0, gives up and keeps nothing.
    void rxRefusesTheNumberOfBlock256()
    {
        LrzszRig line(true);
        const QByteArray program = lines(255 * 128 + 1, "\n");
        QCOMPARE(line.sendToRx(program), QByteArray());
        QVERIFY(!line.peer.isContent());
        QVERIFY(line.peer.log().contains("Sync Error"));
        QVERIFY(line.rig.isShown("btnSend") && !line.rig.isShown("boxWaitForCNC"));
        QVERIFY(line.rig.headline().startsWith("Cancelled by the control"));
        QVERIFY2(line.rig.details().contains("try Block numbers \"0-255 (standard)\""), qPrintable(line.rig.details()));
        line.rig.machine->MCXMODEM0 = true;
        QCOMPARE(line.sendToRx(program), padded(program, ' '));
        QVERIFY(line.peer.isContent());
    }

    void standardNumbersPassTheWrap_data()
    {
        QTest::addColumn<bool>("sends");
        QTest::newRow("rx") << true;
        QTest::newRow("sx") << false;
    }

    void standardNumbersPassTheWrap()
    {
        QFETCH(bool, sends);
        carryEveryCharacter(sends, 70'000); // twice
    }

    void oneFault_data()
    {
        QTest::addColumn<bool>("sends");
        QTest::addColumn<Relay::Plan>("plan");
        for (const bool sends : {false, true}) {
            const auto row = [sends](const char* name, const Relay::Faults& blocks, const Relay::Faults& replies = {}) {
                QTest::addRow("%s, %s", sends ? "rx" : "sx", name)
                    << sends << (sends ? Relay::Plan{blocks, replies} : Relay::Plan{replies, blocks});
            };
            row("SOH damaged", {.flipAt = 132}); // the first byte of block 2
            row("SOH lost", {.dropAt = 132});
            row("number damaged", {.flipAt = 133});
            row("data damaged", {.flipAt = 200});
            row("data lost", {.dropAt = 200});
            row("checksum damaged", {.flipAt = 263});
            row("ACK lost", {}, {.loseFirst = 6});
            row("late replies and bytes", {.longestDelayMs = 50}, {.longestDelayMs = 50});
            row("end lost", {.loseFirst = 4}, {});
            row("ACK of the end lost", {}, {.loseFirst = 6, .loseAfter = 3}); // after those of three blocks
        }
    }

    void oneFault()
    {
        QFETCH(bool, sends);
        QFETCH(Relay::Plan, plan);
        const bool isDoubled = !sends && plan.toPeer.loseFirst == 6 && plan.toPeer.loseAfter == 0; // an ACK
        const bool isLeft = sends && plan.toProgram.loseAfter > 0; // rx has gone, and nothing answers any more
        LrzszRig line(sends, plan);
        for (const QByteArray& program : {lines(300, "\n"), QByteArray("O2\n")}) {
            QByteArray expected = padded(program, sends ? ' ' : '\x1A');
            if (isDoubled && program.size() > 128) expected.prepend(expected.left(128));
            QCOMPARE(sends ? line.sendToRx(program) : line.takeFromSx(program, shortSecond), expected);
            QCOMPARE(line.rig.headline() == "Sent; the control did not confirm the end",
                     isLeft && program.size() > 128);
            QVERIFY(line.peer.isContent());
            QCOMPARE(line.rig.text("lblStatus").contains("Block 1 came twice"), isDoubled && program.size() > 128);
        }
    }

    void noisyLine_data()
    {
        QTest::addColumn<unsigned>("seed");
        for (unsigned seed = 1; seed <= 4; ++seed) // none with two faults that cancel out in the sum of a block
            QTest::addRow("seed %u", seed) << seed;
    }

    // Many faults in both directions. Blocks may come twice or be missing; then the view says so, and nothing else
    // differs.
    void noisyLine()
    {
        QFETCH(unsigned, seed);
        const Relay::Faults faults{.flips = 1e-3, .drops = 2e-4, .longestDelayMs = 5};
        const QByteArray program = lines(6000, "\r\n");
        LrzszRig line(false, {faults, faults, seed});
        const QByteArray received = line.takeFromSx(program, shortSecond);
        const QString told = line.rig.text("lblStatus");
        qInfo() << line.relay.flipped() << "flipped" << line.relay.dropped() << "lost" << told;
        QVERIFY(line.relay.flipped() > 0);
        QVERIFY(received == padded(program, '\x1A') || told.contains("\nBlock") || told.contains("cancelled"));
    }
};

QTEST_MAIN(LrzszTest)
#include "transfer_lrzsz.moc"
