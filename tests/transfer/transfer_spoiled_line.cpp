// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/LrzszRig.h"

namespace
{
// A second of the view's timer lasts this long, in s; the tests would take minutes otherwise.
constexpr double shortSecond = 0.2;

QByteArray padded(const QByteArray& data, char padding)
{
    return data.leftJustified((data.size() + 127) / 128 * 128, padding);
}
} // namespace

/// Transfers with lrzsz over a line that spoils bytes: right in the end, or the operator is told.
class SpoiledLineTest : public QObject
{
    Q_OBJECT

    QByteArray lines(int bytes) const { return QByteArray("G1 X1.5 Y-2.25\r\n").repeated(bytes / 16 + 1).left(bytes); }

private Q_SLOTS:
    void oneFaultWhileReceiving_data();
    void oneFaultWhileReceiving();
    void oneFaultWhileSending_data();
    void oneFaultWhileSending();
    void noisyLine_data();
    void noisyLine();
};

void SpoiledLineTest::oneFaultWhileReceiving_data()
{
    QTest::addColumn<Relay::Plan>("plan");
    QTest::addColumn<bool>("isDoubled");
    const auto row = [](const char* name, const Relay::Plan& plan, bool isDoubled = false) {
        QTest::newRow(name) << plan << isDoubled;
    };
    // 132 is the first byte of block 2.
    row("SOH damaged", {{}, {.flipAt = 132}});
    row("SOH lost", {{}, {.dropAt = 132}});
    row("number damaged", {{}, {.flipAt = 133}});
    row("data damaged", {{}, {.flipAt = 200}});
    row("data lost", {{}, {.dropAt = 200}});
    row("checksum damaged", {{}, {.flipAt = 263}});
    row("end lost", {{}, {.loseFirst = 4}});
    row("late replies and bytes", {{.longestDelayMs = 50}, {.longestDelayMs = 50}});
    row("ACK lost, so that the block comes twice", {{.loseFirst = 6}, {}}, true);
}

void SpoiledLineTest::oneFaultWhileReceiving()
{
    QFETCH(Relay::Plan, plan);
    QFETCH(bool, isDoubled);
    LrzszRig line(false, plan);
    const QByteArray expected = padded(lines(300), '\x1A');
    const QByteArray received = line.takeFromSx(lines(300), shortSecond);
    QVERIFY(line.peer.isContent());
    QCOMPARE(received, isDoubled ? expected.left(128) + expected : expected);
    QCOMPARE(line.rig.text("lblStatus").contains("Block 1 came twice"), isDoubled);

    line.rig.click("btnNew");
    QCOMPARE(line.takeFromSx("O2\r\n", shortSecond), padded("O2\r\n", '\x1A'));
}

void SpoiledLineTest::oneFaultWhileSending_data()
{
    QTest::addColumn<Relay::Plan>("plan");
    QTest::newRow("SOH damaged") << Relay::Plan{{.flipAt = 132}, {}};
    QTest::newRow("data damaged") << Relay::Plan{{.flipAt = 200}, {}};
    QTest::newRow("data lost") << Relay::Plan{{.dropAt = 200}, {}};
    QTest::newRow("ACK lost") << Relay::Plan{{}, {.loseFirst = 6}};
    QTest::newRow("late replies and bytes") << Relay::Plan{{.longestDelayMs = 50}, {.longestDelayMs = 50}};
}

void SpoiledLineTest::oneFaultWhileSending()
{
    QFETCH(Relay::Plan, plan);
    LrzszRig line(true, plan);
    const QByteArray program = lines(300).replace("\r\n", "\n");
    line.rig.open(program);
    QCOMPARE(line.sendToRx(), padded(program, ' '));
    QVERIFY(line.peer.isContent());

    line.rig.open("O2\n");
    QCOMPARE(line.sendToRx(), padded("O2\n", ' '));
}

void SpoiledLineTest::noisyLine_data()
{
    QTest::addColumn<unsigned>("seed");
    for (unsigned seed = 1; seed <= 4; ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

// Many faults in both directions. Blocks may come twice or be missing; then it says so, and nothing else differs.
void SpoiledLineTest::noisyLine()
{
    QFETCH(unsigned, seed);
    const Relay::Faults faults{.flips = 1e-3, .drops = 2e-4, .longestDelayMs = 5};
    LrzszRig line(false, {faults, faults, seed});
    const QByteArray program = lines(6000);
    const QByteArray received = line.takeFromSx(program, shortSecond);
    const QString told = line.rig.text("lblStatus");
    qInfo("%d flipped, %d lost, %lld of %lld bytes, told: %s", line.relay.flipped(), line.relay.dropped(),
          static_cast<long long>(received.size()), static_cast<long long>(program.size()), qPrintable(told));
    QVERIFY(line.relay.flipped() > 0);
    const bool isWhole = received == padded(program, '\x1A');
    QVERIFY2(isWhole || told.contains('\n'), qPrintable(told));
    QVERIFY(isWhole || told.contains("twice") || told.contains("missing") || told.contains("cancelled"));
}

QTEST_MAIN(SpoiledLineTest)
#include "transfer_spoiled_line.moc"
