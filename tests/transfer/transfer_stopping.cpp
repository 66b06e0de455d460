// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/TransferRig.h"

#include <QRandomGenerator>

#include <chrono>
#include <thread>

namespace
{
const QByteArray leader(20, '\0');
const QByteArray program("O1\nG1 X1\nG2 X2\nM30\n");
const QByteArray framed = leader + "%\r\nO1\r\nG1 X1\r\nG2 X2\r\nM30\r\n%\r\n";
constexpr int writes = 6; // header, four lines, trailer

// More than a pseudo-terminal holds: a write of this is taken in part as long as nobody reads.
constexpr int overfull = 200'000;
} // namespace

/// Stop and continue: whatever the moment, the control gets every byte once.
class StoppingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void stopBeforeAnyByteOfAWriteWasTaken_data();
    void stopBeforeAnyByteOfAWriteWasTaken();
    void stopWhileAWriteIsHalfTaken_data();
    void stopWhileAWriteIsHalfTaken();
    void stopWhenAllIsTakenButNotReported();
    void stopAfterStopOfTheContinuedSend();
    void doubleClickOnStopKeepsThePlace();
    void spaceStopsWhatSpaceStarted();
    void randomStops_data();
    void randomStops();
};

void StoppingTest::stopBeforeAnyByteOfAWriteWasTaken_data()
{
    QTest::addColumn<int>("taken");
    for (int taken = 0; taken < writes; ++taken)
        QTest::addRow("after %d writes", taken) << taken;
}

void StoppingTest::stopBeforeAnyByteOfAWriteWasTaken()
{
    QFETCH(int, taken);
    TransferRig rig;
    rig.machine->MCMODE = "FANUC";
    rig.start();
    rig.open(program);
    taken == 0 ? rig.holdLine() : rig.holdLineAfter(taken);
    rig.click("btnSend");
    QTRY_VERIFY(rig.isHeld() && rig.completions == taken);
    rig.click("btnStop");
    QCOMPARE(rig.state(), viewTX::TxState::txState_idle);
    QVERIFY(rig.isShown("cbo1"));
    QCOMPARE(rig.view->findChild<QComboBox*>("cbo1")->currentIndex(), 1);

    rig.releaseLine();
    const QByteArray before = rig.pty.read();
    rig.click("btnSend");
    QCOMPARE(before + rig.readUntilIdle(), framed);
    QCOMPARE(rig.view->findChild<QComboBox*>("cbo1")->currentIndex(), 0); // the next one is whole again
}

void StoppingTest::stopWhileAWriteIsHalfTaken_data()
{
    QTest::addColumn<int>("big"); // which of start, lines and end is too big for the line to take at once
    QTest::newRow("start string") << 0;
    QTest::newRow("first line") << 1;
    QTest::newRow("line in the middle") << 2;
    QTest::newRow("last line") << 3;
    QTest::newRow("end string") << 4;
}

void StoppingTest::stopWhileAWriteIsHalfTaken()
{
    QFETCH(int, big);
    QList<QByteArray> parts{"S", "G1", "G2", "G3", "E"};
    for (int i = 0; i < overfull; ++i) // no two places of it look alike
        parts[big] += QByteArray::number(i % 9973, 36).rightJustified(3, '.').at(i % 3);
    TransferRig rig;
    rig.machine->MCTXSOT = parts[0];
    rig.machine->MCTXEOT = parts[4];
    rig.start();
    rig.open(parts[1] + '\n' + parts[2] + '\n' + parts[3]);
    rig.click("btnSend");

    QTRY_COMPARE(rig.completions, big);
    const QByteArray before = rig.pty.readAtLeast(parts.first(big).join("").size() + 100);
    rig.click("btnStop");
    rig.click("btnSend");
    const QByteArray whole = before + rig.readUntilIdle();
    const QByteArray expected = parts[0] + parts[1] + "\r\n" + parts[2] + "\r\n" + parts[3] + parts[4];
    QCOMPARE(whole.size(), expected.size());
    QVERIFY(whole == expected);
}

