// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/LrzszPeer.h"
#include "transfer/TransferRig.h"

namespace
{
// A transfer view, a cable and lrzsz at its other end.
struct LrzszRig {
    explicit LrzszRig(bool send, const Relay::Plan& plan = {})
        : relay({rig.pty.master(), rig.pty.master()}, peer.end(), plan)
    {
        rig.machine->MCFLOW = 3;
        rig.machine->MCTXEOB = "LF";
        rig.start(send);
        rig.port.startRxTimer(0.001); // at the usual poll rate the test would take long
    }

    // rx takes this program; returns what its file holds when both sides have ended.
    QByteArray sendToRx(const QByteArray& program)
    {
        rig.open(program);
        rig.click("btnSend");
        peer.startReceiving();
        waitForPeer();
        requireSoon([this] { return !rig.view->dncRunning(); }, "the view goes on without rx");
        return peer.received();
    }

    // sx sends; returns what the editor holds when sx has ended. `second` is how long the view's seconds last, in s.
    QByteArray takeFromSx(const QByteArray& program, double second = 1)
    {
        rig.click("btnNew");
        peer.startSending(program);
        QByteArray log;
        requireSoon([&] { return (log += peer.log()).contains("XMODEM receive command now"); }, "sx does not begin");
        for (int tick = rig.view->iXModemTimeoutCounter(); tick < 7; ++tick) // to the first NAK that a plain peer knows
            rig.view->tmrXModem_Tick();
        rig.view->startXModemTimer(second);
        waitForPeer();
        rig.view->tmrXModemTimer.stop();
        return rig.editor->wholeText();
    }

    void waitForPeer()
    {
        constexpr int longestWait = 120'000; // ms; longer is a hang, not a slow machine
        requireSoon([this] { return !peer.isRunning(); }, "the peer does not end", longestWait);
    }

    TransferRig rig;
    LrzszPeer peer;
    Relay relay;
};

constexpr double shortSecond = 0.2; // a spoiled transfer would take minutes otherwise

QByteArray padded(const QByteArray& data, char padding)
{
    return data.leftJustified((data.size() + 127) / 128 * 128, padding);
}
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
        for (const int size : {0, 1, 127, 128, 129, 256, 300 * 128})
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
            QVERIFY2(!line.rig.text("lblStatus").contains(u'\n'), qPrintable(line.rig.text("lblStatus")));
        }
    }

    // After 255 the view goes on with 1, as the controls it was made for do; rx expects 0, gives up and keeps nothing.
    void rxRefusesTheNumberOfBlock256()
    {
        LrzszRig line(true);
        QCOMPARE(line.sendToRx(lines(300 * 128, "\n")), QByteArray());
        QVERIFY(!line.peer.isContent());
        QVERIFY(line.peer.log().contains("Sync Error"));
        QVERIFY(line.rig.isShown("btnSend") && !line.rig.isShown("boxWaitForCNC"));
        QCOMPARE(line.sendToRx("O2\nM30\n"), padded("O2\nM30\n", ' '));
        QVERIFY(line.peer.isContent());
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
            if (!sends) row("end lost", {.loseFirst = 4});
        }
    }

    void oneFault()
    {
        QFETCH(bool, sends);
        QFETCH(Relay::Plan, plan);
        const bool isDoubled = !sends && plan.toPeer.loseFirst == 6; // an ACK
        LrzszRig line(sends, plan);
        for (const QByteArray& program : {lines(300, "\n"), QByteArray("O2\n")}) {
            QByteArray expected = padded(program, sends ? ' ' : '\x1A');
            if (isDoubled && program.size() > 128) expected.prepend(expected.left(128));
            QCOMPARE(sends ? line.sendToRx(program) : line.takeFromSx(program, shortSecond), expected);
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