void StoppingTest::stopWhenAllIsTakenButNotReported()
{
    TransferRig rig;
    rig.start();
    rig.open("G0\nG1\nG2\n");
    rig.holdLineAfter(2); // start string and first line
    rig.click("btnSend");
    QTRY_VERIFY(rig.isHeld());
    QTest::qWait(0);
    rig.releaseLine();
    // The event loop stands still: the line is taken and its completion is queued, but nobody has heard of it.
    QByteArray before;
    while (before.size() < 8) {
        before += rig.pty.read();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    rig.click("btnStop");
    const auto caret = rig.editor->caret();
    QTest::qWait(20);
    QCOMPARE(rig.state(), viewTX::TxState::txState_idle);
    QCOMPARE(rig.editor->caret(), caret);
    QVERIFY(rig.isShown("btnSend"));
    QCOMPARE(rig.pty.read(), QByteArray());
    rig.click("btnSend");
    QCOMPARE(before + rig.readUntilIdle(), QByteArray("G0\r\nG1\r\nG2\r\n"));
}

void StoppingTest::stopAfterStopOfTheContinuedSend()
{
    TransferRig rig;
    rig.start();
    rig.open("G0\nG1\nG2\n");
    rig.holdLineAfter(2);
    rig.click("btnSend");
    QTRY_VERIFY(rig.isHeld());
    for (int stops = 0; stops < 3; ++stops) { // the same rest is cut off again and again
        rig.click("btnStop");
        rig.click("btnSend");
    }
    rig.releaseLine();
    QCOMPARE(rig.readUntilIdle(), QByteArray("G0\r\nG1\r\nG2\r\n"));
}

void StoppingTest::doubleClickOnStopKeepsThePlace()
{
    TransferRig rig;
    rig.start();
    rig.open(program);
    rig.holdLineAfter(2);
    rig.click("btnSend");
    QTRY_VERIFY(rig.isHeld());
    QTRY_VERIFY(rig.editor->caret() > 0);
    const auto* stop = rig.view->findChild<QWidget*>("btnStop");
    // To the window: what comes up in the button's place gets the second click.
    QTest::mouseDClick(rig.view->windowHandle(), Qt::LeftButton, {},
                       stop->mapTo(rig.view.get(), stop->rect().center()));
    QVERIFY(rig.isShown("btnSend"));
    QCOMPARE(rig.view->findChild<QComboBox*>("cbo1")->currentIndex(), 1);
}

void StoppingTest::spaceStopsWhatSpaceStarted()
{
    TransferRig rig;
    rig.startTyping(program);
    rig.holdLine();
    rig.view->findChild<QWidget*>("btnSend")->setFocus();
    QTest::keyClick(rig.view->windowHandle(), Qt::Key_Space);
    QTRY_VERIFY(rig.view->dncRunning());
    QTest::keyClick(rig.view->windowHandle(), Qt::Key_Space);
    QVERIFY(!rig.view->dncRunning());
}

void StoppingTest::randomStops_data()
{
    QTest::addColumn<QString>("mode");
    QTest::newRow("general") << "NONE";
    QTest::newRow("Okuma") << "OKUMA";
}

void StoppingTest::randomStops()
{
    QFETCH(QString, mode);
    QRandomGenerator random(77);
    QByteArray text;
    for (int line = 0; line < 200; ++line)
        text += "N" + QByteArray::number(line) + QByteArray(random.bounded(8000), static_cast<char>('A' + line % 26)) +
                '\n';

    TransferRig rig;
    rig.machine->MCMODE = mode;
    rig.machine->MCTXEOB = "LF";
    rig.start();
    rig.editor->setUpdatesEnabled(false); // painting long lines would be most of the work
    rig.open(text);
    rig.click("btnSend");
    QByteArray got;
    int stops = 0;
    int halfLines = 0;
    while (rig.view->dncRunning() && stops < 100) {
        // The control reads in spells, so that stops meet an empty, a filling and a full line.
        if (random.bounded(8) == 0) got += rig.pty.read();
        QTest::qWait(static_cast<int>(random.bounded(30)));
        if (!rig.view->dncRunning()) break;
        rig.click("btnStop");
        if (random.bounded(4) == 0) {
            got += rig.pty.read();
            halfLines += !got.endsWith('\n');
        }
        rig.click("btnSend");
        ++stops;
    }
    got += rig.readUntilIdle();

    QByteArray expected = text;
    if (mode == "OKUMA")
        expected = leader + QByteArray("\x12\0", 2) + leader + text + leader + QByteArray("\x14\0\0\0\0\0", 6);
    qInfo("%d stops, %d of them seen with a line under way", stops, halfLines);
    QCOMPARE(got.size(), expected.size());
    QVERIFY(got == expected);
    QVERIFY(stops > 20 && halfLines > 0);
}

QTEST_MAIN(StoppingTest)
#include "transfer_stopping.moc"
